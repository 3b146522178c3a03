// SPDX-License-Identifier: Apache-2.0
/// @file
/// Copying and deleting directory trees.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <ctime>

namespace kaz::detail {
class TreeCopy;
class TreeRemoval;
} // namespace kaz::detail

/// One thing that a copy would do.
struct KazPlannedAction {
    /// What becomes of an entry of the tree.
    enum Kind : int {
        Make,    ///< a directory, which is not there yet
        Copy,    ///< a file, where nothing has its name
        Replace, ///< a file, in place of an older one or of a link
        Skip,    ///< an entry that is excluded, or a directory of a copy that is not recursive
        Clash,   ///< fails: the target is the copy's own work, or counts as such. Names that
                 ///< differ in case alone, where the target's file system does not tell them
                 ///< apart, and files dated in the future
        Fail     ///< fails for another reason
    };
    Kind kind;        ///< what becomes of this one
    KazString source; ///< native path
    KazString target; ///< native path
};

/// Copies and deletes the tree below one directory, with a list of names to
/// leave out, an optional commentary, and a list of what failed.
///
///     KazFileManager manager("\\home\\me\\project");
///     manager.setExclusion("tmp");
///     if (!manager.copy("\\backup", true))
///         print_err("not copied:\n%s", manager.getErrors().getValue());
///
/// Nothing is thrown except for want of memory; a failure is recorded and the
/// walk goes on with the next entry. The commentary goes through
/// KazIODirector::printMsg, names always as arguments.
///
/// What is copied: regular files, and links as the files that they point to. A
/// copied file appears whole or not at all, keeps its permission bits and has
/// the current time; an older target is replaced. Sources are never touched.
/// Everything else ends in the failure list: links to directories, dangling
/// links, pipes, sockets and devices (none is opened), unreadable directories,
/// a file that would replace itself, names that native text cannot express.
/// What is written stays inside the destination: a link that stands there in
/// place of a directory is not followed, and an entry called "~" or "c:x" keeps
/// its name. The directory that is being copied into is not copied into itself;
/// it is a failed entry where the walk meets it.
///
/// Directories of a copy are made with mode 0777, cut by the file-creation mask, whatever
/// the source's permissions are: who copies private trees sets the mask (or copies with
/// KazDirectory, which leaves the choice).
///
/// Trees may be of any depth; at most 40 handles are open at a time. Only a pattern with
/// a directory part, which leads elsewhere at each level, takes a handle for each.
///
/// What is deleted: links themselves, never what they point to (the root that the
/// manager was given may itself be a link to a directory). An excluded entry, or one
/// that the pattern leaves, keeps the directories above it: they are failures then.
///
/// The clash rule counts in seconds: a target that was written in the second in
/// which the copy of its directory starts counts as written by that copy.
class KAZ_API KazFileManager {
public:
    /// For the tree below @p root, a native path. Nothing is looked at yet.
    explicit KazFileManager(KazString root);

    /// Commentary on or off; off at first.
    void setVerbose(bool verbose);
    /// One more entry name to leave out, at every level, for copying and deleting.
    void setExclusion(KazString name);
    /// Leaves nothing out any more.
    void clearExclusions();

    /// Copies the tree into @p dest, which must exist, under the root's own name,
    /// which is created there (a root that ends in a separator, "." or ".." has none:
    /// its entries go straight into @p dest, which is created). Without @p recursive
    /// directories are passed over. True when nothing failed.
    bool copy(KazString dest, bool recursive);
    /// Copies the entries that match @p pattern (see read_a_dir) straight into
    /// @p dest, which must exist. The pattern holds at every level: a directory whose
    /// name does not match is not entered.
    bool copy(KazString dest, KazString pattern, bool recursive);

    /// Tells @p visit all that a copy would do now, in its order, and does none of it: the
    /// copy of the entries that match @p pattern into @p dest, or with @p makeTop into a
    /// directory of the root's own name there (as the first copy(), which has "*"). A copy
    /// that follows makes, copies and replaces exactly this, unless the trees change, the
    /// disk fills up, or memory runs out. Costs a look at each entry on both sides; no file is
    /// read. The manager's commentary is silent.
    /// @return false when something would fail: Clash and Fail. getErrors() is then what
    ///         the copy's would be.
    bool plan(KazString dest, KazString pattern, bool recursive, bool makeTop,
              void (*visit)(const KazPlannedAction&, void*), void* data);

    /// Deletes the entries of the root. False when one failed; else removes the
    /// root itself and is true, even when that removal fails (the root is then in
    /// the failure list).
    bool destroy(bool recursive);
    /// Deletes the entries that match @p pattern, at every level; the root stays.
    bool destroy(KazString pattern, bool recursive);

    // A pattern alone would silently be taken for the flag.
    bool copy(KazString dest, const char* pattern) = delete;
    bool destroy(const char* pattern) = delete;

    /// The paths that the last copy or destroy could not handle, "\n" between
    /// them; valid until the next one.
    const KazString& getErrors() const;

private:
    friend class kaz::detail::TreeCopy;
    friend class kaz::detail::TreeRemoval;

    bool copyTree(const KazString& dest, const char* pattern, bool recursive, bool makeTop);
    bool isExcluded(const char* name) const;
    void addError(const KazString& path);

    KazString errors_;
    KazString exclusions_;
    KazString root_;
    bool verbose_ = false;
    std::time_t startTime_ = 0;
};
