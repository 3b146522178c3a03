/// Copies a system out of a project: what is asked (options), what there is
/// (plan), the copying beside the destination (copy, staging), and what became
/// of it (summary). All output goes through the IO director.

#include "common/CommandLine.h"
#include "copy.h"
#include "director.h"
#include "names.h"
#include "options.h"
#include "plan.h"
#include "staging.h"
#include "summary.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <chrono>
#include <iterator>
#include <system_error>

namespace {

namespace fs = std::filesystem;

/// Beside 9 for cancellation, which the library gives.
enum Status { Done = 0, Failed = 1, WrongUsage = CommandLine::wrongUsage };

bool isSame(const fs::path& a, const fs::path& b) {
    std::error_code ignored;
    return fs::equivalent(a, b, ignored);
}

/// Is @p path the directory @p top or anything below it? Links are resolved;
/// @p path need not exist.
bool isWithin(fs::path path, const fs::path& top) {
    std::error_code ignored;
    for (path = fs::weakly_canonical(path, ignored); !isSame(path, top); path = path.parent_path())
        if (path == path.parent_path())
            return false;
    return true;
}

/// A copy into itself would never end, and one around its source overwrite it.
bool isApart(const CopyOptions& options) {
    const fs::path source = hostPath(options.source);
    const fs::path destination = hostPath(options.destination());
    return !isWithin(destination, source) && !isWithin(source, destination);
}

bool isDirectory(const KazString& path) {
    std::error_code ignored;
    return fs::is_directory(hostPath(path), ignored);
}

bool mayWrite(const CopyOptions& options) {
    std::error_code ignored;
    const KazString destination = options.destination();
    if (!fs::exists(fs::symlink_status(hostPath(destination), ignored)))
        return true;
    if (!isDirectory(destination)) {
        print_err(localText(texts::inTheWay), shown(destination).getValue());
        return false;
    }
    if (options.force)
        return true;
    KazString question;
    question.format(localText(texts::overwrite), shown(destination).getValue());
    if (KazIODirector::confirm("moxcopy", question, KazIODirector::YesNo, KazIODirector::Decline) ==
        KazIODirector::Accept)
        return true;
    print_msg(localText(texts::leftAlone));
    return false;
}

CopyDirector::Style styleOf(const CopyOptions& options) {
    if (options.quiet)
        return CopyDirector::Silent;
    return options.verbose ? CopyDirector::Commentary : CopyDirector::Dots;
}

void cancel() {
    Staging::discardAll();
    print_err(localText(texts::cancelled));
}

CopyResult copyWithProgress(const Plan& plan, const CopyOptions& options, const Staging& staging) {
    KazString title;
    title.format(localText(texts::copying), options.system.getValue());
    KazProgressHandle progress(title, static_cast<int>(plan.fileCount));
    progress.setCancelHandler(cancel);
    return copyPlanned(plan, options.source, staging.directory(), progress);
}

/// What the listing already knows to be missing fails first.
void addFailures(CopyResult& result, const std::vector<Failure>& failures) {
    result.failures.insert(result.failures.begin(), failures.begin(), failures.end());
}

Status copySystem(const Plan& plan, const CopyOptions& options) {
    const auto start = std::chrono::steady_clock::now();
    InterruptWatch watch;
    Staging staging;
    if (!staging.open(options.target, options.system))
        return Failed;
    CopyResult result = copyWithProgress(plan, options, staging);
    addFailures(result, plan.failures);
    if (result.diskFull) {
        print_err(localText(texts::diskFull));
        result.files.clear();
    } else if (!result.files.empty() || result.failures.empty()) {
        staging.commit(result);
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    printSummary(result, options.destination(), seconds.count());
    printFailures(result.failures);
    return result.failures.empty() ? Done : Failed;
}

Status run(const CopyOptions& options) {
    if (!isDirectory(options.source)) {
        print_err(localText(texts::noSystem), options.system.getValue(),
                  shown(options.source).getValue());
        return Failed;
    }
    if (!isApart(options)) {
        print_err(localText(texts::inOneAnother), shown(options.source).getValue(),
                  shown(options.destination()).getValue());
        return WrongUsage;
    }
    const Plan plan = makePlan(options);
    printPlan(plan, options.system);
    if (plan.fileCount == 0 && (options.isRestricted() || !plan.failures.empty())) {
        print_err(localText(texts::nothing));
        printFailures(plan.failures);
        return Failed;
    }
    return mayWrite(options) ? copySystem(plan, options) : Failed;
}

class MoxCopy : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        CopyOptions options;
        if (!readOptions(argc, argv, options))
            return WrongUsage;
        setVerboseFlag(options.verbose);
        CopyDirector director(styleOf(options));
        director.install();
        return run(options);
    }
};

MoxCopy theTool;

} // namespace
