// SPDX-License-Identifier: Apache-2.0
/// Reports what a project holds, as a document: what is asked (options), what there is
/// (inventory), and how it is said (report). Only the finished document is written, so
/// that a report stands at its place whole, or the one before it.

#include "common/output.h"
#include "inventory.h"
#include "options.h"
#include "report.h"
#include "tools/moxtools.h"

#include <memory>

namespace {

/// The document goes to standard output where no file is named: nothing else may.
KazTerminalDirector::Style styleOf(const ReportOptions& options) {
    const bool isSilent = options.quiet || options.output.isEmpty();
    return isSilent ? KazTerminalDirector::Silent : KazTerminalDirector::Automatic;
}

bool tells(const ReportOptions& options) {
    return !options.quiet && !options.output.isEmpty();
}

/// Not open when there is nothing to report, which has been said then.
KazDirectory openProject(const ReportOptions& options) {
    KazDirectory project(options.project);
    if (!project.isOpen())
        print_err("There is no project directory '%s'",
                  kazPrintable(kazHostPath(options.project)).getValue());
    else if (!options.system.isEmpty() && !project.openDirectory(options.system).isOpen()) {
        print_err("There is no system '%s'", kazPrintable(options.system).getValue());
        project.close();
    }
    return project;
}

/// The whole of the document.
std::string makeReport(const ReportOptions& options, const KazDirectory& project,
                       Inventory& inventory) {
    KazProgressHandle progress("Reading " + projectName(options), 100);
    inventory = takeInventory(options, project, progress, 60);
    const std::unique_ptr<KazDocWriter> doc(KazDocWriter::create(options.format));
    writeReport(*doc, inventory, options, progress, 35);
    const KazString& document = doc->finish();
    progress.increment(5, false);
    return {document.getValue(), static_cast<std::size_t>(document.getLength())};
}

void tellResult(const ReportOptions& options, const Inventory& inventory) {
    if (options.verbose)
        for (const System& system : inventory.systems)
            print_msg("System '%s': %zu diagrams, %zu files", kazPrintable(system.name).getValue(),
                      system.diagrams.size(), system.totals.files);
    print_msg("'%s' reports %zu files of %zu systems.", kazPrintable(options.output).getValue(),
              inventory.totals.files, inventory.systems.size());
}

void printFailures(const Failures& failures) {
    for (const Failure& failure : failures.first())
        print_err("Not read: '%s' (%s)", failure.path.getValue(), failure.reason.getValue());
    if (const std::size_t more = failures.count() - failures.first().size(); more > 0)
        print_err("... and %zu more", more);
}

class MoxReport : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        ReportOptions options;
        if (const int status = readOptions(argc, argv, options); status != KazCommandLine::run)
            return status;
        KazTerminalDirector director(styleOf(options));
        director.install();
        const KazDirectory project = openProject(options);
        if (!project.isOpen())
            return 1;
        Inventory inventory;
        const std::string document = makeReport(options, project, inventory);
        if (tells(options) && director.getStyle() == KazTerminalDirector::Dots)
            print_msg("%s", ""); // the dots end without a line end
        const bool isWritten = writeOutput(options.output.getValue(), document);
        if (isWritten && tells(options))
            tellResult(options, inventory);
        printFailures(inventory.failures);
        // The report is the result; what is said beside it counts for who asked for it.
        if (options.verbose && !hasOutputArrived())
            return 1;
        return isWritten && inventory.failures.isEmpty() ? 0 : 1;
    }
};

MoxReport theTool;

} // namespace
