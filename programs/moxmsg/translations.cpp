// SPDX-License-Identifier: Apache-2.0
// An MO file is two tables of (length, offset), one of what is translated and one of the
// translations, and the texts, each with a NUL behind it. Nothing that the file says is
// believed before it was found to lie inside, and a file that is damaged in one place is not
// read any further. Entries may share their bytes, but not all of them all: a small file would
// fill the memory.
#include "translations.h"

#include "common/formats.h"
#include "tools/messages/catalog/detail/catalog_layout.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace {

using namespace kaz::detail::catalog;

constexpr std::size_t longestText = recordSize - 1;

// ------------------------------------------------------------------------- PO

bool isContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

/// How many bytes the character at the beginning of @p text takes in UTF-8; 0 for none.
std::size_t characterSize(std::string_view text) {
    const auto at = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = at(0);
    const std::size_t size = first < 0x80                    ? 1
                             : first >= 0xC2 && first < 0xE0 ? 2
                             : (first & 0xF0) == 0xE0        ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
    for (std::size_t i = 1; i < size; ++i)
        if (!isContinuation(static_cast<unsigned char>(at(i))))
            return 0;
    // One character has one spelling only, and halves of surrogates are none.
    const bool isOverlong = (first == 0xE0 && at(1) < 0xA0) || (first == 0xF0 && at(1) < 0x90);
    const bool isOutside = (first == 0xED && at(1) >= 0xA0) || (first == 0xF4 && at(1) >= 0x90);
    return isOverlong || isOutside ? 0 : size;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t size = characterSize(text);
        if (size == 0)
            return false;
        text.remove_prefix(size);
    }
    return true;
}

std::string escapedForPo(char c) {
    constexpr std::string_view plain = "\a\b\t\n\v\f\r\\\"", letters = "abtnvfr\\\"";
    if (const std::size_t named = plain.find(c); named != plain.npos)
        return {'\\', letters[named]};
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && byte != 0x7F)
        return {c};
    // Three octal digits end by themselves; hexadecimal ones would take what follows.
    const auto digit = [](unsigned value) { return static_cast<char>('0' + (value & 7)); };
    return {'\\', digit(byte / 64U), digit(byte / 8U), digit(byte)};
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text)
        result += escapedForPo(c);
    return result + '"';
}

/// A text of several lines stands on several lines, for the eye.
std::string poText(std::string_view text) {
    const std::size_t first = text.find('\n');
    if (first == text.npos || first + 1 == text.size())
        return quoted(text);
    // The empty first line lets all lines of the text stand below one another.
    std::string result = "\"\"";
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        result.append("\n").append(quoted(text.substr(0, length)));
        text.remove_prefix(length);
    }
    return result;
}

/// A text that only doubles its percent signs is one, too.
bool isFormat(const std::string& text) {
    return !printfArguments(text).empty() || text.find("%%") != text.npos;
}

/// A reference ends at a blank.
std::string referenceOf(const Messages& messages, int line) {
    std::string place = messages.place(line);
    std::replace_if(
        place.begin(), place.end(), [](unsigned char c) { return c <= ' ' || c == 0x7F; }, '_');
    return place;
}

constexpr char templateHead[] = R"(# Texts by number: the context of each is its number.
# A translation has at most 127 bytes in the character set of this file, and keeps the
# conversions (%s, %d, ...) of its text.
msgid ""
msgstr ""
"Project-Id-Version: \n"
"PO-Revision-Date: \n"
"Last-Translator: \n"
"Language-Team: \n"
"Language: \n"
"MIME-Version: 1.0\n"
"Content-Type: text/plain; charset=UTF-8\n"
"Content-Transfer-Encoding: 8bit\n"
)";

// ------------------------------------------------------------------------- MO

constexpr std::uint32_t translationMagic = 0x950412DE;
constexpr std::size_t translationHeader = 20; // magic, revision, entries, both tables
constexpr std::size_t extendedHeader = 48;    // from revision 0.1 on
constexpr std::size_t systemTextCount = 36;   // where their number is in it
constexpr char behindContext = '\4';

std::uint32_t numberAt(std::string_view bytes, std::size_t at, bool isBig) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[at + i]);
        number |= static_cast<std::uint32_t>(byte) << 8 * (isBig ? 3 - i : i);
    }
    return number;
}

/// The number of a message that @p context is, as templates write it; -1 for anything else.
int messageNumber(std::string_view context) {
    int number = -1;
    std::from_chars(context.data(), context.data() + context.size(), number);
    // Written back, which refuses leading zeros and anything behind the digits.
    const bool isOne = number >= 0 && number <= lastNumber && context == std::to_string(number);
    return isOne ? number : -1;
}

class TranslationDecoder {
public:
    TranslationDecoder(std::string_view file, Messages& result) : bytes_(file), messages_(result) {}

    void decode() {
        if (bytes_.size() < translationHeader)
            return problem("is damaged: it ends within its head");
        // The file has the byte order of the machine that made it.
        isBig_ = numberAt(bytes_, 0, true) == translationMagic;
        const std::uint32_t revision = word(4), count = word(8);
        // The upper half tells whether the file can be read, the lower one what it has more.
        if (revision >> 16 > 1)
            return problem("has the revision " + std::to_string(revision >> 16) +
                           ", which is not known");
        if ((revision & 0xFFFF) > 0 && !checkSystemTexts())
            return;
        for (const std::size_t table : {word(12), word(16)})
            if (!isInside(table, std::size_t{count} * 8))
                return problem("is damaged: a table of its texts is outside the file");
        // Both tables have been found to lie inside, so that word() reads no byte beyond.
        const auto decodeNext = [this](std::size_t entry) {
            return decodeEntry(word(12) + entry * 8, word(16) + entry * 8);
        };
        for (std::size_t entry = 0; entry < count && decodeNext(entry);)
            ++entry;
    }

private:
    /// Texts with conversions that each system spells in its own way have tables of their
    /// own. They are none that a message file could hold, and must not be lost unseen.
    bool checkSystemTexts() {
        if (bytes_.size() < extendedHeader)
            return damage("it ends within its head");
        if (const std::uint32_t count = word(systemTextCount))
            problem("has " + std::to_string(count) +
                    " texts with conversions of the system's own, as %Id");
        return true;
    }

    void problem(const std::string& text) { messages_.addProblem(0, text); }
    bool damage(const std::string& text) {
        problem("is damaged: " + text);
        return false;
    }
    std::uint32_t word(std::size_t at) const { return numberAt(bytes_, at, isBig_); }
    bool isInside(std::size_t offset, std::size_t size) const {
        return offset <= bytes_.size() && bytes_.size() - offset >= size;
    }

    /// The text that the table says at @p at, up to its first NUL: what follows is a plural.
    /// False when it is not all there.
    bool textAt(std::size_t at, std::string_view& text) {
        const std::size_t size = word(at), offset = word(at + 4);
        // The cheap test first also keeps size + 1 from overflowing.
        if (size >= left_ || !isInside(offset, size + 1) || bytes_[offset + size] != '\0')
            return false;
        left_ -= size + 1;
        text = bytes_.substr(offset, size);
        text = text.substr(0, text.find('\0'));
        return true;
    }

    /// False when the file is damaged there.
    bool decodeEntry(std::size_t originalAt, std::size_t translationAt) {
        std::string_view original, text;
        if (!textAt(originalAt, original))
            return damage("a text that is translated is outside the file");
        const std::size_t context = original.find(behindContext);
        const int number =
            context != original.npos ? messageNumber(original.substr(0, context)) : -1;
        // Read after the number, so that the problem can name it.
        if (!textAt(translationAt, text))
            return damage(number >= 0
                              ? "the text of " + std::to_string(number) + " is outside the file"
                              : "a translation is outside the file");
        if (number >= 0 && !text.empty())
            add(number, original.substr(context + 1), text);
        return true;
    }

    void add(int number, std::string_view original, std::string_view text) {
        if (text.size() > longestText)
            problem("the text of " + std::to_string(number) + " has " +
                    std::to_string(text.size()) + " bytes, " + std::to_string(longestText) +
                    " fit");
        messages_.translations.push_back({number, std::string(original), std::string(text)});
    }

    static constexpr std::size_t mostSharing = 16;

    std::string_view bytes_;
    Messages& messages_;
    std::size_t left_ = bytes_.size() * mostSharing; ///< of what all entries may take together
    bool isBig_ = false;
};

} // namespace

std::string translationTemplate(Messages& messages) {
    std::string result = templateHead;
    for (const auto& [number, message] : messages.texts) {
        if (message.text.empty())
            continue; // the empty text stands for the head, and needs no translation
        if (!isUtf8(message.text))
            messages.addProblem(message.line, "the text of " + std::to_string(number) +
                                                  " is no UTF-8, which translators need");
        result += "\n#: " + referenceOf(messages, message.line) + "\n";
        if (isFormat(message.text))
            result += "#, c-format\n";
        result += "msgctxt \"" + std::to_string(number) + "\"\nmsgid " + poText(message.text) +
                  "\nmsgstr \"\"\n";
    }
    return result;
}

bool isTranslation(const std::string& bytes) {
    return bytes.size() >= 4 && (numberAt(bytes, 0, false) == translationMagic ||
                                 numberAt(bytes, 0, true) == translationMagic);
}

void decodeTranslation(const std::string& bytes, Messages& messages) {
    TranslationDecoder(bytes, messages).decode();
}

void takeTranslations(Messages& messages, Messages& from, std::set<int>& outdated) {
    std::map<int, std::string> taken;
    for (const Translation& translation : from.translations) {
        const int number = translation.number;
        const auto found = messages.texts.find(number);
        if (found == messages.texts.end() || found->second.text != translation.original) {
            // Kept for a message that has no good translation further on, see the end.
            outdated.insert(number);
            continue;
        }
        taken[number] = translation.text;
        const std::string wanted = printfArguments(translation.original);
        const std::string given = printfArguments(translation.text);
        if (given == wanted)
            continue;
        KazString problem;
        problem.format("the arguments of %d (%s) are others in %s (%s)", number, given.c_str(),
                       messages.place(found->second.line).c_str(), wanted.c_str());
        from.addProblem(0, problem.getValue());
    }
    for (const auto& [number, text] : taken) {
        messages.texts[number].text = text;
        outdated.erase(number);
    }
}
