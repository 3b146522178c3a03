// SPDX-License-Identifier: Apache-2.0
// moxinfo: shows a tool's configuration, and what is installed.
#include "common/output.h"
#include "common/printable.h"
#include "moxinfo/check.h"
#include "moxinfo/options.h"
#include "moxinfo/product.h"
#include "moxinfo/variables.h"

#include "tools/app/KazCommandLine.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/app/arguments.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/process.h"
#include "tools/messages/messages.h"

#include <string>
#include <vector>

namespace {

bool readFurtherFile() {
    const std::string file = furtherFile();
    if (file.empty() || TI_V_user_file(file.c_str(), true) == 0)
        return true;
    print_err("moxinfo: cannot read %s", printable(kaz_arg_text(arg_file, 0, nullptr)).c_str());
    return false;
}

/// Without the configuration, which an installation that is looked at may lack.
int runProduct(const char* which) {
    const std::string file = productFile(which);
    if (file.empty()) {
        print_err("moxinfo: nobody knows where %s is installed", printable(which).c_str());
        return 1;
    }
    if (kaz_arg_text(arg_update, 0, nullptr) != nullptr) {
        std::vector<std::string> more;
        for (int i = 0; i < kaz_arg_untagged_count(); ++i)
            more.emplace_back(kaz_arg_get_untagged(i));
        // Without -output the file itself is replaced, which is safe: it is read whole before.
        const std::string target = outputFile();
        return updateProduct(file, more, target.empty() ? file : target) ? 0 : 1;
    }
    LineOutput output(outputFile());
    const bool good = showProduct(file, kaz_arg_text(arg_verbose, 0, nullptr) != nullptr, output);
    return output.finish() && good ? 0 : 1;
}

/// Everything that is asked of the variables, once they are read.
bool showVariables(LineOutput& output) {
    if (isAsked("--check"))
        return showFindings(Configuration(furtherFile()), output);
    if (isAsked("--origin"))
        return showOrigins(output, Configuration(furtherFile()));
    if (kaz_arg_get_untagged(0) != nullptr)
        return showArguments(output, kaz_arg_text(arg_verbose, 0, nullptr) != nullptr);
    showAll(output, wantedSource());
    return true;
}

class MoxInfo : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        if (const int status = readOptions(argc, argv); status != KazCommandLine::run)
            return status;
        if (const char* which = kaz_arg_text(arg_product, 0, nullptr))
            return runProduct(which);
        // The library finds the first file through the variable, at the first lookup. Absolute,
        // because a relative name there is meant below the root of the installation.
        if (const char* file = kaz_arg_text(arg_toolinfo, 0, nullptr))
            TI_putenv("ToolInfo", kazFullPath(file));
        // Before the further file, which comes after the others.
        TI_Vinit();
        if (!readFurtherFile())
            return 1;
        // Only now, because it is judged by the files that were read.
        if (!isSourceGood())
            return KazCommandLine::wrongUsage;
        LineOutput output(outputFile());
        // Output is finished whatever was found: what there is must arrive.
        const bool good = showVariables(output);
        return output.finish() && good ? 0 : 1;
    }
};

MoxInfo moxinfo;

} // namespace
