// SPDX-License-Identifier: Apache-2.0
// Each sentence is one text of the catalogue with its numbers left open, one for a single thing
// and one for more: languages put the words in other orders, so none is made of parts.
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
    print_msg(localText(texts::plan), kazPrintable(system).getValue(),
              countedFiles(plan.fileCount).getValue(),
              countedDirectories(plan.directoryCount).getValue());
}

void printSummary(const CopyResult& result, const KazString& destination, double seconds,
                  std::size_t keptFiles) {
    print_msg(localText(texts::summary), countedFiles(result.files).getValue(), result.bytes,
              shown(destination).getValue(), seconds);
    if (keptFiles > 0)
        print_msg(localText(keptFiles == 1 ? texts::keptFile : texts::keptFiles), keptFiles);
}

void printFailures(const Failures& failures) {
    if (failures.isEmpty())
        return;
    for (const Failure& failure : failures.first())
        print_err(localText(texts::notCopied), failure.path.getValue(), failure.reason.getValue());
    if (const std::size_t more = failures.count() - failures.first().size(); more > 0)
        print_err(localText(texts::furtherFailures), more);
    print_err(localText(failures.count() == 1 ? texts::oneFailure : texts::moreFailures),
              failures.count());
}
