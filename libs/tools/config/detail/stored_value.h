// SPDX-License-Identifier: Apache-2.0
/// @file
/// Looking a plain text up in a map of strings.
#pragma once

#include "tools/containers/KazStringToStringMap.h"

namespace kaz::detail {

/// The value of @p key, "" for an empty one; null when it is not bound. Good until
/// the value changes, because the map's own reference keeps it. Any terminated
/// text is a key: making a string of it would cost more than the search.
inline const char* storedValue(KazStringToStringMap& map, const char* key) {
    bool found = false;
    const void* value = map.KazHashTable::valueOf(key, found);
    return value != nullptr ? static_cast<const char*>(value) : found ? "" : nullptr;
}

} // namespace kaz::detail
