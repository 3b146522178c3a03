// SPDX-License-Identifier: Apache-2.0
// moxmsg's reader of MO files: files that are built as msgfmt builds them, and any bytes.
#include "common/formats.h"
#include "fuzz/harness.h"
#include "programs/moxmsg/translations.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

struct Entry {
    std::string original, text;
};

void put(std::string& bytes, std::size_t at, std::size_t value, bool isBig) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<char>(value >> 8 * (isBig ? 3 - i : i));
}

/// Head, both tables, texts; with gaps where @p input wants some.
std::string built(fuzz::Input& input, const std::vector<Entry>& entries, bool isBig) {
    const std::size_t tables = 48 + input.between<std::size_t>(0, 9);
    const std::size_t second = tables + entries.size() * 8 + input.between<std::size_t>(0, 9);
    std::string bytes(second + entries.size() * 8, '\0');
    put(bytes, 0, 0x950412DE, isBig);
    put(bytes, 4, input.pick(std::vector<std::size_t>{0, 1, 0x10000, 0x10001}), isBig);
    put(bytes, 8, entries.size(), isBig);
    put(bytes, 12, tables, isBig);
    put(bytes, 16, second, isBig);
    for (std::size_t i = 0; i < 2 * entries.size(); ++i) {
        const Entry& entry = entries[i / 2];
        const std::string& text = i % 2 == 0 ? entry.original : entry.text;
        const std::size_t at = (i % 2 == 0 ? tables : second) + i / 2 * 8;
        put(bytes, at, text.size(), isBig);
        put(bytes, at + 4, bytes.size(), isBig);
        bytes.append(text).append(1, '\0');
    }
    return bytes;
}

Messages decoded(const std::string& bytes) {
    Messages messages;
    messages.file = "m";
    decodeTranslation(bytes, messages);
    return messages;
}

std::string upToNul(const std::string& text) {
    return text.c_str();
}

/// What was put in comes out, and what is cut off is noticed.
void fileOfOurs(fuzz::Input& input) {
    const bool isBig = input.flag();
    const std::size_t cut = input.between<std::size_t>(0, 0xFFFF);
    std::vector<Entry> entries;
    std::vector<Translation> expected;
    bool isTooLong = false;
    for (int n = input.between(0, 8); n > 0; --n) {
        const int number = input.between(-3, 15875);
        const std::string original = input.text(20), text = input.text(140);
        const bool isOurs = number >= 0 && number <= 15871;
        const std::string context = input.between(0, 7) == 7 ? "" : std::to_string(number) + "\4";
        entries.push_back({context + original, text});
        // A context of the text's own would be taken for one.
        if (context.empty() && upToNul(original).find('\4') != std::string::npos)
            return;
        if (context.empty() || !isOurs || upToNul(text).empty())
            continue;
        expected.push_back({number, upToNul(original), upToNul(text)});
        isTooLong = isTooLong || upToNul(text).size() > 127;
    }
    const std::string bytes = built(input, entries, isBig);
    FUZZ_CHECK(isTranslation(bytes));
    const Messages messages = decoded(bytes);
    FUZZ_CHECK(messages.problems.empty() == !isTooLong);
    FUZZ_CHECK(std::equal(messages.translations.begin(), messages.translations.end(),
                          expected.begin(), expected.end(), [](const auto& a, const auto& b) {
                              return a.number == b.number && a.original == b.original &&
                                     a.text == b.text;
                          }));
    if (!entries.empty())
        FUZZ_CHECK(!decoded(bytes.substr(0, cut % bytes.size())).problems.empty());
}

/// Whatever is wrong, what is taken is a text that a message file can hold, for a message
/// with the same arguments.
void anyFile(const std::string& bytes) {
    Messages from = decoded(bytes), messages;
    for (const Translation& translation : from.translations) {
        FUZZ_CHECK(translation.number >= 0 && translation.number <= 15871);
        messages.texts.try_emplace(translation.number, Message{translation.original, 1});
    }
    const auto before = messages.texts;
    std::set<int> outdated;
    takeTranslations(messages, from, outdated);
    FUZZ_CHECK(outdated.empty() && messages.texts.size() == before.size());
    if (!from.problems.empty())
        return;
    for (const auto& [number, message] : messages.texts)
        FUZZ_CHECK(message.text.size() < 128 && message.text.find('\0') == std::string::npos &&
                   printfArguments(message.text) == printfArguments(before.at(number).text));
}

} // namespace

void fuzz::harness(Input& input) {
    const int kind = input.between(0, 2);
    if (kind == 0) {
        anyFile((input.flag() ? "\xDE\x12\x04\x95" : "\x95\x04\x12\xDE") + input.rest());
    } else if (kind == 1) {
        fileOfOurs(input);
    } else {
        // A sound file with a few bytes changed.
        std::vector<std::pair<std::size_t, char>> changes;
        for (int n = input.between(1, 4); n > 0; --n)
            changes.emplace_back(input.between<std::size_t>(0, 0xFFFF),
                                 static_cast<char>(input.byte()));
        std::string bytes = built(input, {{"7\4a %d", "b %d"}, {"8\4x", "y"}}, input.flag());
        for (const auto& [at, value] : changes)
            bytes[at % bytes.size()] = value;
        anyFile(bytes);
    }
}
