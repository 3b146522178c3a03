// SPDX-License-Identifier: Apache-2.0
/// @file
/// The hash table for string keys and string values.
#pragma once

#include "tools/containers/KazHashTable.h"
#include "tools/strings/KazString.h"

/// A KazHashTable from KazString to KazString. It holds one reference on the
/// block of each key and value; what it gives back shares the stored block.
///
///     KazStringToStringMap map(false, 31);
///     map.bind("Path", "/bin", true);
///     KazString path = map.valueOf("PATH");
///
/// Members do what their namesakes in KazHashTable do.
class KAZ_API KazStringToStringMap : public KazHashTable {
public:
    /// Keys that differ in case are different; 127 buckets.
    KazStringToStringMap() : KazStringToStringMap(true, 127) {}
    /// Keys compare without regard to case unless @p caseSensitive. @p size is the number of
    /// buckets, for good (see KazHashTable).
    KazStringToStringMap(bool caseSensitive, int size);

    /// Binds @p key to @p value. A key that is bound already gets it with @p replace; else
    /// nothing changes and the result is false.
    bool bind(const KazString& key, const KazString& value, bool replace);
    /// Replaces the value of a bound key; false when it is not bound.
    bool rebind(const KazString& key, const KazString& value);
    /// Removes @p key; false when it is not bound.
    bool unbind(const KazString& key);
    /// Whether @p key has a value, be it empty.
    bool isBound(const KazString& key);

    /// The value, empty when @p key is not bound.
    KazString valueOf(const KazString& key);
    /// The same; @p found tells an empty value from an absent key.
    KazString valueOf(const KazString& key, bool& found);
    /// Assigns the value when @p key is bound; returns whether it is.
    bool valueOf(const KazString& key, KazString& value);

private:
    // They stand for the references that the map counts on.
    using KazHashTable::setKeyCheckIn;
    using KazHashTable::setKeyCheckOut;
    using KazHashTable::setValueCheckIn;
    using KazHashTable::setValueCheckOut;
};
