// SPDX-License-Identifier: Apache-2.0
// What was encoded is read back by readers of their own: the same characters come back,
// as far as the format has them, and nothing else is ever written.
#include "fuzz/harness.h"
#include "fuzz/text_reference.h"
#include "tools/formats/encode.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace {

std::u32string with(std::u32string text, char32_t from, char32_t to) {
    std::replace(text.begin(), text.end(), from, to);
    return text;
}

std::string encoded(doc_format_enum format, const std::string& text, text_encoding_enum encoding) {
    KazString result;
    kazAppendEncoded(result, format, text.data(), static_cast<int>(text.size()), encoding);
    FUZZ_CHECK(std::string(result.getValue()).size() ==
               static_cast<std::size_t>(result.getLength()));
    return result.getValue();
}

void charactersComeBack(const std::string& text, text_encoding_enum encoding) {
    using namespace reference;
    const std::u32string meant =
        encoding == text_utf8 ? charactersOf(text) : charactersOfLatin1(text);
    // A tab is shown as a blank of fixed width.
    FUZZ_CHECK(fromHtml(encoded(doc_html, text, encoding), {{"<br>", '\n'}, {"&emsp;", '\t'}}) ==
               meant);
    FUZZ_CHECK(fromRtf(encoded(doc_rtf, text, encoding)) == meant);
    FUZZ_CHECK(fromMif(encoded(doc_mif, text, encoding)) == meant);
    FUZZ_CHECK(fromInterleaf(encoded(doc_interleaf, text, encoding)) == inInterleaf(meant));

    if (text.find('\0') != std::string::npos)
        return;
    const KazString attribute = kazEncodeHtmlAttribute(text.c_str(), encoding);
    FUZZ_CHECK(fromHtml(attribute.getValue(), {{"&#10;", '\n'}, {"&#9;", '\t'}}) == meant);
    const KazString string = kazEncodeMifString(text.c_str(), encoding);
    Reader reader(string.getValue());
    FUZZ_CHECK(reader.take("`") && takeMifString(reader) == with(meant, '\n', '\t'));
    FUZZ_CHECK(reader.empty());
}

/// What is appended may be part of what it is appended to.
void partsOfTheStringItself(const std::string& text, int from, int length) {
    for (const doc_format_enum format : {doc_html, doc_rtf, doc_mif, doc_interleaf}) {
        KazString all = text.c_str();
        const KazString shared = from % 2 == 0 ? all : KazString();
        const int start = from % (all.getLength() + 1);
        const int n = length % (all.getLength() - start + 1);
        const std::string part(all.getValue() + start, static_cast<std::size_t>(n));
        const std::string expected = all.getValue() + encoded(format, part, text_utf8);
        kazAppendEncoded(all, format, all.getValue() + start, n);
        FUZZ_CHECK(all.getValue() == expected);
        FUZZ_CHECK(from % 2 != 0 || shared.getValue() == text);
    }
}

bool drivesTerminals(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x61C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

void printableSaysWhatItWas(const std::string& text) {
    const auto escaped = [](const char* format, unsigned code) {
        char escape[16];
        std::snprintf(escape, sizeof escape, format, code);
        return std::string(escape);
    };
    std::string expected;
    for (std::string_view rest = text; !rest.empty();) {
        const auto [code, bytes] = reference::firstPiece(rest);
        if (code && !drivesTerminals(*code))
            expected += bytes;
        else if (code && *code >= 0x80)
            expected += escaped("\\u{%04X}", *code);
        else
            for (const char c : bytes)
                expected += escaped("\\x%02X", static_cast<unsigned char>(c));
        rest.remove_prefix(bytes.size());
    }
    FUZZ_CHECK(kazPrintable(text.c_str()).getValue() == expected);
}

void urlComesBack(const std::string& text) {
    const KazString url = kazEncodeUrl(text.c_str());
    std::string read;
    for (const char* at = url.getValue(); *at != '\0'; ++at) {
        unsigned byte = static_cast<unsigned char>(*at);
        if (*at == '%') {
            // No sscanf(): it needs memory on some hosts, and goes on without it.
            FUZZ_CHECK(std::from_chars(at + 1, at + 3, byte, 16).ptr == at + 3);
            FUZZ_CHECK(std::none_of(at + 1, at + 3, [](char c) { return c >= 'a'; }));
            at += 2;
        } else {
            FUZZ_CHECK(std::strchr("-._~", *at) != nullptr || (byte >= '0' && byte <= '9') ||
                       ((byte | 32) >= 'a' && (byte | 32) <= 'z'));
        }
        read += static_cast<char>(byte);
    }
    FUZZ_CHECK(read == text);
}

/// As a browser reads it: without blanks in front, tabs and line ends.
void safeLinksRunNothing(const std::string& text) {
    if (!kazIsSafeLink(text.c_str()))
        return;
    std::string read;
    for (const char c : text)
        if (static_cast<unsigned char>(c) > 0x20)
            read += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    for (const char* scheme : {"javascript:", "data:", "vbscript:", "blob:", "about:"})
        FUZZ_CHECK(!read.starts_with(scheme));
}

void anchorsAreNames(const std::string& text) {
    const std::string name = kazAnchorName(text.c_str()).getValue();
    FUZZ_CHECK(!name.empty() && name.size() <= 40 && (name[0] | 32) >= 'a' &&
               (name[0] | 32) <= 'z');
    FUZZ_CHECK(name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                      "0123456789_") == std::string::npos);
    FUZZ_CHECK(kazAnchorName(name.c_str()) == name.c_str());
}

void all(fuzz::Input input) {
    const int from = input.byte();
    const int length = input.byte();
    const bool isAscii = input.flag();
    std::string text = input.rest().substr(0, 8192); // the readers take their time
    constexpr std::string_view markup = "abc xyz&<>\"'`\\{}\n\r\t\x1b\x7f()ABC";
    if (isAscii)
        for (char& c : text)
            c = markup[static_cast<unsigned char>(c) % markup.size()];
    charactersComeBack(text, text_utf8);
    charactersComeBack(text, text_latin1);
    std::erase(text, '\0');
    partsOfTheStringItself(text, from, length);
    printableSaysWhatItWas(text);
    urlComesBack(text);
    safeLinksRunNothing(text);
    anchorsAreNames(text);
}

} // namespace

void fuzz::harness(Input& input) {
    Failures::whole(input, all);
}
