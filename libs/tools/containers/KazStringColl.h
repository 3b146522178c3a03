// SPDX-License-Identifier: Apache-2.0
/// @file
/// A collection of strings.
#pragma once

#include "tools/containers/KazColl.h"
#include "tools/strings/KazString.h"

/// KazColl of KazString values: the collection holds one reference on the
/// block of each stored string. Every member does what its namesake in KazColl
/// does, with a string in place of an element.
class KAZ_API KazStringColl : public KazColl {
public:
    /// Empty; the element functions are KazString::checkIn and checkOut.
    KazStringColl();

    /// The stored string itself: assigning to it replaces the element. The
    /// reference is good until the collection changes.
    KazString& getAt(int index) const { return reinterpret_cast<KazString&>(slot(index)); }
    KazString& operator[](int index) const { return getAt(index); }

    /// Appends @p text, sharing its block, and returns its index.
    int add(const KazString& text);
    /// Replaces the string at @p index.
    void setAt(int index, const KazString& text);
    /// Inserts @p text in front of @p index; at or beyond the end it is appended, after a gap
    /// of empty strings.
    void insertAt(int index, const KazString& text);
    /// Inserts the @p count strings at @p texts.
    void insertAt(int index, const KazString* texts, int count);
    /// The strings of @p other: in front of @p index, at the end (returns the index of the
    /// first), or in place of those here.
    void insertAt(int index, const KazStringColl& other) { KazColl::insertAt(index, other); }
    int append(const KazStringColl& other) { return KazColl::append(other); }
    void copy(const KazStringColl& other) { KazColl::copy(other); }

    /// The highest index whose string equals @p text (null means ""), or -1.
    /// Linear, from the end.
    int find(const char* text) const;
    /// The same without regard to case.
    int findNoCase(const char* text) const;

private:
    // The slots are handed out as strings, which counts on these two.
    using KazColl::setCheckIn;
    using KazColl::setCheckOut;
};
