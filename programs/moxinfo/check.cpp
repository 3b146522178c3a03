// SPDX-License-Identifier: Apache-2.0
// A note alone is no reason to fail: it tells what may be meant so. The place in front of a line
// is that of compilers, so that editors can jump to it.
#include "moxinfo/check.h"

#include "common/complaint.h"
#include "common/findings.h"
#include "common/printable.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

constexpr std::array severities = {"error", "warning", "note"};

std::string textOf(const Configuration& configuration, const Finding& finding) {
    const std::string place = finding.file < 0
                                  ? "environment"
                                  : onOneLine(configuration.fileName(finding.file).c_str()) + ":" +
                                        std::to_string(finding.line);
    return place + ": " + severities[finding.severity] + ": " + finding.text + " [" + finding.code +
           "]";
}

std::string counted(const std::vector<Finding>& findings, Finding::Severity severity) {
    const auto number =
        std::count_if(findings.begin(), findings.end(),
                      [severity](const Finding& finding) { return finding.severity == severity; });
    return std::to_string(number) + " " + severities[severity] + (number == 1 ? "" : "s");
}

} // namespace

bool showFindings(const Configuration& configuration, LineOutput& output) {
    const std::vector<Finding> findings = findingsOf(configuration);
    for (const Finding& finding : findings)
        output.line(textOf(configuration, finding));
    output.line(counted(findings, Finding::Error) + ", " + counted(findings, Finding::Warning) +
                ", " + counted(findings, Finding::Note));
    // In the order of showing, so the editor opens what the user reads first.
    const auto first = std::find_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.severity != Finding::Note;
    });
    if (first == findings.end())
        return true;
    // The environment has no file that could be opened.
    if (first->file >= 0)
        openComplaint("moxinfo", configuration.fileName(first->file), first->line);
    return false;
}
