// SPDX-License-Identifier: Apache-2.0
// moxmsg's way from source text to message file and back.
#include "common/formats.h"
#include "fuzz/harness.h"
#include "programs/moxmsg/message_file.h"
#include "programs/moxmsg/source_text.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>

namespace {

using Texts = std::map<int, std::string>;

constexpr int lastNumber = 15871;

Texts textsOf(const Messages& messages) {
    Texts texts;
    for (const auto& [number, message] : messages.texts)
        texts[number] = message.text;
    return texts;
}

Messages parsed(const std::string& source) {
    Messages messages;
    parseSource(source, messages);
    return messages;
}

std::string listing(const Texts& texts) {
    std::string source;
    for (const auto& [number, text] : texts)
        source += sourceLine(number, text) + "\n";
    return source;
}

/// Texts without fault come back through a listing and through a message file,
/// and the file is the same then.
void comeBack(Messages& messages) {
    const Texts texts = textsOf(messages);
    Messages listed = parsed(listing(texts));
    FUZZ_CHECK(listed.problems.empty() && textsOf(listed) == texts);

    const std::string bytes = encodeMessageFile(messages);
    if (!messages.problems.empty())
        return; // too much for one file, as the problems say
    FUZZ_CHECK(isMessageFile(bytes) && encodeMessageFile(listed) == bytes);
    Messages decoded;
    decodeMessageFile(bytes, decoded);
    FUZZ_CHECK(decoded.problems.empty() && textsOf(decoded) == texts);
}

void checkProblems(const Messages& messages, int lines) {
    for (const Problem& problem : messages.problems)
        FUZZ_CHECK(problem.line >= 0 && problem.line <= lines && !problem.text.empty());
}

void anySource(const std::string& source) {
    Messages messages = parsed(source);
    const auto lines = static_cast<int>(std::count(source.begin(), source.end(), '\n')) + 1;
    checkProblems(messages, lines);
    for (const auto& [number, message] : messages.texts)
        FUZZ_CHECK(number >= 0 && message.line > 0 && message.line <= lines);
    if (!messages.problems.empty())
        return;
    for (const auto& [number, message] : messages.texts)
        FUZZ_CHECK(number <= lastNumber && message.text.size() < 128 &&
                   message.text.find('\0') == std::string::npos);
    comeBack(messages);
}

void anyFile(const std::string& bytes) {
    Messages messages;
    decodeMessageFile(bytes, messages);
    checkProblems(messages, 0);
    FUZZ_CHECK(isMessageFile(bytes) || !messages.problems.empty());
    if (messages.problems.empty())
        comeBack(messages);
}

/// One of the ways in which people write a character.
std::string written(fuzz::Input& input, char c, bool atEdge) {
    static const std::string plain = "\a\b\t\n\v\f\r\\ #", letters = "abtnvfr\\ #";
    char hex[8];
    std::snprintf(hex, sizeof hex, input.flag() ? "\\x%02x" : "\\x%02X",
                  static_cast<unsigned char>(c));
    const std::size_t named = plain.find(c);
    if (input.between(0, 3) == 0)
        return hex;
    if (named == std::string::npos)
        return {c};
    const bool asItIs = !atEdge && (c == ' ' || c == '#' || c == '\t');
    return asItIs && input.flag() ? std::string{c} : std::string{'\\', letters[named]};
}

std::string someBlanks(fuzz::Input& input) {
    return input.textOf(" \t", 2);
}

/// A source text for @p texts with everything in it that means nothing.
std::string writtenSource(fuzz::Input& input, const Texts& texts) {
    std::string source = input.flag() ? "\xEF\xBB\xBF" : "";
    const auto endLine = [&] { source += input.flag() ? "\r\n" : "\n"; };
    for (const auto& [number, text] : texts) {
        if (input.between(0, 7) == 7) {
            source += someBlanks(input) + (input.flag() ? "# comment \\" : "");
            endLine();
        }
        source += someBlanks(input) + std::string(input.between<std::size_t>(0, 9), '0') +
                  std::to_string(number) + (input.flag() ? " " : "\t") + someBlanks(input);
        bool atEdge = true;
        for (std::size_t i = 0; i < text.size(); ++i) {
            source += written(input, text[i], atEdge || i + 1 == text.size());
            atEdge = input.between(0, 15) == 15;
            if (!atEdge)
                continue;
            source += "\\";
            endLine();
            source += someBlanks(input);
        }
        source += someBlanks(input);
        endLine();
    }
    return source;
}

void writtenTexts(fuzz::Input& input) {
    Texts texts;
    for (int n = input.between(0, 12); n > 0; --n)
        texts[input.flag() ? input.between(0, 300) : input.between(0, lastNumber)] =
            input.flag() ? input.cText(127) : input.textOf(" \t#\\ax\xE9\n\r", 127);
    const std::string source = writtenSource(input, texts);
    Messages messages = parsed(source);
    FUZZ_CHECK(messages.problems.empty());
    FUZZ_CHECK(textsOf(messages) == texts);
    comeBack(messages);
}

/// Text between conversions changes nothing, and repeating a text gives its
/// conversions once more where they have no positions.
void formats(const std::string& text) {
    const std::string arguments = printfArguments(text);
    FUZZ_CHECK(printfArguments("100%% of " + text) == arguments);
    if (arguments.find('(') != std::string::npos || text.find('$') != std::string::npos)
        return;
    const std::string both = printfArguments(text + " and " + text);
    FUZZ_CHECK(both == (arguments.empty() ? "" : arguments + " " + arguments));
}

} // namespace

void fuzz::harness(Input& input) {
    const int kind = input.between(0, 3);
    if (kind == 0)
        writtenTexts(input);
    else if (kind == 1)
        anySource(input.rest());
    else if (kind == 2)
        anyFile("MZAK" + input.rest());
    else
        formats(input.cText(255));
}
