// SPDX-License-Identifier: Apache-2.0
// Families are told apart as readers do it, without regard to case. A name is cleaned when it
// comes in, so that none can end the text of any format in which it is written. The first three
// fonts are always there, with names that each format knows; a full table, or a name of which
// nothing is left, gives the font of the body.
#include "tools/formats/KazFontTable.h"

#include "tools/formats/detail/TextBuilder.h"
#include "tools/formats/detail/decimal.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

using kaz::detail::TextBuilder;

constexpr std::size_t longest = 31;

struct KindNames {
    const char* rtf;
    const char* css; ///< null where the reader is to choose
};
constexpr KindNames kindNames[] = {{"\\fnil", nullptr},
                                   {"\\froman", "serif"},
                                   {"\\fswiss", "sans-serif"},
                                   {"\\fmodern", "monospace"}};

const KindNames& namesOf(font_kind_enum kind) {
    return kindNames[kind >= font_unknown && kind <= font_modern ? kind : font_unknown];
}

bool isAllowed(char c) {
    return c >= ' ' && c < 0x7F &&
           std::string_view("\\{};<>,\"'`").find(c) == std::string_view::npos;
}

/// What is left of a name; "" for none.
/// ASCII alone, since the formats disagree on the encoding of names.
KazString cleaned(const char* family) {
    std::string text;
    for (const char c : std::string_view(kaz::detail::orEmpty(family)))
        if (isAllowed(c) && (c != ' ' || !text.empty()))
            text += c;
    // Cut first: the cut may leave a blank at the end.
    text.resize(std::min(text.size(), longest));
    text.resize(text.find_last_not_of(' ') + 1);
    return text.c_str();
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : int{c}; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char x, char y) { return lower(x) == lower(y); });
}

} // namespace

KazFontTable::KazFontTable()
    : fonts_{{"Times New Roman", font_roman}, {"Arial", font_swiss}, {"Courier New", font_modern}} {
}

int KazFontTable::add(const char* family, font_kind_enum kind) {
    const KazString name = cleaned(family);
    if (name.isEmpty())
        return body;
    for (std::size_t i = 0; i < fonts_.size(); ++i) {
        if (!equalsNoCase(fonts_[i].family.getValue(), name.getValue()))
            continue;
        // The kind that was told first stays, but "unknown" tells nothing.
        if (namesOf(fonts_[i].kind).css == nullptr)
            fonts_[i].kind = kind;
        return static_cast<int>(i);
    }
    if (getCount() >= limit)
        return body;
    fonts_.push_back({name, kind});
    return getCount() - 1;
}

/// A family is in the table once: one that is there under another number, which documents may
/// refer to, cannot become a default as well.
void KazFontTable::setDefault(int number, const char* family, font_kind_enum kind) {
    const KazString name = cleaned(family);
    if (number < body || number > code || name.isEmpty())
        return;
    const bool isThere = std::any_of(fonts_.begin(), fonts_.end(), [&](const Font& font) {
        return equalsNoCase(font.family.getValue(), name.getValue());
    });
    if (!isThere)
        fonts_[static_cast<std::size_t>(number)] = {name, kind};
}

const KazString& KazFontTable::getFamily(int number) const {
    return number >= 0 && number < getCount() ? fonts_[static_cast<std::size_t>(number)].family
                                              : KazString::theEmptyString;
}

font_kind_enum KazFontTable::getKind(int number) const {
    return number >= 0 && number < getCount() ? fonts_[static_cast<std::size_t>(number)].kind
                                              : font_unknown;
}

/// The quotes are safe: no name holds one.
KazString KazFontTable::getCss(int number) const {
    if (number < 0 || number >= getCount())
        return {};
    KazString result = "'";
    result += getFamily(number);
    result += "'";
    if (const char* generic = namesOf(getKind(number)).css)
        (result += ", ") += generic;
    return result;
}

/// Names are ASCII, so the character set may be 0 (ANSI) for all.
KazString KazFontTable::getRtf() const {
    KazString result;
    TextBuilder out(result);
    out.append("{\\fonttbl");
    for (int i = 0; i < getCount(); ++i) {
        out.append("{\\f");
        kaz::detail::appendNumber(out, i);
        out.append(namesOf(getKind(i)).rtf);
        out.append("\\fcharset0 ");
        out.append(getFamily(i).getValue());
        out.append(";}");
    }
    out.append('}');
    out.commit();
    return result;
}

KazString KazFontTable::getInterleafFamily(int number) const {
    constexpr const char* names[][2] = {
        {"Times New Roman", "Times"}, {"Arial", "Helvetica"}, {"Courier New", "Courier"}};
    if (number < 0 || number >= getCount())
        return "Times";
    for (const auto& [family, name] : names)
        if (equalsNoCase(getFamily(number).getValue(), family))
            return name;
    return getFamily(number);
}
