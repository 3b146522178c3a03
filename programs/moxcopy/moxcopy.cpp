// SPDX-License-Identifier: Apache-2.0
/// Copies a system out of a project: what is asked (options), what there is
/// (plan), the copying beside the destination (copy, staging, owner), bringing it to
/// its place (merge), and what became of it (summary). All output goes through the IO
/// director; all files below the system's directory and the target are reached by
/// open directories, so that names which somebody exchanges meanwhile lead nowhere.

#include "copy.h"
#include "director.h"
#include "foretell.h"
#include "made_directories.h"
#include "names.h"
#include "offers.h"
#include "options.h"
#include "plan.h"
#include "staging.h"
#include "summary.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <chrono>
#include <system_error>
#include <utility>
#include <vector>

namespace {

/// Beside 9 for cancellation, which the library gives.
enum Status { Done = 0, Failed = 1, WrongUsage = KazCommandLine::wrongUsage };

/// Is @p directory the one that @p top is, or anything below it? -1 where that cannot be
/// told.
int isWithin(KazDirectory directory, const KazFileStatus& top) {
    KazFileStatus status, above;
    if (directory.getStatus(status) != 0)
        return -1;
    // Upwards by handles and not by comparing paths, which links and case would mislead. The root
    // is its own parent, so the loop ends.
    while (!status.isSameFile(top)) {
        directory = directory.openParent();
        if (directory.getStatus(above) != 0)
            return -1;
        if (above.isSameFile(status))
            return 0;
        status = above;
    }
    return 1;
}

/// A copy into itself would never end, and one around its source overwrite it. Says why
/// not.
Status checkApart(const CopyOptions& options, const KazDirectory& source) {
    const KazString destination = options.destination();
    KazFileStatus sourceStatus, destinationStatus;
    std::vector<KazString> missing;
    KazDirectory around = openNearest(destination, missing);
    const bool isThere = missing.empty();
    if (!around.isOpen())
        return Done; // Who wants to write there will be told.
    // Both are asked; -1 of either stays -1.
    int isNested = around.getStatus(destinationStatus) | source.getStatus(sourceStatus);
    if (isNested == 0)
        isNested = isWithin(std::move(around), sourceStatus);
    if (isNested == 0 && isThere)
        // The other way round only for a destination that is there: a new one has nothing around
        // it.
        isNested = isWithin(source.openSelf(), destinationStatus);
    if (isNested == 0)
        return Done;
    if (isNested < 0) {
        print_err(localText(texts::cannotWrite), shown(destination).getValue(),
                  std::generic_category().message(errno).c_str());
        return Failed;
    }
    print_err(localText(texts::inOneAnother), shown(options.source).getValue(),
              shown(destination).getValue());
    return WrongUsage;
}

/// Whether there is no earlier copy, or one; anything else in its place is told.
bool isFree(const CopyOptions& options, bool& isThere) {
    KazFileStatus status;
    const KazString destination = options.destination();
    isThere = TI_status(destination, status, false) == 0;
    if (!isThere || status.kind == KazFileKind::Directory)
        return true;
    const bool isLink = status.kind == KazFileKind::Link;
    print_err(localText(isLink ? texts::isLink : texts::inTheWay), shown(destination).getValue());
    return false;
}

bool mayWrite(const CopyOptions& options) {
    const KazString destination = options.destination();
    bool isThere = false;
    if (!isFree(options, isThere))
        return false;
    if (!isThere || options.force)
        return true;
    KazString question;
    question.format(localText(texts::overwrite), shown(destination).getValue());
    // Where nobody can be asked the answer is no.
    if (KazIODirector::confirm("moxcopy", question, KazIODirector::YesNo, KazIODirector::Decline) ==
        KazIODirector::Accept)
        return true;
    print_msg(localText(texts::leftAlone));
    return false;
}

CopyDirector::Manner mannerOf(const CopyOptions& options) {
    if (options.quiet)
        return CopyDirector::Quiet;
    return options.verbose ? CopyDirector::Commentary : CopyDirector::Plain;
}

void cancel() {
    // Before the message, which may wait for a slow terminal or fail.
    Staging::discardAll();
    print_err(localText(texts::cancelled));
    KazInterruptWatch::endBySignal();
}

CopyResult copyWithProgress(const Plan& plan, const CopyOptions& options, KazDirectory source,
                            const Staging& staging) {
    KazString title;
    title.format(localText(texts::copying), kazPrintable(options.system).getValue());
    KazProgressHandle progress(title, static_cast<int>(plan.fileCount));
    progress.setCancelHandler(cancel);
    return copyPlanned(plan, std::move(source), options.source, staging.directory(), options.system,
                       progress);
}

Status copySystem(const Plan& plan, const CopyOptions& options, KazDirectory source) {
    const auto start = std::chrono::steady_clock::now();
    const KazInterruptWatch watch;
    Staging staging;
    if (!staging.open(options.target, options.system))
        return Failed;
    // Into the staging directory alone: until the commit the target is as it was.
    CopyResult result = copyWithProgress(plan, options, std::move(source), staging);
    // What the listing already knows to be missing fails first.
    result.failures.addBefore(plan.failures);
    // Nothing is moved into place, so nothing counts as copied.
    if (result.diskFull) {
        print_err(localText(texts::diskFull));
        result.files = 0;
        result.bytes = 0;
    } else if (result.files > 0 || result.failures.isEmpty()) {
        staging.commit(result);
    }
    // Before the summary: what is left behind is told first.
    const bool isCleared = staging.close();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    printSummary(result, options.destination(), seconds.count(), staging.keptFiles());
    printFailures(result.failures);
    return result.failures.isEmpty() && isCleared ? Done : Failed;
}

void reportNoSystem(const CopyOptions& options) {
    KazString text;
    text.format(localText(texts::noSystem), kazPrintable(options.system).getValue(),
                shown(options.source).getValue());
    text += kazDidYouMean(options.system, systemsOf(options.project));
    print_err("%s", text.getValue());
}

/// The system's directory. A link in its place could be exchanged at any time, so none
/// is followed. Not open when there is no such directory, which has been said then.
KazDirectory openSource(const CopyOptions& options) {
    if (!TI_isDirectory(options.project)) {
        print_err(localText(texts::noProjectDirectory), shown(options.project).getValue());
        return KazDirectory();
    }
    const KazDirectory project(options.project);
    KazDirectory source = project.openDirectory(options.system);
    KazFileStatus status;
    // The looks below are for the message only.
    if (source.isOpen())
        return source;
    if (project.getStatus(options.system, status) == 0 && status.kind == KazFileKind::Link)
        print_err(localText(texts::isLink), shown(options.source).getValue());
    else
        reportNoSystem(options);
    return KazDirectory();
}

/// A copy that would copy nothing fails.
Status foretellCopy(const Plan& plan, const CopyOptions& options, const KazDirectory& source) {
    bool isThere = false;
    if (!isFree(options, isThere))
        return Failed;
    const bool isEmpty = plan.fileCount == 0 && options.isRestricted();
    return foretell(plan, options, source) && !isEmpty ? Done : Failed;
}

Status run(const CopyOptions& options) {
    KazDirectory source = openSource(options);
    if (!source.isOpen())
        return Failed;
    // Before the plan: the walk would count a copy that lies in its own source.
    if (const Status status = checkApart(options, source); status != Done)
        return status;
    const Plan plan = makePlan(options, source.openSelf());
    if (options.onlyPlan)
        return foretellCopy(plan, options, source);
    printPlan(plan, options.system);
    if (plan.fileCount == 0 && (options.isRestricted() || !plan.failures.isEmpty())) {
        print_err(localText(texts::nothing));
        printFailures(plan.failures);
        return Failed;
    }
    return mayWrite(options) ? copySystem(plan, options, std::move(source)) : Failed;
}

/// Messages that nobody could read make no success.
Status checkedOutput(Status status, const CopyDirector& director) {
    if (director.outputError() == 0)
        return status;
    print_err(localText(texts::outputLost),
              std::generic_category().message(director.outputError()).c_str());
    return status == Done ? Failed : status;
}

class MoxCopy : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        CopyOptions options;
        if (const int status = readOptions(argc, argv, options); status != KazCommandLine::run)
            return status;
        setVerboseFlag(options.verbose);
        CopyDirector director(mannerOf(options));
        director.install();
        return checkedOutput(run(options), director);
    }
};

MoxCopy theTool;

} // namespace
