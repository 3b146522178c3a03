// SPDX-License-Identifier: Apache-2.0
// A cursor holds the handles of its last levels, of the top, and of levels that could
// not be found again by "..". All other levels are a name and an identity. The same
// identity never stands twice on the way from the top, so that no walk is endless.
#include "tools/files/KazTreeCursor.h"

#include "tools/files/detail/text.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kaz::detail {

class CursorLevels {
public:
    struct Level {
        KazDirectory directory;
        KazFileStatus status;
        std::size_t name = 0;  ///< where its name begins in the path
        bool isPinned = false; ///< keeps its handle
        bool isKnown = false;  ///< its identity is among the known ones
    };

    explicit CursorLevels(KazDirectory top) {
        Level level;
        // A top that tells no status stays closed; every entering then fails with EBADF.
        if (top.getStatus(level.status) == 0) {
            level.isKnown = know(level.status);
            level.directory = std::move(top);
        }
        levels_.push_back(std::move(level));
    }

    const Level& last() const { return levels_.back(); }
    std::size_t depth() const { return levels_.size() - 1; }

    KazString path() const {
        std::string result;
        // The top has no name: paths are relative to it.
        for (std::size_t i = 1; i < levels_.size(); ++i)
            (result += i > 1 ? "\\" : "") += nameOf(i);
        return toText(result);
    }

    int enter(const char* name) {
        Level level;
        level.directory = last().directory.openDirectory(name);
        if (!level.directory.isOpen() || level.directory.getStatus(level.status) != 0)
            return -1;
        level.name = names_.size();
        // Before the name and the identity: dropLast undoes all three, and nothing else does.
        levels_.push_back(std::move(level));
        try {
            names_ += name;
            levels_.back().isKnown = know(last().status);
        } catch (...) {
            dropLast();
            throw;
        }
        if (!last().isKnown) {
            dropLast();
            return fail(ELOOP);
        }
        // Last, when nothing can fail any more.
        closeFurtherUp();
        return 0;
    }

    int leave() {
        if (levels_.size() == 1)
            return fail(EINVAL);
        const KazDirectory left = dropLast();
        Level& above = levels_.back();
        if (above.directory.isOpen())
            return 0;
        // By ".." first, which works at any depth. Whether it leads back has to be looked at, as
        // the directory may have been moved meanwhile.
        above.directory = left.openParent();
        if (isItself(above))
            return 0;
        // By names then: from the last handle that is held, at most as many steps as are closed.
        above.directory = fromTop();
        return isItself(above) ? 0 : fail(ENOENT);
    }

    int jump(KazDirectory other) {
        Level& level = levels_.back();
        KazFileStatus status;
        if (other.getStatus(status) != 0)
            return -1;
        // First, so that a jump to where the cursor is already counts as no loop.
        forget(level);
        // Closed before it is known whether the jump is allowed: a refused one leaves nothing to
        // read.
        level.directory.close();
        level.isKnown = know(status);
        if (!level.isKnown)
            return fail(ELOOP);
        level.directory = std::move(other);
        level.status = status;
        // ".." of the new place leads elsewhere, so neither it nor the level above is found again.
        level.isPinned = true;
        if (levels_.size() > 1)
            levels_[levels_.size() - 2].isPinned = true;
        return 0;
    }

private:
    using Identity = std::pair<std::uint64_t, std::uint64_t>;

    /// Levels that keep their handles, beside the top.
    // More would cost handles, of which a process has few; fewer would open directories again at
    // each step up.
    static constexpr std::size_t window = 16;

    static int fail(int number) {
        errno = number;
        return -1;
    }

    static Identity identityOf(const KazFileStatus& status) {
        return {status.device, status.serial};
    }

    bool know(const KazFileStatus& status) { return known_.insert(identityOf(status)).second; }

    void forget(Level& level) {
        if (level.isKnown)
            known_.erase(identityOf(level.status));
        level.isKnown = false;
    }

    KazDirectory dropLast() {
        Level& level = levels_.back();
        forget(level);
        // Shrinking takes no memory, so this is safe while an exception is on its way.
        names_.resize(level.name);
        KazDirectory directory = std::move(level.directory);
        levels_.pop_back();
        return directory;
    }

    std::string nameOf(std::size_t level) const {
        const std::size_t end =
            level + 1 < levels_.size() ? levels_[level + 1].name : names_.size();
        return names_.substr(levels_[level].name, end - levels_[level].name);
    }

    void closeFurtherUp() {
        // One is closed for each that is opened; the top is never reached.
        if (levels_.size() <= window + 1)
            return;
        Level& level = levels_[levels_.size() - 1 - window];
        if (!level.isPinned)
            level.directory.close();
    }

    /// Closes what is not the directory that the level was.
    static bool isItself(Level& level) {
        KazFileStatus status;
        const bool same = level.directory.getStatus(status) == 0 && status.isSameFile(level.status);
        if (!same)
            level.directory.close();
        return same;
    }

    /// The last level, by its names from the last one above whose handle is open.
    KazDirectory fromTop() const {
        std::size_t i = levels_.size() - 1;
        // Ends at the top at the latest, which keeps its handle.
        while (i > 0 && !levels_[i - 1].directory.isOpen())
            --i;
        if (i == 0)
            return KazDirectory();
        KazDirectory found = levels_[i - 1].directory.openDirectory(nameOf(i).c_str());
        while (++i < levels_.size() && found.isOpen())
            found = found.openDirectory(nameOf(i).c_str());
        return found;
    }

    std::vector<Level> levels_; ///< the top is the first
    std::string names_;         ///< of all levels, one behind the other
    std::set<Identity> known_;  ///< of the levels
};

namespace {

/// One walk. The names still to be entered are kept for each level on the way.
class Walk {
public:
    using Visit = std::function<bool(const KazDirectoryEntry&)>;

    Walk(KazTreeCursor& cursor, const Visit& visit) : cursor_(cursor), visit_(visit) {}

    int run() {
        list();
        for (;;) {
            // A loop and no recursion, since trees may be deeper than the stack.
            if (!pending_.back().empty())
                enterNext();
            else if (pending_.size() > 1)
                leave();
            else
                break;
        }
        // What went wrong first; what follows from it would tell less.
        errno = reason_;
        return reason_ == 0 ? 0 : -1;
    }

private:
    void note(int result) {
        if (result != 0 && reason_ == 0)
            reason_ = errno;
    }

    void list() {
        std::vector<KazDirectoryEntry> entries;
        note(cursor_.directory().list("*", entries));
        // Only the names of directories are kept, so that a wide level costs no more than it has
        // to.
        std::vector<KazString>& names = pending_.emplace_back();
        for (const KazDirectoryEntry& entry : entries)
            if (visit_(entry) && entry.kind == KazFileKind::Directory)
                names.push_back(entry.name);
    }

    void enterNext() {
        // A copy, because list() adds a level and may move this one.
        const KazString name = pending_.back().back();
        pending_.back().pop_back();
        if (const int result = cursor_.enter(name); result != 0)
            note(result);
        else
            list();
    }

    void leave() {
        pending_.pop_back();
        note(cursor_.leave());
    }

    KazTreeCursor& cursor_;
    const Visit& visit_;
    std::vector<std::vector<KazString>> pending_;
    int reason_ = 0;
};

} // namespace

} // namespace kaz::detail

using kaz::detail::CursorLevels;

KazTreeCursor::KazTreeCursor(KazDirectory top)
    : levels_(std::make_unique<CursorLevels>(std::move(top))) {}

KazTreeCursor::KazTreeCursor(KazTreeCursor&& other) noexcept = default;
KazTreeCursor& KazTreeCursor::operator=(KazTreeCursor&& other) noexcept = default;
KazTreeCursor::~KazTreeCursor() = default;

const KazDirectory& KazTreeCursor::directory() const {
    return levels_->last().directory;
}

const KazFileStatus& KazTreeCursor::getStatus() const {
    return levels_->last().status;
}

int KazTreeCursor::getDepth() const {
    return static_cast<int>(levels_->depth());
}

KazString KazTreeCursor::getPath() const {
    return levels_->path();
}

int KazTreeCursor::enter(const char* name) {
    return levels_->enter(name);
}

int KazTreeCursor::leave() {
    return levels_->leave();
}

int KazTreeCursor::jump(KazDirectory other) {
    return levels_->jump(std::move(other));
}

int KazTreeCursor::walk(const std::function<bool(const KazDirectoryEntry&)>& visit) {
    return kaz::detail::Walk(*this, visit).run();
}
