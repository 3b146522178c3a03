// SPDX-License-Identifier: Apache-2.0
// Colours and fonts of documents.
#include "tools/formats/KazColourTable.h"
#include "tools/formats/KazFontTable.h"

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(ColourTable, NumbersEachColourOnceAndSpellsIt) {
    KazColourTable table;
    EXPECT_EQ(table.getCount(), 1);
    EXPECT_STREQ(table.getRtf(), "{\\colortbl;}");
    EXPECT_STREQ(table.getInterleaf(), "");
    EXPECT_EQ(table.add(-5, 300, 7), 1);
    EXPECT_EQ(table.add("#0f7"), 2);
    EXPECT_EQ(table.add("#00FF07"), 1);
    EXPECT_EQ(table.add("ReD"), 3);
    EXPECT_EQ(table.add("orange"), 4);
    for (const char* wrong :
         {"", "#", "#12", "#12345", "#1234567", "#gggggg", "reddish", "re", " red"})
        EXPECT_EQ(table.add(wrong), -1) << wrong;
    EXPECT_EQ(table.add(nullptr), -1);
    EXPECT_EQ(table.getCount(), 5);
    EXPECT_EQ(table.find(0, 255, 0x77), 2);
    EXPECT_EQ(table.find(1, 2, 3), -1);
    EXPECT_EQ(table.getRed(3) * 256 + table.getGreen(4), 255 * 256 + 0xA5);
    EXPECT_EQ(table.getBlue(0) + table.getRed(5) + table.getGreen(-1), 0);
    EXPECT_STREQ(table.getHtml(4), "#ffa500");
    EXPECT_STREQ(table.getHtml(0), "");
    EXPECT_STREQ(table.getHtml(5), "");
    EXPECT_STREQ(table.getMifTag(3), "Red");
    EXPECT_STREQ(table.getMifTag(4), "RGB FFA500");
    EXPECT_STREQ(table.getMifTag(9), "Black");
    EXPECT_STREQ(table.getRtf(), "{\\colortbl;\\red0\\green255\\blue7;\\red0\\green255\\blue119;"
                                 "\\red255\\green0\\blue0;\\red255\\green165\\blue0;}");
    EXPECT_STREQ(table.getInterleaf(),
                 "<!Color Definitions, C1 = 100.0, 0.0, 97.3, 0.0, C2 = 100.0, 0.0, 53.3, 0.0, "
                 "C3 = 0.0, 100.0, 100.0, 0.0, C4 = 0.0, 35.3, 100.0, 0.0>");
    const std::string mif = table.getMif().getValue();
    EXPECT_NE(mif.find("  <ColorTag `RGB FFA500'>\n  <ColorCyan 0.000000>\n"
                       "  <ColorMagenta 35.294118>\n  <ColorYellow 100.000000>\n"
                       "  <ColorBlack 0.000000>\n >\n"),
              std::string::npos)
        << mif;
    EXPECT_NE(mif.find("  <ColorTag `Black'>\n  <ColorCyan 0.000000>\n  <ColorMagenta 0.000000>\n"
                       "  <ColorYellow 0.000000>\n  <ColorBlack 100.000000>\n"
                       "  <ColorAttribute ColorIsBlack>\n  <ColorAttribute ColorIsReserved>\n"),
              std::string::npos);
    EXPECT_EQ(mif.find("`Red'"), mif.rfind("`Red'"));
}

TEST(ColourTable, IsFullWith255Colours) {
    KazColourTable table;
    table.addBasics();
    EXPECT_EQ(table.getCount(), 17);
    EXPECT_STREQ(table.getHtml(1), "#000000");
    EXPECT_STREQ(table.getHtml(16), "#00ffff");
    for (int i = 0; table.getCount() <= +KazColourTable::limit; ++i)
        table.add(i < 50 ? i : i + 1, 1, 1);
    EXPECT_EQ(table.add(254, 254, 254), 4) << "white is nearest";
    EXPECT_EQ(table.add(2, 0, 1), table.find(2, 1, 1));
    EXPECT_EQ(table.add(50, 1, 1), table.find(49, 1, 1)) << "the first of the nearest";
    EXPECT_EQ(table.getCount(), 256);
}

TEST(FontTable, CleansNames) {
    KazFontTable table;
    EXPECT_EQ(table.getCount(), 3);
    const std::pair<const char*, const char*> names[] = {
        {" Verdana ", "Verdana"},
        {"Evil{\\b}\\f1;", "Evilbf1"},
        {"A<b>,\"c\"'d`", "Abcd"},
        {"T\xC3\xA9st\n\x7F", "Tst"},
        {"0123456789012345678901234567890123456789", "0123456789012345678901234567890"},
        {"012345678901234567890123456789 123", "012345678901234567890123456789"}};
    int number = 3;
    for (const auto& [given, kept] : names) {
        EXPECT_EQ(table.add(given), number) << given;
        EXPECT_STREQ(table.getFamily(number++), kept);
    }
    EXPECT_EQ(table.add("\\{};\xFF"), +KazFontTable::body);
    EXPECT_EQ(table.add(nullptr), +KazFontTable::body);
    EXPECT_EQ(table.add("ARIAL"), +KazFontTable::heading);
    EXPECT_EQ(table.add("VERDANA", font_swiss), 3);
    EXPECT_EQ(table.getKind(3), font_swiss);
    EXPECT_EQ(table.add("verdana", font_roman), 3);
    EXPECT_EQ(table.getKind(3), font_swiss);
    for (int i = 0; i < 300; ++i)
        table.add(("Font " + std::to_string(i)).c_str());
    EXPECT_EQ(table.getCount(), +KazFontTable::limit);
    EXPECT_EQ(table.add("One more"), +KazFontTable::body);
    EXPECT_STREQ(table.getFamily(256), "");
}

TEST(FontTable, SpellsFontsAndReplacesDefaults) {
    KazFontTable table;
    table.add("Odd");
    EXPECT_STREQ(table.getRtf(),
                 "{\\fonttbl{\\f0\\froman\\fcharset0 Times New Roman;}"
                 "{\\f1\\fswiss\\fcharset0 Arial;}"
                 "{\\f2\\fmodern\\fcharset0 Courier New;}{\\f3\\fnil\\fcharset0 Odd;}}");
    EXPECT_STREQ(table.getCss(0), "'Times New Roman', serif");
    EXPECT_STREQ(table.getCss(2), "'Courier New', monospace");
    EXPECT_STREQ(table.getCss(3), "'Odd'");
    EXPECT_STREQ(table.getCss(4), "");
    EXPECT_STREQ(table.getInterleafFamily(1), "Helvetica");
    EXPECT_STREQ(table.getInterleafFamily(3), "Odd");
    EXPECT_STREQ(table.getInterleafFamily(-1), "Times");
    table.setDefault(1, "Odd", font_swiss);
    table.setDefault(3, "New", font_swiss);
    table.setDefault(0, "{}", font_swiss);
    EXPECT_STREQ(table.getFamily(1), "Arial");
    table.setDefault(1, "Gill Sans", font_swiss);
    EXPECT_STREQ(table.getFamily(1), "Gill Sans");
    EXPECT_EQ(table.getCount(), 4);
}

} // namespace
