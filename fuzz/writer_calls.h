// SPDX-License-Identifier: Apache-2.0
/// @file
/// Any sequence of calls of a document writer, with hostile texts, and the words that must
/// be read in this order in whatever comes out.
#pragma once

#include "fuzz/failures.h"
#include "fuzz/input.h"
#include "kit/table.h"
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

    /// Takes calls until the input ends, with memory running out in some of them where there
    /// are @p failures; these calls are then made again.
    void make(Input input, Failures* failures = nullptr) {
        doc.colours().add("red");
        doc.colours().add("#123456");
        doc.fonts().add("Odd {Font}\\b");
        for (int i = 0; i < 2000 && !input.empty(); ++i) {
            const Input before = input;
            const std::size_t count = words.size(), links = linked.size();
            const auto act = [&] {
                input = before;
                words.resize(count);
                linked.resize(links);
                call(input);
            };
            failures != nullptr ? failures->step(act) : act();
        }
    }

    std::vector<std::string> words;
    std::vector<std::string> linked; ///< those that are the text of links

private:
    /// A word between characters that mean something somewhere.
    std::string hostile(Input& input) {
        static const std::vector<std::string> parts = kit::parts(
            "| |<|>|&|\"|'|`|\\|{|}|\n|\t|\r\n\r\n|'>|</p>|<script>|\\par}|{\\*|<!|-->|"
            "\xC3\xA4|\xE2\x82\xAC|\xF0\x9F\x98\x80|\x1b|\xFF|\xC2\xA0|\xC2\xAD|<F1@U>|%|#|"
            "&amp;");
        words.push_back("w" + std::to_string(words.size()) + "x");
        std::string text = input.pick(parts) + words.back() + input.pick(parts);
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
        using W = WriterCalls;
        static constexpr void (W::*calls[])(Input&) = {
            &W::heading,  &W::beginParagraph, &W::endParagraph, &W::paragraph,  &W::preformatted,
            &W::separate, &W::beginList,      &W::beginList,    &W::item,       &W::item,
            &W::endList,  &W::endList,        &W::beginTable,   &W::beginTable, &W::beginCell,
            &W::cell,     &W::cell,           &W::cell,         &W::cell,       &W::endRow,
            &W::endTable, &W::text,           &W::text,         &W::lineBreak,  &W::link,
            &W::anchor,   &W::image,          &W::describe};
        (this->*input.pick(calls))(input);
    }

    void heading(Input& input) { doc.heading(input.between(-1, 8), hostile(input).c_str(), "a"); }
    void beginParagraph(Input& input) {
        doc.beginParagraph(static_cast<KazDocWriter::Align>(input.between(-1, 4)));
    }
    void endParagraph(Input&) { doc.endParagraph(); }
    void paragraph(Input& input) {
        doc.paragraph(hostile(input).c_str(),
                      static_cast<KazDocWriter::Align>(input.between(0, 3)));
    }
    void preformatted(Input& input) { doc.preformatted(hostile(input).c_str()); }
    void separate(Input& input) { input.flag() ? doc.rule() : doc.pageBreak(); }
    void beginList(Input& input) { doc.beginList(input.flag()); }
    void item(Input& input) { doc.item(hostile(input).c_str()); }
    void endList(Input&) { doc.endList(); }
    void beginCell(Input&) { doc.beginCell(); }
    void endRow(Input&) { doc.endRow(); }
    void endTable(Input&) { doc.endTable(); }
    void lineBreak(Input&) { breaks ? doc.lineBreak() : doc.endRow(); }
    void anchor(Input& input) { doc.anchor(hostileName(input).c_str()); }
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
