// SPDX-License-Identifier: Apache-2.0
/// @file
/// Any sequence of calls of a document writer, with hostile texts, and the words that must
/// be read in this order in whatever comes out.
#pragma once

#include "fuzz/failures.h"
#include "fuzz/input.h"
#include "tools/formats/KazDocWriter.h"

#include <string>
#include <vector>

namespace fuzz {

class WriterCalls {
public:
    /// @p picture is a file to show, or "". Without @p breaks, nothing asks for a new line:
    /// a reader that sets cells beside one another then keeps the order of the texts.
    WriterCalls(KazDocWriter& writer, std::string picture, bool breaks = true)
        : doc(writer), picture(std::move(picture)), breaks(breaks) {}

    /// Takes calls until the input ends.
    void make(Input input) {
        prepare();
        for (int i = 0; i < 2000 && !input.empty(); ++i)
            call(input);
    }

    /// The same with memory running out in some of the calls, which are then made again.
    void make(Input input, Failures& failures) {
        prepare();
        for (int i = 0; i < 2000 && !input.empty(); ++i) {
            const Input before = input;
            const std::size_t count = words.size(), links = linked.size();
            failures.step([&] {
                input = before;
                words.resize(count);
                linked.resize(links);
                call(input);
            });
        }
    }

    std::vector<std::string> words;
    std::vector<std::string> linked; ///< those that are the text of links

private:
    void prepare() {
        doc.colours().add("red");
        doc.colours().add("#123456");
        doc.fonts().add("Odd {Font}\\b");
    }

    /// A word between characters that mean something somewhere.
    std::string hostile(Input& input) {
        static constexpr const char* parts[] = {"",
                                                " ",
                                                "<",
                                                ">",
                                                "&",
                                                "\"",
                                                "'",
                                                "`",
                                                "\\",
                                                "{",
                                                "}",
                                                "\n",
                                                "\t",
                                                "\r\n\r\n",
                                                "'>",
                                                "</p>",
                                                "<script>",
                                                "\\par}",
                                                "{\\*",
                                                "<!",
                                                "-->",
                                                "\xC3\xA4",
                                                "\xE2\x82\xAC",
                                                "\xF0\x9F\x98\x80",
                                                "\x1b",
                                                "\xFF",
                                                "\xC2\xA0",
                                                "\xC2\xAD",
                                                "<F1@U>",
                                                "%",
                                                "#",
                                                "&amp;"};
        words.push_back("w" + std::to_string(words.size()) + "x");
        std::string text = std::string(input.pick(parts)) + words.back() + input.pick(parts);
        if (!breaks)
            std::erase_if(text, [](char c) { return c == '\n' || c == '\r'; });
        return text;
    }

    KazTextStyle style(Input& input) {
        KazTextStyle result;
        const int bits = input.byte();
        result.bold = (bits & 1) != 0;
        result.italic = (bits & 2) != 0;
        result.underline = (bits & 4) != 0;
        result.size = (bits & 8) != 0 ? input.between(-2, 600) : 0;
        result.font = (bits & 16) != 0 ? input.between(-2, 5) : -1;
        result.colour = (bits & 32) != 0 ? input.between(-2, 4) : 0;
        return result;
    }

    void call(Input& input) {
        switch (input.between(0, 27)) {
        case 0:
            return doc.heading(input.between(-1, 8), hostile(input).c_str(), "a");
        case 1:
            return doc.beginParagraph(static_cast<KazDocWriter::Align>(input.between(-1, 4)));
        case 2:
            return doc.endParagraph();
        case 3:
            return doc.paragraph(hostile(input).c_str(),
                                 static_cast<KazDocWriter::Align>(input.between(0, 3)));
        case 4:
            return doc.preformatted(hostile(input).c_str());
        case 5:
            return input.flag() ? doc.rule() : doc.pageBreak();
        case 6:
        case 7:
            return doc.beginList(input.flag());
        case 8:
        case 9:
            return doc.item(hostile(input).c_str());
        case 10:
        case 11:
            return doc.endList();
        case 12:
        case 13:
            return beginTable(input);
        case 14:
            return doc.beginCell();
        case 15:
        case 16:
        case 17:
        case 18:
            return cell(input);
        case 19:
            return doc.endRow();
        case 20:
            return doc.endTable();
        case 21:
        case 22:
            return text(input);
        case 23:
            return breaks ? doc.lineBreak() : doc.endRow();
        case 24:
            return link(input);
        case 25:
            return doc.anchor(hostileName(input).c_str());
        case 26:
            return image(input);
        default:
            return describe(input);
        }
    }

    void beginTable(Input& input) {
        const int percents[] = {input.between(-5, 100), 0, 1000000000, 2147483647, 3};
        const int columns = input.between(-1, 5);
        doc.beginTable(columns, input.flag() ? percents : nullptr, input.between(-1, 3));
    }
    void cell(Input& input) {
        const KazTextStyle look = style(input);
        doc.cell(hostile(input).c_str(), look);
    }
    void text(Input& input) {
        const KazTextStyle look = style(input);
        doc.text(hostile(input).c_str(), look);
    }
    void link(Input& input) {
        static constexpr const char* targets[] = {
            "http://a/b c?\"'<>{}[]\\", "#a",  "#", "x\\y\"z", "javascript:x", "",
            "mailto:\xC3\xA4@b",        "#\"}"};
        const char* target = input.pick(targets);
        const std::string shown = hostile(input);
        linked.push_back(words.back());
        doc.link(target, shown.c_str());
    }
    std::string hostileName(Input& input) {
        static constexpr const char* names[] = {"a", "b", "\"><", "}{", "'", "", "long name of it"};
        return input.pick(names);
    }
    /// What stands for a picture that is there is no text everywhere.
    void image(Input& input) {
        if (picture.empty() || input.flag()) {
            doc.image("none", 0, 0, hostile(input).c_str());
            return;
        }
        const std::size_t before = words.size();
        const std::string alternative = hostile(input);
        words.resize(before);
        doc.image(picture.c_str(), input.between(-1, 300), input.between(-1, 300), "x<y\">");
    }
    void describe(Input& input) {
        const std::size_t before = words.size();
        doc.setTitle(hostile(input).c_str());
        doc.setAuthor(hostile(input).c_str());
        words.resize(before);
        doc.setLanguage(input.flag() ? "de-DE" : "\"><");
        doc.setCreated(input.raw<std::int64_t>());
        doc.setPage(input.between(-1, 30000), input.between(0, 30000), input.between(-1, 900));
        doc.setEncoding(input.flag() ? text_utf8 : text_latin1);
    }

    KazDocWriter& doc;
    std::string picture;
    bool breaks;
};

} // namespace fuzz
