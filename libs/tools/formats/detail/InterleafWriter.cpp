// SPDX-License-Identifier: Apache-2.0
// Interleaf ASCII. A component is a line with its class and one line of text behind it;
// an empty line ends it, and encoded text never holds one. Each face and size that a run
// uses is a font definition, numbered as they come; 0 is a component's own font.
#include "tools/formats/detail/DocumentFormat.h"

#include <map>
#include <tuple>

namespace kaz::detail {

namespace {

class InterleafWriter : public DocumentFormat {
public:
    InterleafWriter(const KazColourTable& colours, const KazFontTable& fonts, const About& about)
        // F1 to F9 in this order: the classes below refer to them by number.
        : DocumentFormat(doc_interleaf, colours, fonts, about) {
        fontNumber({KazFontTable::body, bodySize, false, false});
        fontNumber({KazFontTable::body, bodySize, true, false});
        fontNumber({KazFontTable::code, codeSize, false, false});
        for (const int size : headingSizes)
            fontNumber({KazFontTable::heading, size, true, false});
    }

    void heading(int level, const Text& text, const std::string&) override {
        const char name[] = {'h', 'e', 'a', 'd', static_cast<char>('0' + level)};
        begin({name, sizeof name});
        putText(text);
        end();
    }

    void beginParagraph(Align align) override {
        constexpr std::string_view alignments[] = {"", "Center", "Right", "Both"};
        begin("para", alignments[align]);
    }
    void endParagraph() override { end(); }

    // One component with forced line ends: a component a line would get its space below.
    void code(const std::vector<std::string>& lines) override {
        begin("code");
        for (std::size_t i = 0; i < lines.size(); ++i) {
            put(i > 0 ? "<HR>" : "");
            putText(lines[i]);
        }
        end();
    }

    // The format has no rules, so one is drawn with characters that every font has.
    void rule() override {
        begin("para");
        put("____________________________________________________________");
        end();
    }
    // A break is a property of the component behind it, so it waits for that one.
    void pageBreak() override { progress.breaksPage = true; }

    void beginList(bool, int) override {}
    void endList(bool, int) override {}
    void beginItem(bool numbered, int level, int number) override {
        begin("list" + std::to_string(level));
        put(numbered ? std::to_string(number) + ".<Tab>" : "*<Tab>");
    }
    void endItemText() override { end(); }
    void continueItem(int level) override {
        begin("list" + std::to_string(level));
        put("<Tab>");
    }
    void endItem() override {}

    void beginTable(const TableShape& given) override {
        shape = given;
        put("<Table, \"table\", Columns = ");
        putNumber(shape.columns);
        put(", Column Widths =");
        // Hundredths of a millimetre: widths are differences of rounded edges, and add up to
        // the width of the text.
        std::int64_t begin = 0;
        for (int i = 0; i < shape.columns; ++i) {
            const std::int64_t end = shape.endOf(i, std::int64_t{about.textWidth()} * 10);
            put(i > 0 ? ", " : " ");
            appendDecimal(out(), end - begin, 2);
            begin = end;
        }
        put(">\n\n");
    }
    void beginRow(int row) override {
        progress.rows = row + 1;
        put(isHeader() ? "<Row, Header = Yes>\n\n" : "<Row>\n\n");
    }
    void beginCell() override {
        put("<Cell>\n\n");
        put(isHeader() ? "<cellhead>\n" : "<cell>\n");
    }
    void endCell() override { end(); }
    void endRow() override {}
    // isHeader() must be false for what follows, which would otherwise be bold.
    void endTable() override {
        put("<End Table>\n\n");
        progress.rows = 0;
    }

    // A font definition is whole: what the run leaves open comes from the body, and bold
    // from the header's cell. Underlining and colour belong to the change of font, so
    // <F0> takes them back too.
    void text(const Text& text, const Run& run) override {
        if (run.isPlain() || text.chars.empty())
            return putText(text);
        const int font = run.font >= 0 ? run.font : KazFontTable::body;
        put("<F");
        putNumber(fontNumber(
            {font, run.size > 0 ? run.size : bodySize, run.bold || isHeader(), run.italic}));
        put(run.underline ? "@U" : "");
        if (run.colour > 0) {
            put("@Z");
            putNumber(run.colour);
        }
        put(">");
        putText(text);
        put("<F0>");
    }

    void lineBreak() override { put("<HR>"); }
    void link(const Target&, const Text& text) override { putText(text); }
    void anchor(const std::string&) override {}
    void image(const Picture&, const Text& alternative) override {
        put("[");
        putText(alternative);
        put("]");
    }

    KazString document() override;

private:
    /// Family, size, bold and italic.
    using Face = std::tuple<int, int, bool, bool>;

    bool isHeader() const { return progress.rows > 0 && progress.rows <= shape.headerRows; }

    // Numbers are never taken back, not even when the call that asked for one is undone:
    // a definition that nothing uses harms nothing.
    int fontNumber(const Face& face) {
        return faces_.try_emplace(face, static_cast<int>(faces_.size()) + 1).first->second;
    }

    void begin(std::string_view name, std::string_view alignment = {}) {
        put("<");
        put(name);
        if (!alignment.empty()) {
            put(", Alignment = ");
            put(alignment);
        }
        put(progress.breaksPage ? ", Begin New Page = Yes>\n" : ">\n");
        progress.breaksPage = false;
    }
    void end() { put("\n\n"); }

    void putFonts(TextBuilder& to) const;
    void putClasses(TextBuilder& to) const;
    void putPrologue(TextBuilder& to) const;

    std::map<Face, int> faces_;
};

/// What a comment may hold: printable ASCII without what ends it.
std::string commented(const std::string& text) {
    std::string result;
    for (const char c : text)
        if (c >= ' ' && c < 0x7F && c != '<' && c != '>')
            result += c;
    return result;
}

/// By number, where the map is in the order of faces.
void InterleafWriter::putFonts(TextBuilder& to) const {
    std::vector<std::string> definitions(faces_.size());
    for (const auto& [face, number] : faces_) {
        const auto& [font, size, bold, italic] = face;
        definitions[static_cast<std::size_t>(number) - 1] =
            "F" + std::to_string(number) + " = " + fonts.getInterleafFamily(font).getValue() + " " +
            std::to_string(size) + (bold ? " Bold" : "") + (italic ? " Italic" : "");
    }
    to.append("<!Font Definitions");
    for (const std::string& definition : definitions)
        to.append(",\n\t" + definition);
    to.append(">\n\n");
}

void InterleafWriter::putClasses(TextBuilder& to) const {
    const auto put = [&to](const std::string& name, int font, int indent, const char* more) {
        to.append("<!Class, \"" + name + "\", Font = F" + std::to_string(font) +
                  ", Left Margin = " + std::to_string(indent) + " Points" + more + ">\n");
    };
    // The fonts by the numbers that the constructor gave out.
    put("para", 1, 0, ", Bottom Margin = 6 Points");
    put("cell", 1, 0, "");
    put("cellhead", 2, 0, "");
    put("code", 3, 0, ", Bottom Margin = 6 Points");
    for (int level = 1; level <= headingLevels; ++level)
        put("head" + std::to_string(level), 3 + level, 0,
            ", Top Margin = 12 Points, Bottom Margin = 6 Points");
    for (int level = 1; level <= listLevels; ++level)
        put("list" + std::to_string(level), 1, 18 * level,
            ", Initial Indent = -18 Points, Bottom Margin = 3 Points");
    to.append("\n<!Master Table, \"table\", Columns = 1>\n\n<!End Declarations>\n\n");
}

/// Declarations stand in this order; an empty colour table has no declaration at all.
void InterleafWriter::putPrologue(TextBuilder& to) const {
    to.append("<!OPS, Version = 8.0>\n\n");
    const std::pair<const char*, std::string> comments[] = {
        {"Title: ", about.title},
        {"Author: ", about.author},
        {"Language: ", about.language},
        {"Created: ", about.hasDate ? utc(about.created, "%Y-%m-%dT%H:%M:%SZ") : ""}};
    for (const auto& [label, value] : comments)
        if (!value.empty())
            to.append("<! " + (label + commented(value)) + ">\n");
    putFonts(to);
    if (const KazString definitions = colours.getInterleaf()) {
        to.append(definitions.getValue());
        to.append("\n\n");
    }
    to.append("<!Page");
    const std::pair<const char*, int> measures[] = {
        {", Width = ", about.width},        {", Height = ", about.height},
        {", Left Margin = ", about.margin}, {", Right Margin = ", about.margin},
        {", Top Margin = ", about.margin},  {", Bottom Margin = ", about.margin}};
    for (const auto& [name, value] : measures) {
        to.append(name);
        appendDecimal(to, value, 1);
        to.append(" mm");
    }
    to.append(">\n\n");
    putClasses(to);
}

KazString InterleafWriter::document() {
    if (progress.breaksPage) { // nothing came to begin that page
        begin("para");
        end();
    }
    KazString result;
    TextBuilder to(result);
    putPrologue(to);
    to.append(body.out.view());
    to.commit();
    return result;
}

} // namespace

std::unique_ptr<DocumentFormat> makeInterleafWriter(const KazColourTable& colours,
                                                    const KazFontTable& fonts, const About& about) {
    return std::make_unique<InterleafWriter>(colours, fonts, about);
}

} // namespace kaz::detail
