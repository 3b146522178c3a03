// SPDX-License-Identifier: Apache-2.0
// The table of characters and formats by examples; what was encoded comes back in
// fuzz/fuzz_encode.cpp.
#include "kit/table.h"
#include "testkit/alloc_failure.h"
#include "tools/formats/encode.h"

#include <clocale>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

std::string encoded(doc_format_enum format, const char* text,
                    text_encoding_enum encoding = text_utf8) {
    return kazEncodeText(format, text, encoding).getValue();
}

struct Row {
    const char* text;
    const char *html, *attribute, *rtf, *mif, *mifString, *interleaf;
};

TEST(Encode, EachCharacterAsEachFormatWritesIt) {
    const Row rows[] = {
        {"", "", "", "", "", "`'", ""},
        {"a b~9", "a b~9", "a b~9", "a b~9", "<String `a b~9'>", "`a b~9'", "a b~9"},
        {"a\r\n\nb", "a<br><br>b", "a&#10;&#10;b", "a\\line \\line b",
         "<String `a'><Char HardReturn><Char HardReturn><String `b'>", "`a\\t\\tb'", "a<HR><HR>b"},
        {"\v\f\r\xC2\x85\xE2\x80\xA8\xE2\x80\xA9", "<br><br><br><br><br><br>",
         "&#10;&#10;&#10;&#10;&#10;&#10;", "\\line \\line \\line \\line \\line \\line ",
         "<Char HardReturn><Char HardReturn><Char HardReturn><Char HardReturn><Char HardReturn>"
         "<Char HardReturn>",
         "`\\t\\t\\t\\t\\t\\t'", "<HR><HR><HR><HR><HR><HR>"},
        {"\t", "&emsp;", "&#9;", "\\tab ", "<String `\\t'>", "`\\t'", "<Tab>"},
        {"&<>", "&amp;&lt;&gt;", "&amp;&lt;&gt;", "&<>", "<String `&<\\>'>", "`&<\\>'", "&<<>"},
        {"\"'`\\", "&quot;&#39;`\\", "&quot;&#39;`\\", "\"'`\\\\", "<String `\"\\q\\Q\\\\'>",
         "`\"\\q\\Q\\\\'", "\"'`\\"},
        {"{}", "{}", "{}", "\\{\\}", "<String `{}'>", "`{}'", "{}"},
        {"\xC2\xA0\xC2\xAD", "&nbsp;&shy;", "&nbsp;&shy;", "\\~\\-",
         "<Char HardSpace><Char DiscHyphen>", "`\xC2\xA0\xC2\xAD'", "<SP><->"},
        {"\xE2\x80\x91\xE2\x80\x82", "\xE2\x80\x91\xE2\x80\x82", "\xE2\x80\x91\xE2\x80\x82",
         "\\_\\u8194?", "<Char HardHyphen><Char EnSpace>", "`\xE2\x80\x91\xE2\x80\x82'", "- "},
        {"\xC3\xA4", "\xC3\xA4", "\xC3\xA4", "\\u228\\'e4", "<String `\xC3\xA4'>", "`\xC3\xA4'",
         "<#e4>"},
        {"\xE2\x82\xAC", "\xE2\x82\xAC", "\xE2\x82\xAC", "\\u8364\\'80", "<String `\xE2\x82\xAC'>",
         "`\xE2\x82\xAC'", "EUR"},
        {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80", "\\u-10179?\\u-8704?",
         "<String `\xF0\x9F\x98\x80'>", "`\xF0\x9F\x98\x80'", "?"},
        {"\x1b\x7f\xEF\xBF\xBE", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD",
         "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD", "\\u-3?\\u-3?\\u-3?",
         "<String `\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD'>",
         "`\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD'", "???"},
        {"\xEF\xBB\xBFx", "\xEF\xBB\xBFx", "\xEF\xBB\xBFx", "\\u-257?x", "<String `\xEF\xBB\xBFx'>",
         "`\xEF\xBB\xBFx'", "?x"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(kazPrintable(row.text).getValue());
        EXPECT_EQ(encoded(doc_html, row.text), row.html);
        EXPECT_STREQ(kazEncodeHtmlAttribute(row.text), row.attribute);
        EXPECT_EQ(encoded(doc_rtf, row.text), row.rtf);
        EXPECT_EQ(encoded(doc_mif, row.text), row.mif);
        EXPECT_STREQ(kazEncodeMifString(row.text), row.mifString);
        EXPECT_EQ(encoded(doc_interleaf, row.text), row.interleaf);
    }
}

TEST(Encode, InvalidUtf8CountsOnceForEachMaximalPart) {
    const std::string mark = "\xEF\xBF\xBD";
    const std::pair<const char*, int> texts[] = {
        {"\x80", 1},         {"\xC0\xAF", 2},     {"\xE0\x80\xAF", 3},
        {"\xED\xA0\x80", 3}, {"\xE2\x82", 1},     {"\xF0\x9F\x98", 1},
        {"\xF0\x80\x80", 3}, {"\xF4\x91\x92", 3}, {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF", 4}};
    for (const auto& [text, marks] : texts) {
        std::string expected;
        for (int i = 0; i < marks; ++i)
            expected += mark;
        EXPECT_EQ(encoded(doc_html, text), expected);
        EXPECT_EQ(encoded(doc_html, (std::string(text) + "A").c_str()), expected + "A");
    }
}

TEST(Encode, Latin1HasTheCharactersOfWindows) {
    EXPECT_EQ(encoded(doc_html, "\xE4\x80\x9F\x81&", text_latin1),
              "\xC3\xA4\xE2\x82\xAC\xC5\xB8\xEF\xBF\xBD&amp;");
    EXPECT_EQ(encoded(doc_rtf, "\x85\xA0\xAD\xFF", text_latin1), "\\u8230\\'85\\~\\-\\u255\\'ff");
    EXPECT_STREQ(kazEncodeHtmlAttribute("\xE9", text_latin1), "\xC3\xA9");
    EXPECT_STREQ(kazEncodeMifString("\xE9'", text_latin1), "`\xC3\xA9\\q'");
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
    EXPECT_STREQ(kazEncodeUrl("aZ09-._~ /?\xC3\xA4\xFF%"), "aZ09-._~%20%2F%3F%C3%A4%FF%25");
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
        EXPECT_STREQ(kazPrintable("\xC3\xA4\xE2\x82\xAC\xFF\xE2\x82"),
                     "\xC3\xA4\xE2\x82\xAC\\xFF\\xE2\\x82");
        EXPECT_STREQ(kazPrintable("\xC2\x9B\xE2\x80\xAE\xD8\x9C\xE2\x80\xA8\xE2\x81\xA6"),
                     "\\u{009B}\\u{202E}\\u{061C}\\u{2028}\\u{2066}");
        EXPECT_STREQ(kazPrintable("\xC2\xA0\xE2\x81\xA5\xE2\x80\x90"),
                     "\xC2\xA0\xE2\x81\xA5\xE2\x80\x90");
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
