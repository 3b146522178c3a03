// SPDX-License-Identifier: Apache-2.0
#include "tools/config/kazenv.h"

#include "tools/app/KazToolsContext.h"
#include "tools/app/arguments.h"
#include "tools/config/detail/names.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"

#include <charconv>
#include <cmath>
#include <cstring>

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
    if (hasCommandLine && row.option != KAZ_ENV_NO_OPTION) {
        const auto option = static_cast<arg_type_enum>(row.option);
        if (const char* text = kaz_arg_text(option, 0, nullptr))
            return text;
    }
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

/// White space around a number does not count, nor does a plus sign.
template <typename Number>
Number numberOf(const char* text) {
    constexpr const char* blanks = " \t\r\n";
    if (text == nullptr)
        return 0;
    text += std::strspn(text, blanks);
    if (*text == '+' && text[1] != '-')
        ++text;
    const char* end = text + std::strlen(text);
    while (end > text && std::strchr(blanks, end[-1]) != nullptr)
        --end;
    Number number = 0;
    const auto [stop, error] = std::from_chars(text, end, number);
    return error == std::errc() && stop == end ? number : 0;
}

const char* as_text(const char* text) {
    return text;
}

int as_integer(const char* text) {
    return numberOf<int>(text);
}

double as_real(const char* text) {
    const double number = numberOf<double>(text);
    return std::isfinite(number) ? number : 0;
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
    const char* text = textFromOutside(rows[id], true);
    KazString systemDir;
    if (text == nullptr && id == kaz_env_id_system_dir && (systemDir = composedSystemDir()))
        text = systemDir;
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
