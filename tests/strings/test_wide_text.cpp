// SPDX-License-Identifier: Apache-2.0
// Between narrow text in the locale's encoding and 16-bit text.

#include "string_kit.h"

#include <gtest/gtest.h>

#include <clocale>
#include <type_traits>

namespace {

/// Puts the process into a UTF-8 locale, where there is one, until the test ends.
class WideText : public testing::Test {
protected:
    ~WideText() override { std::setlocale(LC_CTYPE, before.c_str()); }

    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    const bool isUtf8 =
        std::setlocale(LC_CTYPE, "C.UTF-8") || std::setlocale(LC_CTYPE, "en_US.UTF-8");
};

TEST_F(WideText, PlainTextGoesThereAndBack) {
    const KazString narrow("plain text");
    const KazWString wide(narrow);
    EXPECT_EQ(wide.getLength(), 10);
    EXPECT_EQ(wide.toNarrow(), narrow);
    EXPECT_EQ(KazString(wide.getValue()), narrow);
    EXPECT_EQ(blockOf(wide.toNarrow()).bufferLength, 19);
    EXPECT_TRUE("<" + wide.subString(0, 5) + ">" == "<plain>");
    char buffer[] = "a";
    unsigned short units[] = {'b', 0};
    EXPECT_TRUE(buffer + (units + wide + units) + buffer == "abplain textba");
    EXPECT_TRUE(wide < "plant" && wide != "plain");
}

TEST_F(WideText, CharactersBeyond16BitsBecomePairs) {
    if (!isUtf8)
        GTEST_SKIP() << "no UTF-8 locale";
    const std::pair<const char*, std::u16string> rows[] = {
        {"\xC3\xA4", u"\u00E4"},
        {"\xE2\x82\xAC!", u"\u20AC!"},
        {"a\xF0\x9F\x98\x80z", u"a\xD83D\xDE00z"},
        {"\xF0\x90\x80\x80", u"\xD800\xDC00"},
        {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"}};
    for (const auto& [narrow, units] : rows) {
        const KazWString wide(narrow);
        EXPECT_TRUE(wide == units.c_str()) << narrow;
        EXPECT_EQ(wide.getLength(), static_cast<int>(units.size()));
        EXPECT_EQ(wide.toNarrow(), narrow);
    }
    KazWString case_("\xC3\xA4x");
    case_.toUpper();
    EXPECT_EQ(case_.toNarrow(), "\xC3\x84X");
    EXPECT_TRUE(case_.equalsNoCase(KazWString("\xC3\xA4x")));
}

TEST_F(WideText, OtherTypesOfUnitsAreText) {
    char16_t buffer[] = u"uv";
    KazWString text(u"b\xD83D");
    EXPECT_EQ(text.getLength(), 2);
    text = u"b";
    text += u"c";
    EXPECT_TRUE(u"a" + text + u"d" == "abcd" && buffer + text + buffer == u"uvbcuv");
    EXPECT_TRUE(u'a' + text + u'd' == "abcd" && 'a' + text + 'd' == u"abcd");
    EXPECT_TRUE(text < u"bd" && text > u"b" && text <= u"bc" && text >= u"bc");
    EXPECT_TRUE(u"bd" > text && u"b" < text && u"bc" <= text && u"bc" >= text);
    EXPECT_TRUE(KazWString() < u"a" && text > u"" && u"" < text) << "as with any text";
    EXPECT_EQ(KazWString(static_cast<const char16_t*>(nullptr)).disguise(), nullptr);
    constexpr bool hasWideUnits = sizeof(wchar_t) == 2;
    EXPECT_EQ((std::is_constructible_v<KazWString, const wchar_t*>), hasWideUnits);
}

TEST_F(WideText, FormattingGoesThroughTheNarrowForm) {
    if (!isUtf8)
        GTEST_SKIP() << "no UTF-8 locale";
    KazWString text;
    text.format("%d %s%c", 7, "\xE2\x82\xAC", 'x');
    EXPECT_TRUE(text == u"7 \u20ACx");
    text.appendFormat(KazWString(u" \u20AC%%%.1f").getValue(), 0.5);
    EXPECT_EQ(text.toNarrow(), "7 \xE2\x82\xACx \xE2\x82\xAC%0.5");
    text.format("%s!%600s", text.toNarrow().getValue(), "y"); // longer than any small buffer
    EXPECT_EQ(text.getLength(), 10 + 1 + 600);
    text.appendFormat("%s", "\xFF");
    EXPECT_EQ(text.getLength(), 611) << "nothing is written that cannot be converted";
    text.format("%s", "\xFF");
    EXPECT_TRUE(text.isEmpty());
}

TEST_F(WideText, CollationIsTheLocales) {
    for (const char* name : {"C", "en_US.UTF-8", "de_DE.UTF-8"}) {
        const std::string before = std::setlocale(LC_ALL, nullptr);
        if (std::setlocale(LC_ALL, name) != nullptr) {
            const bool isC = std::string(name) == "C";
            EXPECT_EQ(KazWString(u"a").compareLocale(KazWString(u"B")), isC ? 1 : -1) << name;
            EXPECT_EQ(KazWString(u"a").compareLocale(KazWString(u"b").getValue()), -1);
            EXPECT_TRUE(KazWString(u"a\U0001F600").equalsLocale(KazWString(u"a\U0001F600")));
            EXPECT_FALSE(KazWString::equalsLocale(KazWString(u"\xD83D"), KazWString(u"b")));
            EXPECT_TRUE(KazWString().equalsLocale(static_cast<const unsigned short*>(nullptr)));
            EXPECT_EQ(KazWString::compareLocale(KazWString(), KazWString(u"a")), -1);
        }
        std::setlocale(LC_ALL, before.c_str());
    }
}

TEST_F(WideText, WhatCannotBeConvertedIsNullAndSaysSo) {
    const unsigned short lone[][4] = {
        {0xD83D}, {0xDE00}, {'a', 0xD83D, 'b'}, {0xD83D, 0xD83D, 0xDE00}, {0xDE00, 0xDE00}};
    KazString narrow("before");
    KazWString wide("before");
    for (const auto& text : lone) {
        EXPECT_EQ(KazString(text).disguise(), nullptr);
        EXPECT_FALSE(KazWString(text).toNarrow(narrow));
    }
    if (isUtf8) {
        EXPECT_EQ(KazWString("a\xFF").disguise(), nullptr);
        EXPECT_FALSE(wide.setNarrow("a\xFF"));
        EXPECT_TRUE(wide == "before");
    }
    EXPECT_EQ(narrow, "before");
    EXPECT_TRUE(wide.setNarrow("after") && wide.toNarrow(narrow));
    EXPECT_EQ(narrow, "after");
    EXPECT_TRUE(wide.setNarrow(nullptr) && wide.toNarrow(narrow));
    EXPECT_TRUE(wide.disguise() == nullptr && narrow.disguise() == nullptr);
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(KazString(KazWString(u"\u0416").getValue()).disguise(), nullptr);
    EXPECT_EQ(KazString(static_cast<const unsigned short*>(nullptr)).disguise(), nullptr);
    EXPECT_EQ(KazWString(static_cast<const char*>(nullptr)).disguise(), nullptr);
    EXPECT_EQ(KazString(KazWString::theEmptyString.getValue()).disguise(), nullptr);
    EXPECT_EQ(KazWString("").disguise(), nullptr);
}

} // namespace
