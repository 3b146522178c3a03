#include "summary.h"

#include "names.h"
#include "texts.h"
#include "tools/moxtools.h"

namespace {

KazString countedFiles(std::size_t count) {
    KazString text;
    text.format(localText(count == 1 ? texts::oneFile : texts::moreFiles), count);
    return text;
}

KazString countedDirectories(std::size_t count) {
    KazString text;
    text.format(localText(count == 1 ? texts::oneDirectory : texts::moreDirectories), count);
    return text;
}

} // namespace

void printPlan(const Plan& plan, const KazString& system) {
    print_msg(localText(texts::plan), system.getValue(), countedFiles(plan.fileCount).getValue(),
              countedDirectories(plan.directories.size()).getValue());
}

void printSummary(const CopyResult& result, const KazString& destination, double seconds) {
    std::uintmax_t bytes = 0;
    for (const CopiedFile& file : result.files)
        bytes += file.bytes;
    print_msg(localText(texts::summary), countedFiles(result.files.size()).getValue(), bytes,
              shown(destination).getValue(), seconds);
}

void printFailures(const std::vector<Failure>& failures) {
    for (const Failure& failure : failures)
        print_err(localText(texts::notCopied), failure.path.getValue(), failure.reason.getValue());
    if (!failures.empty())
        print_err(localText(failures.size() == 1 ? texts::oneFailure : texts::moreFailures),
                  failures.size());
}
