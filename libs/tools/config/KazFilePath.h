// SPDX-License-Identifier: Apache-2.0
/// @file
/// A search path: directories in the order in which a file is looked for.
#pragma once

#include "tools/containers/KazStringColl.h"
#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <vector>

/// A list of directories, written with ";" between them.
///
///     KazFilePath path("~/templates;${root}/templates;templates");
///     KazString file = path.find("report.ct");   // "" when nowhere
///
/// Entries are kept as written, without blanks around them; empty entries are
/// dropped. They are expanded when they are used, so that a variable that is
/// defined later counts: first "${...}" (vstring_sub; a value that is a list of
/// directories gives each of them), then a leading "~" (_TI_hm). An entry that names no directory,
/// or expands to nothing, is simply one where nothing is found. Null texts count as "". Copies are
/// independent.
class KAZ_API KazFilePath {
public:
    KazFilePath() = default;
    /// The directories of @p list, which ";" separates.
    explicit KazFilePath(const char* list);

    /// Replaces all entries by those of @p list.
    void set(const char* list);
    /// Adds the directories of @p list, in their order, behind or in front of the
    /// present ones. Duplicates are kept.
    void append(const char* list);
    void prepend(const char* list);
    /// Removes every entry equal to @p dir as paths compare (kazFilenameCompare);
    /// true when there was one.
    bool remove(const char* dir);
    /// Removes all entries.
    void clear();

    /// The number of entries.
    int getSize() const;
    /// Whether there are none.
    bool isEmpty() const;
    /// Entry @p index as written; "" outside 0 to getSize() - 1.
    KazString getDir(int index) const;
    /// Entry @p index expanded and normalised, with ";" between the directories
    /// when it stands for several; "" outside the range.
    KazString getExpandedDir(int index) const;
    /// Is @p dir an entry, as paths compare (kazFilenameCompare)?
    bool contains(const char* dir) const;
    /// The list as text; building a path from it gives the same entries.
    KazString getText() const;

    /// The native path of the first file called @p name; "" when there is none.
    /// @p name may have a directory part. An explicit path is not searched for:
    /// it is the result itself, "~" expanded, when that file exists. Directories
    /// are no files here.
    KazString find(const char* name) const;
    /// The same for a directory.
    KazString findDirectory(const char* name) const;
    /// Appends every file called @p name to @p found, in the order of the entries
    /// and each path once. @return how many were appended.
    int findAll(const char* name, KazStringColl& found) const;
    /// Appends every file that matches the wildcard, "*" and "?", in any of the
    /// directories; of several with one name only the first, which find() would
    /// give. @return how many were appended. Linear time in the number of entries
    /// of these directories.
    int findMatching(const char* pattern, KazStringColl& found) const;

private:
    std::vector<KazString> dirs_;
};
