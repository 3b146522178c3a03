// SPDX-License-Identifier: Apache-2.0
// A value is looked for in the order of how deliberately it was given: assigned in this run, on
// the command line, in the environment or the configuration. What was found outside is kept in
// the value's cell of the tools context only so that the pointer that is returned has an owner;
// each question looks again, since the outside may have changed. Only an assignment ends the
// looking. Without an application there are no cells, and the answer belongs to whoever gave it.
//
// Numbers and truth values are texts up to the last step. A text that is no number reads as 0, as
// it always has; who needs to know asks kaz_check_integer and its relatives.
#include "tools/config/kazenv.h"

#include "tools/app/KazToolsContext.h"
#include "tools/app/arguments.h"
#include "tools/config/detail/names.h"
#include "tools/config/toolinfo.h"
#include "tools/config/typed_value.h"
#include "tools/files/kazpath.h"

#include <cfloat>
#include <climits>

namespace {

struct Row {
    const char* name;
    kaz_env_kind_enum kind;
    int option; ///< arg_type_enum, or KAZ_ENV_NO_OPTION
};

constexpr int KAZ_ENV_NO_OPTION = -1;

constexpr Row rows[] = {
#define KAZ_ENV_ROW(kind, name, option) {#name, kaz_env_kind_##kind, option},
    KAZ_ENV_VALUES(KAZ_ENV_ROW)
#undef KAZ_ENV_ROW
};

bool isKnown(kaz_env_id_enum id) {
    return id >= 0 && id < kaz_env_id_count;
}

/// The tools context notes of six values that they have been settled.
/// They are flags of the context's own, which tools read there.
void noteSettled(KazToolsContext& context, kaz_env_id_enum id) {
    switch (id) {
    case kaz_env_id_projdir:
        return context.setInitProjDir();
    case kaz_env_id_system:
        return context.setInitSystem();
    case kaz_env_id_system_dir:
        return context.setInitSystemDir();
    case kaz_env_id_editor_name:
        return context.setInitEditorName();
    case kaz_env_id_diagram:
        return context.setInitDiagram();
    case kaz_env_id_revision:
        return context.setInitRevision();
    default:
        return;
    }
}

const char* textFromOutside(const Row& row, bool hasCommandLine) {
    // An option that is given empty counts: it hides the environment.
    if (hasCommandLine && row.option != KAZ_ENV_NO_OPTION) {
        const auto option = static_cast<arg_type_enum>(row.option);
        if (const char* text = kaz_arg_text(option, 0, nullptr))
            return text;
    }
    // Asks the environment before the configuration.
    return TI_EnvVcont(row.name);
}

/// Project directory and system joined; empty unless both are there.
KazString composedSystemDir() {
    const KazString system = kaz_env_text(kaz_env_id_system);
    const char* project = kaz_env_text(kaz_env_id_projdir);
    if (!system || project == nullptr || *project == '\0')
        return KazString();
    project = kaz::detail::withoutTildeEscape(project);
    return kazComposePath(KazString(_TI_hm(project)), system);
}

const char* as_text(const char* text) {
    return text;
}

int as_integer(const char* text) {
    int number = 0;
    kaz_check_integer(text, INT_MIN, INT_MAX, &number);
    return number;
}

double as_real(const char* text) {
    double number = 0;
    kaz_check_real(text, -DBL_MAX, DBL_MAX, &number);
    return number;
}

bool as_boolean(const char* text) {
    return TI_yesorno(text, false);
}

} // namespace

const char* kaz_env_name(kaz_env_id_enum id) {
    return isKnown(id) ? rows[id].name : nullptr;
}

kaz_env_kind_enum kaz_env_kind(kaz_env_id_enum id) {
    return isKnown(id) ? rows[id].kind : kaz_env_kind_text;
}

const char* kaz_env_text(kaz_env_id_enum id) {
    if (!isKnown(id))
        return nullptr;
    KazToolsContext* context = KazToolsContext::getInstance();
    if (context == nullptr)
        return textFromOutside(rows[id], false);
    KazEnvValue& cell = *context->getEnvValue(id);
    if (cell.isAssigned())
        return cell.getText();
    // The system directory alone can be composed of others, and only where nobody gave it.
    const char* text = textFromOutside(rows[id], true);
    KazString systemDir;
    if (text == nullptr && id == kaz_env_id_system_dir && (systemDir = composedSystemDir()))
        text = systemDir;
    // Null, too: what was found once and is gone now must not answer any more.
    cell.keep(text);
    if (text != nullptr)
        noteSettled(*context, id);
    return cell.getText();
}

bool kaz_env_is_set(kaz_env_id_enum id) {
    return kaz_env_text(id) != nullptr;
}

void kaz_env_asgn(kaz_env_id_enum id, const char* text) {
    KazToolsContext* context = KazToolsContext::getInstance();
    if (context == nullptr || !isKnown(id))
        return;
    // Back to looking outside. The notes of the context stay, for the value was settled once.
    if (text == nullptr) {
        context->getEnvValue(id)->clear();
        return;
    }
    context->getEnvValue(id)->assign(text);
    noteSettled(*context, id);
}

#define KAZ_ENV_DEFINE(kind, name, option)                                                         \
    KAZ_ENV_RESULT_##kind kaz_env_##name() {                                                       \
        return as_##kind(kaz_env_text(kaz_env_id_##name));                                         \
    }                                                                                              \
    void kaz_env_##name##_asgn(const char* text) {                                                 \
        kaz_env_asgn(kaz_env_id_##name, text);                                                     \
    }
KAZ_ENV_VALUES(KAZ_ENV_DEFINE)
#undef KAZ_ENV_DEFINE
