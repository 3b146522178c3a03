// SPDX-License-Identifier: Apache-2.0
// RTF 1.9. Each block is a group of its own that begins with \pard\plain, so that nothing
// of one reaches the next. Fonts and colours are numbers in tables that are written last.
#include "tools/formats/detail/DocumentFormat.h"

namespace kaz::detail {

namespace {

/// What a field's instructions would take for their own.
constexpr std::string_view notInField = "\"\\{}";
constexpr int indent = 360; ///< twips a list level

class RtfWriter : public DocumentFormat {
public:
    RtfWriter(const KazColourTable& colours, const KazFontTable& fonts, const About& about)
        : DocumentFormat(doc_rtf, colours, fonts, about) {}

    // A style is a name only for readers that keep the sheet: the look is stated again, since
    // \s by itself changes nothing. Outline levels count from 0.
    void heading(int level, const Text& text, const std::string& name) override {
        put("{\\pard\\plain\\s");
        putNumber(level);
        put("\\outlinelevel");
        putNumber(level - 1);
        put("\\keepn\\sb240\\sa120\\b\\f1\\fs");
        putNumber(headingSizes[level - 1] * 2);
        put(" ");
        if (!name.empty())
            anchor(name);
        putText(text);
        put("\\par}\n");
    }

    // \f0 and \fs24 repeat what \plain should give: its defaults differ between readers.
    void beginParagraph(Align align) override {
        constexpr std::string_view alignments[] = {"l", "c", "r", "j"};
        put("{\\pard\\plain\\s0\\q");
        put(alignments[align]);
        put("\\sa120\\f0\\fs24 ");
    }
    void endParagraph() override { put("\\par}\n"); }

    void code(const std::vector<std::string>& lines) override {
        for (const std::string& line : lines) {
            put("{\\pard\\plain\\s7\\f2\\fs20 ");
            putText(line);
            put("\\par}\n");
        }
    }

    void rule() override {
        put("{\\pard\\plain\\sa120\\brdrb\\brdrs\\brdrw10\\brsp20\\fs4\\par}\n");
    }
    void pageBreak() override { put("\\page\n"); }

    void beginList(bool, int) override {}
    void endList(bool, int) override {}
    // The older of RTF's two kinds of lists, which every reader knows: those without \pn show
    // the text in \pntext, and the others drop it. A negative first indent puts the number
    // beside the text.
    void beginItem(bool numbered, int level, int number) override {
        put("{\\pard\\plain\\s0\\fi-360\\li");
        putNumber(level * indent);
        put("\\sa60\\f0\\fs24 ");
        if (!numbered)
            return put("{\\pntext\\bullet\\tab}{\\*\\pn\\pnlvlblt\\pnindent360{\\pntxtb\\bullet}}");
        put("{\\pntext ");
        putNumber(number);
        put(".\\tab}{\\*\\pn\\pnlvlbody\\pndec\\pnstart");
        putNumber(number);
        put("\\pnindent360{\\pntxta .}}");
    }
    void endItemText() override { put("\\par}\n"); }
    void continueItem(int level) override {
        put("{\\pard\\plain\\s0\\li");
        putNumber(level * indent);
        put("\\sa60\\f0\\fs24 ");
    }
    void endItem() override {}

    void beginTable(const TableShape& given) override {
        shape = given;
        rowBegin_.clear();
        // Word processors draw the borders of cells, but not all of them those of rows.
        // A \cellx is the right edge of a cell from the margin, not its width.
        for (int i = 0; i < shape.columns; ++i) {
            for (const char* side : {"\\clbrdrt", "\\clbrdrl", "\\clbrdrb", "\\clbrdrr"})
                rowBegin_.append(side).append("\\brdrs\\brdrw10");
            rowBegin_ += "\\cellx" + std::to_string(shape.endOf(i, twips(about.textWidth())));
        }
        rowBegin_ += '\n';
    }
    /// The look that is set here holds for all its cells: runs are groups.
    /// A row states its cells anew: RTF has no tables, only rows that follow one another.
    /// \intbl goes behind \pard, which would take it back.
    void beginRow(int row) override {
        progress.rows = row + 1;
        put(isHeader() ? "\\trowd\\trgaph70\\trhdr" : "\\trowd\\trgaph70");
        put(rowBegin_);
        put(isHeader() ? "\\pard\\plain\\intbl\\f0\\fs24\\b " : "\\pard\\plain\\intbl\\f0\\fs24 ");
    }
    void beginCell() override {}
    void endCell() override { put("\\cell\n"); }
    void endRow() override { put("\\row\n"); }
    /// Two tables without a paragraph between them would be one.
    void endTable() override { put("{\\pard\\plain\\fs12\\par}\n"); }

    // The group ends what the run sets, so nothing is switched off one by one. The blank in
    // front of the text ends the last control word, and is no part of the text.
    void text(const Text& text, const Run& run) override {
        if (run.isPlain() || text.chars.empty())
            return putText(text);
        put("{");
        put(run.bold ? "\\b" : "");
        put(run.italic ? "\\i" : "");
        put(run.underline ? "\\ul" : "");
        putWord("\\fs", run.size * 2, run.size > 0);
        putWord("\\f", run.font, run.font >= 0);
        putWord("\\cf", run.colour, run.colour > 0);
        put(" ");
        putText(text);
        put("}");
    }

    void lineBreak() override { put("\\line "); }

    // \l is a switch of the field, and its backslash is escaped for RTF. \fldrslt is what
    // readers show that follow no fields.
    void link(const Target& target, const Text& text) override {
        put(target.isAnchor ? "{\\field{\\*\\fldinst{HYPERLINK \\\\l \""
                            : "{\\field{\\*\\fldinst{HYPERLINK \"");
        put(escapedUrl(target.text, notInField));
        put("\"}}{\\fldrslt{\\ul ");
        putText(text);
        put("}}}");
    }

    // Begin and end in one place: a link leads there, and no text is marked.
    void anchor(const std::string& name) override {
        put("{\\*\\bkmkstart ");
        put(name);
        put("}{\\*\\bkmkend ");
        put(name);
        put("}");
    }

    // \picw and \pich are pixels, the goals are the size on paper in twips. Readers that know
    // only one pair still show the picture, with another size.
    void image(const Picture& picture, const Text&) override {
        put(picture.isPng ? "{\\pict\\pngblip" : "{\\pict\\jpegblip");
        putWord("\\picw", picture.pixelsWide, true);
        putWord("\\pich", picture.pixelsHigh, true);
        putWord("\\picwgoal", twips(picture.width), true);
        putWord("\\pichgoal", twips(picture.height), true);
        putHex(picture.bytes);
        put("}");
    }

    KazString document() override;

private:
    bool isHeader() const { return progress.rows <= shape.headerRows; }

    void putWord(std::string_view word, std::int64_t value, bool isStated) {
        if (!isStated)
            return;
        put(word);
        putNumber(value);
    }

    void putHex(const std::string& bytes) {
        constexpr char digits[] = "0123456789abcdef";
        constexpr std::size_t inLine = 64;
        // Lines of 64 digits: line ends between them mean nothing, but editors and mailers of
        // old had limits. Room is asked for by two, as the text may be of many megabytes.
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            if (i % inLine == 0)
                out().append('\n');
            char* const to = out().room(2);
            to[0] = digits[byte / 16];
            to[1] = digits[byte % 16];
            out().used(to + 2);
        }
    }

    void putInfo(TextBuilder& to) const;
    void putPage(TextBuilder& to) const;

    std::string rowBegin_; ///< what each row of the table repeats
};

void putStyles(TextBuilder& to) {
    to.append("{\\stylesheet{\\s0\\f0\\fs24 Normal;}");
    for (int level = 1; level <= headingLevels; ++level) {
        const std::string number = std::to_string(level);
        const std::string outline = std::to_string(level - 1);
        const std::string size = std::to_string(headingSizes[level - 1] * 2);
        for (const std::string_view piece :
             {std::string_view("{\\s"), std::string_view(number),
              std::string_view("\\outlinelevel"), std::string_view(outline),
              std::string_view("\\keepn\\sb240\\sa120\\b\\f1\\fs"), std::string_view(size),
              std::string_view(" heading "), std::string_view(number), std::string_view(";}")})
            to.append(piece);
    }
    to.append("{\\s7\\f2\\fs20 Code;}}\n");
}

void RtfWriter::putInfo(TextBuilder& to) const {
    const auto encoded = [](const std::string& text) {
        return std::string(kazEncodeText(doc_rtf, text.c_str()).getValue());
    };
    to.append("{\\info");
    if (!about.title.empty())
        to.append("{\\title " + encoded(about.title) + "}");
    if (!about.author.empty())
        to.append("{\\author " + encoded(about.author) + "}");
    if (about.hasDate)
        to.append("{\\creatim" +
                  utc(about.created, "\\yr%-Y\\mo%-m\\dy%-d\\hr%-H\\min%-M\\sec%-S") + "}");
    to.append("}\n");
}

void RtfWriter::putPage(TextBuilder& to) const {
    to.append("\\paperw");
    appendNumber(to, twips(about.width));
    to.append("\\paperh");
    appendNumber(to, twips(about.height));
    for (const char* side : {"\\margl", "\\margr", "\\margt", "\\margb"}) {
        to.append(side);
        appendNumber(to, twips(about.margin));
    }
    to.append("\n");
}

/// The order of the head is RTF's own: fonts and colours before the styles that use them,
/// information and paper behind. The tables are final only now, when all text is written.
KazString RtfWriter::document() {
    KazString head;
    TextBuilder to(head);
    to.append("{\\rtf1\\ansi\\ansicpg1252\\uc1\\deff0\n");
    to.append(fonts.getRtf().getValue());
    to.append("\n");
    to.append(colours.getRtf().getValue());
    to.append("\n");
    putStyles(to);
    putInfo(to);
    putPage(to);
    to.commit();
    return wrapped(body, head, "}\n");
}

} // namespace

std::unique_ptr<DocumentFormat> makeRtfWriter(const KazColourTable& colours,
                                              const KazFontTable& fonts, const About& about) {
    return std::make_unique<RtfWriter>(colours, fonts, about);
}

} // namespace kaz::detail
