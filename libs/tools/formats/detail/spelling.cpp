// SPDX-License-Identifier: Apache-2.0
// Each format is a table of what stands for the kinds of characters, and a function for
// the others where it is not in UTF-8. One loop serves all: it skips what stands for itself
// with wide vectors and looks at the rest character by character.
#include "tools/formats/detail/spelling.h"

namespace kaz::detail {

namespace {

constexpr std::size_t statementRoom = 16; ///< for what stands around a string
constexpr char lowerDigits[] = "0123456789abcdef";

Spelling& at(Spellings& table, Kind kind) {
    return table[static_cast<std::size_t>(kind)];
}

/// A kind without an entry stands for itself. The numbers for an apostrophe: HTML 4 does not
/// know its name.
Spellings html() {
    Spellings table;
    at(table, Kind::lineBreak) = {"<br>"};
    at(table, Kind::tab) = {"&emsp;"};
    at(table, Kind::bad) = {"\xEF\xBF\xBD"};
    at(table, Kind::ampersand) = {"&amp;"};
    at(table, Kind::less) = {"&lt;"};
    at(table, Kind::greater) = {"&gt;"};
    at(table, Kind::quote) = {"&quot;"};
    at(table, Kind::apostrophe) = {"&#39;"};
    at(table, Kind::hardSpace) = {"&nbsp;"};
    at(table, Kind::softHyphen) = {"&shy;"};
    return table;
}

/// In an attribute no element can stand, so line ends and tabs are characters by number.
Spellings attribute() {
    Spellings table = html();
    at(table, Kind::lineBreak) = {"&#10;"};
    at(table, Kind::tab) = {"&#9;"};
    return table;
}

/// The blank behind a word ends it and is not shown. "?" is what a reader of old shows for the
/// character in front: \uc1 in the head says that it is one byte.
Spellings rtf() {
    Spellings table;
    at(table, Kind::lineBreak) = {"\\line "};
    at(table, Kind::tab) = {"\\tab "};
    at(table, Kind::bad) = {"\\u-3?"};
    at(table, Kind::backslash) = {"\\\\"};
    at(table, Kind::openBrace) = {"\\{"};
    at(table, Kind::closeBrace) = {"\\}"};
    at(table, Kind::hardSpace) = {"\\~"};
    at(table, Kind::softHyphen) = {"\\-"};
    at(table, Kind::hardHyphen) = {"\\_"};
    at(table, Kind::enSpace) = {"\\u8194?"};
    at(table, Kind::emSpace) = {"\\u8195?"};
    at(table, Kind::numberSpace) = {"\\u8199?"};
    at(table, Kind::thinSpace) = {"\\u8201?"};
    return table;
}

/// A string has no escape for a line end, only for tabs: both separate words.
Spellings mifString() {
    Spellings table;
    at(table, Kind::lineBreak) = {"\\t"};
    at(table, Kind::tab) = {"\\t"};
    at(table, Kind::bad) = {"\xEF\xBF\xBD"};
    at(table, Kind::greater) = {"\\>"};
    at(table, Kind::apostrophe) = {"\\q"};
    at(table, Kind::backQuote) = {"\\Q"};
    at(table, Kind::backslash) = {"\\\\"};
    return table;
}

/// In paragraphs some characters are statements between strings.
Spellings mif() {
    Spellings table = mifString();
    at(table, Kind::lineBreak) = {"<Char HardReturn>", true};
    at(table, Kind::hardSpace) = {"<Char HardSpace>", true};
    at(table, Kind::softHyphen) = {"<Char DiscHyphen>", true};
    at(table, Kind::hardHyphen) = {"<Char HardHyphen>", true};
    at(table, Kind::enSpace) = {"<Char EnSpace>", true};
    at(table, Kind::emSpace) = {"<Char EmSpace>", true};
    at(table, Kind::numberSpace) = {"<Char NumberSpace>", true};
    at(table, Kind::thinSpace) = {"<Char ThinSpace>", true};
    return table;
}

/// "<" begins a command and stands for itself when doubled; there is no command for a hyphen that
/// does not break and for spaces of other widths.
Spellings interleaf() {
    Spellings table;
    at(table, Kind::lineBreak) = {"<HR>"};
    at(table, Kind::tab) = {"<Tab>"};
    at(table, Kind::bad) = {"?"};
    at(table, Kind::less) = {"<<"};
    at(table, Kind::hardSpace) = {"<SP>"};
    at(table, Kind::softHyphen) = {"<->"};
    at(table, Kind::hardHyphen) = {"-"};
    for (const Kind kind : {Kind::enSpace, Kind::emSpace, Kind::numberSpace, Kind::thinSpace})
        at(table, kind) = {" "};
    return table;
}

/// At most 0x8000, hence five digits.
void putNumber(TextBuilder& out, unsigned value) {
    char digits[5];
    char* first = std::end(digits);
    do
        *--first = static_cast<char>('0' + value % 10);
    while ((value /= 10) != 0);
    out.append(first, static_cast<std::size_t>(std::end(digits) - first));
}

/// \uN, whose number is signed, without what stands for it in old readers.
void putRtfUnit(TextBuilder& out, unsigned unit) {
    out.append("\\u");
    if (unit >= 0x8000)
        out.append('-');
    putNumber(out, unit < 0x8000 ? unit : 0x10000 - unit);
}

/// The number is of 16 bits, so characters beyond are two, each with its own stand-in. A stand-in
/// from the code page of the head (Windows-1252) is more than the "?".
void putRtf(TextBuilder& out, char32_t c) {
    if (c >= 0x10000) {
        putRtfUnit(out, static_cast<unsigned>(0xD800 + ((c - 0x10000) >> 10)));
        out.append('?');
        putRtfUnit(out, static_cast<unsigned>(0xDC00 + (c & 0x3FF)));
        return out.append('?');
    }
    putRtfUnit(out, static_cast<unsigned>(c));
    const unsigned byte = windows1252Byte(c);
    if (byte == 0)
        return out.append('?');
    const char old[] = {'\\', '\'', lowerDigits[byte / 16], lowerDigits[byte % 16]};
    out.append(old, sizeof old);
}

/// What comes near a character that only later formats know; "?" for the others.
std::string_view interleafLikeness(char32_t c) {
    switch (c) {
    case 0x2010:
    case 0x2012:
    case 0x2013:
    case 0x2212:
        return "-";
    case 0x2014:
    case 0x2015:
        return "--";
    case 0x2018:
    case 0x2019:
    case 0x201A:
    case 0x2032:
        return "'";
    case 0x201C:
    case 0x201D:
    case 0x201E:
    case 0x2033:
        return "\"";
    case 0x2022:
        return "*";
    case 0x2026:
        return "...";
    case 0x202F:
        return " ";
    case 0x2039:
        return "<<"; // one of them
    case 0x203A:
        return ">";
    case 0x20AC:
        return "EUR";
    case 0x2122:
        return "(TM)";
    default:
        return "?";
    }
}

void putInterleaf(TextBuilder& out, char32_t c) {
    if (c > 0xFF)
        return out.append(interleafLikeness(c));
    const char code[] = {'<', '#', lowerDigits[c / 16], lowerDigits[c % 16], '>'};
    out.append(code, sizeof code);
}

} // namespace

Format::Format(const Spellings& table, void (*others)(TextBuilder&, char32_t))
    : spellings_(table), others_(others) {
    for (int byte = 0; byte < 256; ++byte) {
        // Every byte beyond ASCII is looked at, if only to find what is damaged or Latin-1.
        const bool isAscii = byte < 0x80;
        const Kind kind = isAscii ? kindOf(static_cast<char32_t>(byte)) : Kind::bad;
        if (spellings_[static_cast<std::size_t>(kind)].text.data() == nullptr)
            continue;
        stops_[static_cast<std::size_t>(byte)] = true;
        stopSet_.insert(static_cast<char>(byte));
    }
    for (const Spelling& spelling : spellings_)
        hasStatements_ = hasStatements_ || spelling.isStatement;
}

/// A look at each byte of a short text takes less than a call.
std::size_t Format::lengthOfKept(const char* text, const char* end) const {
    constexpr std::ptrdiff_t few = 32;
    if (end - text >= few)
        return host::bytes().findIn(text, static_cast<std::size_t>(end - text), stopSet_);
    const char* at = text;
    while (at != end && !stops_[static_cast<unsigned char>(*at)])
        ++at;
    return static_cast<std::size_t>(at - text);
}

void Format::encode(TextBuilder& out, std::string_view text, text_encoding_enum encoding) const {
    const char* at = text.data();
    const char* const end = at + text.size();
    const char* kept = at; // where what stands for itself begins
    bool inString = false;
    // A string around it is no reason to move all of it in the end.
    out.reserve(text.size() + (hasStatements_ ? statementRoom : 0));
    while (at != end) {
        // What is kept is copied in pieces as long as possible: nothing is written while
        // characters stand for themselves, encoded ones among them.
        if (!stops_[static_cast<unsigned char>(*at)]) {
            at += lengthOfKept(at, end);
            if (at == end)
                break;
        }
        const Character c = nextCharacter(at, end, encoding);
        if (!keeps(c, encoding)) {
            putKept(out, {kept, static_cast<std::size_t>(at - kept)}, inString);
            put(out, c, inString);
            kept = at + c.length;
        }
        at += c.length;
    }
    putKept(out, {kept, static_cast<std::size_t>(at - kept)}, inString);
    if (inString)
        out.append("'>");
}

void Format::openString(TextBuilder& out, bool& inString) const {
    if (hasStatements_ && !inString) {
        out.append("<String `");
        inString = true;
    }
}

void Format::putKept(TextBuilder& out, std::string_view text, bool& inString) const {
    if (text.empty())
        return;
    openString(out, inString);
    out.append(text);
}

void Format::put(TextBuilder& out, const Character& c, bool& inString) const {
    const Spelling& spelling = spellings_[static_cast<std::size_t>(c.kind)];
    // Statements stand beside strings, never in them; the next text opens a new one.
    if (spelling.isStatement) {
        if (inString)
            out.append("'>");
        inString = false;
        return out.append(spelling.text);
    }
    openString(out, inString);
    if (spelling.text.data() == nullptr) {
        // The result is UTF-8 unless the format spells such characters in its own way. A
        // character of Latin-1 comes here to be converted.
        if (others_ != nullptr)
            return others_(out, c.code);
        char* const to = out.room(4);
        return out.used(putUtf8(to, c.code));
    }
    out.append(spelling.text);
}

const Format& paragraphFormat(doc_format_enum format) {
    static const Format formats[] = {
        {html(), nullptr}, {rtf(), putRtf}, {mif(), nullptr}, {interleaf(), putInterleaf}};
    return formats[format];
}

const Format& attributeFormat() {
    static const Format format(attribute(), nullptr);
    return format;
}

const Format& mifStringFormat() {
    static const Format format(mifString(), nullptr);
    return format;
}

} // namespace kaz::detail
