#include "summary.h"

#include "names.h"
#include "tools/moxtools.h"

#include <cinttypes>

namespace {

const char* plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

} // namespace

void printSummary(const CopyResult& result, const KazString& destination, double seconds) {
    std::uintmax_t bytes = 0;
    for (const CopiedFile& file : result.files)
        bytes += file.bytes;
    print_msg("%zu file%s, %" PRIuMAX " bytes copied to '%s' in %.2f seconds.", result.files.size(),
              plural(result.files.size()), bytes, shown(destination).getValue(), seconds);
}

void printFailures(const std::vector<Failure>& failures) {
    for (const Failure& failure : failures)
        print_err("Not copied: '%s' (%s)", failure.path.getValue(), failure.reason.getValue());
    if (!failures.empty())
        print_err("%zu failure%s", failures.size(), plural(failures.size()));
}
