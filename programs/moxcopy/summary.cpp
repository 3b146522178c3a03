#include "summary.h"

#include "names.h"
#include "tools/moxtools.h"

#include <cinttypes>

namespace {

/// "1 file", "2 files".
KazString counted(std::size_t count, const char* one, const char* more) {
    KazString text;
    text.format("%zu %s", count, count == 1 ? one : more);
    return text;
}

} // namespace

void printPlan(const Plan& plan, const KazString& system) {
    print_msg("System '%s': %s in %s.", system.getValue(),
              counted(plan.fileCount, "file", "files").getValue(),
              counted(plan.directories.size(), "directory", "directories").getValue());
}

void printSummary(const CopyResult& result, const KazString& destination, double seconds) {
    std::uintmax_t bytes = 0;
    for (const CopiedFile& file : result.files)
        bytes += file.bytes;
    print_msg("%s, %" PRIuMAX " bytes copied to '%s' in %.2f seconds.",
              counted(result.files.size(), "file", "files").getValue(), bytes,
              shown(destination).getValue(), seconds);
}

void printFailures(const std::vector<Failure>& failures) {
    for (const Failure& failure : failures)
        print_err("Not copied: '%s' (%s)", failure.path.getValue(), failure.reason.getValue());
    if (!failures.empty())
        print_err("%s", counted(failures.size(), "failure", "failures").getValue());
}
