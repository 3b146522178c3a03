// SPDX-License-Identifier: Apache-2.0
// A diagram's name is the user's own text, and only on its way to the disk becomes the name of a
// file: each illegal character is exchanged for its replacement, byte by byte, so the length
// stays. The two sets come from the configuration and are read once, at the first name; names
// made before and after a later assignment would otherwise not find each other's files.
#include "tools/config/filestore.h"

#include "tools/app/KazToolsContext.h"
#include "tools/config/detail/names.h"
#include "tools/config/detail/quoted_name.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

using kaz::detail::appendPart;
using kaz::detail::copyCut;
using kaz::detail::orEmpty;
using kaz::detail::quotedName;

constexpr std::size_t diagramFileSize = 141;
constexpr int revisionLimit = 71;

constexpr const char* defaultIllegal = " *\"'`?![](){};/\\&";
// One short of the set above: the ampersand gets "_" as any character does that
// has no replacement of its own.
constexpr const char* defaultReplacements = "________________";

/// Any of these makes a diagram name be cleaned; the cleaning itself leaves the
/// minus sign, except in front.
constexpr const char* suspicious = " `!#$^&*-[]|\\:;\"',<>?/";
constexpr const char* cleanedAway = " `!#$^&*[]|\\:;\"',<>?/";

/// The value of a ToolInfo variable at the first question, kept for good.
const char* keptVariable(const char*& kept, const char* variable, const char* otherwise) {
    if (kept == nullptr) {
        const char* value = TI_Vcont(variable);
        // A copy, since the variable's text may go; never freed, as it is handed out.
        kept = mkcpy(value != nullptr ? value : otherwise);
    }
    return kept;
}

void cleanDiagramName(const char* name) {
    std::string cleaned = name;
    // The place is looked at again, but "_" is never among those.
    for (std::size_t at = 0; (at = cleaned.find_first_of(cleanedAway, at)) != cleaned.npos;)
        cleaned[at] = '_';
    if (cleaned.front() == '-')
        cleaned.front() = '_';
    // Assigned and not returned: all who ask for the diagram get the name that the files have.
    kaz_env_diagram_asgn(cleaned.c_str());
}

bool isDiagramNamed() {
    const char* name = orEmpty(kaz_env_diagram());
    if (*name == '\0')
        return false;
    if (std::strpbrk(name, suspicious) != nullptr)
        cleanDiagramName(name);
    return true;
}

bool isSystemNamed() {
    return *orEmpty(kaz_env_system()) != '\0';
}

/// A project directory of no characters is the current one, which the project database refuses.
bool isProjectDirSet() {
    const char* dir = kaz_env_projdir();
    return dir != nullptr && (*dir != '\0' || !kaz_env_pdb_enabled());
}

bool isDiagramPlain() {
    return !is_pattern(kaz_env_diagram(), 1);
}

struct NameCheck {
    int bit;
    bool (*passes)();
    const char* message; ///< a format; its argument is the diagram name
};

/// In the order of the checks.
constexpr NameCheck nameChecks[] = {
    {edit_check_diagram, isDiagramNamed, "Empty diagram name"},
    {edit_check_system, isSystemNamed, "Empty system name"},
    {edit_check_projdir, isProjectDirSet, "Empty project directory name"},
    {edit_check_wildcard, isDiagramPlain, "Invalid Diagram name: %s"},
};

/// The revision for a file name; reported when it is not of a usable length.
std::string checkedRevision(const char* revision) {
    // An empty revision gets the same message as a long one, as it always has.
    std::string result = revision;
    if (result.empty() || result.size() > revisionLimit) {
        print_err("Revision name '%s' too long, truncated", quotedName(revision).getValue());
        result.resize(std::min<std::size_t>(result.size(), revisionLimit));
    }
    if (kaz::host::environment("edit_debug_diag_rev") != nullptr)
        std::fprintf(stderr, "diag_rev set to %s\n", result.c_str());
    return result;
}

} // namespace

const char* kaz_illegal_diag_chars() {
    static constinit const char* kept = nullptr;
    return keptVariable(kept, "illegal_diag_chars", defaultIllegal);
}

const char* kaz_replace_diag_chars() {
    static constinit const char* kept = nullptr;
    return keptVariable(kept, "replace_diag_chars", defaultReplacements);
}

void kaz_diag_strcpy(char* dst, const char* src) {
    if (dst == nullptr)
        return;
    const char* illegal = kaz_illegal_diag_chars();
    const char* replacements = kaz_replace_diag_chars();
    const std::size_t count = std::strlen(replacements);
    for (src = orEmpty(src); *src != '\0'; ++src) {
        const char* found = std::strchr(illegal, *src);
        // Meaningless where nothing was found, and not used then.
        const auto at = static_cast<std::size_t>(found - illegal);
        *dst++ = found == nullptr ? *src : at < count ? replacements[at] : '_';
    }
    *dst = '\0';
}

int edit_name_is_legal(int checks, int report) {
    for (const NameCheck& check : nameChecks) {
        if ((checks & check.bit) == 0 || check.passes())
            continue;
        if (report != 0)
            print_err(check.message, quotedName(orEmpty(kaz_env_diagram())).getValue());
        return 0;
    }
    return 1;
}

char* edit_make_name() {
    // The answer stands here until the next call.
    static char name[diagramFileSize];
    std::string diagram = orEmpty(kaz_env_diagram());
    name[0] = '\0';
    // Without a diagram the answer is "" and not the directory alone, which is another file's
    // name.
    if (diagram.empty())
        return name;
    // In place: it reads each byte before it writes it.
    kaz_diag_strcpy(diagram.data(), diagram.c_str());

    KazString whole = kaz::detail::systemDir();
    const KazToolsContext* context = KazToolsContext::getInstance();
    if (context != nullptr && context->getFilestoreDir())
        appendPart(whole, context->getFilestoreDir());
    appendPart(whole, diagram.c_str());
    if (const char* revision = kaz_env_revision()) {
        const std::string suffix = checkedRevision(revision);
        if (!suffix.empty())
            (whole += '.') += suffix.c_str();
    }
    // Told and then cut: there is no way to refuse.
    if (static_cast<std::size_t>(whole.getLength()) >= diagramFileSize)
        print_err("Filename too long '%s'", quotedName(whole).getValue());
    copyCut(name, diagramFileSize, whole);
    return name;
}
