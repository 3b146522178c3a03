// SPDX-License-Identifier: Apache-2.0
/// @file
/// How one document format spells what a report consists of.
#pragma once

#include "tools/formats/KazColourTable.h"
#include "tools/formats/KazDocWriter.h"
#include "tools/formats/KazFontTable.h"
#include "tools/formats/detail/TextBuilder.h"
#include "tools/formats/detail/decimal.h"
#include "tools/formats/encode.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::detail {

constexpr int headingLevels = 6;
constexpr int listLevels = 9;
constexpr int mostColumns = 63;
constexpr int bodySize = 12; ///< points; of code 10
constexpr int codeSize = 10;
constexpr int headingSizes[headingLevels] = {24, 18, 14, 12, 11, 10};

struct Text {
    std::string_view chars;
    text_encoding_enum encoding = text_utf8;
};

/// A style with everything in range: what is not stated is 0, or -1 for the font.
struct Run {
    bool bold = false, italic = false, underline = false;
    int size = 0;
    int font = -1;
    int colour = 0;

    bool isPlain() const {
        return !bold && !italic && !underline && size == 0 && font < 0 && colour == 0;
    }
};

struct TableShape {
    int columns = 1;
    int headerRows = 0;
    std::array<int, mostColumns> shares{}; ///< 1 at least

    std::int64_t total() const;
    /// The end of a column within @p width, whatever that counts.
    std::int64_t endOf(int column, std::int64_t width) const;
};

/// Where a link leads: to a URL, or to the anchor of that name.
struct Target {
    std::string text;
    bool isAnchor;
};

struct Picture {
    bool isPng;
    int pixelsWide, pixelsHigh;
    int width, height; ///< tenths of a millimetre
    std::string bytes;
    std::string path; ///< as native text
};

/// What is said about the document. Texts are valid UTF-8 without control characters.
struct About {
    std::string title, author, language;
    bool hasDate = false;
    std::int64_t created = 0;
    int width = 2100, height = 2970, margin = 250; ///< tenths of a millimetre

    int textWidth() const { return width - 2 * margin; }
};

/// A document that is being written, one class a format. It spells; what may follow what
/// is for its caller to know, who keeps to these rules: blocks do not overlap; a heading
/// and a code block are blocks in one call; within a paragraph, an item's text and a cell
/// stand texts, breaks, links, anchors and pictures alone. Lists stand in items. Every row
/// gets all its cells.
class DocumentFormat {
public:
    using Align = KazDocWriter::Align;

    /// Everything given lives longer.
    DocumentFormat(doc_format_enum format, const KazColourTable& colours, const KazFontTable& fonts,
                   const About& about)
        : colours(colours), fonts(fonts), about(about), format(format) {}
    virtual ~DocumentFormat() = default;
    DocumentFormat(const DocumentFormat&) = delete;
    DocumentFormat& operator=(const DocumentFormat&) = delete;

    /// @p anchor may be empty.
    virtual void heading(int level, const Text& text, const std::string& anchor) = 0;
    virtual void beginParagraph(Align align) = 0;
    virtual void endParagraph() = 0;
    /// Lines of UTF-8 without tabs.
    virtual void code(const std::vector<std::string>& lines) = 0;
    virtual void rule() = 0;
    virtual void pageBreak() = 0;

    /// Levels count from 1, the numbers of items too.
    virtual void beginList(bool numbered, int level) = 0;
    virtual void endList(bool numbered, int level) = 0;
    /// Its text follows, until endItemText().
    virtual void beginItem(bool numbered, int level, int number) = 0;
    virtual void endItemText() = 0;
    /// More text, behind a list in the item.
    virtual void continueItem(int level) = 0;
    virtual void endItem() = 0;

    virtual void beginTable(const TableShape& shape) = 0;
    virtual void beginRow(int row) = 0;
    virtual void beginCell() = 0;
    virtual void endCell() = 0;
    virtual void endRow() = 0;
    virtual void endTable() = 0;

    virtual void text(const Text& text, const Run& run) = 0;
    virtual void lineBreak() = 0;
    virtual void link(const Target& target, const Text& text) = 0;
    virtual void anchor(const std::string& name) = 0;
    virtual void image(const Picture& picture, const Text& alternative) = 0;

    /// The whole document; nothing is open.
    virtual KazString document() = 0;

    /// A place to go back to when a call fails halfway.
    struct Progress {
        std::size_t sizes[3] = {};
        int tables = 0;
        int pictures = 0;
        int rows = 0;           ///< of the table that is open
        bool isInTable = false; ///< which then is where text goes
        bool breaksPage = false;
        std::size_t headerAt = 0; ///< where the table's header begins
    };
    Progress mark() const;
    void goBack(const Progress& mark);

protected:
    /// Formats that want some things before the text collect them apart.
    struct Part {
        KazString text;
        TextBuilder out{text};
    };

    /// Where a table's content goes until it ends.
    virtual TextBuilder& out() { return body.out; }
    void put(std::string_view piece) { out().append(piece); }
    void putString(const KazString& piece) {
        out().append(piece.getValue(), static_cast<std::size_t>(piece.getLength()));
    }
    void putNumber(std::int64_t number) { appendNumber(out(), number); }
    /// The whole document, of which @p part is all but @p before and @p behind.
    static KazString wrapped(Part& part, const KazString& before, std::string_view behind) {
        part.out.wrap({before.getValue(), static_cast<std::size_t>(before.getLength())}, behind);
        part.out.commit();
        return part.text;
    }
    /// In the format's own spelling.
    void putText(const Text& text);
    void putText(const std::string& text) { putText(Text{text, text_utf8}); }

    const KazColourTable& colours;
    const KazFontTable& fonts;
    const About& about;
    const doc_format_enum format;
    TableShape shape; ///< of the last table
    Part body, tables, pictures;
    Progress progress;
};

/// With what a URL must not hold, besides controls and what is not ASCII, as %XX.
std::string escapedUrl(std::string_view url, std::string_view others);

/// A moment as UTC, in the spelling of FmtDate().
std::string utc(std::int64_t seconds, const char* conversions);

std::unique_ptr<DocumentFormat> makeHtmlWriter(const KazColourTable&, const KazFontTable&,
                                               const About&);
std::unique_ptr<DocumentFormat> makeRtfWriter(const KazColourTable&, const KazFontTable&,
                                              const About&);
std::unique_ptr<DocumentFormat> makeMifWriter(const KazColourTable&, const KazFontTable&,
                                              const About&);
std::unique_ptr<DocumentFormat> makeInterleafWriter(const KazColourTable&, const KazFontTable&,
                                                    const About&);

} // namespace kaz::detail
