// SPDX-License-Identifier: Apache-2.0
// Two cursors walk at once, one in the source and one in the target. The latter may fall behind:
// below a directory that could not be made or entered there is nowhere to copy to, and `lost_`
// counts how many levels the walk is below it, so that every file there is reported and none is
// copied to a wrong place.
//
// Whether a target was written by this very copy is told by its date: that is how two names of
// the source that are one name in the target are noticed. The date counts from the start of the
// directory, whose level keeps the outer one's.
#include "tools/files/detail/TreeCopy.h"

#include "tools/files/detail/pattern.h"
#include "tools/files/detail/text.h"
#include "tools/files/kazpath.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/trace.h"

#include <cerrno>
#include <string_view>
#include <utility>

namespace kaz::detail {

KazDirectory openElsewhere(const KazString& path, const char* pattern, KazString& elsewhere) {
    const KazString composed = kazComposePath(path.getValue(), pattern);
    const std::string_view dir(composed.getValue(), wildcardStart(composed.getValue()));
    elsewhere = kazDirForDisplay(toText(dir).getValue());
    return KazDirectory(elsewhere.getValue());
}

TreeCopy::TreeCopy(KazFileManager& manager, const char* pattern, bool recursive,
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

bool TreeCopy::run() {
    if (start(source_.directory().isOpen()))
        while (!levels_.empty())
            goOn();
    return complete_;
}

void TreeCopy::goOn() {
    TreeLevel& level = levels_.back();
    if (level.next < level.entries.size()) {
        // A copy, because a new level may move the levels and with them this one's entries.
        const KazDirectoryEntry entry = level.entries[level.next++];
        copyEntry(entry);
        return;
    }
    // Before the level goes: files of the outer directory are dated from its own start again.
    manager_.startTime_ = level.outerStart;
    const std::size_t outerPath = level.outerPath;
    if (!level.instead.isEmpty())
        sourcePath_.set(level.instead);
    levels_.pop_back();
    if (levels_.empty())
        return;
    // The cursors go up together. The paths are cut by length, which does not depend on them.
    source_.leave();
    leaveTarget();
    sourcePath_.pop(outerPath);
}

/// Begins with the directory in which both cursors are. False when it has been
/// found to have nothing to copy, or not to be readable.
bool TreeCopy::start(bool isOpen) {
    begun();
    TreeLevel level;
    level.outerStart = std::exchange(manager_.startTime_, std::time(nullptr));
    if (isOpen ? goElsewhere(level) : failedDirectory(sourcePath_.get())) {
        // What was listed before the failure is copied all the same.
        if (source_.directory().list(names_, level.entries) != 0)
            failedDirectory(sourcePath_.get());
        listed(level.entries);
        levels_.push_back(std::move(level));
        return true;
    }
    manager_.startTime_ = level.outerStart;
    return false;
}

/// A directory that the pattern names need not be there; one that leads back
/// to where the walk came from would never end. False when nothing is to be done.
bool TreeCopy::goElsewhere(TreeLevel& level) {
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

void TreeCopy::copyEntry(const KazDirectoryEntry& entry) {
    const char* name = entry.name.getValue();
    const bool isDirectory = entry.kind == KazFileKind::Directory;
    const bool isExcluded = manager_.isExcluded(name);
    if (isExcluded || (isDirectory && !recursive_))
        passedOver(entry, isExcluded);
    else if (entry.isNative && isDirectory)
        copySubdirectory(name);
    else if (!entry.isNative || !copyFile(entry))
        failed(sourcePath_.of(name), name);
    else
        copied(name);
}

void TreeCopy::copySubdirectory(const char* name) {
    const bool isEntered = source_.enter(name) == 0;
    const bool isAgain = !isEntered && errno == ELOOP;
    // Below the destination the copy would feed on itself.
    const bool isTarget = isEntered ? source_.getStatus().isSameFile(top_) : wouldBeTarget(name);
    if (isAgain || isTarget) {
        if (isEntered)
            source_.leave();
        failed(sourcePath_.of(name), name);
        return;
    }
    // Even for a source that cannot be entered: its directory is part of the tree that is copied.
    makeTarget(name);
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

void TreeCopy::begun() {
    KAZ_TRACE("files", "copy from directory %s to %s", sourcePath_.get().getValue(),
              targetPath_.get().getValue());
    if (manager_.verbose_)
        KazIODirector::printMsg("Starting copy from '%s' to '%s'.", sourcePath_.get().getValue(),
                                targetPath_.get().getValue());
}

void TreeCopy::passedOver(const KazDirectoryEntry& entry, bool isExcluded) {
    if (isExcluded && manager_.verbose_)
        KazIODirector::printMsg("Skipping '%s'.", entry.name.getValue());
}

void TreeCopy::makeTarget(const char* name) {
    target().makeDirectory(name, 0777);
}

void TreeCopy::enterTarget(const char* name) {
    pushTarget(name);
    // Only the first lost level is tried; leaveTarget counts back to it before it moves the cursor.
    if (lost_ > 0 || target_.enter(name) != 0)
        ++lost_;
}

void TreeCopy::leaveTarget() {
    popTarget();
    if (lost_ > 0)
        --lost_;
    else
        target_.leave();
}

void TreeCopy::popTarget() {
    targetPath_.pop(targetLengths_.back());
    targetLengths_.pop_back();
}

std::time_t TreeCopy::startTime() const {
    return manager_.startTime_;
}

/// Tried as a new file first: most are, and need no look at the target then.
bool TreeCopy::copyFile(const KazDirectoryEntry& entry) {
    KazCopyRules rules;
    if (source_.directory().copyFile(entry, target(), rules) == 0)
        return true;
    // Only a file that was in the way is replaced; every other failure is final.
    const bool taken = errno == EEXIST;
    KazFileStatus existing; // missing also behind a dangling link
    const bool known = target().getStatus(entry.name, existing, true) == 0 || errno == ENOENT;
    if (existing.kind != KazFileKind::Missing && existing.modified >= manager_.startTime_) {
        if (manager_.verbose_)
            KazIODirector::printMsg("Filesystem naming clash on '%s'.", entry.name.getValue());
        return false;
    }
    rules.mayReplace = true;
    // What cannot be looked at may be of this copy's own making, and is left alone.
    return taken && known && source_.directory().copyFile(entry, target(), rules) == 0;
}

void TreeCopy::copied(const char* name) {
    if (manager_.verbose_)
        KazIODirector::printMsg("Copied '%s'.", name);
}

bool TreeCopy::failedDirectory(const KazString& directory) {
    const KazString path = kazDirForDisplay(directory.getValue());
    return failed(path, kazLastFileComponent(path.getValue()).getValue());
}

/// Always false, for use as a result.
bool TreeCopy::failed(const KazString& path, const char* name) {
    manager_.addError(path);
    told(path, name);
    complete_ = false;
    return false;
}

void TreeCopy::told(const KazString&, const char* name) {
    KazIODirector::printMsg("Failed to copy '%s'.", name);
}

} // namespace kaz::detail
