// SPDX-License-Identifier: Apache-2.0
// HTML 5. Every element is closed, attributes stand in double quotes, and text stands in
// headings, paragraphs, pre, list items and cells only. Fonts are classes of the style
// sheet, which is written last: a default may still be replaced after its use.
#include "tools/formats/detail/DocumentFormat.h"

namespace kaz::detail {

namespace {

/// What a browser would write with an escape of its own.
constexpr std::string_view notInUrl = " \"<>\\^`{|}";
/// Brackets are for a host's address: "http://[::1]/".
constexpr std::string_view notBehindHost = " \"<>\\^`{|}[]";

/// Only brackets right behind the scheme are an address's: one in a path or a query is escaped,
/// or browsers and checkers would disagree on where the host ends.
std::string hrefOf(std::string_view url) {
    const std::size_t host = url.find("//[");
    const bool hasAddress =
        host != url.npos && host == url.find_first_of("/?#") && (host == 0 || url[host - 1] == ':');
    const std::size_t path = hasAddress ? url.find(']', host) + 1 : 0; // 0: an open bracket
    return escapedUrl(url.substr(0, path), notInUrl) + escapedUrl(url.substr(path), notBehindHost);
}

class HtmlWriter : public DocumentFormat {
public:
    HtmlWriter(const KazColourTable& colours, const KazFontTable& fonts, const About& about)
        : DocumentFormat(doc_html, colours, fonts, about) {}

    void heading(int level, const Text& text, const std::string& anchor) override {
        const char digit = static_cast<char>('0' + level);
        put("<h");
        out().append(digit);
        if (!anchor.empty())
            putAttribute("id", anchor);
        put(">");
        putText(text);
        put("</h");
        out().append(digit);
        put(">\n");
    }

    void beginParagraph(Align align) override {
        constexpr std::string_view begins[] = {"<p>", "<p class=\"center\">", "<p class=\"right\">",
                                               "<p class=\"justify\">"};
        put(begins[align]);
    }
    void endParagraph() override { put("</p>\n"); }

    void code(const std::vector<std::string>& lines) override {
        // A parser drops a line end right behind <pre>: this one keeps an empty first line alive.
        put("<pre>\n"); // the first line end is no part of it
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (i > 0)
                put("\n");
            putText(lines[i]);
        }
        put("</pre>\n");
    }

    void rule() override { put("<hr>\n"); }
    // An element of its own, whose style breaks the page: a style of the next block would
    // have to be remembered until that block comes.
    void pageBreak() override { put("<div class=\"page\"></div>\n"); }

    // A list in a list stands in the item that is open, behind its text.
    void beginList(bool numbered, int level) override {
        if (level > 1)
            put("\n");
        put(numbered ? "<ol>\n" : "<ul>\n");
    }
    void endList(bool numbered, int) override { put(numbered ? "</ol>\n" : "</ul>\n"); }
    void beginItem(bool, int, int) override { put("<li>"); }
    // An item holds its text and its lists alike: only </li> ends it.
    void endItemText() override {}
    void continueItem(int) override {}
    void endItem() override { put("</li>\n"); }

    void beginTable(const TableShape& given) override {
        shape = given;
        progress.rows = 0;
        put("<table>\n<colgroup>");
        // Hundredths of a percent from rounded edges: they add up to 100.
        std::int64_t begin = 0;
        for (int i = 0; i < shape.columns; ++i) {
            const std::int64_t end = shape.endOf(i, 10000);
            put("<col style=\"width:");
            appendDecimal(out(), end - begin, 2);
            put("%\">");
            begin = end;
        }
        put("</colgroup>\n");
    }
    // Head and body open with their first row. A row number equal to the count of header
    // rows is the first of the body, also when there are none.
    void beginRow(int row) override {
        if (row == 0 && shape.headerRows > 0)
            put("<thead>\n");
        else if (row == shape.headerRows)
            put(row > 0 ? "</thead>\n<tbody>\n" : "<tbody>\n");
        put("<tr>");
        progress.rows = row + 1;
    }
    void beginCell() override { put(isHeader() ? "<th>" : "<td>"); }
    void endCell() override { put(isHeader() ? "</th>" : "</td>"); }
    void endRow() override { put("</tr>\n"); }
    // A table of headers alone never began its body.
    void endTable() override { put(isHeader() ? "</thead>\n</table>\n" : "</tbody>\n</table>\n"); }

    // The elements end in the reverse order of their begins, or the document is no HTML.
    void text(const Text& text, const Run& run) override {
        if (run.isPlain())
            return putText(text);
        const bool hasSpan = run.size > 0 || run.font >= 0 || run.colour > 0;
        if (hasSpan)
            putSpan(run);
        put(run.bold ? "<b>" : "");
        put(run.italic ? "<i>" : "");
        put(run.underline ? "<u>" : "");
        putText(text);
        put(run.underline ? "</u>" : "");
        put(run.italic ? "</i>" : "");
        put(run.bold ? "</b>" : "");
        put(hasSpan ? "</span>" : "");
    }

    void lineBreak() override { put("<br>"); }

    void link(const Target& target, const Text& text) override {
        put("<a");
        putAttribute("href", target.isAnchor ? "#" + target.text : hrefOf(target.text));
        put(">");
        putText(text);
        put("</a>");
    }

    // Not empty by a slash: HTML takes "<span/>" for a begin.
    void anchor(const std::string& name) override {
        put("<span");
        putAttribute("id", name);
        put("></span>");
    }

    // The picture is part of the page, which is one file that can be mailed or moved. Its size
    // is in millimetres, as in print; attributes of width and height are pixels.
    void image(const Picture& picture, const Text& alternative) override {
        put("<img style=\"width:");
        putMillimetres(picture.width);
        put(";height:");
        putMillimetres(picture.height);
        put(picture.isPng ? "\" src=\"data:image/png;base64," : "\" src=\"data:image/jpeg;base64,");
        putBase64(picture.bytes);
        put("\"");
        putAttribute("alt", std::string(alternative.chars).c_str(), alternative.encoding);
        put(">");
    }

    KazString document() override;

private:
    // `rows` counts the row that is open, so the last header row is still one.
    bool isHeader() const { return progress.rows <= shape.headerRows; }

    void putAttribute(std::string_view name, const char* value, text_encoding_enum encoding) {
        put(" ");
        put(name);
        put("=\"");
        putString(kazEncodeHtmlAttribute(value, encoding));
        put("\"");
    }
    void putAttribute(std::string_view name, const std::string& value) {
        putAttribute(name, value.c_str(), text_utf8);
    }

    // Sizes and colours are stated in place: classes for them would be known only at the end,
    // and be as many as the colours.
    void putSpan(const Run& run) {
        put("<span");
        if (run.font >= 0) {
            put(" class=\"f");
            putNumber(run.font);
            put("\"");
        }
        if (run.size > 0 || run.colour > 0)
            put(" style=\"");
        if (run.size > 0) {
            put("font-size:");
            putNumber(run.size);
            put(run.colour > 0 ? "pt;" : "pt");
        }
        if (run.colour > 0) {
            put("color:");
            putString(colours.getHtml(run.colour));
        }
        put(run.size > 0 || run.colour > 0 ? "\">" : ">");
    }

    void putMillimetres(int tenths) {
        appendDecimal(out(), tenths, 1);
        put("mm");
    }

    void putBase64(const std::string& bytes) {
        constexpr char digits[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const auto at = [&bytes](std::size_t i) {
            return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U;
        };
        // What lacks in the last three bytes reads as 0; the digits that stand for nothing
        // else are overwritten with "=" (RFC 4648, section 4).
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            const unsigned bits = at(i) << 16 | at(i + 1) << 8 | at(i + 2);
            char* const to = out().room(4);
            for (int j = 0; j < 4; ++j)
                to[j] = digits[bits >> (18 - 6 * j) & 63];
            if (i + 2 >= bytes.size())
                to[3] = '=';
            if (i + 1 >= bytes.size())
                to[2] = '=';
            out().used(to + 4);
        }
    }

    void putHead(TextBuilder& to) const;
    void putStyle(TextBuilder& to) const;
};

void HtmlWriter::putStyle(TextBuilder& to) const {
    to.append("<style>\n@page{size:");
    appendDecimal(to, about.width, 1);
    to.append("mm ");
    appendDecimal(to, about.height, 1);
    to.append("mm;margin:");
    appendDecimal(to, about.margin, 1);
    to.append("mm}\n");
    for (int i = 0; i < fonts.getCount(); ++i) {
        // The first three fonts are at the same time those of the elements.
        const char* const tags[] = {"body,", "h1,h2,h3,h4,h5,h6,", "pre,"};
        if (i <= KazFontTable::code)
            to.append(tags[i]);
        to.append(".f");
        appendNumber(to, i);
        to.append("{font-family:");
        to.append(fonts.getCss(i).getValue());
        to.append("}\n");
    }
    // thead as a header group repeats on each printed page; without "collapse" each cell
    // would have a frame of its own.
    to.append("body{font-size:12pt}\npre{font-size:10pt}\n");
    for (int level = 1; level <= headingLevels; ++level) {
        to.append("h");
        appendNumber(to, level);
        to.append("{font-size:");
        appendNumber(to, headingSizes[level - 1]);
        to.append("pt;break-after:avoid}\n");
    }
    to.append("table{border-collapse:collapse;width:100%}\n"
              "td,th{border:1px solid #808080;padding:2pt 4pt;text-align:left;vertical-align:top}\n"
              "thead{display:table-header-group}\n"
              ".center{text-align:center}\n.right{text-align:right}\n.justify{text-align:justify}\n"
              ".page{break-before:page}\n</style>\n");
}

/// The encoding comes first: parsers look for it in the first 1024 bytes only. A title must be
/// there and not blank for the document to be valid.
void HtmlWriter::putHead(TextBuilder& to) const {
    const auto encoded = [](const std::string& text) {
        return std::string(kazEncodeHtmlAttribute(text.c_str()).getValue());
    };
    to.append("<!DOCTYPE html>\n<html");
    if (!about.language.empty())
        to.append(" lang=\"" + about.language + "\"");
    to.append(">\n<head>\n<meta charset=\"utf-8\">\n<title>");
    to.append(about.title.find_first_not_of(' ') == std::string::npos ? "Untitled"
                                                                      : encoded(about.title));
    to.append("</title>\n");
    if (!about.author.empty())
        to.append("<meta name=\"author\" content=\"" + encoded(about.author) + "\">\n");
    if (about.hasDate)
        to.append("<meta name=\"date\" content=\"" + utc(about.created, "%Y-%m-%dT%H:%M:%S+00:00") +
                  "\">\n");
    putStyle(to);
    to.append("</head>\n<body>\n");
}

KazString HtmlWriter::document() {
    KazString head;
    TextBuilder to(head);
    putHead(to);
    to.commit();
    return wrapped(body, head, "</body>\n</html>\n");
}

} // namespace

std::unique_ptr<DocumentFormat> makeHtmlWriter(const KazColourTable& colours,
                                               const KazFontTable& fonts, const About& about) {
    return std::make_unique<HtmlWriter>(colours, fonts, about);
}

} // namespace kaz::detail
