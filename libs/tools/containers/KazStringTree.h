// SPDX-License-Identifier: Apache-2.0
/// @file
/// An ordered set of strings.
#pragma once

#include "tools/containers/KazTree.h"
#include "tools/strings/KazString.h"

/// KazTree of KazString values in the order of their bytes, the empty string
/// first. The tree holds one reference on the block of each stored string.
/// Members do what their namesakes in KazTree do; KazTreeClashException
/// carries the stored string in disguise (see KazString::undisguise).
class KAZ_API KazStringTree : public KazTree {
public:
    /// An empty tree. Unless @p caseSensitive, strings that differ in case alone are equal, and
    /// the order is that of KazString::compareNoCase.
    explicit KazStringTree(bool caseSensitive = true);

    /// Adds @p text, sharing its block. @throws KazTreeClashException when an equal one is
    /// there already
    void add(const KazString& text);
    /// Whether a string equal to @p text is in the tree.
    bool contains(const KazString& text) const;

    /// The stored string equal to @p text, sharing its block; empty when there
    /// is none. It differs from @p text only in a tree that ignores case.
    KazString find(const KazString& text) const;

    /// Puts @p text in the place of the stored string equal to it; false when
    /// there is none.
    bool replace(const KazString& text);
    /// Removes the string equal to @p text; false when there is none.
    bool remove(const KazString& text);

    /// The first and the last string; empty for an empty tree.
    KazString smallest() const;
    KazString largest() const;
    /// The string that has @p rank before it; empty outside 0 to getSize() - 1.
    KazString valueAt(int rank) const;

    /// Replaces the strings by those of @p other, and the order by its order.
    void copy(const KazStringTree& other) { KazTree::copy(other); }

private:
    using KazTree::setCheckIn;
    using KazTree::setCheckOut;
};
