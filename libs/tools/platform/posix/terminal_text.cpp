// SPDX-License-Identifier: Apache-2.0
// How text comes out on the user's terminal.

#include "tools/platform/host.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <langinfo.h>
#include <locale.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kaz::host {

namespace {

bool isSet(const char* value) {
    return value != nullptr && *value != '\0';
}

/// A tool gives its children, and so itself, another "LANG"; what the terminal
/// shows is what it said before. Read when the library is loaded.
const std::string languageAtStart = [] {
    const char* value = std::getenv("LANG");
    return std::string(value != nullptr ? value : "");
}();

const char* localeName() {
    for (const char* name : {"LC_ALL", "LC_CTYPE"})
        if (const char* value = std::getenv(name); isSet(value))
            return value;
    return languageAtStart.c_str();
}

/// The locale for characters alone, apart from the one of the process, which is the
/// tool's business. Never freed: it lasts as long as the process.
locale_t terminalLocale() {
    static const locale_t locale = [] {
        const locale_t own = newlocale(LC_CTYPE_MASK, localeName(), locale_t{});
        // The variables may name a locale that is not installed.
        return own != locale_t{} ? own : newlocale(LC_CTYPE_MASK, "C", locale_t{});
    }();
    return locale;
}

/// The calling thread uses the terminal's locale during the lifetime.
class LocaleScope {
public:
    LocaleScope() : before_(uselocale(terminalLocale())) {}
    ~LocaleScope() { uselocale(before_); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    locale_t before_;
};

Glyph firstGlyph(std::string_view text, std::size_t offset) {
    wchar_t wide = 0;
    std::mbstate_t state{};
    const std::size_t size =
        std::mbrtowc(&wide, text.data() + offset, text.size() - offset, &state);
    if (size == 0 || size > text.size() - offset) // NUL; invalid or cut off
        return {offset, 1, -1};
    return {offset, size, wcwidth(wide)};
}

} // namespace

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

bool allowEscapes(std::FILE* stream) {
    const char* kind = std::getenv("TERM");
    return isSet(kind) && std::strcmp(kind, "dumb") != 0 && isTerminal(stream);
}

int terminalWidth(std::FILE* stream) {
    winsize size{};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool terminalShowsUtf8() {
    return std::strcmp(nl_langinfo_l(CODESET, terminalLocale()), "UTF-8") == 0;
}

std::vector<Glyph> glyphsOf(std::string_view text) {
    const LocaleScope scope;
    std::vector<Glyph> glyphs;
    glyphs.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); at += glyphs.back().size)
        glyphs.push_back(firstGlyph(text, at));
    return glyphs;
}

} // namespace kaz::host
