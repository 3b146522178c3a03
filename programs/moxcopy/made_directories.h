// SPDX-License-Identifier: Apache-2.0
/// @file
/// The directory that receives a copy, with those of its parents that were missing.
#pragma once

#include "tools/files/KazTreeCursor.h"
#include "tools/strings/KazString.h"

#include <vector>

/// The directory that an absolute path names, or the nearest around it that is there;
/// not open, with errno set, where that cannot be told. @p missing becomes the names from
/// there on, the innermost first.
KazDirectory openNearest(KazString path, std::vector<KazString>& missing);

/// Makes a directory with its missing parents, and removes again what it has made.
class MadeDirectories {
public:
    MadeDirectories();

    /// 0, or -1 with errno set; what was made so far is known then. @p path is absolute.
    int open(const KazString& path);
    /// Open after open().
    const KazDirectory& directory() const { return cursor_.directory(); }

    /// They shall stay.
    void keep();
    /// Removes those that this object has made, as far as they are empty, from the
    /// innermost on.
    void remove();

private:
    KazTreeCursor cursor_;
    std::vector<KazString> made_; ///< names, the outermost first
};
