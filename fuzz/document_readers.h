// SPDX-License-Identifier: Apache-2.0
/// @file
/// Strict readers of the four document formats: each takes what the writers may make of
/// them and nothing else, and gives the text in the order in which a person reads it.
#pragma once

#include "fuzz/check.h"

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
inline bool isOneOf(std::string_view name, const std::set<std::string_view>& names) {
    return names.count(name) != 0;
}

/// HTML: what is open, what may stand in it, and rows with all their cells.
class HtmlReader {
public:
    std::string read(std::string_view document) {
        FUZZ_CHECK(take(document, "<!DOCTYPE html>\n"));
        for (rest = document; !rest.empty();) {
            const std::size_t end = std::min(rest.find('<'), rest.size());
            readText(rest.substr(0, end));
            rest.remove_prefix(end);
            if (!rest.empty())
                readTag();
        }
        FUZZ_CHECK(open.empty());
        return text;
    }

private:
    static bool take(std::string_view& from, std::string_view expected) {
        if (!from.starts_with(expected))
            return false;
        from.remove_prefix(expected.size());
        return true;
    }

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
        const std::size_t end = rest.find('>');
        FUZZ_CHECK(end != std::string_view::npos);
        std::string_view tag = rest.substr(1, end - 1);
        rest.remove_prefix(end + 1);
        if (take(tag, "/")) {
            FUZZ_CHECK(parent() == tag);
            open.pop_back();
            if (tag == "tr")
                FUZZ_CHECK(cells == columns);
            return;
        }
        const std::string_view name = tag.substr(0, tag.find(' '));
        tag.remove_prefix(name.size());
        begin(name);
        while (!tag.empty())
            readAttribute(tag);
        if (!isOneOf(name, {"br", "hr", "img", "meta", "col"}))
            open.push_back(name);
    }

    void begin(std::string_view name) {
        static const std::map<std::string_view, std::set<std::string_view>> parents = {
            {"html", {""}},
            {"head", {"html"}},
            {"body", {"html"}},
            {"meta", {"head"}},
            {"title", {"head"}},
            {"style", {"head"}},
            {"h1", {"body"}},
            {"h2", {"body"}},
            {"h3", {"body"}},
            {"h4", {"body"}},
            {"h5", {"body"}},
            {"h6", {"body"}},
            {"p", {"body"}},
            {"pre", {"body"}},
            {"hr", {"body"}},
            {"div", {"body"}},
            {"ul", {"body", "li"}},
            {"ol", {"body", "li"}},
            {"li", {"ul", "ol"}},
            {"table", {"body"}},
            {"colgroup", {"table"}},
            {"thead", {"table"}},
            {"tbody", {"table"}},
            {"col", {"colgroup"}},
            {"tr", {"thead", "tbody"}},
            {"td", {"tr"}},
            {"th", {"tr"}}};
        const auto found = parents.find(name);
        if (found != parents.end())
            FUZZ_CHECK(isOneOf(parent(), found->second));
        else
            FUZZ_CHECK(isOneOf(name, {"a", "b", "i", "u", "span", "br", "img"}));
        if (name == "br")
            text += ' ';
        columns = name == "table" ? 0 : columns + (name == "col" ? 1 : 0);
        cells = name == "tr" ? 0 : cells + (name == "td" || name == "th" ? 1 : 0);
    }

    void readAttribute(std::string_view& tag) {
        FUZZ_CHECK(take(tag, " "));
        const std::size_t equals = tag.find("=\"");
        FUZZ_CHECK(equals != std::string_view::npos);
        const std::string_view name = tag.substr(0, equals);
        FUZZ_CHECK(isOneOf(name, {"class", "id", "href", "style", "src", "alt", "lang", "charset",
                                  "name", "content"}));
        tag.remove_prefix(equals + 2);
        const std::size_t end = tag.find('"');
        FUZZ_CHECK(end != std::string_view::npos);
        const std::string_view value = tag.substr(0, end);
        tag.remove_prefix(end + 1);
        FUZZ_CHECK(value.find('<') == std::string_view::npos);
        if (name == "id")
            FUZZ_CHECK(ids.insert(std::string(value)).second);
        if (name == "href")
            FUZZ_CHECK(value.find("script:") == std::string_view::npos ||
                       value.starts_with("http"));
    }

    std::string_view rest;
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
        rest = document;
        while (!rest.empty())
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
        const char c = rest.front();
        rest.remove_prefix(1);
        FUZZ_CHECK(!closed || c == '\n');
        if (c == '{') {
            const bool hidden = !groups.empty() && groups.back().hidden;
            groups.push_back({hidden, "", ""});
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
            std::string_view field = group.plain;
            FUZZ_CHECK(field.starts_with("HYPERLINK "));
            field.remove_prefix(10);
            if (field.starts_with("\\l "))
                field.remove_prefix(3);
            FUZZ_CHECK(field.size() > 2 && field.front() == '"' &&
                       field.find('"', 1) == field.size() - 1);
        }
    }

    void control() {
        FUZZ_CHECK(!rest.empty());
        std::size_t length = 0;
        while (length < rest.size() && rest[length] >= 'a' && rest[length] <= 'z')
            ++length;
        if (length == 0)
            return symbol();
        const std::string word(rest.substr(0, length));
        rest.remove_prefix(length);
        std::size_t digits = !rest.empty() && rest[0] == '-' ? 1 : 0;
        while (digits < rest.size() && rest[digits] >= '0' && rest[digits] <= '9')
            ++digits;
        const int value = digits > 0 ? std::stoi(std::string(rest.substr(0, digits))) : 0;
        rest.remove_prefix(digits);
        if (word == "u")
            return skipFallback();
        if (!rest.empty() && rest[0] == ' ')
            rest.remove_prefix(1);
        use(word, value);
    }

    void symbol() {
        const char c = rest.front();
        rest.remove_prefix(1);
        FUZZ_CHECK(std::string_view("\\{}~-_*").find(c) != std::string_view::npos);
        if (c == '*')
            groups.back().hidden = true;
        else
            put(c);
    }

    void skipFallback() {
        put('?');
        const bool isHex = rest.starts_with("\\'");
        FUZZ_CHECK(isHex ? rest.size() >= 4 : rest.starts_with("?"));
        rest.remove_prefix(isHex ? 4 : 1);
    }

    void use(const std::string& word, int value) {
        static const std::set<std::string_view> hidden = {"fonttbl", "colortbl", "stylesheet",
                                                          "info",    "pict",     "pntext"};
        FUZZ_CHECK(!groups.empty());
        Group& group = groups.back();
        if (group.name.empty())
            group.name = word;
        group.hidden = group.hidden || isOneOf(word, hidden);
        if (word == "f")
            mostFont = std::max(mostFont, value);
        else if (word == "cf")
            mostColour = std::max(mostColour, value);
        else if (word == "line" || word == "par" || word == "tab")
            put(' ');
        else
            useInTable(word);
    }

    void useInTable(const std::string& word) {
        if (word == "trowd") {
            FUZZ_CHECK(defined == 0);
            cells = 0;
        } else if (word == "cellx") {
            ++defined;
        } else if (word == "cell") {
            ++cells;
            put(' ');
        } else if (word == "row") {
            FUZZ_CHECK(defined > 0 && cells == defined);
            defined = 0;
        }
    }

    std::string_view rest;
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
        rest = document;
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
        for (;;) {
            rest.remove_prefix(std::min(rest.find_first_not_of(" \n"), rest.size()));
            if (!rest.starts_with('#'))
                return;
            rest.remove_prefix(std::min(rest.find('\n'), rest.size()));
        }
    }

    std::string word() {
        const std::size_t end = rest.find_first_of(" \n<>`'");
        FUZZ_CHECK(end != std::string_view::npos && end > 0);
        const std::string result(rest.substr(0, end));
        rest.remove_prefix(end);
        return result;
    }

    std::string string() {
        std::string result;
        while (!rest.starts_with('\'')) {
            FUZZ_CHECK(!rest.empty() && rest[0] != '>' && rest[0] != '\n');
            FUZZ_CHECK(static_cast<unsigned char>(rest[0]) >= ' ');
            if (rest[0] == '\\') {
                FUZZ_CHECK(std::string_view("tqQ>\\").find(rest[1]) != std::string_view::npos);
                result += rest[0];
                rest.remove_prefix(1);
            }
            result += rest[0];
            rest.remove_prefix(1);
        }
        rest.remove_prefix(1);
        return result;
    }

    Statement statement() {
        FUZZ_CHECK(rest.starts_with('<'));
        rest.remove_prefix(1);
        Statement result;
        result.name = word();
        while (skip(), !rest.starts_with('>')) {
            FUZZ_CHECK(!rest.empty());
            if (rest[0] == '<') {
                result.children.push_back(statement());
            } else if (rest[0] == '`') {
                rest.remove_prefix(1);
                result.values.push_back("`" + string());
            } else {
                result.values.push_back(word());
            }
        }
        rest.remove_prefix(1);
        return result;
    }

    static const Statement* child(const Statement& parent, std::string_view name) {
        for (const Statement& candidate : parent.children)
            if (candidate.name == name)
                return &candidate;
        return nullptr;
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
            const Statement* found = child(document, catalog);
            FUZZ_CHECK(found != nullptr);
            for (const Statement& entry : found->children)
                FUZZ_CHECK(tags[tag].insert(value(entry, tag)).second);
        }
        if (const Statement* found = child(document, "Tbls"))
            for (const Statement& table : found->children)
                FUZZ_CHECK(tables.emplace(value(table, "TblID"), &table).second);
        if (const Statement* found = child(document, "AFrames"))
            for (const Statement& frame : found->children)
                FUZZ_CHECK(frames.insert(value(frame, "ID")).second);
    }

    /// Tags anywhere, and what stands in a ParaLine.
    void checkParagraphs(const Statement& parent) {
        static const std::set<std::string_view> inLine = {"String", "Char", "Font",
                                                          "Marker", "ATbl", "AFrame"};
        for (const Statement& statement : parent.children) {
            const auto catalog =
                tags.find(statement.name == "FColor" ? "ColorTag" : statement.name);
            if (catalog != tags.end())
                FUZZ_CHECK(catalog->second.count(statement.values.at(0)) == 1);
            if (parent.name == "ParaLine")
                FUZZ_CHECK(isOneOf(statement.name, inLine));
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
        const Statement* body = child(table, "TblBody");
        FUZZ_CHECK(body != nullptr && !body->children.empty());
        for (const char* part : {"TblH", "TblBody"})
            if (const Statement* rows = child(table, part))
                for (const Statement& row : rows->children) {
                    FUZZ_CHECK(row.name == "Row" && row.children.size() == columns);
                    read(row, text);
                }
    }

    std::string_view rest;
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
        rest = document.substr(end + 21);
        while (!rest.empty())
            readPart();
        FUZZ_CHECK(columns == 0);
        return text;
    }

private:
    void declare(std::string_view declarations) {
        for (std::size_t at = 0;
             (at = declarations.find("<!Class, \"", at)) != declarations.npos;) {
            at += 10;
            FUZZ_CHECK(
                classes
                    .insert(std::string(declarations.substr(at, declarations.find('"', at) - at)))
                    .second);
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
        const std::size_t end = rest.find('\n');
        FUZZ_CHECK(end != std::string_view::npos);
        const std::string_view result = rest.substr(0, end);
        rest.remove_prefix(end + 1);
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

    void readText(std::string_view part) {
        while (!part.empty()) {
            const std::size_t end = std::min(part.find('<'), part.size());
            text += part.substr(0, end);
            part.remove_prefix(end);
            if (part.starts_with("<<")) {
                text += '<';
                part.remove_prefix(2);
            } else if (!part.empty()) {
                const std::size_t close = part.find('>');
                FUZZ_CHECK(close != std::string_view::npos);
                command(part.substr(1, close - 1));
                part.remove_prefix(close + 1);
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

    std::string_view rest;
    std::set<std::string> classes;
    std::string text;
    int fonts = 0, colours = 0;
    int columns = 0; ///< of the table that is open; 0 for none
    int done = 0;    ///< cells of the row
    int cells = -1;  ///< 0 while a cell has no component yet
};

} // namespace reference
