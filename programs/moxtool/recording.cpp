// SPDX-License-Identifier: Apache-2.0
// The bytes of a text that are no UTF-8 stand in the file as lone surrogates, which a reader
// of JSON rightly refuses. So each one is exchanged, before the line is read, for a NUL and
// the character of its byte, and NUL for two of them; what was read is changed back.
#include "moxtool/recording.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace {

using Json = nlohmann::json;

/// Why the line that is read is none of a recording.
class Refusal : public std::runtime_error {
    using runtime_error::runtime_error;
};

constexpr std::size_t escapeLength = 6; // \uXXXX

/// The number of the escape at @p place, or -1.
int escapeAt(std::string_view text, std::size_t place) {
    if (place + escapeLength > text.size() || text[place] != '\\' || text[place + 1] != 'u')
        return -1;
    int number = 0;
    for (const char c : text.substr(place + 2, 4)) {
        if (std::isxdigit(static_cast<unsigned char>(c)) == 0)
            return -1;
        const int letter = std::tolower(static_cast<unsigned char>(c));
        number = number * 16 + (letter <= '9' ? letter - '0' : letter - 'a' + 10);
    }
    return number;
}

bool isHighSurrogate(int number) {
    return number >= 0xD800 && number < 0xDC00;
}

bool isByte(int number) {
    return number >= 0xDC80 && number < 0xDD00;
}

std::string withoutSurrogates(std::string_view line) {
    constexpr const char* nul = "\\u0000";
    std::string result;
    for (std::size_t i = 0; i < line.size();) {
        const int number = escapeAt(line, i);
        // Two for any other escape, so that the second of two backslashes begins none. At the end
        // of the line there may be only one left, which substr allows.
        std::size_t length = number >= 0 ? escapeLength : line[i] == '\\' ? 2 : 1;
        // The pair stays together, or its second half could be taken for a byte.
        if (isHighSurrogate(number) && escapeAt(line, i + escapeLength) >= 0)
            length *= 2; // with its other half
        if (number == 0)
            result.append(nul).append(nul);
        else if (isByte(number))
            result.append(nul).append("\\u00").append(line.substr(i + 4, 2));
        else
            result += line.substr(i, length);
        i += length;
    }
    return result;
}

/// The text that was written: see above.
std::string bytesOf(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\0') {
            result += text[i];
        } else if (text[i + 1] == '\0') {
            result += text[++i];
        } else { // U+0080 to U+00FF: two bytes, the lower bits of the first are the upper ones
            const auto first = static_cast<unsigned char>(text[i + 1]);
            const auto second = static_cast<unsigned char>(text[i + 2]);
            result += static_cast<char>((first & 0x03) << 6 | (second & 0x3F));
            i += 2;
        }
    }
    return result;
}

Json parsed(std::string_view line) {
    constexpr int deepest = 64;
    const auto limit = [](int depth, Json::parse_event_t, Json&) {
        if (depth > deepest)
            throw Refusal("is nested too deeply");
        return true;
    };
    // The limit throws from within, where the parser would recurse or keep what nobody needs.
    Json value = Json::parse(withoutSurrogates(line), limit, false);
    if (value.is_discarded())
        throw Refusal("is no JSON");
    return value;
}

const Json& field(const Json& line, const char* name) {
    const auto found = line.find(name);
    if (found == line.end())
        throw Refusal(std::string("has no \"") + name + "\"");
    return *found;
}

std::string textOf(const Json& value, const char* name) {
    if (!value.is_string())
        throw Refusal(std::string("\"") + name + "\" is no text");
    return bytesOf(value.get_ref<const std::string&>());
}

bool isTrue(const Json& line, const char* name) {
    const Json& value = field(line, name);
    if (!value.is_boolean())
        throw Refusal(std::string("\"") + name + "\" is neither true nor false");
    return value.get<bool>();
}

// With its length, or the NUL would end it.
constexpr std::string_view notInNames("/\\:\0", 4);

/// Nothing is started but a program that has a name of its own, wherever it lies.
void readStart(const Json& line, Recording& recording) {
    // A recording has no times, which would differ in each run.
    if (line.contains("time"))
        throw Refusal("belongs to a log, which may be of several tools");
    recording.tool = textOf(field(line, "tool"), "tool");
    if (recording.tool.empty() || recording.tool.find_first_of(notInNames) != std::string::npos)
        throw Refusal("\"tool\" is no name of a program");
    const Json& arguments = field(line, "argv");
    if (!arguments.is_array())
        throw Refusal("\"argv\" is no list");
    for (const Json& argument : arguments) {
        recording.arguments.push_back(textOf(argument, "argv"));
        if (recording.arguments.back().find('\0') != std::string::npos)
            throw Refusal("\"argv\" holds a NUL");
    }
}

/// The line that makes the console give this reply, whatever the question.
std::string answerTo(const Json& line) {
    // In the order of the replies' numbers.
    constexpr std::string_view letters = "oci";
    const Json& reply = field(line, "reply");
    if (!reply.is_number_integer())
        throw Refusal("\"reply\" is no number");
    const bool isKnown = reply >= 0 && reply < letters.size();
    return isKnown ? std::string(letters.substr(reply.get<std::size_t>(), 1)) : std::string();
}

std::string typedText(const Json& line) {
    // What was typed unseen is not in the recording; an empty line stands for it.
    const bool wasSeen = isTrue(line, "echo") && isTrue(line, "given");
    return wasSeen ? textOf(field(line, "text"), "text") : std::string();
}

void readLine(const RecordedLine& line, Recording& recording) {
    const Json value = parsed(line.text);
    if (!value.is_object())
        throw Refusal("is no object");
    const std::string event = textOf(field(value, "event"), "event");
    // The first line starts the recording, and no other one does.
    if ((event == "start") != recording.lines.empty())
        throw Refusal(recording.lines.empty() ? "is not the start of a recording"
                                              : "starts another recording");
    if (event == "start")
        readStart(value, recording);
    else if (event == "question")
        recording.input += answerTo(value) + "\n";
    else if (event == "input")
        recording.input += typedText(value) + "\n";
    // Traces tell of the inside, which may change while what the user sees does not.
    if (event != "trace")
        recording.lines.push_back(line);
}

} // namespace

Recording readRecording(std::string_view bytes) {
    Recording recording;
    RecordedLine line;
    try {
        while (!bytes.empty()) {
            const std::size_t end = std::min(bytes.find('\n'), bytes.size());
            line.text = bytes.substr(0, end);
            ++line.number;
            if (line.text.ends_with('\r')) // as version control may check it out
                line.text.pop_back();
            readLine(line, recording);
            bytes.remove_prefix(std::min(end + 1, bytes.size()));
        }
        if (recording.lines.empty())
            recording.problem = "is no recording";
    } catch (const Refusal& refusal) {
        recording.problemLine = line.number;
        recording.problem = refusal.what();
    }
    return recording;
}
