// SPDX-License-Identifier: Apache-2.0
// What goes by bytes: texts for terminals, links and names of anchors. No locale has a say
// in what a letter is.
#include "tools/formats/detail/TextBuilder.h"
#include "tools/formats/detail/bounded_view.h"
#include "tools/formats/detail/characters.h"
#include "tools/formats/encode.h"
#include "tools/platform/processor/vector.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <string_view>

namespace {

using kaz::detail::boundedView;
using kaz::detail::TextBuilder;

constexpr char upperDigits[] = "0123456789ABCDEF";

unsigned byteOf(char c) {
    return static_cast<unsigned char>(c);
}

bool isControl(char c) {
    return byteOf(c) < 0x20 || c == 0x7F;
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool isLetter(char c) {
    return lower(c) >= 'a' && lower(c) <= 'z';
}

bool isLetterOrDigit(char c) {
    return isLetter(c) || (c >= '0' && c <= '9');
}

void putByte(TextBuilder& out, char c) {
    const char code[] = {'\\', 'x', upperDigits[byteOf(c) / 16], upperDigits[byteOf(c) % 16]};
    out.append(code, sizeof code);
}

/// What a terminal obeys beyond ASCII, or what changes the order of what it shows.
/// The controls of C1, the marks and embeddings of direction (CVE-2021-42574 shows what they hide)
/// and the separators of lines and paragraphs.
bool isInvisible(char32_t c) {
    return (c >= 0x80 && c <= 0x9F) || c == 0x61C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

/// Four digits: all of those characters lie below 0x10000.
void putCode(TextBuilder& out, char32_t c) {
    out.append("\\u{");
    for (int shift = 12; shift >= 0; shift -= 4)
        out.append(upperDigits[c >> shift & 15]);
    out.append('}');
}

/// How much of a text is printable ASCII.
std::size_t lengthOfOrdinary(const char* text, const char* end) {
    static const kaz::host::ByteSet others = [] {
        kaz::host::ByteSet set;
        for (int byte = 0; byte < 256; ++byte)
            if (byte < 0x20 || byte >= 0x7F)
                set.insert(static_cast<char>(byte));
        return set;
    }();
    return kaz::host::bytes().findIn(text, static_cast<std::size_t>(end - text), others);
}

/// The first character of a text that is not empty; gives its length.
int putPrintable(TextBuilder& out, const char* text, const char* end) {
    const kaz::detail::Utf8 first = kaz::detail::firstOfUtf8(text, end);
    const auto length = static_cast<std::size_t>(first.length);
    // Byte by byte, so that a damaged text shows what it really holds.
    if (!first.valid || (length == 1 && isControl(*text)))
        std::for_each_n(text, length, [&out](char c) { putByte(out, c); });
    else if (isInvisible(first.code))
        putCode(out, first.code);
    else
        out.append(text, length);
    return first.length;
}

/// C1 controls are found as characters only: their bytes are parts of others in UTF-8.
bool hasControl(std::string_view text) {
    for (const char* at = text.begin(); at != text.end();) {
        const kaz::detail::Utf8 c = kaz::detail::firstOfUtf8(at, text.end());
        if (isControl(*at) || (c.valid && c.code >= 0x80 && c.code <= 0x9F))
            return true;
        at += c.length;
    }
    return false;
}

bool equalsNoCase(std::string_view text, std::string_view lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](char a, char b) { return lower(a) == b; });
}

bool isSafeScheme(std::string_view scheme) {
    constexpr std::string_view schemes[] = {"http", "https", "mailto", "ftp", "file"};
    return std::any_of(std::begin(schemes), std::end(schemes),
                       [scheme](std::string_view safe) { return equalsNoCase(scheme, safe); });
}

} // namespace

KazString kazPrintable(const char* text) {
    const std::string_view view = boundedView(text);
    KazString result;
    TextBuilder out(result);
    out.reserve(view.size());
    const char* const end = view.data() + view.size();
    for (const char* at = view.data(); at != end;) {
        const std::size_t ordinary = lengthOfOrdinary(at, end);
        out.append(at, ordinary);
        at += ordinary;
        if (at != end)
            at += putPrintable(out, at, end);
    }
    out.commit();
    return result;
}

/// What RFC 3986 calls unreserved stays; all else would mean something, or nothing, in a URL.
KazString kazEncodeUrl(const char* text) {
    const std::string_view view = boundedView(text);
    KazString result;
    TextBuilder out(result);
    out.reserve(view.size());
    for (const char c : view) {
        if (isLetterOrDigit(c) || c == '-' || c == '.' || c == '_' || c == '~') {
            out.append(c);
            continue;
        }
        const char code[] = {'%', upperDigits[byteOf(c) / 16], upperDigits[byteOf(c) % 16]};
        out.append(code, sizeof code);
    }
    out.commit();
    return result;
}

bool kazIsSafeLink(const char* target) {
    const std::string_view view = boundedView(target);
    // Browsers drop blanks and controls before they look for the scheme.
    if (view.empty() || view.front() == ' ' || view.back() == ' ' || hasControl(view))
        return false;
    // A colon in the first part of a path would be read as the end of a scheme.
    const std::size_t end = view.find_first_of(":/?#");
    return end == std::string_view::npos || view[end] != ':' || isSafeScheme(view.substr(0, end));
}

/// The narrowest rule of the formats: bookmarks of word processors begin with a letter, hold
/// letters, digits and "_" alone, and have 40 characters at most.
KazString kazAnchorName(const char* name) {
    constexpr std::size_t longest = 40;
    const std::string_view view = kaz::detail::orEmpty(name);
    KazString result;
    TextBuilder out(result);
    if (view.empty() || !isLetter(view.front()))
        out.append('a');
    for (const char c : view.substr(0, longest - out.size()))
        out.append(isLetterOrDigit(c) ? c : '_');
    out.commit();
    return result;
}
