// SPDX-License-Identifier: Apache-2.0
// The plan is carried out in its order, which is that of a walk: a directory comes before what is
// in it. Directories are open to their owner while they are filled, and get the permissions of
// their source when nothing is to be made in them any more. A full disk ends the work, since each
// further file would only fail again; every other failure is noted and passed over.
#include "copy.h"

#include "director.h"
#include "names.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace {

/// What a directory needs of its owner's permissions while it is filled.
constexpr unsigned ownersBits = 0700;

/// Two cursors that follow the plan. A directory that cannot be entered on either side
/// is one failure, and what is planned below it is passed over.
class Copier {
public:
    Copier(const Plan& plan, KazDirectory source, const KazString& path, KazTreeCursor target,
           const KazString& name, KazProgressHandle& progress)
        : plan_(plan),
          path_(path),
          name_(name),
          source_(std::move(source)),
          target_(std::move(target)),
          progress_(progress) {}

    CopyResult run() {
        for (const PlannedDirectory& directory : plan_.directories)
            if (!result_.diskFull)
                copyDirectory(directory);
        while (!entered_.empty())
            leave();
        if (!result_.diskFull)
            progress_.increment(100, true);
        return std::move(result_);
    }

private:
    void copyDirectory(const PlannedDirectory& directory) {
        // The plan goes on beside or above the last directory: those in between are finished.
        while (static_cast<int>(entered_.size()) > directory.depth)
            leave();
        // Otherwise a directory above could not be entered, which has been told for all below.
        const bool isAbove = static_cast<int>(entered_.size()) == directory.depth;
        if (isAbove && enter(directory))
            copyFiles(directory.files);
        progress_.checkCancel();
    }

    /// Fails once for the directory, whatever is in it.
    bool enter(const PlannedDirectory& directory) {
        const KazString& name = directory.depth == 0 ? name_ : directory.name;
        if (directory.depth > 0 && source_.enter(name) != 0)
            return fail(name);
        // The cursors go down together or not at all.
        if (target_.directory().makeDirectory(name, directory.mode | ownersBits) != 0 ||
            target_.enter(name) != 0) {
            const int reason = errno;
            leaveSource(directory.depth);
            errno = reason;
            return fail(name);
        }
        entered_.push_back(&directory);
        return true;
    }

    void leaveSource(int depth) {
        if (depth > 0)
            source_.leave();
    }

    /// Nothing is to be made in it any more: it may be closed as its source is.
    void leave() {
        const PlannedDirectory& directory = *entered_.back();
        const KazString& name = directory.depth == 0 ? name_ : directory.name;
        const unsigned closed = ownersBits & ~directory.mode;
        // The target's, which the mask has cut, less what its source does not have.
        const unsigned mode = target_.getStatus().mode;
        entered_.pop_back();
        leaveSource(directory.depth);
        target_.leave();
        if (closed != 0 && target_.directory().setMode(name, mode & ~closed) != 0)
            fail(name);
    }

    void copyFiles(const std::vector<KazDirectoryEntry>& files) {
        for (const KazDirectoryEntry& file : files) {
            if (result_.diskFull)
                break;
            copyFile(file);
            progress_.increment(100.0 / static_cast<double>(plan_.fileCount), false);
        }
    }

    void copyFile(const KazDirectoryEntry& file) {
        std::uint64_t size = 0;
        KazCopyRules rules;
        rules.size = &size;
        // Nobody reads the staging directory, so a file need not come whole under another name
        // first.
        rules.inPlace = rules.cutByMask = true;
        rules.goesOn = [] { return !KazInterruptWatch::isStopped(); };
        if (source_.directory().copyFile(file, target_.directory(), rules) != 0) {
            fail(file.name);
            return;
        }
        ++result_.files;
        result_.bytes += size;
        if (CopyDirector::isCommenting())
            progress_.msg(1, localText(texts::copied),
                          shown(joined(source_.getPath(), file.name)).getValue());
    }

    /// Always false. What a signal has ended is no failure of the file.
    bool fail(const KazString& name) {
        const int reason = errno;
        progress_.checkCancel();
        result_.fail(shownEntry(joined(path_, source_.getPath()), name), reason);
        return false;
    }

    const Plan& plan_;
    const KazString& path_;
    const KazString& name_;
    KazTreeCursor source_;
    KazTreeCursor target_;
    KazProgressHandle& progress_;
    std::vector<const PlannedDirectory*> entered_;
    CopyResult result_;
};

bool meansFullDisk(const std::error_code& error) {
    return error == std::errc::no_space_on_device || error == std::errc::file_too_large;
}

} // namespace

void CopyResult::fail(const KazString& path, int errorNumber) {
    const std::error_code error(errorNumber, std::generic_category());
    failures.add(path, error.message().c_str());
    diskFull = diskFull || meansFullDisk(error);
}

CopyResult copyPlanned(const Plan& plan, KazDirectory source, const KazString& path,
                       const KazDirectory& destination, const KazString& name,
                       KazProgressHandle& progress) {
    return Copier(plan, std::move(source), path, KazTreeCursor(destination.openSelf()), name,
                  progress)
        .run();
}
