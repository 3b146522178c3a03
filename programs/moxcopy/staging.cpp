#include "staging.h"

#include "names.h"
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

bool reportFailure(const KazString& path, int errorNumber) {
    print_err("Cannot write '%s': %s", path.getValue(),
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
    makeTarget(target);
    // Inside an earlier copy the temporary directory is on its file system even
    // where that is not the target's.
    temporary_ = TI_tmpdir(destinationExists_ ? destination_ : target, ".moxcopy");
    if (temporary_.isEmpty())
        return reportFailure(destination_, errno);
    directory_ = joined(temporary_, system);
    return TI_mkdir(directory_, 0777) == 0 || reportFailure(directory_, errno);
}

/// Notes which directories are missing, so that they can be removed again.
void Staging::makeTarget(const KazString& target) {
    for (KazString path = target; !path.isEmpty() && !exists(path);
         path = kazDirForDisplay(kazPathDirPart(path)))
        madeDirectories_.push_back(path);
    TI_makedir(target);
}

void Staging::commit(CopyResult& result) {
    if (destinationExists_)
        moveFiles(result);
    else if (const int error = rename(directory_, destination_); error != 0) {
        result.fail(destination_, error);
        result.files.clear();
        return;
    }
    if (!result.files.empty() || !destinationExists_)
        madeDirectories_.clear();
}

void Staging::moveFiles(CopyResult& result) {
    for (const KazString& relative : result.directories)
        enter(relative, result);
    std::erase_if(result.files, [&](const CopiedFile& file) {
        const KazString target = joined(destination_, file.relative);
        const int error = rename(joined(directory_, file.relative), target);
        if (error != 0)
            result.fail(target, error);
        return error != 0;
    });
}

/// A link in place of a directory would lead out of the copy.
bool Staging::enter(const KazString& relative, CopyResult& result) {
    const KazString path = joined(destination_, relative);
    if (relative.isEmpty() || TI_isRealDirectory(path) || TI_mkdir(path, 0777) == 0)
        return true;
    result.fail(path, errno);
    return false;
}

void Staging::discard() {
    if (!temporary_.isEmpty()) {
        KazFileManager leftover(temporary_);
        leftover.destroy(true);
        if (!leftover.getErrors().isEmpty())
            print_err("Cannot remove:\n%s", leftover.getErrors().getValue());
        temporary_.clear();
    }
    for (const KazString& path : std::exchange(madeDirectories_, {})) {
        std::error_code ignored; // Somebody else may use it by now.
        fs::remove(hostPath(path), ignored);
    }
}
