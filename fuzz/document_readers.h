// SPDX-License-Identifier: Apache-2.0
/// @file
/// Strict readers of the four document formats: each takes what the writers may make of
/// them and nothing else, and gives the text in the order in which a person reads it.
#pragma once

#include "fuzz/text_reference.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

inline bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// HTML: what is open, what may stand in it, and rows with all their cells.
class HtmlReader {
public:
    std::string read(std::string_view document) {
        rest = Reader(document);
        for (rest.expect("<!DOCTYPE html>\n"); !rest.empty();) {
            readText(rest.takeUntil("<"));
            if (rest.take("<"))
                readTag();
        }
        FUZZ_CHECK(open.empty());
        return text;
    }

private:
    std::string_view parent() const { return open.empty() ? std::string_view() : open.back(); }

    void readText(std::string_view part) {
        FUZZ_CHECK(part.find('>') == std::string_view::npos || parent() == "style");
        if (part.find_first_not_of(" \n") == std::string_view::npos)
            return;
        FUZZ_CHECK(isOneOf(parent(), {"title", "style", "h1", "h2", "h3", "h4", "h5", "h6", "p",
                                      "pre", "li", "td", "th", "a", "b", "i", "u", "span"}));
        if (parent() != "title" && parent() != "style")
            text += part;
    }

    void readTag() {
        Reader tag(rest.takeUntil(">"));
        rest.expect(">");
        const bool ends = tag.take("/");
        const std::string_view name = tag.takeUntil(" ");
        if (ends) {
            FUZZ_CHECK(parent() == name && tag.empty() && (name != "tr" || cells == columns));
            return open.pop_back();
        }
        begin(name);
        while (!tag.empty())
            readAttribute(tag);
        if (!isOneOf(name, {"br", "hr", "img", "meta", "col"}))
            open.push_back(name);
    }

    void begin(std::string_view name) {
        static const std::map<std::string_view, std::set<std::string_view>> contents = {
            {"", {"html"}},
            {"html", {"head", "body"}},
            {"head", {"meta", "title", "style"}},
            {"body",
             {"h1", "h2", "h3", "h4", "h5", "h6", "p", "pre", "hr", "div", "ul", "ol", "table"}},
            {"ul", {"li"}},
            {"ol", {"li"}},
            {"li", {"ul", "ol"}},
            {"table", {"colgroup", "thead", "tbody"}},
            {"colgroup", {"col"}},
            {"thead", {"tr"}},
            {"tbody", {"tr"}},
            {"tr", {"td", "th"}}};
        const auto found = contents.find(parent());
        FUZZ_CHECK((found != contents.end() && found->second.count(name) != 0) ||
                   isOneOf(name, {"a", "b", "i", "u", "span", "br", "img"}));
        if (name == "br")
            text += ' ';
        columns = name == "table" ? 0 : columns + (name == "col" ? 1 : 0);
        cells = name == "tr" ? 0 : cells + (name == "td" || name == "th" ? 1 : 0);
    }

    void readAttribute(Reader& tag) {
        tag.expect(" ");
        const std::string_view name = tag.takeUntil("=");
        FUZZ_CHECK(isOneOf(name, {"class", "id", "href", "style", "src", "alt", "lang", "charset",
                                  "name", "content"}));
        tag.expect("=\"");
        const std::string_view value = tag.takeUntil("\"");
        tag.expect("\"");
        FUZZ_CHECK(value.find('<') == std::string_view::npos);
        FUZZ_CHECK(name != "id" || ids.insert(std::string(value)).second);
        FUZZ_CHECK(name != "href" || value.find("script:") == std::string_view::npos ||
                   value.starts_with("http"));
    }

    Reader rest{""};
    std::vector<std::string_view> open;
    std::set<std::string> ids;
    std::string text;
    int columns = 0, cells = 0;
};

/// RTF: groups, control words, numbers of fonts and colours within their tables, and as
/// many cells as a row defines.
class RtfReader {
public:
    std::string read(std::string_view document) {
        FUZZ_CHECK(document.starts_with("{\\rtf1\\ansi\\ansicpg1252\\uc1\\deff0\n"));
        for (rest = Reader(document); !rest.empty();)
            step();
        FUZZ_CHECK(groups.empty() && closed && defined == 0);
        FUZZ_CHECK(mostFont < countedFonts && mostColour <= countedColours);
        return text;
    }

private:
    struct Group {
        bool hidden = false;
        std::string name; ///< the first control word
        std::string plain;
    };

    void step() {
        const char c = rest.next();
        FUZZ_CHECK(!closed || c == '\n');
        if (c == '{') {
            groups.push_back({!groups.empty() && groups.back().hidden, "", ""});
        } else if (c == '}') {
            endGroup();
        } else if (c == '\\') {
            control();
        } else if (c != '\n') {
            FUZZ_CHECK(c >= ' ' && c < 0x7F);
            put(c);
        }
    }

    void put(char c) {
        FUZZ_CHECK(!groups.empty());
        groups.back().plain += c;
        if (!groups.back().hidden)
            text += c;
    }

    void endGroup() {
        FUZZ_CHECK(!groups.empty());
        const Group group = groups.back();
        groups.pop_back();
        closed = groups.empty();
        if (closed)
            return;
        if (groups.back().name == "fonttbl")
            ++countedFonts;
        if (group.name == "colortbl")
            countedColours =
                static_cast<int>(std::count(group.plain.begin(), group.plain.end(), ';')) - 1;
        if (groups.back().name == "fldinst") {
            Reader field(group.plain);
            field.expect("HYPERLINK ");
            field.take("\\l ");
            field.expect("\"");
            FUZZ_CHECK(!field.takeUntil("\"").empty());
            field.expect("\"");
            FUZZ_CHECK(field.empty());
        }
    }

    void control() {
        const std::string word(rest.takeWhile("abcdefghijklmnopqrstuvwxyz"));
        if (word.empty())
            return symbol(rest.next());
        const int value = rest.isOneOf("-0123456789") ? rest.takeNumber() : 0;
        if (word == "u")
            return skipFallback();
        rest.take(" ");
        use(word, value);
    }

    void symbol(char c) {
        FUZZ_CHECK(std::string_view("\\{}~-_*").find(c) != std::string_view::npos);
        if (c == '*')
            groups.back().hidden = true;
        else
            put(c);
    }

    void skipFallback() {
        put('?');
        if (rest.take("\\'"))
            rest.takeHex(2);
        else
            rest.expect("?");
    }

    void use(const std::string& word, int value) {
        FUZZ_CHECK(!groups.empty());
        Group& group = groups.back();
        if (group.name.empty())
            group.name = word;
        group.hidden = group.hidden || isOneOf(word, {"fonttbl", "colortbl", "stylesheet", "info",
                                                      "pict", "pntext"});
        if (word == "f")
            mostFont = std::max(mostFont, value);
        else if (word == "cf")
            mostColour = std::max(mostColour, value);
        else if (isOneOf(word, {"line", "par", "tab", "cell"}))
            put(' ');
        useInTable(word);
    }

    void useInTable(const std::string& word) {
        FUZZ_CHECK(word != "trowd" || defined == 0);
        FUZZ_CHECK(word != "row" || (defined > 0 && cells == defined));
        if (word == "trowd" || word == "row")
            cells = defined = 0;
        cells += word == "cell";
        defined += word == "cellx";
    }

    Reader rest{""};
    std::vector<Group> groups;
    std::string text;
    bool closed = false;
    int mostFont = 0, mostColour = 0, countedFonts = 0, countedColours = 0;
    int defined = 0, cells = 0;
};

/// MIF: statements in one another; each tag in its catalog, each table and frame used once.
class MifReader {
public:
    std::string read(std::string_view document) {
        FUZZ_CHECK(document.starts_with("<MIFFile 8.00>\n"));
        rest = Reader(document);
        while (skip(), !rest.empty())
            all.children.push_back(statement());
        collect(all);
        checkParagraphs(all);
        std::string text;
        const Statement& flow = all.children.back();
        FUZZ_CHECK(flow.name == "TextFlow");
        read(flow, text);
        FUZZ_CHECK(usedTables.size() == tables.size() && usedFrames.size() == frames.size());
        return text;
    }

private:
    struct Statement {
        std::string name;
        std::vector<std::string> values; ///< strings with their first quote
        std::vector<Statement> children;
    };

    void skip() {
        for (rest.takeWhile(" \n"); rest.is("#"); rest.takeWhile(" \n"))
            rest.takeUntil("\n");
    }

    std::string word() {
        const std::string result(rest.takeUntil(" \n<>`'"));
        FUZZ_CHECK(!result.empty() && !rest.empty());
        return result;
    }

    std::string string() {
        std::string result;
        while (!rest.take("'")) {
            const bool isEscape = rest.is("\\");
            result += rest.next();
            FUZZ_CHECK(static_cast<unsigned char>(result.back()) >= ' ' && result.back() != '>');
            FUZZ_CHECK(!isEscape || rest.isOneOf("tqQ>\\"));
            if (isEscape)
                result += rest.next();
        }
        return result;
    }

    Statement statement() {
        rest.expect("<");
        Statement result;
        result.name = word();
        while (skip(), !rest.take(">")) {
            if (rest.is("<"))
                result.children.push_back(statement());
            else if (rest.take("`"))
                result.values.push_back("`" + string());
            else
                result.values.push_back(word());
        }
        return result;
    }

    static const Statement* child(const Statement& parent, std::string_view name) {
        for (const Statement& candidate : parent.children)
            if (candidate.name == name)
                return &candidate;
        return nullptr;
    }
    /// Of that child; none where it is missing.
    static const std::vector<Statement>& childrenOf(const Statement& parent,
                                                    std::string_view name) {
        static const std::vector<Statement> none;
        const Statement* found = child(parent, name);
        return found != nullptr ? found->children : none;
    }
    static std::string value(const Statement& parent, std::string_view name) {
        const Statement* found = child(parent, name);
        FUZZ_CHECK(found != nullptr && found->values.size() == 1);
        return found->values[0];
    }

    void collect(const Statement& document) {
        const std::pair<const char*, const char*> catalogs[] = {
            {"ColorCatalog", "ColorTag"}, {"PgfCatalog", "PgfTag"}, {"TblCatalog", "TblTag"}};
        for (const auto& [catalog, tag] : catalogs) {
            FUZZ_CHECK(child(document, catalog) != nullptr);
            for (const Statement& entry : childrenOf(document, catalog))
                FUZZ_CHECK(tags[tag].insert(value(entry, tag)).second);
        }
        for (const Statement& table : childrenOf(document, "Tbls"))
            FUZZ_CHECK(tables.emplace(value(table, "TblID"), &table).second);
        for (const Statement& frame : childrenOf(document, "AFrames"))
            FUZZ_CHECK(frames.insert(value(frame, "ID")).second);
    }

    /// Tags anywhere, and what stands in a ParaLine.
    void checkParagraphs(const Statement& parent) {
        for (const Statement& statement : parent.children) {
            const auto catalog =
                tags.find(statement.name == "FColor" ? "ColorTag" : statement.name);
            if (catalog != tags.end())
                FUZZ_CHECK(catalog->second.count(statement.values.at(0)) == 1);
            FUZZ_CHECK(
                parent.name != "ParaLine" ||
                isOneOf(statement.name, {"String", "Char", "Font", "Marker", "ATbl", "AFrame"}));
            checkParagraphs(statement);
        }
    }

    void read(const Statement& parent, std::string& text) {
        for (const Statement& statement : parent.children) {
            if (statement.name == "String")
                text += statement.values.at(0).substr(1);
            else if (statement.name == "Char" || statement.name == "Para")
                text += ' ';
            else if (statement.name == "AFrame")
                FUZZ_CHECK(frames.count(statement.values.at(0)) == 1 &&
                           usedFrames.insert(statement.values.at(0)).second);
            if (statement.name == "ATbl")
                readTable(statement.values.at(0), text);
            else if (statement.name != "Marker" && statement.name != "Font")
                read(statement, text);
        }
    }

    void readTable(const std::string& id, std::string& text) {
        FUZZ_CHECK(tables.count(id) == 1 && usedTables.insert(id).second);
        const Statement& table = *tables[id];
        const auto columns = static_cast<std::size_t>(std::stoi(value(table, "TblNumColumns")));
        FUZZ_CHECK(columns == static_cast<std::size_t>(std::count_if(
                                  table.children.begin(), table.children.end(),
                                  [](const Statement& s) { return s.name == "TblColumnWidth"; })));
        FUZZ_CHECK(!childrenOf(table, "TblBody").empty());
        for (const char* part : {"TblH", "TblBody"})
            for (const Statement& row : childrenOf(table, part)) {
                FUZZ_CHECK(row.name == "Row" && row.children.size() == columns);
                read(row, text);
            }
    }

    Reader rest{""};
    Statement all;
    std::map<std::string, std::set<std::string>, std::less<>> tags;
    std::map<std::string, const Statement*> tables;
    std::set<std::string> frames, usedTables, usedFrames;
};

/// Interleaf: declarations, then components of one line each, and tables of them.
class InterleafReader {
public:
    std::string read(std::string_view document) {
        FUZZ_CHECK(std::all_of(document.begin(), document.end(), [](char c) {
            return (c >= ' ' && c < 0x7F) || c == '\n' || c == '\t';
        }));
        FUZZ_CHECK(document.starts_with("<!OPS, Version = 8.0>\n\n"));
        const std::size_t end = document.find("<!End Declarations>\n\n");
        FUZZ_CHECK(end != std::string_view::npos);
        declare(document.substr(0, end));
        for (rest = Reader(document.substr(end + 21)); !rest.empty();)
            readPart();
        FUZZ_CHECK(columns == 0);
        return text;
    }

private:
    void declare(std::string_view declarations) {
        const std::string_view begin = "<!Class, \"";
        for (std::size_t at = 0; (at = declarations.find(begin, at)) != declarations.npos;) {
            Reader name(declarations.substr(at += begin.size()));
            FUZZ_CHECK(classes.insert(std::string(name.takeUntil("\""))).second);
        }
        fonts = numbered(declarations, "\tF");
        colours = numbered(declarations, " C");
    }

    /// How many of "F1 = ", "F2 = " and so on there are.
    static int numbered(std::string_view declarations, const std::string& prefix) {
        int count = 0;
        while (declarations.find(prefix + std::to_string(count + 1) + " = ") != declarations.npos)
            ++count;
        return count;
    }

    std::string_view line() {
        const std::string_view result = rest.takeUntil("\n");
        rest.expect("\n");
        return result;
    }

    void readPart() {
        const std::string_view tag = line();
        FUZZ_CHECK(tag.size() > 2 && tag.front() == '<' && tag.back() == '>');
        const std::string name(tag.substr(1, tag.find_first_of(",>") - 1));
        if (classes.count(name) != 0) {
            FUZZ_CHECK((name.starts_with("cell")) == (cells >= 0));
            cells = -1;
            readText(line());
        } else if (name == "Table") {
            FUZZ_CHECK(columns == 0 && tag.starts_with("<Table, \"table\", Columns = "));
            columns = std::stoi(std::string(tag.substr(27)));
            done = columns; // as if a row had ended
        } else if (name == "Row") {
            FUZZ_CHECK(columns > 0 && done == columns);
            done = 0;
        } else if (name == "Cell") {
            FUZZ_CHECK(columns > 0 && done < columns && cells < 0);
            ++done;
            cells = 0;
        } else {
            FUZZ_CHECK(name == "End Table" && columns > 0 && done == columns && cells < 0);
            columns = 0;
        }
        FUZZ_CHECK(line().empty());
    }

    void readText(std::string_view line) {
        for (Reader part(line); !part.empty();) {
            text += part.takeUntil("<");
            if (part.take("<<")) {
                text += '<';
            } else if (part.take("<")) {
                command(part.takeUntil(">"));
                part.expect(">");
            }
        }
        text += ' ';
    }

    void command(std::string_view name) {
        if (name.starts_with('F')) {
            FUZZ_CHECK(std::stoi(std::string(name.substr(1))) <= fonts);
            const std::size_t colour = name.find("@Z");
            FUZZ_CHECK(colour == name.npos ||
                       std::stoi(std::string(name.substr(colour + 2))) <= colours);
            return;
        }
        FUZZ_CHECK(name == "Tab" || name == "HR" || name == "SP" || name == "-" ||
                   (name.size() == 3 && name[0] == '#'));
        text += ' ';
    }

    Reader rest{""};
    std::set<std::string> classes;
    std::string text;
    int fonts = 0, colours = 0;
    int columns = 0; ///< of the table that is open; 0 for none
    int done = 0;    ///< cells of the row
    int cells = -1;  ///< 0 while a cell has no component yet
};

} // namespace reference
