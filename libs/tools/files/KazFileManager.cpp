// SPDX-License-Identifier: Apache-2.0
#include "tools/files/KazFileManager.h"

#include "tools/files/KazDirectory.h"
#include "tools/files/KazTreeCursor.h"
#include "tools/files/detail/growing_path.h"
#include "tools/files/detail/pattern.h"
#include "tools/files/detail/text.h"
#include "tools/files/kazpath.h"
#include "tools/messages/KazIODirector.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::detail {

namespace {

/// A directory whose entries are being worked on.
struct Level {
    std::vector<KazDirectoryEntry> entries;
    std::size_t next = 0;
    std::size_t outerPath = 0; ///< what GrowingPath::pop() wants
    std::time_t outerStart = 0;
    KazString instead; ///< the path that a pattern has led away from
};

/// Takes a walk to the directory that a pattern with a directory part names from here.
/// Not open when there is none.
KazDirectory openElsewhere(const KazString& path, const char* pattern, KazString& elsewhere) {
    const KazString composed = kazComposePath(path.getValue(), pattern);
    const std::string_view dir(composed.getValue(), wildcardStart(composed.getValue()));
    elsewhere = kazDirForDisplay(toText(dir).getValue());
    return KazDirectory(elsewhere.getValue());
}

} // namespace

/// One copy: the walk, and the decision on every entry. Without recursion, so that
/// the depth of a tree costs neither stack nor handles; only a pattern that leads to
/// another directory at every level wants a handle for each.
class TreeCopy {
public:
    TreeCopy(KazFileManager& manager, const char* pattern, bool recursive,
             const KazString& sourcePath, KazDirectory target, const KazString& targetPath)
        : manager_(manager),
          pattern_(pattern),
          names_(pattern + wildcardStart(pattern)),
          recursive_(recursive),
          source_(KazDirectory(sourcePath.getValue())),
          target_(std::move(target)),
          sourcePath_(sourcePath),
          targetPath_(targetPath),
          top_(target_.getStatus()) {}

    bool run() {
        if (start(source_.directory().isOpen()))
            while (!levels_.empty())
                goOn();
        return complete_;
    }

private:
    void goOn() {
        Level& level = levels_.back();
        if (level.next < level.entries.size()) {
            const KazDirectoryEntry entry = level.entries[level.next++];
            copyEntry(entry);
            return;
        }
        manager_.startTime = level.outerStart;
        const std::size_t outerPath = level.outerPath;
        if (!level.instead.isEmpty())
            sourcePath_.set(level.instead);
        levels_.pop_back();
        if (levels_.empty())
            return;
        source_.leave();
        leaveTarget();
        sourcePath_.pop(outerPath);
    }

    /// Begins with the directory in which both cursors are. False when it has been
    /// found to have nothing to copy, or not to be readable.
    bool start(bool isOpen) {
        if (manager_.verbose)
            KazIODirector::printMsg("Starting copy from '%s' to '%s'.",
                                    sourcePath_.get().getValue(), targetPath_.get().getValue());
        Level level;
        level.outerStart = std::exchange(manager_.startTime, std::time(nullptr));
        if (isOpen ? goElsewhere(level) : failedDirectory(sourcePath_.get())) {
            if (source_.directory().list(names_, level.entries) != 0)
                failedDirectory(sourcePath_.get());
            levels_.push_back(std::move(level));
            return true;
        }
        manager_.startTime = level.outerStart;
        return false;
    }

    /// A directory that the pattern names need not be there; one that leads back
    /// to where the walk came from would never end. False when nothing is to be done.
    bool goElsewhere(Level& level) {
        if (names_ == pattern_)
            return true;
        KazString path;
        KazDirectory other = openElsewhere(sourcePath_.get(), pattern_, path);
        if (!other.isOpen())
            return false;
        const int reached = source_.jump(std::move(other));
        if (reached != 0)
            return errno == ELOOP && failedDirectory(path);
        level.instead = sourcePath_.get();
        sourcePath_.set(path);
        return true;
    }

    void copyEntry(const KazDirectoryEntry& entry) {
        const char* name = entry.name.getValue();
        if (manager_.isExcluded(name)) {
            if (manager_.verbose)
                KazIODirector::printMsg("Skipping '%s'.", name);
            return;
        }
        const bool isDirectory = entry.kind == KazFileKind::Directory;
        if (isDirectory && !recursive_)
            return;
        if (entry.isNative && isDirectory)
            copySubdirectory(name);
        else if (!entry.isNative || !copyFile(entry))
            failed(sourcePath_.of(name), name);
        else if (manager_.verbose)
            KazIODirector::printMsg("Copied '%s'.", name);
    }

    void copySubdirectory(const char* name) {
        const bool isEntered = source_.enter(name) == 0;
        const bool isAgain = !isEntered && errno == ELOOP;
        // Below the destination the copy would feed on itself.
        const bool isTarget = isEntered && source_.getStatus().isSameFile(top_);
        if (isAgain || isTarget) {
            if (isEntered)
                source_.leave();
            failed(sourcePath_.of(name), name);
            return;
        }
        target().makeDirectory(name, 0777);
        const std::size_t outerPath = sourcePath_.push(name);
        enterTarget(name);
        if (start(isEntered)) {
            levels_.back().outerPath = outerPath;
            return;
        }
        if (isEntered)
            source_.leave();
        leaveTarget();
        sourcePath_.pop(outerPath);
    }

    const KazDirectory& target() const { return lost_ > 0 ? nowhere_ : target_.directory(); }

    /// Where a target cannot be entered, all below it fails entry by entry.
    void enterTarget(const char* name) {
        targetLengths_.push_back(targetPath_.push(name));
        if (lost_ > 0 || target_.enter(name) != 0)
            ++lost_;
    }

    void leaveTarget() {
        targetPath_.pop(targetLengths_.back());
        targetLengths_.pop_back();
        if (lost_ > 0)
            --lost_;
        else
            target_.leave();
    }

    /// Tried as a new file first: most are, and need no look at the target then.
    bool copyFile(const KazDirectoryEntry& entry) {
        KazCopyRules rules;
        if (source_.directory().copyFile(entry, target(), rules) == 0)
            return true;
        const bool taken = errno == EEXIST;
        KazFileStatus existing; // missing also behind a dangling link
        const bool known = target().getStatus(entry.name, existing, true) == 0 || errno == ENOENT;
        if (existing.kind != KazFileKind::Missing && existing.modified >= manager_.startTime) {
            if (manager_.verbose)
                KazIODirector::printMsg("Filesystem naming clash on '%s'.", entry.name.getValue());
            return false;
        }
        rules.mayReplace = true;
        return taken && known && source_.directory().copyFile(entry, target(), rules) == 0;
    }

    bool failedDirectory(const KazString& directory) {
        const KazString path = kazDirForDisplay(directory.getValue());
        return failed(path, kazLastFileComponent(path.getValue()).getValue());
    }

    /// Always false, for use as a result.
    bool failed(const KazString& path, const char* name) {
        manager_.addError(path);
        KazIODirector::printMsg("Failed to copy '%s'.", name);
        complete_ = false;
        return false;
    }

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
    std::vector<Level> levels_;
    bool complete_ = true;
};

/// One deletion. Without recursion, as the copy.
class TreeRemoval {
public:
    TreeRemoval(KazFileManager& manager, const char* pattern, bool recursive, const KazString& root)
        : manager_(manager),
          pattern_(pattern),
          names_(pattern + wildcardStart(pattern)),
          recursive_(recursive),
          cursor_(KazDirectory(root.getValue())),
          path_(root) {}

    bool run() {
        start(0);
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next < level.entries.size())
                removeEntry(level.entries[level.next++]);
            else
                finish();
        }
        return complete_;
    }

private:
    /// What cannot be listed has no entries here; its own removal tells.
    void start(std::size_t outerPath) {
        Level& level = levels_.emplace_back();
        level.outerPath = outerPath;
        if (names_ == pattern_ || goElsewhere(level))
            cursor_.directory().list(names_, level.entries);
    }

    bool goElsewhere(Level& level) {
        KazString path;
        KazDirectory other = openElsewhere(path_.get(), pattern_, path);
        if (!other.isOpen() || cursor_.jump(std::move(other)) != 0)
            return false;
        level.instead = path_.get();
        path_.set(path);
        return true;
    }

    void finish() {
        const std::size_t outerPath = levels_.back().outerPath;
        if (!levels_.back().instead.isEmpty())
            path_.set(levels_.back().instead);
        levels_.pop_back();
        if (levels_.empty())
            return;
        cursor_.leave();
        path_.pop(outerPath);
        const Level& above = levels_.back();
        removeEmpty(above.entries[above.next - 1]);
    }

    void removeEntry(const KazDirectoryEntry& entry) {
        if (manager_.isExcluded(entry.name.getValue()))
            return;
        if (entry.kind != KazFileKind::Directory)
            report(entry.isNative && cursor_.directory().removeFile(entry.name) == 0,
                   "Deleted '%s'.", "Failed to delete '%s'.", entry.name);
        else if (recursive_ && entry.isNative && cursor_.enter(entry.name) == 0)
            start(path_.push(entry.name.getValue()));
        else if (recursive_)
            removeEmpty(entry);
    }

    void removeEmpty(const KazDirectoryEntry& entry) {
        report(entry.isNative && cursor_.directory().removeDirectory(entry.name) == 0,
               "Deleted directory '%s'.", "Failed to delete directory '%s'.", entry.name);
    }

    void report(bool removed, const char* success, const char* failure, const KazString& name) {
        complete_ = complete_ && removed;
        if (removed && !manager_.verbose)
            return;
        const KazString path = path_.of(name.getValue());
        if (!removed)
            manager_.addError(path);
        if (manager_.verbose)
            KazIODirector::printMsg(removed ? success : failure, path.getValue());
    }

    KazFileManager& manager_;
    const char* pattern_;
    const char* names_;
    bool recursive_;
    KazTreeCursor cursor_;
    GrowingPath path_;
    std::vector<Level> levels_;
    bool complete_ = true;
};

} // namespace kaz::detail

using kaz::detail::TreeCopy;
using kaz::detail::TreeRemoval;

namespace {

/// Names that a copy of the tree can be given; "." and ".." would lead out.
bool isName(const KazString& last) {
    return !last.isEmpty() && last != "." && last != "..";
}

} // namespace

KazFileManager::KazFileManager(KazString root) : root(root) {}

void KazFileManager::setVerbose(bool verbose) {
    this->verbose = verbose;
}

void KazFileManager::setExclusion(KazString name) {
    exclusions.append('\n');
    exclusions.append(name);
    exclusions.append('\n');
}

void KazFileManager::clearExclusions() {
    exclusions.clear();
}

bool KazFileManager::copy(KazString dest, bool recursive) {
    return copyTree(dest, "*", recursive, true);
}

bool KazFileManager::copy(KazString dest, KazString pattern, bool recursive) {
    return copyTree(dest, pattern.getValue(), recursive, false);
}

bool KazFileManager::destroy(bool recursive) {
    if (!destroy("*", recursive))
        return false;
    if (kaz::host::removeDirectory(root.getValue()) != 0) {
        addError(root);
        if (verbose)
            KazIODirector::printMsg("Failed to delete directory '%s'.", root.getValue());
    }
    return true;
}

bool KazFileManager::destroy(KazString pattern, bool recursive) {
    errors.clear();
    return TreeRemoval(*this, pattern.getValue(), recursive, root).run();
}

const KazString& KazFileManager::getErrors() const {
    return errors;
}

bool KazFileManager::copyTree(const KazString& dest, const char* pattern, bool recursive,
                              bool makeTop) {
    errors.clear();
    const KazString name = kazLastFileComponent(root.getValue());
    const bool hasName = makeTop && isName(name);
    KazString target = dest;
    if (hasName)
        target = kaz::detail::joinPath(dest.getValue(), name.getValue());
    else if (makeTop) {
        kaz::host::makeDirectory(dest.getValue(), 0777);
        target = kazComposePath(dest, "");
    }
    KazDirectory opened(hasName ? dest.getValue() : target.getValue());
    if (hasName) {
        opened.makeDirectory(name, 0777);
        opened = opened.openDirectory(name);
    }
    return TreeCopy(*this, pattern, recursive, root, std::move(opened), target).run();
}

bool KazFileManager::isExcluded(const char* name) const {
    if (exclusions.isEmpty())
        return false;
    const std::string line = std::string("\n") + name + '\n';
    return std::strstr(exclusions.getValue(), line.c_str()) != nullptr;
}

void KazFileManager::addError(const KazString& path) {
    if (!errors.isEmpty())
        errors.append('\n');
    errors.append(path);
}
