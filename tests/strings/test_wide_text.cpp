// Between narrow text in the locale's encoding and 16-bit text.

#include "string_kit.h"

#include <gtest/gtest.h>

#include <clocale>

namespace {

/// Puts the process into a UTF-8 locale, where there is one, until destruction.
class Utf8Locale {
public:
    Utf8Locale() : before_(std::setlocale(LC_CTYPE, nullptr)) {
        isThere = std::setlocale(LC_CTYPE, "C.UTF-8") || std::setlocale(LC_CTYPE, "en_US.UTF-8");
    }
    ~Utf8Locale() { std::setlocale(LC_CTYPE, before_.c_str()); }

    bool isThere;

private:
    std::string before_;
};

TEST(WideText, PlainTextGoesThereAndBack) {
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

TEST(WideText, CharactersBeyond16BitsBecomePairs) {
    const Utf8Locale locale;
    if (!locale.isThere)
        GTEST_SKIP() << "no UTF-8 locale";
    struct Row {
        const char* narrow;
        std::vector<unsigned short> wide;
    };
    const Row rows[] = {
        {"\xC3\xA4", {0xE4, 0}},
        {"\xE2\x82\xAC!", {0x20AC, '!', 0}},
        {"a\xF0\x9F\x98\x80z", {'a', 0xD83D, 0xDE00, 'z', 0}},
        {"\xF0\x90\x80\x80", {0xD800, 0xDC00, 0}},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF, 0}},
    };
    for (const Row& row : rows) {
        const KazWString wide(row.narrow);
        EXPECT_TRUE(wide == row.wide.data()) << row.narrow;
        EXPECT_EQ(wide.getLength(), static_cast<int>(row.wide.size()) - 1);
        EXPECT_EQ(wide.toNarrow(), row.narrow);
    }
    KazWString case_("\xC3\xA4x");
    case_.toUpper();
    EXPECT_EQ(case_.toNarrow(), "\xC3\x84X");
    EXPECT_TRUE(case_.equalsNoCase(KazWString("\xC3\xA4x")));
}

TEST(WideText, WhatCannotBeConvertedIsNull) {
    const unsigned short lone[][4] = {
        {0xD83D}, {0xDE00}, {'a', 0xD83D, 'b'}, {0xD83D, 0xD83D, 0xDE00}, {0xDE00, 0xDE00}};
    const Utf8Locale locale;
    for (const auto& text : lone)
        EXPECT_EQ(KazString(text).disguise(), nullptr);
    if (locale.isThere) {
        EXPECT_EQ(KazWString("a\xFF").disguise(), nullptr);
    }
    std::setlocale(LC_CTYPE, "C");
    const unsigned short cyrillic[] = {0x0416, 0};
    EXPECT_EQ(KazString(cyrillic).disguise(), nullptr);
    EXPECT_EQ(KazString(static_cast<const unsigned short*>(nullptr)).disguise(), nullptr);
    EXPECT_EQ(KazWString(static_cast<const char*>(nullptr)).disguise(), nullptr);
    EXPECT_EQ(KazString(KazWString::theEmptyString.getValue()).disguise(), nullptr);
    EXPECT_EQ(KazWString("").disguise(), nullptr);
}

} // namespace
