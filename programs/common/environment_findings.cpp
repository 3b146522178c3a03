// SPDX-License-Identifier: Apache-2.0
// Two things can be said of the environment: which variables of it take the place of a
// definition in the files, and which ones look as if they were meant to and do not, since
// nothing known reads them. A name that somebody reads is never near to another one.
#include "common/environment_findings.h"

#include "common/printable.h"
#include "tools/config/toolinfo.h"
#include "tools/formats/nearwords.h"

#include <set>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view prefix = "KAZ_";

void tell(std::vector<Finding>& findings, Finding::Severity severity, std::string text,
          const char* code) {
    findings.push_back({severity, -1, 0, std::move(text), code});
}

void lookForOverrides(const Configuration& configuration, std::vector<Finding>& findings) {
    for (const std::string& name : configuration.names()) {
        if (isSetByLibrary(name) || TI_EnvVsource(name.c_str(), nullptr) != KazEnvironment)
            continue;
        tell(findings, Finding::Note,
             printable(overridingVariable(name)) + " overrides " + quoted(name) + " of " +
                 printable(configuration.placeOf(configuration.decisive(name))),
             "env-override");
    }
}

/// What can be read from the environment, in capitals and without the prefix.
std::set<std::string> readableNames(const Configuration& configuration, const KnownNames& known) {
    // The first ones steer the library itself.
    std::set<std::string> readable = {"DIALOGUE", "PROGRESS_FD", "TRACE"};
    for (const std::string& name : known.all())
        readable.insert(overridingVariable(name).substr(prefix.size()));
    for (const std::string& name : configuration.names())
        readable.insert(overridingVariable(name).substr(prefix.size()));
    return readable;
}

std::vector<std::string> variables() {
    std::vector<std::string> names;
    TI_EnvVwalk([](const char* variable, const char*,
                   void* all) { static_cast<std::vector<std::string>*>(all)->push_back(variable); },
                &names);
    return names;
}

/// How far away a word may be depends on its length, to which the prefix does not belong.
void lookAtVariable(const std::string& variable, const std::set<std::string>& readable,
                    std::vector<Finding>& findings) {
    const std::string name = variable.substr(prefix.size());
    // A short word is near to too many.
    if (name.size() < shortestNearName || readable.count(name) != 0)
        return;
    KazStringColl meant = nearNames(name, readable);
    for (int i = 0; i < meant.getSize(); ++i)
        meant[i] = std::string(prefix).append(meant[i].getValue()).c_str();
    if (const KazString hint = kazDidYouMean(variable.c_str(), meant))
        tell(findings, Finding::Warning,
             "nothing known reads " + printable(variable) + hint.getValue(), "env-near");
}

} // namespace

std::string quoted(std::string text) {
    constexpr std::size_t most = 60;
    const bool isLong = text.size() > most;
    if (isLong) {
        std::size_t end = most;
        // No character of UTF-8 has more than three continuation bytes; other bytes are cut
        // anywhere.
        while (end > most - 4 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            --end; // no character is cut
        text.resize(end);
    }
    return "\"" + printable(text) + (isLong ? "...\"" : "\"");
}

void addEnvironmentFindings(const Configuration& configuration, const KnownNames& known,
                            std::vector<Finding>& findings) {
    lookForOverrides(configuration, findings);
    const std::set<std::string> readable = readableNames(configuration, known);
    for (const std::string& variable : variables())
        lookAtVariable(variable, readable, findings);
}
