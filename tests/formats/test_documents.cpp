// SPDX-License-Identifier: Apache-2.0
// What a report looks like in each format. That every sequence of calls gives a well-formed
// document, also without memory, is held by fuzz/fuzz_doc_writer.cpp.
#include "kit/host.h"
#include "testkit/temp_tree.h"
#include "tools/app/failures/KazFileException.h"
#include "tools/formats/KazDocWriter.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

namespace {

using Doc = std::unique_ptr<KazDocWriter>;

Doc make(doc_format_enum format) {
    return Doc(KazDocWriter::create(format));
}

/// The document without what stands before its text and behind it.
std::string bodyOf(KazDocWriter& doc) {
    const std::string all = doc.finish().getValue();
    constexpr std::pair<const char*, const char*> around[] = {{"<body>\n", "</body>\n</html>\n"},
                                                              {"\\margb1417\n", "}\n"},
                                                              {" <TFAutoConnect Yes>\n", ">\n"},
                                                              {"<!End Declarations>\n\n", ""}};
    const auto& [begin, end] = around[doc.getFormat()];
    const std::size_t from = all.find(begin) + std::string(begin).size();
    EXPECT_NE(all.find(begin), std::string::npos);
    EXPECT_TRUE(all.ends_with(end));
    return all.substr(from, all.size() - from - std::string(end).size());
}

void expectBodies(void (*write)(KazDocWriter&), const char* html, const char* rtf, const char* mif,
                  const char* interleaf) {
    const char* const expected[] = {html, rtf, mif, interleaf};
    for (const doc_format_enum format : {doc_html, doc_rtf, doc_mif, doc_interleaf}) {
        const Doc doc = make(format);
        write(*doc);
        if (expected[format] != nullptr) {
            EXPECT_EQ(bodyOf(*doc), expected[format]) << format;
        }
    }
}

TEST(Documents, HeadingsAndParagraphs) {
    expectBodies(
        [](KazDocWriter& doc) {
            doc.heading(9, "A & B", "1 x");
            doc.heading(1, "again", "1 x");
            doc.paragraph("right", KazDocWriter::Right);
            doc.text("begun");
            doc.beginParagraph(static_cast<KazDocWriter::Align>(7));
            doc.endParagraph();
            doc.endParagraph();
        },
        "<h6 id=\"a1_x\">A &amp; B</h6>\n<h1>again</h1>\n<p class=\"right\">right</p>\n"
        "<p>begun</p>\n<p></p>\n",
        "{\\pard\\plain\\s6\\outlinelevel5\\keepn\\sb240\\sa120\\b\\f1\\fs20 "
        "{\\*\\bkmkstart a1_x}{\\*\\bkmkend a1_x}A & B\\par}\n"
        "{\\pard\\plain\\s1\\outlinelevel0\\keepn\\sb240\\sa120\\b\\f1\\fs48 again\\par}\n"
        "{\\pard\\plain\\s0\\qr\\sa120\\f0\\fs24 right\\par}\n"
        "{\\pard\\plain\\s0\\ql\\sa120\\f0\\fs24 begun\\par}\n"
        "{\\pard\\plain\\s0\\ql\\sa120\\f0\\fs24 \\par}\n",
        "<Para\n <PgfTag `Heading6'>\n <ParaLine <Marker <MType 8> <MTypeName `Hypertext'> "
        "<MText `newlink a1_x'>><String `A & B'>\n >\n>\n"
        "<Para\n <PgfTag `Heading1'>\n <ParaLine <String `again'>\n >\n>\n"
        "<Para\n <PgfTag `Body'>\n <Pgf <PgfAlignment Right>>\n <ParaLine <String `right'>\n >\n>\n"
        "<Para\n <PgfTag `Body'>\n <ParaLine <String `begun'>\n >\n>\n"
        "<Para\n <PgfTag `Body'>\n <ParaLine \n >\n>\n",
        "<head6>\nA & B\n\n<head1>\nagain\n\n<para, Alignment = Right>\nright\n\n"
        "<para>\nbegun\n\n<para>\n\n\n");
}

TEST(Documents, ListsWithinItems) {
    const auto write = [](KazDocWriter& doc) {
        doc.beginList(true);
        doc.beginList(false); // in an item without text
        doc.item("inner");
        doc.endList();
        doc.text("more");
        doc.item("second");
        doc.endList();
        doc.endList();
        doc.item("alone");
    };
    expectBodies(write,
                 "<ol>\n<li>\n<ul>\n<li>inner</li>\n</ul>\nmore</li>\n<li>second</li>\n</ol>\n"
                 "<ul>\n<li>alone</li>\n</ul>\n",
                 nullptr, nullptr,
                 "<list1>\n1.<Tab>\n\n<list2>\n*<Tab>inner\n\n<list1>\n<Tab>more\n\n"
                 "<list1>\n2.<Tab>second\n\n<list1>\n*<Tab>alone\n\n");
    const Doc deep = make(doc_html);
    for (int i = 0; i < 12; ++i)
        deep->beginList(false);
    deep->item("ninth");
    for (int i = 0; i < 3; ++i)
        deep->endList();
    deep->item("still ninth");
    deep->endList();
    deep->item("eighth");
    const std::string body = bodyOf(*deep);
    EXPECT_NE(body.find("<li>ninth</li>\n<li>still ninth</li>\n</ul>\n</li>\n<li>eighth</li>"),
              std::string::npos)
        << body;
    const Doc empty = make(doc_html);
    empty->beginList(true);
    empty->endList();
    EXPECT_EQ(bodyOf(*empty), "");
}

TEST(Documents, TablesAreFilled) {
    expectBodies(
        [](KazDocWriter& doc) {
            const int percents[] = {3, -7};
            doc.beginTable(2, percents, 1);
            doc.text("head");
            doc.endRow();
            doc.cell("a");
            doc.cell("b");
            doc.text("c");
            doc.cell("d");
            doc.heading(1, "end");
            doc.beginTable(1);
            doc.endTable();
            doc.beginCell();
        },
        "<table>\n<colgroup><col style=\"width:75.00%\"><col style=\"width:25.00%\"></colgroup>\n"
        "<thead>\n<tr><th>head</th><th></th></tr>\n</thead>\n<tbody>\n"
        "<tr><td>a</td><td>bc</td></tr>\n<tr><td>d</td><td></td></tr>\n</tbody>\n</table>\n"
        "<h1>end</h1>\n",
        nullptr, nullptr, nullptr);
}

TEST(Documents, RunsLinksAndAnchors) {
    expectBodies(
        [](KazDocWriter& doc) {
            KazTextStyle style;
            style.bold = style.underline = true;
            style.size = 900;
            style.font = 2;
            style.colour = doc.colours().add("blue");
            doc.text("x", style);
            style = KazTextStyle();
            style.font = 99;
            style.colour = -3;
            doc.text("y", style);
            doc.link("http://h/\xC3\xA4\"", "");
            doc.link("#no 1", "z");
            doc.link("javascript:alert(1)", "safe");
            doc.anchor("no 1");
            doc.anchor("no_1");
        },
        "<p><span class=\"f2\" style=\"font-size:500pt;color:#0000ff\"><b><u>x</u></b></span>y"
        "<a href=\"http://h/%C3%A4%22\">http://h/\xC3\xA4&quot;</a><a href=\"#no_1\">z</a>safe"
        "<span id=\"no_1\"></span></p>\n",
        "{\\pard\\plain\\s0\\ql\\sa120\\f0\\fs24 {\\b\\ul\\fs1000\\f2\\cf1 x}y"
        "{\\field{\\*\\fldinst{HYPERLINK \"http://h/%C3%A4%22\"}}{\\fldrslt{\\ul "
        "http://h/\\u228\\'e4\"}}}{\\field{\\*\\fldinst{HYPERLINK \\\\l \"no_1\"}}{\\fldrslt{\\ul "
        "z}}}"
        "safe{\\*\\bkmkstart no_1}{\\*\\bkmkend no_1}\\par}\n",
        "<Para\n <PgfTag `Body'>\n <ParaLine <Font <FTag `'> <FFamily `Courier New'> "
        "<FSize 500.0 pt> <FWeight `Bold'> <FUnderlining FSingle> <FColor `Blue'>><String `x'>"
        "<Font <FTag `'>><String `y'><Marker <MType 8> <MTypeName `Hypertext'> "
        "<MText `message URL http://h/%C3%A4%22'>><String `http://h/\xC3\xA4\"'>"
        "<Marker <MType 8> <MTypeName `Hypertext'> <MText `gotolink no_1'>><String `z'>"
        "<String `safe'><Marker <MType 8> <MTypeName `Hypertext'> <MText `newlink no_1'>>\n >\n>\n",
        "<para>\n<F10@U@Z1>x<F0>yhttp://h/<#e4>\"zsafe\n\n");
}

TEST(Documents, HtmlKeepsBracketsOfAnAddressAlone) {
    for (const auto& [target, written] : std::initializer_list<std::pair<const char*, const char*>>{
             {"a[1].txt", "a%5B1%5D.txt"},
             {"http://[::1]:80/[x]", "http://[::1]:80/%5Bx%5D"},
             {"//[::1]?[", "//[::1]?%5B"},
             {"a//[b]", "a//%5Bb%5D"},
             {"http://[::1", "http://%5B::1"}}) {
        const std::unique_ptr<KazDocWriter> doc(KazDocWriter::create(doc_html));
        doc->link(target, "x");
        const std::string link = std::string("<a href=\"") + written + "\">x</a>";
        EXPECT_NE(std::string(doc->finish()).find(link), std::string::npos) << doc->finish();
    }
}

TEST(Documents, CodeRulesAndPages) {
    expectBodies(
        [](KazDocWriter& doc) {
            doc.preformatted("a\tb\r\n\n  <c>\n");
            doc.pageBreak();
            doc.rule();
        },
        "<pre>\na       b\n\n  &lt;c&gt;</pre>\n<div class=\"page\"></div>\n<hr>\n", nullptr,
        "<Para\n <PgfTag `Code'>\n <ParaLine <String `a       b'>\n >\n>\n"
        "<Para\n <PgfTag `Code'>\n <ParaLine \n >\n>\n"
        "<Para\n <PgfTag `Code'>\n <ParaLine <String `  <c\\>'>\n >\n>\n"
        "<Para\n <PgfTag `Rule'>\n <Pgf <PgfPlacement PageTop>>\n <ParaLine <String `\\t'>\n "
        ">\n>\n",
        "<code>\na       b<HR><HR>  <<c>\n\n<para, Begin New Page = Yes>\n"
        "____________________________________________________________\n\n");
}

TEST(Documents, WhatIsSaidAboutThem) {
    const char* const suffixes[] = {".html", ".rtf", ".mif", ".iaf"};
    const char* const expected[][4] = {
        {"<title>T &lt;1&gt; \xC3\xA4</title>", "content=\"A\"", "lang=\"de-DE\"",
         "content=\"2026-03-12T14:05:09+00:00\""},
        {"{\\title T <1> \\u228\\'e4}", "{\\author A}", "\\paperw5669\\paperh11339\\margl567",
         "{\\creatim\\yr2026\\mo3\\dy12\\hr14\\min5\\sec9}"},
        {"# Title: T <1> \xC3\xA4\n", "# Author: A\n", "<DPageSize 283.465 pt 566.929 pt>",
         "# Created: 2026-03-12T14:05:09Z\n"},
        {"<! Title: T 1 >\n", "<! Author: A>\n", "Width = 100.0 mm, Height = 200.0 mm",
         "<! Created: 2026-03-12T14:05:09Z>\n"}};
    for (const doc_format_enum format : {doc_html, doc_rtf, doc_mif, doc_interleaf}) {
        const Doc doc = make(format);
        EXPECT_EQ(doc->getFormat(), format);
        EXPECT_STREQ(doc->getSuffix(), suffixes[format]);
        doc->setAuthor("B");
        doc->setAuthor("A");
        doc->setEncoding(text_latin1);
        doc->setTitle("T\n<1> \xE4");
        doc->setLanguage("de-DE");
        doc->setLanguage("no tag\"");
        doc->setCreated(1773324309);
        doc->setCreated(253402300800);
        doc->setPage(1000, 2000, 100);
        for (const auto& [width, height, margin] :
             {std::array{1000, 2000, 451}, {20001, 2000, 10}, {1000, -1, 0}, {1000, 1000, -1}})
            doc->setPage(width, height, margin);
        const std::string text = doc->finish().getValue();
        for (const char* part : expected[format])
            EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    }
    EXPECT_NE(std::string(make(doc_html)->finish().getValue()).find("<title>Untitled</title>"),
              std::string::npos);
    EXPECT_EQ(KazDocWriter::create(static_cast<doc_format_enum>(4)), nullptr);
    EXPECT_EQ(KazDocWriter::create(static_cast<doc_format_enum>(-1)), nullptr);
}

std::string png(unsigned width, unsigned height) {
    std::string bytes("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    for (const unsigned number : {width, height})
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(number >> shift & 255);
    return bytes + "rest";
}

TEST(Documents, Pictures) {
    const moxkit::TempTree tree;
    tree.write("p.png", png(96, 48));
    const std::string jpeg("\xFF\xD8\xFF\xE0\0\4xx\xFF\xFF\xC0\0\x0B\x08\0\x20\0\x40rest", 22);
    tree.write("p.jpg", jpeg);
    tree.write("no.png", png(0, 48));
    tree.write("cut.jpg", jpeg.substr(0, 12));
    tree.write("cut.png", png(96, 48).substr(0, 8));
    tree.write("text", "text");
    tree.mkdir("directory");
    const char* const expected[][2] = {
        {"<img style=\"width:25.4mm;height:12.7mm\" "
         "src=\"data:image/png;base64,iVBORw0KGgoAAAANSUhEU"
         "gAAAGAAAAAwcmVzdA==\" alt=\"a&quot;b\">",
         "<img style=\"width:10.0mm;height:5.0mm\" "
         "src=\"data:image/jpeg;base64,/9j/4AAEeHj//8AACwgAI"
         "ABAcmVzdA==\" alt=\"c\">"},
        {"{\\pict\\pngblip\\picw96\\pich48\\picwgoal1440\\pichgoal720\n89504e470d0a1a0a",
         "{\\pict\\jpegblip\\picw64\\pich32\\picwgoal567\\pichgoal283\nffd8ffe0"},
        {"<AFrame 1>", "<AFrame 2>"},
        {"[a\"b]", "[c]"}};
    for (const doc_format_enum format : {doc_html, doc_rtf, doc_mif, doc_interleaf}) {
        const Doc doc = make(format);
        EXPECT_TRUE(doc->image(tree.native("p.png").c_str(), 0, 0, "a\"b"));
        EXPECT_TRUE(doc->image(tree.native("p.jpg").c_str(), 0, 50, "c"));
        for (const char* name : {"none", "no.png", "cut.jpg", "cut.png", "text", "directory"})
            EXPECT_FALSE(doc->image(tree.native(name).c_str(), 1, 1, name)) << name;
        EXPECT_FALSE(doc->image(nullptr, 1, 1, nullptr));
        const std::string text = doc->finish().getValue();
        for (const char* part : expected[format])
            EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
        EXPECT_EQ(text.find("[a\"b]") != std::string::npos, format == doc_interleaf);
        if (format == doc_mif) {
            EXPECT_NE(text.find("<c\\>p.png'>\n"), std::string::npos) << text;
        } else {
            EXPECT_NE(text.find("[no.png][cut.jpg][cut.png][text][directory][]"),
                      std::string::npos);
        }
    }
}

TEST(Documents, APictureWithAColonInItsNameIsOnNoDrive) {
    if (!kit::isFileName("1:p.png"))
        GTEST_SKIP() << "no name holds a colon here";
    const moxkit::TempTree tree;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tree.path());
    const Doc doc = make(doc_mif);
    for (const char* name : {"1:p.png", "a:p.png"}) {
        tree.write(name, png(1, 1));
        EXPECT_TRUE(doc->image((std::string(".\\") + name).c_str(), 0, 0, ""));
    }
    EXPECT_TRUE(doc->image("1:p.png", 0, 0, ""));
    std::filesystem::current_path(before);
    const std::string text = doc->finish().getValue();
    EXPECT_EQ(text.find("<v"), text.npos);
    EXPECT_NE(text.find("<c\\>a:p.png'>"), text.npos);
    EXPECT_NE(text.find("<c\\>1:p.png'>", text.find("<c\\>1:p.png'>") + 1), text.npos);
}

TEST(Documents, AFileThatCannotBeWrittenIsThrown) {
    const moxkit::TempTree tree;
    const Doc doc = make(doc_rtf);
    doc->paragraph("text");
    try {
        doc->write(tree.native("none/report.rtf").c_str());
        ADD_FAILURE() << "written";
    } catch (const KazFileException& failure) {
        EXPECT_EQ(failure.getCause(), KazFileException::fileNotFound);
        EXPECT_EQ(failure.getFileName(), tree.native("none/report.rtf").c_str());
    }
    EXPECT_THROW(doc->write(nullptr), KazFileException);
    doc->write(tree.native("report.rtf").c_str());
    EXPECT_EQ(tree.read("report.rtf"), doc->finish().getValue());
}

} // namespace
