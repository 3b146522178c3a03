// SPDX-License-Identifier: Apache-2.0
// MIF 8.00. Tables and pictures are collected apart, because they come before the text,
// which refers to them by number. A ParaLine holds String, Char, Font, Marker, ATbl and
// AFrame only; every tag is one of the catalogs below.
#include "tools/formats/detail/DocumentFormat.h"

namespace kaz::detail {

namespace {

/// What a hypertext command would take for the end of its argument, or of a string.
constexpr std::string_view notInCommand = " \"\\{}<>`'";

/// A letter: anything else before a colon begins a name, on hosts where a name may hold one.
bool beginsWithDrive(const std::string& path) {
    const char letter = static_cast<char>(path.empty() ? '\0' : path[0] | 0x20);
    return letter >= 'a' && letter <= 'z' && path[1] == ':';
}

/// Components of a native path as MIF spells paths on every host.
/// Steps are tags: <v> a drive, <r> the root, <u> upwards, <c> a name. Readers on another host
/// then still find a picture that lies beside the document.
std::string deviceIndependent(const std::string& path) {
    std::string result;
    std::size_t begin = 0;
    if (beginsWithDrive(path)) {
        result = "<v>" + path.substr(0, 2);
        begin = 2;
    } else if (!path.empty() && (path[0] == '\\' || path[0] == '/')) {
        result = "<r>";
    }
    while (begin < path.size()) {
        const std::size_t end = std::min(path.find_first_of("\\/", begin), path.size());
        const std::string part = path.substr(begin, end - begin);
        begin = end + 1;
        if (part == "..")
            result += "<u>";
        else if (!part.empty() && part != ".")
            result += "<c>" + part;
    }
    return result;
}

class MifWriter : public DocumentFormat {
public:
    MifWriter(const KazColourTable& colours, const KazFontTable& fonts, const About& about)
        : DocumentFormat(doc_mif, colours, fonts, about) {}

    void heading(int level, const Text& text, const std::string& name) override {
        const char tag[] = {'H', 'e', 'a', 'd', 'i', 'n', 'g', static_cast<char>('0' + level)};
        beginPara({tag, sizeof tag});
        if (!name.empty())
            anchor(name);
        putText(text);
        endPara();
    }

    void beginParagraph(Align align) override { beginPara("Body", align); }
    void endParagraph() override { endPara(); }

    void code(const std::vector<std::string>& lines) override {
        for (const std::string& line : lines) {
            beginPara("Code");
            putText(line);
            endPara();
        }
    }

    // The catalog's tag has a right tab with a leader: the line is as long as the text is wide.
    void rule() override {
        beginPara("Rule");
        put("<String `\\t'>");
        endPara();
    }
    // Placement is a property of the paragraph behind the break.
    void pageBreak() override { progress.breaksPage = true; }

    void beginList(bool, int) override {}
    void endList(bool, int) override {}
    // The reader counts: a tag of its own for the first item sets the series back to 1.
    void beginItem(bool numbered, int level, int number) override {
        beginPara(std::string(!numbered     ? "Bulleted"
                              : number == 1 ? "First"
                                            : "Numbered") +
                  std::to_string(level));
    }
    void endItemText() override { endPara(); }
    void continueItem(int level) override { beginPara("Continued" + std::to_string(level)); }
    void endItem() override {}

    void beginTable(const TableShape& given) override;
    void beginRow(int row) override;
    void beginCell() override {
        put(progress.rows <= shape.headerRows
                ? "<Cell <CellContent <Para <PgfTag `CellHeading'> <ParaLine\n"
                : "<Cell <CellContent <Para <PgfTag `CellBody'> <ParaLine\n");
    }
    void endCell() override { put(">>>>\n"); }
    void endRow() override { put("  >\n"); }
    void endTable() override;

    // An empty font tag leaves everything to the paragraph, and so ends the run.
    void text(const Text& text, const Run& run) override {
        if (run.isPlain() || text.chars.empty())
            return putText(text);
        beginFont(run);
        putText(text);
        put("<Font <FTag `'>>");
    }

    void lineBreak() override { put("<Char HardReturn>"); }

    void link(const Target& target, const Text& text) override {
        putMarker(target.isAnchor ? "gotolink " + target.text
                                  : "message URL " + escapedUrl(target.text, notInCommand));
        putText(text);
    }
    // A marker is a point in the text, which fits an anchor that is one as well.
    void anchor(const std::string& name) override { putMarker("newlink " + name); }
    void image(const Picture& picture, const Text& alternative) override;

    KazString document() override;

protected:
    // Tables stand in front of the text that refers to them, and calls of both come mixed.
    TextBuilder& out() override { return progress.isInTable ? tables.out : body.out; }

private:
    void beginPara(std::string_view tag, Align align = KazDocWriter::Left) {
        constexpr std::string_view alignments[] = {"Left", "Center", "Right", "LeftRight"};
        put("<Para\n <PgfTag `");
        put(tag);
        put("'>\n");
        const bool breaksPage = progress.breaksPage && !progress.isInTable;
        if (align != KazDocWriter::Left || breaksPage) {
            put(" <Pgf");
            if (align != KazDocWriter::Left) {
                put(" <PgfAlignment ");
                put(alignments[align]);
                put(">");
            }
            put(breaksPage ? " <PgfPlacement PageTop>" : "");
            put(">\n");
        }
        progress.breaksPage = progress.breaksPage && !breaksPage;
        put(" <ParaLine ");
    }
    void endPara() { put("\n >\n>\n"); }

    void beginFont(const Run& run) {
        put("<Font <FTag `'>");
        if (run.font >= 0) {
            put(" <FFamily ");
            putString(kazEncodeMifString(fonts.getFamily(run.font).getValue()));
            put(">");
        }
        if (run.size > 0) {
            put(" <FSize ");
            putNumber(run.size);
            put(".0 pt>");
        }
        put(run.bold ? " <FWeight `Bold'>" : "");
        put(run.italic ? " <FAngle `Italic'>" : "");
        put(run.underline ? " <FUnderlining FSingle>" : "");
        if (run.colour > 0) {
            put(" <FColor ");
            putString(kazEncodeMifString(colours.getMifTag(run.colour).getValue()));
            put(">");
        }
        put(">");
    }

    // Type 8 is hypertext in all versions; newer ones go by the name.
    void putMarker(const std::string& command) {
        put("<Marker <MType 8> <MTypeName `Hypertext'> <MText ");
        putString(kazEncodeMifString(command.c_str()));
        put(">>");
    }

    void putPrologue(TextBuilder& to) const;
    void putCatalogs(TextBuilder& to) const;
};

void appendPoints(TextBuilder& to, std::int64_t milli) {
    appendDecimal(to, milli, 3);
    to.append(" pt");
}

void MifWriter::beginTable(const TableShape& given) {
    // The anchor of the table is text, written before out() changes over to the tables.
    beginPara("Body");
    put("<ATbl ");
    putNumber(progress.tables + 1);
    put(">");
    endPara();
    shape = given;
    progress.isInTable = true;
    ++progress.tables;
    progress.rows = 0;
    put(" <Tbl\n <TblID ");
    putNumber(progress.tables);
    put(">\n <TblTag `Table'>\n <TblNumColumns ");
    putNumber(shape.columns);
    put(">\n");
    const std::int64_t width = milliPoints(about.textWidth());
    for (int i = 0; i < shape.columns; ++i) {
        // The difference of edges and not the share itself: rounding does not add up.
        put(" <TblColumnWidth ");
        appendPoints(out(), shape.endOf(i, width) - (i > 0 ? shape.endOf(i - 1, width) : 0));
        put(">\n");
    }
}

constexpr std::string_view headerBegin = " <TblH   \n"; // as long as what may replace it
constexpr std::string_view bodyBegin = " <TblBody\n";

void MifWriter::beginRow(int row) {
    // Where the header begins is remembered: whether a body follows it is known at the end.
    if (row == 0 && shape.headerRows > 0) {
        progress.headerAt = out().size();
        put(headerBegin);
    } else if (row == shape.headerRows) {
        put(row > 0 ? " >\n" : "");
        put(bodyBegin);
    }
    progress.rows = row + 1;
    put("  <Row\n");
}

/// A table of headers alone has them as its body: there must be one.
void MifWriter::endTable() {
    if (progress.rows <= shape.headerRows)
        out().overwrite(progress.headerAt, bodyBegin);
    put(" >\n >\n");
    progress.isInTable = false;
}

void MifWriter::image(const Picture& picture, const Text&) {
    TextBuilder& to = pictures.out;
    // The frame and the picture in it have the same rectangle, from the frame's corner.
    const auto putSize = [&](std::string_view statement) {
        to.append(statement);
        to.append("0.000 pt 0.000 pt ");
        appendPoints(to, milliPoints(picture.width));
        to.append(' ');
        appendPoints(to, milliPoints(picture.height));
        to.append(">\n");
    };
    to.append(" <Frame\n  <ID ");
    appendNumber(to, ++progress.pictures);
    to.append(">\n  <FrameType Inline>\n");
    putSize("  <ShapeRect ");
    to.append("  <ImportObject\n   <ImportObFileDI ");
    to.append(kazEncodeMifString(deviceIndependent(picture.path).c_str()).getValue());
    to.append(">\n");
    putSize("   <ShapeRect ");
    to.append("  >\n >\n");
    put("<AFrame ");
    putNumber(progress.pictures);
    put(">");
}

/// A paragraph of the catalog.
struct Pgf {
    std::string tag;
    int font = KazFontTable::body;
    int size = bodySize;
    bool bold = false;
    int indent = 0;      ///< points
    int firstIndent = 0; ///< of the first line
    int spaceBefore = 0, spaceAfter = 6;
    bool staysWithNext = false;
    std::string number;   ///< format of the autonumber, in MIF's spelling; "" for none
    std::int64_t tab = 0; ///< milli-points
    bool isRule = false;
};

void appendPgf(TextBuilder& to, const KazFontTable& fonts, const Pgf& pgf) {
    const auto number = [](int value) { return std::to_string(value) + ".0 pt"; };
    to.append(" <Pgf\n  <PgfTag `" + pgf.tag + "'>\n  <PgfUseNextTag No>\n");
    to.append("  <PgfAlignment Left>\n  <PgfFIndent " + number(pgf.firstIndent) + ">\n");
    to.append("  <PgfLIndent " + number(pgf.indent) + ">\n  <PgfRIndent 0.0 pt>\n");
    to.append("  <PgfSpBefore " + number(pgf.spaceBefore) + ">\n");
    to.append("  <PgfSpAfter " + number(pgf.spaceAfter) + ">\n  <PgfPlacement Anywhere>\n");
    to.append(pgf.staysWithNext ? "  <PgfWithNext Yes>\n" : "  <PgfWithNext No>\n");
    // The rule's tab fills the line up to it with "_"; that of a list leads to the text.
    if (pgf.tab > 0) {
        to.append("  <PgfNumTabs 1>\n  <TabStop\n   <TSX ");
        appendPoints(to, pgf.tab);
        to.append(pgf.isRule ? ">\n   <TSType Right>\n   <TSLeaderStr `_'>\n  >\n"
                             : ">\n   <TSType Left>\n   <TSLeaderStr ` '>\n  >\n");
    }
    if (pgf.number.empty())
        to.append("  <PgfAutoNum No>\n");
    else
        to.append("  <PgfAutoNum Yes>\n  <PgfNumFormat `" + pgf.number + "'>\n");
    to.append("  <PgfFont\n   <FTag `'>\n   <FFamily ");
    to.append(kazEncodeMifString(fonts.getFamily(pgf.font).getValue()).getValue());
    to.append(">\n   <FSize " + number(pgf.size) + ">\n");
    to.append(pgf.bold ? "   <FWeight `Bold'>\n" : "   <FWeight `Regular'>\n");
    to.append("   <FAngle `Regular'>\n   <FUnderlining FNoUnderlining>\n   <FColor `Black'>\n"
              "  >\n >\n");
}

/// One series of numbers a level, and the tags of its items.
void appendListPgfs(TextBuilder& to, const KazFontTable& fonts, int level) {
    const std::string digit = std::to_string(level);
    const std::string series(1, static_cast<char>('A' + level - 1));
    Pgf pgf;
    // The first line begins left of the others by the width of its number; the tab leads back.
    pgf.indent = 18 * level;
    pgf.firstIndent = pgf.indent - 18;
    pgf.tab = std::int64_t{pgf.indent} * 1000;
    pgf.spaceAfter = 3;
    const std::pair<const char*, std::string> kinds[] = {{"Bulleted", "\xE2\x80\xA2\\t"},
                                                         {"First", series + ":<n=1\\>.\\t"},
                                                         {"Numbered", series + ":<n+\\>.\\t"}};
    for (const auto& [name, number] : kinds) {
        pgf.tag = name + digit;
        pgf.number = number;
        appendPgf(to, fonts, pgf);
    }
    // More text of an item, behind a list in it: without a number, at the text's indent.
    pgf.tag = "Continued" + digit;
    pgf.number.clear();
    pgf.firstIndent = pgf.indent;
    appendPgf(to, fonts, pgf);
}

/// Every tag that the text uses is defined: a reader has no look for one that it does not know.
void MifWriter::putCatalogs(TextBuilder& to) const {
    to.append(colours.getMif().getValue());
    to.append("<PgfCatalog\n");
    Pgf pgf;
    pgf.tag = "Body";
    appendPgf(to, fonts, pgf);
    pgf.spaceAfter = 0;
    pgf.tag = "CellBody";
    appendPgf(to, fonts, pgf);
    pgf.tag = "CellHeading";
    pgf.bold = true;
    appendPgf(to, fonts, pgf);
    pgf = {};
    pgf.tag = "Code";
    pgf.font = KazFontTable::code;
    pgf.size = codeSize;
    pgf.spaceAfter = 0;
    appendPgf(to, fonts, pgf);
    pgf = {};
    pgf.tag = "Rule";
    pgf.isRule = true;
    pgf.tab = milliPoints(about.textWidth());
    appendPgf(to, fonts, pgf);
    for (int level = 1; level <= headingLevels; ++level) {
        pgf = {};
        pgf.tag = "Heading" + std::to_string(level);
        pgf.font = KazFontTable::heading;
        pgf.size = headingSizes[level - 1];
        pgf.bold = pgf.staysWithNext = true;
        pgf.spaceBefore = 12;
        appendPgf(to, fonts, pgf);
    }
    for (int level = 1; level <= listLevels; ++level)
        appendListPgfs(to, fonts, level);
    to.append(">\n<RulingCatalog\n <Ruling\n  <RulingTag `Thin'>\n  <RulingPenWidth 0.5 pt>\n"
              "  <RulingGap 0.0 pt>\n  <RulingColor `Black'>\n  <RulingPen 0>\n"
              "  <RulingLines 1>\n >\n>\n");
    to.append("<TblCatalog\n <TblFormat\n  <TblTag `Table'>\n  <TblAlignment Left>\n"
              "  <TblPlacement Anywhere>\n  <TblColumnRuling `Thin'>\n  <TblBodyRowRuling `Thin'>\n"
              "  <TblHFRowRuling `Thin'>\n  <TblSeparatorRuling `Thin'>\n  <TblLRuling `Thin'>\n"
              "  <TblRRuling `Thin'>\n  <TblTRuling `Thin'>\n  <TblBRuling `Thin'>\n >\n>\n");
}

/// MIFFile must be the first statement; comments go to the end of their line, and values have
/// no line ends. Units holds for the numbers behind it.
void MifWriter::putPrologue(TextBuilder& to) const {
    to.append("<MIFFile 8.00>\n");
    const std::pair<const char*, std::string> comments[] = {
        {"# Title: ", about.title},
        {"# Author: ", about.author},
        {"# Language: ", about.language},
        {"# Created: ", about.hasDate ? utc(about.created, "%Y-%m-%dT%H:%M:%SZ") : ""}};
    for (const auto& [label, value] : comments)
        if (!value.empty())
            to.append(label + value + "\n");
    to.append("<Units Upt>\n");
    putCatalogs(to);
    to.append("<Document\n <DPageSize ");
    appendPoints(to, milliPoints(about.width));
    to.append(' ');
    appendPoints(to, milliPoints(about.height));
    to.append(">\n <DMargins");
    for (int i = 0; i < 4; ++i) {
        to.append(' ');
        appendPoints(to, milliPoints(about.margin));
    }
    to.append(">\n <DColumns 1>\n>\n");
}

KazString MifWriter::document() {
    if (progress.breaksPage) { // nothing came to begin that page
        beginPara("Body");
        endPara();
    }
    KazString head;
    TextBuilder to(head);
    putPrologue(to);
    if (pictures.out.size() > 0) {
        to.append("<AFrames\n");
        to.append(pictures.out.view());
        to.append(">\n");
    }
    // Frames, tables, flow: what is referred to by number comes first.
    constexpr std::string_view flow = "<TextFlow\n <TFTag `A'>\n <TFAutoConnect Yes>\n";
    to.append(tables.out.size() > 0 ? "<Tbls\n" : flow);
    to.commit();
    if (tables.out.size() == 0)
        return wrapped(body, head, ">\n");
    // Mostly the larger part; it stays where it is.
    KazString behind;
    TextBuilder rest(behind);
    for (const std::string_view piece :
         {std::string_view(">\n"), flow, body.out.view(), std::string_view(">\n")})
        rest.append(piece);
    rest.commit();
    return wrapped(tables, head, {behind.getValue(), static_cast<std::size_t>(behind.getLength())});
}

} // namespace

std::unique_ptr<DocumentFormat> makeMifWriter(const KazColourTable& colours,
                                              const KazFontTable& fonts, const About& about) {
    return std::make_unique<MifWriter>(colours, fonts, about);
}

} // namespace kaz::detail
