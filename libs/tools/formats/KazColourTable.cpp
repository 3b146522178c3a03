// SPDX-License-Identifier: Apache-2.0
// A colour is kept once, at a number that documents refer to; the first one is the reader's own
// choice and no colour. When the table is full, the nearest colour that it has stands for a new
// one, so a document is never without. Parts of a hundred are computed in integers: the same
// table gives the same text on every machine.
#include "tools/formats/KazColourTable.h"

#include "tools/formats/detail/TextBuilder.h"
#include "tools/formats/detail/decimal.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

using kaz::detail::TextBuilder;

struct Named {
    std::string_view name; // of a literal
    unsigned value;
};

/// The colours of HTML 4 in the order of addBasics(); what follows them is known by name only.
constexpr Named names[] = {{"black", 0x000000},  {"silver", 0xC0C0C0},  {"gray", 0x808080},
                           {"white", 0xFFFFFF},  {"maroon", 0x800000},  {"red", 0xFF0000},
                           {"purple", 0x800080}, {"fuchsia", 0xFF00FF}, {"green", 0x008000},
                           {"lime", 0x00FF00},   {"olive", 0x808000},   {"yellow", 0xFFFF00},
                           {"navy", 0x000080},   {"blue", 0x0000FF},    {"teal", 0x008080},
                           {"aqua", 0x00FFFF},   {"orange", 0xFFA500}};
constexpr int basics = 16;

/// The colours that every MIF reader has.
constexpr Named reserved[] = {{"Black", 0x000000},   {"White", 0xFFFFFF}, {"Red", 0xFF0000},
                              {"Green", 0x00FF00},   {"Blue", 0x0000FF},  {"Cyan", 0x00FFFF},
                              {"Magenta", 0xFF00FF}, {"Yellow", 0xFFFF00}};

/// Out of range means as far as it goes.
unsigned char share(int value) {
    return static_cast<unsigned char>(std::clamp(value, 0, 255));
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// "rgb" or "rrggbb"; -1 for anything else.
int hexColour(std::string_view digits) {
    if (digits.size() != 3 && digits.size() != 6)
        return -1;
    int value = 0;
    for (const char c : digits) {
        const int digit = hexDigit(c);
        if (digit < 0)
            return -1;
        // "f" of three stands for "ff", which is 17 times as much.
        value = digits.size() == 6 ? value * 16 + digit : value * 256 + digit * 17;
    }
    return value;
}

/// Names are of ASCII letters, so no locale has a say in their case.
bool isNamed(std::string_view text, std::string_view name) {
    return std::equal(text.begin(), text.end(), name.begin(), name.end(), [](char a, char b) {
        return a == b || (a >= 'A' && a <= 'Z' && a + 32 == b);
    });
}

int namedColour(std::string_view text) {
    for (const Named& colour : names)
        if (isNamed(text, colour.name))
            return static_cast<int>(colour.value);
    return -1;
}

unsigned valueOf(int red, int green, int blue) {
    return static_cast<unsigned>(red << 16 | green << 8 | blue);
}

const char* reservedTag(unsigned value) {
    for (const Named& colour : reserved)
        if (colour.value == value)
            return colour.name.data();
    return nullptr;
}

void appendHex(TextBuilder& out, unsigned value, const char* digits) {
    for (int shift = 20; shift >= 0; shift -= 4)
        out.append(digits[value >> shift & 15]);
}

/// Cyan, magenta, yellow and black in parts of a hundred; black is black ink alone.
struct Inks {
    std::int64_t values[4];

    Inks(unsigned colour, int places) {
        std::int64_t whole = 100;
        for (int i = 0; i < places; ++i)
            whole *= 10;
        for (int i = 0; i < 3; ++i) {
            const std::int64_t complement = 255 - (colour >> (16 - 8 * i) & 255);
            values[i] = colour == 0 ? 0 : kaz::detail::rounded(complement * whole, 255);
        }
        values[3] = colour == 0 ? whole : 0;
    }
};

void appendMifColour(TextBuilder& out, std::string_view tag, unsigned value) {
    constexpr const char* inks[] = {"Cyan", "Magenta", "Yellow", "Black"};
    out.append(" <Color\n  <ColorTag `");
    out.append(tag);
    out.append("'>\n");
    // MIF states inks as percentages with six decimals; 0 to 255 come back from them exactly.
    const Inks amounts(value, 6);
    for (int i = 0; i < 4; ++i) {
        out.append("  <Color");
        out.append(inks[i]);
        out.append(' ');
        kaz::detail::appendDecimal(out, amounts.values[i], 6);
        out.append(">\n");
    }
    if (reservedTag(value) != nullptr) {
        out.append("  <ColorAttribute ColorIs");
        out.append(tag);
        out.append(">\n  <ColorAttribute ColorIsReserved>\n");
    }
    out.append(" >\n");
}

} // namespace

KazColourTable::KazColourTable() = default;

int KazColourTable::add(int red, int green, int blue) {
    const Shares colour = {share(red), share(green), share(blue)};
    int best = find(colour.red, colour.green, colour.blue);
    if (best >= 0)
        return best;
    if (getCount() <= limit) {
        shares_.push_back(colour);
        return getCount() - 1;
    }
    // More than any distance: the first colour of the table is always nearer.
    int least = 4 * 255 * 255;
    for (int i = 1; i < getCount(); ++i) {
        const int r = getRed(i) - colour.red, g = getGreen(i) - colour.green,
                  b = getBlue(i) - colour.blue;
        if (r * r + g * g + b * b < least) {
            least = r * r + g * g + b * b;
            best = i;
        }
    }
    return best;
}

int KazColourTable::add(const char* text) {
    const std::string_view given = kaz::detail::orEmpty(text);
    const int value = given.starts_with('#') ? hexColour(given.substr(1)) : namedColour(given);
    return value < 0 ? -1 : add(value >> 16, value >> 8 & 255, value & 255);
}

void KazColourTable::addBasics() {
    for (int i = 0; i < basics; ++i)
        add(names[i].name.data());
}

int KazColourTable::find(int red, int green, int blue) const {
    for (std::size_t i = 0; i < shares_.size(); ++i)
        if (shares_[i].red == red && shares_[i].green == green && shares_[i].blue == blue)
            return static_cast<int>(i) + 1;
    return -1;
}

int KazColourTable::getRed(int number) const {
    return number > 0 && number < getCount() ? shares_[static_cast<std::size_t>(number) - 1].red
                                             : 0;
}

int KazColourTable::getGreen(int number) const {
    return number > 0 && number < getCount() ? shares_[static_cast<std::size_t>(number) - 1].green
                                             : 0;
}

int KazColourTable::getBlue(int number) const {
    return number > 0 && number < getCount() ? shares_[static_cast<std::size_t>(number) - 1].blue
                                             : 0;
}

KazString KazColourTable::getHtml(int number) const {
    KazString result;
    if (number < 1 || number >= getCount())
        return result;
    TextBuilder out(result);
    out.append('#');
    appendHex(out, valueOf(getRed(number), getGreen(number), getBlue(number)), "0123456789abcdef");
    out.commit();
    return result;
}

/// A reserved colour must keep its own tag; the others are named by their value, so that the same
/// colour has the same tag in all documents.
KazString KazColourTable::getMifTag(int number) const {
    const unsigned value = valueOf(getRed(number), getGreen(number), getBlue(number));
    if (const char* tag = reservedTag(value))
        return tag;
    KazString result;
    TextBuilder out(result);
    out.append("RGB ");
    appendHex(out, value, "0123456789ABCDEF");
    out.commit();
    return result;
}

/// The empty first entry is the reader's own colour, number 0.
KazString KazColourTable::getRtf() const {
    KazString result;
    TextBuilder out(result);
    out.append("{\\colortbl;");
    for (const Shares& colour : shares_) {
        out.append("\\red");
        kaz::detail::appendNumber(out, colour.red);
        out.append("\\green");
        kaz::detail::appendNumber(out, colour.green);
        out.append("\\blue");
        kaz::detail::appendNumber(out, colour.blue);
        out.append(';');
    }
    out.append('}');
    out.commit();
    return result;
}

KazString KazColourTable::getMif() const {
    KazString result;
    TextBuilder out(result);
    out.append("<ColorCatalog\n");
    for (const Named& colour : reserved)
        appendMifColour(out, colour.name, colour.value);
    // No tag may be defined twice, and the reserved ones are there already.
    for (int i = 1; i < getCount(); ++i) {
        const unsigned value = valueOf(getRed(i), getGreen(i), getBlue(i));
        if (reservedTag(value) == nullptr)
            appendMifColour(out, getMifTag(i).getValue(), value);
    }
    out.append(">\n");
    out.commit();
    return result;
}

KazString KazColourTable::getInterleaf() const {
    KazString result;
    if (shares_.empty())
        return result;
    TextBuilder out(result);
    out.append("<!Color Definitions");
    for (int i = 1; i < getCount(); ++i) {
        out.append(", C");
        kaz::detail::appendNumber(out, i);
        const Inks amounts(valueOf(getRed(i), getGreen(i), getBlue(i)), 1);
        const char* between = " = ";
        for (const std::int64_t amount : amounts.values) {
            out.append(between);
            kaz::detail::appendDecimal(out, amount, 1);
            between = ", ";
        }
    }
    out.append('>');
    out.commit();
    return result;
}
