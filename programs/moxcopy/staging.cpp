#include "staging.h"

#include "names.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

constinit Staging* Staging::active_ = nullptr;

namespace {

bool exists(const KazString& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(hostPath(path), ignored));
}

/// 0 or the number of the error.
int rename(const KazString& from, const KazString& to) {
    std::error_code error;
    fs::rename(hostPath(from), hostPath(to), error);
    return error.value();
}

/// The directory part of a path below the destination.
KazString parentOf(const KazString& relative) {
    return relative.subStringBefore(relative.findLast('\\'));
}

/// Removes a directory with everything in it.
bool destroyed(const KazString& path) {
    try {
        KazFileManager manager(path);
        manager.destroy(true);
        return manager.getErrors().isEmpty();
    } catch (const KazMemoryException&) {
        return false;
    }
}

bool reportFailure(const KazString& path, int errorNumber) {
    print_err(localText(texts::cannotWrite), shown(path).getValue(),
              std::generic_category().message(errorNumber).c_str());
    return false;
}

} // namespace

Staging::Staging() {
    active_ = this;
}

Staging::~Staging() {
    discard();
    active_ = nullptr;
}

void Staging::discardAll() {
    if (active_ != nullptr)
        active_->discard();
}

bool Staging::open(const KazString& target, const KazString& system) {
    destination_ = kazComposePath(target, system);
    destinationExists_ = exists(destination_);
    if (makeTarget(target) != 0)
        return reportFailure(destination_, errno);
    // Inside an earlier copy the temporary directory is on its file system even
    // where that is not the target's.
    temporary_ = TI_tmpdir(destinationExists_ ? destination_ : target, ".moxcopy");
    if (temporary_.isEmpty())
        return reportFailure(destination_, errno);
    directory_ = joined(temporary_, system);
    return TI_mkdir(directory_, 0777) == 0 || reportFailure(directory_, errno);
}

/// Notes which directories are missing, so that they can be removed again. 0, or -1
/// with errno set.
int Staging::makeTarget(const KazString& target) {
    KazString path = target;
    while (!path.isEmpty() && !exists(path)) {
        madeDirectories_.push_back(path);
        const KazString parent = kazDirForDisplay(kazPathDirPart(path));
        path = parent == path ? KazString() : parent; // a root that does not exist
    }
    return TI_makedir(target);
}

void Staging::commit(CopyResult& result) {
    if (destinationExists_)
        moveFiles(result);
    else if (const int error = rename(directory_, destination_); error != 0) {
        result.fail(destination_, error);
        result.files.clear();
        return;
    }
    madeDirectories_.clear();
}

void Staging::moveFiles(CopyResult& result) {
    for (const KazString& relative : result.directories)
        enter(relative, result);
    std::erase_if(result.files, [&](const CopiedFile& file) {
        const KazString target = joined(destination_, file.relative);
        const int error = enter(parentOf(file.relative), result)
                              ? rename(joined(directory_, file.relative), target)
                              : ENOTDIR;
        if (error != 0)
            result.fail(target, error);
        return error != 0;
    });
}

/// Makes sure of a directory of the earlier copy and of those above it. A link
/// in place of one would lead out of the copy and is refused, with all below it.
bool Staging::enter(const KazString& relative, CopyResult& result) {
    if (relative.isEmpty())
        return true;
    if (const auto known = entered_.find(relative); known != entered_.end())
        return known->second;
    bool& entered = entered_[relative];
    if (!enter(parentOf(relative), result))
        return false;
    const KazString path = joined(destination_, relative);
    entered = TI_isRealDirectory(path) || TI_mkdir(path, 0777) == 0;
    if (!entered)
        result.fail(path, errno);
    return entered;
}

void Staging::discard() {
    if (!temporary_.isEmpty()) {
        // What made the run fail may have been a lack of memory that is over now.
        if (!destroyed(temporary_) && !destroyed(temporary_))
            print_err(localText(texts::cannotRemove), shown(temporary_).getValue());
        temporary_.clear();
    }
    for (const KazString& path : std::exchange(madeDirectories_, {})) {
        std::error_code ignored; // Somebody else may use it by now.
        fs::remove(hostPath(path), ignored);
    }
}
