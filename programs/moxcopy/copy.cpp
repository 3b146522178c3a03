#include "copy.h"

#include "names.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <cerrno>
#include <system_error>

namespace {

class Copier {
public:
    Copier(const Plan& plan, const KazString& source, const KazString& destination,
           KazProgressHandle& progress)
        : plan_(plan), source_(source), destination_(destination), progress_(progress) {}

    CopyResult run() {
        for (const PlannedDirectory& directory : plan_.directories)
            if (!result_.diskFull)
                copyDirectory(directory);
        if (!result_.diskFull)
            progress_.increment(100, true);
        return std::move(result_);
    }

private:
    void copyDirectory(const PlannedDirectory& directory) {
        if (TI_makedir(joined(destination_, directory.relative)) != 0)
            fail(directory.relative);
        else
            result_.directories.push_back(directory.relative);
        progress_.checkCancel();
        if (directory.files.empty())
            return;
        const auto count = static_cast<double>(directory.files.size());
        progress_.startSubProgress(100.0 * count / static_cast<double>(plan_.fileCount),
                                   static_cast<int>(directory.files.size()));
        for (const KazString& name : directory.files) {
            if (result_.diskFull)
                break;
            copyFile(joined(directory.relative, name));
            progress_.increment(100.0 / count, false);
        }
        progress_.endSubProgress();
    }

    void copyFile(const KazString& relative) {
        const KazString target = joined(destination_, relative);
        if (copy_file(joined(source_, relative), target, false) != 0) {
            fail(relative);
            return;
        }
        std::error_code ignored;
        const std::uintmax_t bytes = std::filesystem::file_size(hostPath(target), ignored);
        result_.files.push_back({relative, ignored ? 0 : bytes});
        progress_.msg(1, localText(texts::copied), shown(relative).getValue());
    }

    void fail(const KazString& relative) { result_.fail(joined(source_, relative), errno); }

    const Plan& plan_;
    const KazString& source_;
    const KazString& destination_;
    KazProgressHandle& progress_;
    CopyResult result_;
};

bool meansFullDisk(const std::error_code& error) {
    return error == std::errc::no_space_on_device || error == std::errc::file_too_large;
}

} // namespace

void CopyResult::fail(const KazString& path, int errorNumber) {
    const std::error_code error(errorNumber, std::generic_category());
    failures.push_back({shown(path), error.message().c_str()});
    diskFull = diskFull || meansFullDisk(error);
}

CopyResult copyPlanned(const Plan& plan, const KazString& source, const KazString& destination,
                       KazProgressHandle& progress) {
    return Copier(plan, source, destination, progress).run();
}
