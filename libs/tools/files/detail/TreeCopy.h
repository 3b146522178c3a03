// SPDX-License-Identifier: Apache-2.0
/// @file
/// Copying one tree: the walk, and the decision on every entry.
#pragma once

#include "tools/files/KazFileManager.h"
#include "tools/files/KazTreeCursor.h"
#include "tools/files/detail/growing_path.h"

#include <ctime>
#include <vector>

namespace kaz::detail {

/// A directory whose entries are being worked on.
struct TreeLevel {
    std::vector<KazDirectoryEntry> entries;
    std::size_t next = 0;
    std::size_t outerPath = 0; ///< what GrowingPath::pop() wants
    std::time_t outerStart = 0;
    KazString instead; ///< the path that a pattern has led away from
};

/// Takes a walk to the directory that a pattern with a directory part names from @p path.
/// Not open when there is none.
KazDirectory openElsewhere(const KazString& path, const char* pattern, KazString& elsewhere);

/// One copy. Without recursion, so that the depth of a tree costs neither stack nor
/// handles; only a pattern that leads to another directory at every level wants a handle
/// for each. What is done with an entry is virtual: a plan makes the same decisions.
class TreeCopy {
public:
    TreeCopy(KazFileManager& manager, const char* pattern, bool recursive,
             const KazString& sourcePath, KazDirectory target, const KazString& targetPath);
    TreeCopy(const TreeCopy&) = delete;
    TreeCopy& operator=(const TreeCopy&) = delete;
    virtual ~TreeCopy() = default;

    bool run();

protected:
    /// @name What is done
    /// @{
    virtual void begun();
    virtual void listed(std::vector<KazDirectoryEntry>&) {}
    virtual void passedOver(const KazDirectoryEntry& entry, bool isExcluded);
    /// Of the directory in which the target is.
    virtual void makeTarget(const char* name);
    /// Goes on with the directory @p name of the target; where that is not possible, all
    /// below it fails entry by entry.
    virtual void enterTarget(const char* name);
    virtual void leaveTarget();
    virtual bool copyFile(const KazDirectoryEntry& entry);
    virtual void copied(const char* name);
    virtual void told(const KazString& path, const char* name);
    /// Whether an entry that cannot be seen yet would be the copy itself.
    virtual bool wouldBeTarget(const char*) const { return false; }
    /// @}

    const KazDirectory& source() const { return source_.directory(); }
    const KazDirectory& target() const { return lost_ > 0 ? nowhere_ : target_.directory(); }
    KazString sourceOf(const char* name) const { return sourcePath_.of(name); }
    KazString targetOf(const char* name) const { return targetPath_.of(name); }
    KazString targetPath() const { return targetPath_.get(); }
    bool isLost() const { return lost_ > 0; }
    std::time_t startTime() const;
    /// Does the pattern hold for the name of an entry?
    bool isWanted(const char* name) const { return KazDirectory::matches(names_, name); }

    void pushTarget(const char* name) { targetLengths_.push_back(targetPath_.push(name)); }
    void popTarget();
    int goIntoTarget(const char* name) { return target_.enter(name); }
    void goOutOfTarget() { target_.leave(); }
    void lose() { ++lost_; }
    /// Back from a level that was lost.
    void regain() { --lost_; }

private:
    void goOn();
    bool start(bool isOpen);
    bool goElsewhere(TreeLevel& level);
    void copyEntry(const KazDirectoryEntry& entry);
    void copySubdirectory(const char* name);
    bool failedDirectory(const KazString& directory);
    bool failed(const KazString& path, const char* name);

    KazFileManager& manager_;
    const char* pattern_;
    const char* names_;
    bool recursive_;
    KazTreeCursor source_;
    KazTreeCursor target_;
    GrowingPath sourcePath_;
    GrowingPath targetPath_;
    const KazFileStatus top_;                ///< the target's
    const KazDirectory nowhere_;             ///< not open
    std::vector<std::size_t> targetLengths_; ///< of targetPath_, one for each level below the top
    std::size_t lost_ = 0;                   ///< levels that target_ could not follow
    std::vector<TreeLevel> levels_;
    bool complete_ = true;
};

} // namespace kaz::detail
