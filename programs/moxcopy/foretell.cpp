// SPDX-License-Identifier: Apache-2.0
// The steps of a copy, as far as they can be seen beforehand: the directories that are
// missing, from the first to the last, then the planned tree against the earlier copy.
// Below a directory that is to be made nothing can be in the way but the copy's own work,
// where names are not told apart by case: of those that are one name there, the first is
// copied, and each later one is a failure, a directory with all that is in it.
#include "foretell.h"

#include "made_directories.h"
#include "names.h"
#include "owner.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <set>
#include <system_error>
#include <utility>

namespace {

std::string reasonOf(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

/// The planned tree and the earlier copy, walked at once.
class Foretelling {
public:
    Foretelling(const Plan& plan, const CopyOptions& options, const KazDirectory& source)
        : plan_(plan), options_(options), source_(source.openSelf()), target_(KazDirectory()) {}

    bool run() {
        std::vector<KazString> missing;
        const KazDirectory around = openNearest(options_.target, missing);
        if (copiesNothing())
            failures_ = 0; // and nothing is made
        else if (!around.isOpen() ||
                 (!missing.empty() && !mayMake(options_.target, missing.size())))
            failAll(options_.destination(), errno);
        else {
            ignoresCase_ = around.ignoresCase();
            walk(missing.empty() ? around.openSelf() : KazDirectory(), missing);
        }
        for (const Failure& failure : plan_.failures.first())
            fail(inDestination(failure.path), failure.reason.getValue());
        failures_ += plan_.failures.count() - plan_.failures.first().size();
        print();
        print_msg("plan: %zu directories, %zu files, %ju bytes; %zu replaced, %zu failures",
                  directories_, files_, bytes_, replaced_, failures_);
        return failures_ == 0;
    }

private:
    /// The copy does not even begin.
    bool copiesNothing() const {
        return plan_.fileCount == 0 && (options_.isRestricted() || !plan_.failures.isEmpty());
    }

    /// A copy none of whose files can be read is thrown away, its directories too.
    void print() {
        // Known at the end only, so the lines are kept until here.
        const bool isThrownAway = readable_ == 0 && failures_ > 0;
        if (isThrownAway)
            directories_ = 0;
        for (const KazString& line : lines_)
            if (!isThrownAway || line.find("make ") != 0)
                print_msg("%s", line.getValue());
    }

    /// A directory of the destination on the way down. Where it is there, target_ is in it.
    struct Level {
        KazString path;
        std::set<KazString> met;   ///< what is planned for it, by asOneName()
        std::set<KazString> taken; ///< what the copy will have there of its own
        bool isThere = false;
        bool isLost = false;    ///< nothing can be moved into it
        bool isClash = false;   ///< it is not even copied
        bool isEntered = false; ///< source_ is in the directory of the system
    };

    /// Names that are one name at the destination become one.
    KazString asOneName(const KazString& name) const {
        return ignoresCase_ ? KazDirectory::withoutCase(name) : name;
    }

    /// May a directory be made in the nearest one around that is there?
    static bool mayMake(KazString path, std::size_t levels) {
        for (; levels > 0; --levels)
            path = kazPathDirPart(kazDirForDisplay(path));
        return isWritable(path);
    }

    static bool isWritable(const KazString& path) {
        constexpr int writing = 2;
        return TI_access(path, writing) == 0 ||
               (errno != EACCES && errno != EPERM && errno != EROFS);
    }

    void walk(KazDirectory target, const std::vector<KazString>& missing) {
        KazString path = options_.target;
        for (std::size_t i = 0; i < missing.size(); ++i)
            path = kazPathDirPart(kazDirForDisplay(path));
        for (auto name = missing.rbegin(); name != missing.rend(); ++name) {
            path = joined(kazDirForDisplay(path), *name);
            make(path);
        }
        const bool isThere = target.isOpen();
        target_ = KazTreeCursor(std::move(target));
        Level top{options_.target, {}, {}, isThere, false, false, false};
        for (const PlannedDirectory& directory : plan_.directories)
            enter(directory, top);
        while (!levels_.empty())
            leave();
    }

    void enter(const PlannedDirectory& directory, Level& top) {
        while (static_cast<int>(levels_.size()) > directory.depth)
            leave();
        const KazString& name = directory.depth == 0 ? options_.system : directory.name;
        Level& above = levels_.empty() ? top : levels_.back();
        // Also of what fails below: what is planned is no part of the rest that is kept.
        above.met.insert(asOneName(name));
        Level level{joined(above.path, name), {}, {}, false, above.isLost, above.isClash, false};
        if (!level.isClash && !above.taken.insert(asOneName(name)).second) {
            level.isLost = level.isClash = true;
            fail(shown(level.path), reasonOf(EEXIST));
        }
        if (!level.isLost)
            open(above, name, level);
        level.isEntered = directory.depth > 0 && source_.enter(name) == 0;
        levels_.push_back(std::move(level));
        if (!levels_.back().isClash)
            for (const KazDirectoryEntry& file : directory.files)
                foretellFile(file);
    }

    /// One failure for a directory, whatever is in it.
    void open(const Level& above, const KazString& name, Level& level) {
        KazFileStatus status;
        const bool isTaken = above.isThere && target_.directory().getStatus(name, status) == 0;
        level.isThere = isTaken && target_.enter(name) == 0;
        int reason = isTaken && !level.isThere ? errno : 0;
        if (!isTaken && above.isThere && !isWritable(above.path))
            reason = errno;
        level.isLost = reason != 0;
        if (level.isLost)
            fail(shown(level.path), reasonOf(reason));
        else if (!level.isThere)
            make(level.path);
    }

    void leave() {
        const Level level = std::move(levels_.back());
        levels_.pop_back();
        if (level.isEntered)
            source_.leave();
        if (!level.isThere)
            return;
        keepRest(level);
        target_.leave();
    }

    /// What only the earlier copy has, in order.
    void keepRest(const Level& level) {
        std::vector<KazString> directories;
        keepFiles(target_.directory(), level.path, level.met, directories);
        for (const KazString& name : directories)
            keepTree(target_.directory().openDirectory(name), joined(level.path, name));
    }

    /// Its directories become @p directories.
    void keepFiles(const KazDirectory& directory, const KazString& path,
                   const std::set<KazString>& met, std::vector<KazString>& directories) {
        std::vector<KazDirectoryEntry> entries;
        directory.list("*", entries);
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
        for (const KazDirectoryEntry& entry : entries) {
            if (met.contains(asOneName(entry.name)))
                continue;
            if (entry.kind != KazFileKind::Directory)
                lines_.push_back("keep " + shownEntry(path, entry.name));
            else if (!isStaging(directory, entry))
                directories.push_back(entry.name);
        }
    }

    /// Without recursion: an earlier copy may be of any depth.
    void keepTree(KazDirectory top, const KazString& path) {
        KazTreeCursor cursor(std::move(top));
        std::vector<std::vector<KazString>> pending;
        const auto list = [&] {
            std::vector<KazString>& names = pending.emplace_back();
            keepFiles(cursor.directory(), joined(path, cursor.getPath()), {}, names);
            // Names are taken from the back.
            std::reverse(names.begin(), names.end());
        };
        list();
        while (!pending.empty()) {
            if (pending.back().empty()) {
                pending.pop_back();
                cursor.leave();
                continue;
            }
            const KazString name = pending.back().back();
            pending.back().pop_back();
            if (cursor.enter(name) == 0)
                list();
        }
    }

    void make(const KazString& path) {
        ++directories_;
        lines_.push_back("make " + shown(path));
    }

    void foretellFile(const KazDirectoryEntry& file) {
        Level& level = levels_.back();
        const KazString name = asOneName(file.name);
        level.met.insert(name);
        const KazString path = shownEntry(level.path, file.name);
        std::uintmax_t size = 0;
        if (const int reason = readFailure(file, size); reason != 0)
            return fail(path, reasonOf(reason));
        if (!level.taken.insert(name).second)
            return fail(path, reasonOf(EEXIST));
        ++readable_;
        if (level.isLost)
            return;
        KazFileStatus existing;
        const bool isThere =
            level.isThere && target_.directory().getStatus(file.name, existing) == 0;
        if (isThere && existing.kind == KazFileKind::Directory)
            return fail(path, reasonOf(EISDIR));
        if (level.isThere && !isWritable(level.path))
            return fail(path, reasonOf(errno));
        lines_.push_back((isThere ? "replace " : "copy ") + path + " " +
                         std::to_string(size).c_str());
        ++files_;
        replaced_ += isThere ? 1 : 0;
        bytes_ += size;
    }

    /// Why the copy could not read it, an errno value: as the copy finds out, links are
    /// followed, and no pipe or device is opened.
    int readFailure(const KazDirectoryEntry& file, std::uintmax_t& size) const {
        constexpr int reading = 4;
        const KazDirectory& directory = source_.directory();
        KazFileStatus status;
        if (directory.getStatus(file.name, status, file.kind == KazFileKind::Link) != 0)
            return errno;
        size = status.size;
        if (status.kind != KazFileKind::File)
            return status.kind == KazFileKind::Directory ? EISDIR : EINVAL;
        const KazString path = joined(joined(options_.source, source_.getPath()), file.name);
        return TI_access(path, reading) != 0 && errno == EACCES ? EACCES : 0;
    }

    void fail(const KazString& path, const std::string& reason) {
        ++failures_;
        lines_.push_back("fail " + path + " (" + reason.c_str() + ")");
    }

    void failAll(const KazString& path, int reason) { fail(shown(path), reasonOf(reason)); }

    /// What could not be listed is shown where it would have been copied to.
    KazString inDestination(const KazString& path) const {
        const KazString from = shown(options_.source);
        return path.find(from) == 0
                   ? shown(options_.destination()) + path.subStringFrom(from.getLength())
                   : path;
    }

    const Plan& plan_;
    const CopyOptions& options_;
    KazTreeCursor source_;
    KazTreeCursor target_;
    std::vector<Level> levels_;
    std::vector<KazString> lines_;
    bool ignoresCase_ = false;
    std::size_t readable_ = 0; ///< files
    std::size_t directories_ = 0;
    std::size_t files_ = 0;
    std::size_t replaced_ = 0;
    std::size_t failures_ = 0;
    std::uintmax_t bytes_ = 0;
};

} // namespace

bool foretell(const Plan& plan, const CopyOptions& options, const KazDirectory& source) {
    return Foretelling(plan, options, source).run();
}
