// SPDX-License-Identifier: Apache-2.0
// That what was encoded comes back, and nothing else is written, is held by
// fuzz/fuzz_encode.cpp; here is what that leaves open.
#include "kit/table.h"
#include "testkit/alloc_failure.h"
#include "tools/formats/encode.h"

#include <clocale>
#include <gtest/gtest.h>
#include <string>

namespace {

std::string encoded(doc_format_enum format, const char* text,
                    text_encoding_enum encoding = text_utf8) {
    return kazEncodeText(format, text, encoding).getValue();
}

/// Where a reader would take more than one spelling.
TEST(Encode, CharactersThatEachFormatHasOwnWordsFor) {
    const char* const special = "\xC2\xA0\xC2\xAD\xE2\x80\x91\xE2\x80\x82";
    EXPECT_EQ(encoded(doc_html, special), "&nbsp;&shy;\xE2\x80\x91\xE2\x80\x82");
    EXPECT_STREQ(kazEncodeHtmlAttribute(special), "&nbsp;&shy;\xE2\x80\x91\xE2\x80\x82");
    EXPECT_EQ(encoded(doc_rtf, special), "\\~\\-\\_\\u8194?");
    EXPECT_EQ(encoded(doc_mif, special),
              "<Char HardSpace><Char DiscHyphen><Char HardHyphen><Char EnSpace>");
    EXPECT_STREQ(kazEncodeMifString(special), (std::string("`") + special + "'").c_str());
    EXPECT_EQ(encoded(doc_interleaf, special), "<SP><->- ");
    // What older readers of RTF show instead.
    EXPECT_EQ(encoded(doc_rtf, "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"),
              "\\u228\\'e4\\u8364\\'80\\u-10179?\\u-8704?");
    EXPECT_EQ(encoded(doc_rtf, "\x85\xFF", text_latin1), "\\u8230\\'85\\u255\\'ff");
}

TEST(Encode, NullRangeAndLength) {
    EXPECT_TRUE(kazEncodeText(doc_mif, nullptr).isEmpty());
    EXPECT_TRUE(kazEncodeText(static_cast<doc_format_enum>(4), "x").isEmpty());
    EXPECT_TRUE(kazEncodeText(static_cast<doc_format_enum>(-1), "x").isEmpty());
    EXPECT_STREQ(kazEncodeMifString(nullptr), "`'");
    KazString out = "<";
    kazAppendEncoded(out, doc_rtf, "a{b", -1);
    kazAppendEncoded(out, doc_rtf, "a\0b", 3);
    kazAppendEncoded(out, doc_rtf, "xyz", 0);
    kazAppendEncoded(out, doc_rtf, nullptr, 3);
    kazAppendEncoded(out, static_cast<doc_format_enum>(9), "xyz", 3);
    EXPECT_STREQ(out, "<a\\{ba\\u-3?b");
}

TEST(Encode, LinksThatRunNothing) {
    for (const char* safe : {"#name", "page.html", "../a/b:c", "?q=a:b", "#a:b", "//host/x", "/x",
                             "http://a", "HTTPS:x", "MailTo:a@b", "ftp://a", "file:///x", "a b",
                             "\xC3\xA4", "http:", "%6Aavascript/x"})
        EXPECT_TRUE(kazIsSafeLink(safe)) << safe;
    for (const std::string& unsafe :
         kit::parts("| |javascript:alert(1)|JaVaScRiPt:x| javascript:x|javascript:x |"
                    "java\tscript:x|java\nscript:x|\x01javascript:x|data:text/html,x|vbscript:x|"
                    "blob:x|about:blank|view-source:x|C:\\x|a:b|:|:x|1:2|http\x7f:x|http :x|"
                    "httpx:y|htt:p|%6Aavascript:x|javascript&colon;:x|\xC2\x85http:x|http://a\n|"
                    "file\r:x|ws:x|javascript\\:x"))
        EXPECT_FALSE(kazIsSafeLink(unsafe.c_str())) << unsafe;
    EXPECT_FALSE(kazIsSafeLink(nullptr));
}

TEST(Encode, UrlsAndAnchors) {
    EXPECT_STREQ(kazEncodeUrl(nullptr), "");
    EXPECT_STREQ(kazAnchorName("Tank 1"), "Tank_1");
    EXPECT_STREQ(kazAnchorName("1\xC3\xA4"), "a1__");
    EXPECT_STREQ(kazAnchorName("_x"), "a_x");
    EXPECT_STREQ(kazAnchorName(nullptr), "a");
    const std::string longName(50, 'x');
    EXPECT_EQ(kazAnchorName(longName.c_str()).getValue(), longName.substr(0, 40));
    EXPECT_EQ(kazAnchorName(("1" + longName).c_str()).getValue(), "a1" + longName.substr(0, 38));
}

TEST(Encode, PrintableInEveryLocale) {
    const std::string old = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"C", ""}) {
        std::setlocale(LC_ALL, locale);
        EXPECT_STREQ(kazPrintable("a\tb\n\x1b[31m\x7f\\"), "a\\x09b\\x0A\\x1B[31m\\x7F\\");
        EXPECT_STREQ(kazPrintable("\xC3\xA4\xFF\xC2\x9B"), "\xC3\xA4\\xFF\\u{009B}");
        EXPECT_STREQ(kazPrintable(nullptr), "");
    }
    std::setlocale(LC_ALL, old.c_str());
}

TEST(Encode, MemoryThatRunsOutLeavesTheStringAsItWas) {
    KazString out = "before";
    EXPECT_GT(moxkit::sweepAllocations(
                  [&] { kazAppendEncoded(out, doc_mif, std::string(100, '<').c_str(), -1); },
                  [&] { EXPECT_STREQ(out, "before"); }),
              0);
}

} // namespace
