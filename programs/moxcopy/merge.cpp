// SPDX-License-Identifier: Apache-2.0
// A finished copy is moved, not copied, from where it was made: what is new in the target is
// renamed as a whole, and only directories that are there already are gone into. So the moment in
// which the target is neither old nor new is short. Between two file systems nothing can be
// renamed, and files are copied one by one instead.
//
// What cannot be moved counts as not copied: it is taken off the sums, and told.
#include "merge.h"

#include "names.h"
#include "owner.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace {

/// Files and their bytes.
struct Amount {
    std::size_t files = 0;
    std::uintmax_t bytes = 0;
};

/// Calls @p visit(directory, entry) for each entry below a directory that is no
/// directory.
template <typename Visit>
void forEachFile(KazDirectory top, Visit visit) {
    KazTreeCursor cursor(std::move(top));
    cursor.walk([&](const KazDirectoryEntry& entry) {
        if (entry.kind == KazFileKind::Directory)
            return !isStaging(cursor.directory(), entry);
        visit(cursor.directory(), entry);
        return false;
    });
}

Amount amountIn(KazDirectory top) {
    Amount amount;
    forEachFile(std::move(top), [&](const KazDirectory& directory, const KazDirectoryEntry& entry) {
        KazFileStatus status;
        directory.getStatus(entry.name, status);
        ++amount.files;
        amount.bytes += status.size;
    });
    return amount;
}

std::size_t filesIn(KazDirectory top) {
    std::size_t count = 0;
    forEachFile(std::move(top), [&](auto&&, auto&&) { ++count; });
    return count;
}

/// One walk through both trees at once.
class Merge {
public:
    Merge(KazDirectory from, KazDirectory to, const KazString& path, CopyResult& result)
        : from_(std::move(from)), to_(std::move(to)), path_(path), result_(result) {}

    /// @p mayMerge: there is an earlier copy, into which the new one goes.
    void run(const KazString& name, bool mayMerge) {
        moveDirectory(name, mayMerge);
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next == level.entries.size()) {
                leave();
                continue;
            }
            // A copy, since a new level may move this one.
            const KazDirectoryEntry entry = level.entries[level.next++];
            if (entry.kind == KazFileKind::Directory)
                moveDirectory(entry.name, true);
            else
                moveFile(entry);
        }
    }

private:
    struct Level {
        std::vector<KazDirectoryEntry> entries;
        std::size_t next = 0;
        KazString name;
        unsigned mode = 0;  ///< of the copied directory
        bool isNew = false; ///< the directory of the destination gets that mode
    };

    static bool isClosed(unsigned mode) { return (mode & 0700) != 0700; }

    /// Moves one directory: as a whole, or by going into it. It is open to its owner
    /// meanwhile.
    void moveDirectory(const KazString& name, bool mayMerge) {
        KazFileStatus status;
        const KazDirectory& from = from_.directory();
        const KazDirectory& to = to_.directory();
        from.getStatus(name, status);
        // A directory that its owner may not write to can be moved by none but the superuser, as
        // its
        // ".." changes.
        if (isClosed(status.mode))
            from.setMode(name, status.mode | 0700);
        // Asked beforehand: a rename that is refused takes the system a time that grows with
        // the depth (20,000 levels: 150 s in all).
        KazFileStatus earlier;
        const bool isThere = mayMerge && to.getStatus(name, earlier) == 0;
        const bool isMoved = !isThere && from.rename(name, to, name, false) == 0;
        int reason = isThere || isMoved ? 0 : errno;
        bool isNew = isMoved;
        // Another file system: a new directory, which is filled and then closed as the copied one.
        if (reason == EXDEV) {
            isNew = to.makeDirectory(name, status.mode | 0700) == 0;
            reason = isNew || (errno == EEXIST && mayMerge) ? 0 : errno;
        } else if (reason == EEXIST && mayMerge)
            reason = 0;
        if (reason != 0)
            failDirectory(name, reason);
        else if (!isMoved)
            enter(name, status.mode, isNew);
        else if (isClosed(status.mode))
            to.setMode(name, status.mode);
    }

    void enter(const KazString& name, unsigned mode, bool isNew) {
        if (to_.enter(name) != 0) {
            failDirectory(name, errno);
            return;
        }
        if (from_.enter(name) != 0) {
            const int reason = errno;
            // The cursors stay level, or all that follows would go to a wrong place.
            to_.leave();
            failDirectory(name, reason);
            return;
        }
        Level& level = levels_.emplace_back();
        level.name = name;
        level.mode = mode;
        level.isNew = isNew;
        if (from_.directory().list("*", level.entries) != 0)
            result_.fail(shown(place()), errno);
    }

    void leave() {
        // Copied out, because the level goes before its directory gets its mode.
        const Level level = std::move(levels_.back());
        levels_.pop_back();
        from_.leave();
        to_.leave();
        if (level.isNew && isClosed(level.mode))
            to_.directory().setMode(level.name, level.mode);
    }

    KazString place() const { return joined(path_, from_.getPath()); }

    /// Replaces an earlier file of that name: the user has been asked by now.
    void moveFile(const KazDirectoryEntry& entry) {
        const KazString& name = entry.name;
        const KazDirectory& from = from_.directory();
        if (from.rename(name, to_.directory(), name, true) == 0)
            return;
        KazCopyRules rules;
        rules.mayReplace = true;
        if (errno == EXDEV && from.copyFile(entry, to_.directory(), rules) == 0)
            return;
        const int reason = errno;
        KazFileStatus status;
        // The sums counted it as copied.
        from.getStatus(name, status);
        take({1, status.size});
        result_.fail(shownEntry(place(), name), reason);
    }

    /// One failure for all that is in it.
    void failDirectory(const KazString& name, int reason) {
        take(amountIn(from_.directory().openDirectory(name)));
        result_.fail(shownEntry(place(), name), reason);
    }

    void take(Amount amount) {
        // Never below zero: somebody may have put files into the staging directory meanwhile.
        result_.files -= std::min(amount.files, result_.files);
        result_.bytes -= std::min(amount.bytes, result_.bytes);
    }

    KazTreeCursor from_;
    KazTreeCursor to_;
    const KazString& path_;
    CopyResult& result_;
    std::vector<Level> levels_;
};

} // namespace

std::size_t moveIntoPlace(const KazDirectory& staging, const KazDirectory& target,
                          const KazString& name, const KazString& path, bool isOver,
                          CopyResult& result) {
    Merge(staging.openSelf(), target.openSelf(), path, result).run(name, isOver);
    const std::size_t all = isOver ? filesIn(target.openDirectory(name)) : 0;
    return all - std::min(all, result.files);
}
