// SPDX-License-Identifier: Apache-2.0
// Copying and deleting are walks with a stack of their own, so that the depth of a tree costs
// memory of the heap and not of the stack. What could not be done is noted and the walk goes on:
// the errors hold one path a line, in the order in which they were met.
//
// A pattern is asked for again in each directory that the walk comes to, with its own directory
// part: that may lead elsewhere, and the level remembers where it has come from.
#include "tools/files/KazFileManager.h"

#include "tools/files/KazDirectory.h"
#include "tools/files/KazTreeCursor.h"
#include "tools/files/detail/TreeCopy.h"
#include "tools/files/detail/TreePlan.h"
#include "tools/files/detail/growing_path.h"
#include "tools/files/detail/pattern.h"
#include "tools/files/detail/text.h"
#include "tools/files/kazpath.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/trace.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::detail {

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
            TreeLevel& level = levels_.back();
            // The reference does not outlive the step into a directory, which may move the levels.
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
        TreeLevel& level = levels_.emplace_back();
        // Kept by length: the path is one text that grows and is cut back.
        level.outerPath = outerPath;
        KAZ_TRACE("files", "remove from directory %s", path_.get().getValue());
        // A pattern without a directory part lists where the walk is. One whose directory is not
        // here leaves the level empty, and the walk goes on.
        if (names_ == pattern_ || goElsewhere(level))
            cursor_.directory().list(names_, level.entries);
    }

    bool goElsewhere(TreeLevel& level) {
        KazString path;
        KazDirectory other = openElsewhere(path_.get(), pattern_, path);
        if (!other.isOpen() || cursor_.jump(std::move(other)) != 0)
            return false;
        // The whole path, because the other place need not lie below this one.
        level.instead = path_.get();
        path_.set(path);
        return true;
    }

    void finish() {
        const std::size_t outerPath = levels_.back().outerPath;
        // Before the cut, which counts from the path as the walk has built it.
        if (!levels_.back().instead.isEmpty())
            path_.set(levels_.back().instead);
        levels_.pop_back();
        if (levels_.empty())
            return;
        // First to the directory above, whose handle is what the removal works with.
        cursor_.leave();
        path_.pop(outerPath);
        const TreeLevel& above = levels_.back();
        removeEmpty(above.entries[above.next - 1]);
    }

    void removeEntry(const KazDirectoryEntry& entry) {
        // What is left out stays. The directories around it are tried all the same, and reported.
        if (manager_.isExcluded(entry.name.getValue()))
            return;
        if (entry.kind != KazFileKind::Directory)
            // A name that cannot be expressed may be another file's name when it goes back to the
            // host.
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
        // Silence costs no path: most removals succeed, and nobody reads of them.
        complete_ = complete_ && removed;
        if (removed && !manager_.verbose_)
            return;
        const KazString path = path_.of(name.getValue());
        if (!removed)
            manager_.addError(path);
        if (manager_.verbose_)
            KazIODirector::printMsg(removed ? success : failure, path.getValue());
    }

    KazFileManager& manager_;
    const char* pattern_;
    const char* names_;
    bool recursive_;
    KazTreeCursor cursor_;
    GrowingPath path_;
    std::vector<TreeLevel> levels_;
    bool complete_ = true;
};

} // namespace kaz::detail

using kaz::detail::TreeCopy;
using kaz::detail::TreePlan;
using kaz::detail::TreeRemoval;

namespace {

/// Names that a copy of the tree can be given; "." and ".." would lead out.
bool isName(const KazString& last) {
    return !last.isEmpty() && last != "." && last != "..";
}

/// Is there nothing of this name, and may a directory be made in its place?
bool canBeMade(const KazDirectory& parent, const KazString& parentPath, const KazString& name) {
    constexpr int writing = 2;
    KazFileStatus status;
    return parent.isOpen() && parent.getStatus(name, status) != 0 && errno == ENOENT &&
           kaz::host::access(parentPath.getValue(), writing) == 0;
}

/// What copyTree opens or makes.
kaz::detail::PlanTop planTop(const KazString& root, const KazString& dest, bool makeTop) {
    kaz::detail::PlanTop top;
    top.path = dest;
    // Nothing is made then, so a destination that is missing stays so.
    if (!makeTop) {
        top.directory = KazDirectory(dest.getValue());
        return top;
    }
    KazString parentPath = dest;
    top.name = kazLastFileComponent(root.getValue());
    if (isName(top.name)) {
        top.path = kaz::detail::joinPath(dest.getValue(), top.name.getValue());
        top.parent = KazDirectory(dest.getValue());
        top.directory = top.parent.openDirectory(top.name);
    } else {
        // A root without a name of its own is copied into the destination itself.
        const KazString path = kazDirForDisplay(dest.getValue());
        top.name = kazLastFileComponent(path.getValue());
        parentPath = kazPathDirPart(path.getValue());
        top.path = kazComposePath(dest, "");
        top.parent = KazDirectory(parentPath.getValue());
        top.directory = KazDirectory(top.path.getValue());
    }
    // Asked by path, since permissions cannot be asked for through a handle.
    top.isMade = canBeMade(top.parent, parentPath, top.name);
    return top;
}

} // namespace

KazFileManager::KazFileManager(KazString root) : root_(root) {}

void KazFileManager::setVerbose(bool verbose) {
    this->verbose_ = verbose;
}

void KazFileManager::setExclusion(KazString name) {
    exclusions_.append('\n');
    exclusions_.append(name);
    exclusions_.append('\n');
}

void KazFileManager::clearExclusions() {
    exclusions_.clear();
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
    // The result stays true: all that was in it is gone, and the errors tell of the rest.
    if (kaz::host::removeDirectory(root_.getValue()) != 0) {
        addError(root_);
        if (verbose_)
            KazIODirector::printMsg("Failed to delete directory '%s'.", root_.getValue());
    }
    return true;
}

bool KazFileManager::destroy(KazString pattern, bool recursive) {
    errors_.clear();
    return TreeRemoval(*this, pattern.getValue(), recursive, root_).run();
}

const KazString& KazFileManager::getErrors() const {
    return errors_;
}

bool KazFileManager::copyTree(const KazString& dest, const char* pattern, bool recursive,
                              bool makeTop) {
    errors_.clear();
    const KazString name = kazLastFileComponent(root_.getValue());
    const bool hasName = makeTop && isName(name);
    KazString target = dest;
    if (hasName)
        target = kaz::detail::joinPath(dest.getValue(), name.getValue());
    else if (makeTop) {
        // Failures do not matter here; what cannot be opened afterwards is reported.
        kaz::host::makeDirectory(dest.getValue(), 0777);
        target = kazComposePath(dest, "");
    }
    KazDirectory opened(hasName ? dest.getValue() : target.getValue());
    if (hasName) {
        // Through the handle, so that what is made is what is opened, even if the path is
        // exchanged.
        opened.makeDirectory(name, 0777);
        opened = opened.openDirectory(name);
    }
    return TreeCopy(*this, pattern, recursive, root_, std::move(opened), target).run();
}

bool KazFileManager::plan(KazString dest, KazString pattern, bool recursive, bool makeTop,
                          void (*visit)(const KazPlannedAction&, void*), void* data) {
    errors_.clear();
    return TreePlan(*this, pattern.getValue(), recursive, root_, planTop(root_, dest, makeTop),
                    visit, data)
        .run();
}

/// Names stand between newlines, so that none is found inside another one.
bool KazFileManager::isExcluded(const char* name) const {
    if (exclusions_.isEmpty())
        return false;
    // Each name has newlines of its own on both sides, so that two neighbours share none.
    const std::string line = std::string("\n") + name + '\n';
    return std::strstr(exclusions_.getValue(), line.c_str()) != nullptr;
}

void KazFileManager::addError(const KazString& path) {
    if (!errors_.isEmpty())
        errors_.append('\n');
    errors_.append(path);
}
