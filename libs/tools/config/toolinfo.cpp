// SPDX-License-Identifier: Apache-2.0
// Two tables answer for a variable: assignments of this run, which hang off the tools
// context, and the definitions of the files, which belong to the process. The former win.
// Without an application there are no assignments, and lookups work all the same.
//
// In both tables an empty value counts as a definition, so that it hides what lies behind
// it; only the answer to the caller makes null of it.
#include "tools/config/toolinfo.h"

#include "tools/app/KazToolsContext.h"
#include "tools/config/detail/ToolInfoState.h"
#include "tools/config/detail/stored_value.h"
#include "tools/containers/KazStringToStringMapIterator.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

using kaz::detail::ToolInfoLine;
using kaz::detail::ToolInfoState;
using kaz::detail::ToolInfoTable;

KazStringToStringMap* runTimeVariables() {
    KazToolsContext* context = KazToolsContext::getInstance();
    return context != nullptr ? context->getVars() : nullptr;
}

ToolInfoTable& fileVariables() {
    return ToolInfoState::instance().table;
}

/// The run-time assignment; null when there is none, "" for an empty one.
const char* assignedValue(const char* name) {
    KazStringToStringMap* assigned = runTimeVariables();
    // Most tools assign nothing, and a lookup then costs no hash.
    if (assigned == nullptr || assigned->getSize() == 0)
        return nullptr;
    return kaz::detail::storedValue(*assigned, name);
}

/// The value of "KAZ_<NAME>", or null.
const char* kazVariable(const char* name) {
    std::string variable = "KAZ_";
    // ASCII letters alone, so that the variable's name does not depend on the locale.
    for (; *name != '\0'; ++name)
        variable += *name >= 'a' && *name <= 'z' ? static_cast<char>(*name - 'a' + 'A') : *name;
    return kaz::host::environment(variable.c_str());
}

std::vector<KazString> allNames() {
    std::vector<KazString> names;
    fileVariables().appendNames(names);
    if (const KazStringToStringMap* assigned = runTimeVariables())
        for (KazStringToStringMapIterator i(*assigned); !i.isDone(); i.next())
            names.push_back(i.getKey());
    std::sort(names.begin(), names.end(),
              [](const KazString& a, const KazString& b) { return std::strcmp(a, b) < 0; });
    // A name may be assigned and defined at once.
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

} // namespace

const char* TI_Vcont(const char* name) {
    if (name == nullptr)
        return nullptr;
    TI_Vinit();
    const char* value = assignedValue(name);
    if (value == nullptr)
        value = fileVariables().find(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

const char* TI_EnvVcont(const char* name) {
    if (name == nullptr)
        return nullptr;
    const char* value = kazVariable(name);
    return value != nullptr ? value : TI_Vcont(name);
}

const char* TI_SameEnvVcont(const char* name) {
    if (name == nullptr)
        return nullptr;
    const char* value = kaz::host::environment(name);
    return value != nullptr ? value : TI_Vcont(name);
}

int TI_Var(const char* line) {
    ToolInfoLine definition;
    if (line == nullptr || !kaz::detail::parseToolInfoLine(line, definition))
        return -1;
    fileVariables().define(definition.name, definition.value, ToolInfoState::instance().overwrite);
    return 0;
}

int TI_Vasg(const char* name, const char* value) {
    if (name == nullptr)
        return -1;
    const bool overwrite = ToolInfoState::instance().overwrite;
    // Without overwriting a definition of the files counts as much as an assignment.
    if (!overwrite && fileVariables().defines(name))
        return -1;
    KazStringToStringMap* assigned = runTimeVariables();
    if (assigned == nullptr)
        return -1;
    return assigned->bind(name, _TI_hm(value), overwrite) ? 0 : -1;
}

int TI_V_user_file(const char* path, bool overwrite) {
    return path != nullptr && kaz::detail::readToolInfoFile(path, overwrite) ? 0 : -1;
}

KazVariableSource TI_EnvVsource(const char* name, KazString* file) {
    if (name == nullptr || kazVariable(name) == nullptr)
        return TI_Vsource(name, file);
    if (file != nullptr)
        *file = KazString();
    return KazEnvironment;
}

KazVariableSource TI_Vsource(const char* name, KazString* file) {
    KazString from;
    KazVariableSource source = KazUndefined;
    if (name != nullptr) {
        TI_Vinit();
        if (assignedValue(name) != nullptr) {
            source = KazRunTime;
        } else if (fileVariables().defines(name)) {
            from = fileVariables().fileOf(name);
            source = from ? KazFile : KazDefined;
        }
    }
    if (file != nullptr)
        *file = from;
    return source;
}

void TI_Vwalk(void (*visit)(const char* name, void* data), void* data) {
    if (visit == nullptr)
        return;
    TI_Vinit();
    for (const KazString& name : allNames())
        visit(name, data);
}
