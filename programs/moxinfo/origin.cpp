// SPDX-License-Identifier: Apache-2.0
// All places that could define a name are told in the order in which they are asked, with a star
// at the one in force; each of the others says why it is not. The answer of the library decides
// which one that is, and the lines of the files only explain it.
#include "moxinfo/origin.h"

#include "common/known_names.h"
#include "common/printable.h"
#include "tools/config/toolinfo.h"

namespace {

std::string marked(bool isInForce, const std::string& text) {
    return (isInForce ? "* " : "  ") + text;
}

/// Why the definition that counts among the files is not in force.
std::string reasonOutside(KazVariableSource source, const std::string& name) {
    if (source == KazRunTime)
        return "the tool sets it";
    return isSetByLibrary(name) ? "the library sets it" : "the environment sets it";
}

std::string reasonOf(const Configuration& configuration, const ConfigLine& line,
                     KazVariableSource source) {
    // From the nearest reason to the farthest: its own file, then the others, then what is no file.
    const ConfigLine& inFile = configuration.decisiveInFile(line);
    if (&inFile != &line)
        return "line " + std::to_string(inFile.number) +
               (configuration.lastCountsIn(line.file) ? " replaces it" : " defines it");
    const ConfigLine& decisive = configuration.decisive(line.name);
    // No file has a say then, whichever of them would come first.
    const bool isLibrarys = isSetByLibrary(line.name) && source != KazFile;
    if (&decisive == &line || isLibrarys)
        return reasonOutside(source, line.name);
    return configuration.isFurther(decisive.file) ? "a later file replaces it"
                                                  : "an earlier file defines it";
}

std::string definitionText(const Configuration& configuration, const ConfigLine& line,
                           KazVariableSource source) {
    const bool isInForce = source == KazFile && &configuration.decisive(line.name) == &line;
    const std::string text = configuration.placeOf(line) + ": " + onOneLine(line.value.c_str());
    return marked(isInForce, text) +
           (isInForce ? "" : " [" + reasonOf(configuration, line, source) + "]");
}

} // namespace

std::vector<std::string> originOf(const Configuration& configuration, const std::string& name) {
    const KazVariableSource source = TI_EnvVsource(name.c_str(), nullptr);
    if (source == KazUndefined)
        return {};
    const KazVariableSource hidden = TI_Vsource(name.c_str(), nullptr);
    const bool isOverridden = source == KazEnvironment;
    const std::string value = onOneLine(TI_EnvVcont(name.c_str()));
    const std::string behind =
        onOneLine(TI_Vcont(name.c_str())) + (isOverridden ? " [the environment sets it]" : "");
    std::vector<std::string> lines = {
        name + "=" + value,
        marked(isOverridden, "environment " + overridingVariable(name) + ": " +
                                 (isOverridden ? value : "not set")),
        marked(source == KazRunTime, "run-time: " + (hidden == KazRunTime ? behind : "not set"))};
    if (hidden == KazDefined)
        lines.push_back(marked(!isOverridden, "library: " + behind));
    for (const ConfigLine* const line : configuration.definitionsOf(name))
        lines.push_back(definitionText(configuration, *line, source));
    return lines;
}
