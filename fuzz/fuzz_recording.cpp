// SPDX-License-Identifier: Apache-2.0
// Recorded dialogues: what was written comes back, and anything else is refused.
#include "fuzz/harness.h"
#include "programs/moxtool/recording.h"
#include "tools/formats/detail/json_text.h"
#include "tools/messages/detail/JsonLine.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using kaz::detail::JsonLine;

/// A recording, and what is to be read from it.
struct Written {
    std::string bytes;
    Recording recording;
    int lines = 0;

    void add(const JsonLine& line, bool isCompared = true) {
        const std::string text = line.finished();
        bytes += text;
        ++lines;
        if (isCompared)
            recording.lines.push_back({lines, text.substr(0, text.size() - 1)});
    }
};

JsonLine startOf(fuzz::Input& input, Recording& recording) {
    recording.tool = input.textOf("abcXYZ-_. \xC3\xA9\xFF", 12) + "x";
    std::string list = "[";
    for (int n = input.between(0, 4); n > 0; --n) {
        recording.arguments.push_back(input.cText(24));
        list += list.size() > 1 ? "," : "";
        kaz::detail::appendJson(list, recording.arguments.back());
    }
    JsonLine line("start");
    line.add("tool", recording.tool).addPlain("argv", list + "]").add("library", "1.0");
    return line;
}

JsonLine questionOf(fuzz::Input& input, Recording& recording) {
    const int reply = input.between(-1, 3);
    recording.input += reply >= 0 && reply < 3 ? std::string{"oci"[reply], '\n'} : "\n";
    JsonLine line("question");
    line.add("title", input.text(20)).add("reply", reply);
    return line;
}

JsonLine inputOf(fuzz::Input& input, Recording& recording) {
    const bool echo = input.flag(), given = input.flag();
    const std::string text = input.text(40);
    JsonLine line("input");
    line.add("title", input.text(20)).add("echo", echo).add("given", given);
    if (echo && given)
        line.add("text", text);
    recording.input += (echo && given ? text : "") + "\n";
    return line;
}

void comesBack(fuzz::Input& input) {
    Written written;
    written.add(startOf(input, written.recording));
    while (!input.empty()) {
        const int kind = input.between(0, 3);
        if (kind == 0)
            written.add(questionOf(input, written.recording));
        else if (kind == 1)
            written.add(inputOf(input, written.recording));
        else
            written.add(JsonLine(kind == 2 ? "trace" : "message").add("text", input.text(60)),
                        kind != 2);
    }
    const Recording read = readRecording(written.bytes);
    FUZZ_CHECK(read.problem.empty() && read.problemLine == 0);
    FUZZ_CHECK(read.tool == written.recording.tool);
    FUZZ_CHECK(read.arguments == written.recording.arguments);
    FUZZ_CHECK(read.input == written.recording.input);
    FUZZ_CHECK(std::equal(read.lines.begin(), read.lines.end(), written.recording.lines.begin(),
                          written.recording.lines.end(),
                          [](const RecordedLine& a, const RecordedLine& b) {
                              return a.number == b.number && a.text == b.text;
                          }));
}

void anything(const std::string& bytes) {
    const Recording read = readRecording(bytes);
    const auto lines = static_cast<int>(std::count(bytes.begin(), bytes.end(), '\n')) + 1;
    FUZZ_CHECK(read.problemLine >= 0 && read.problemLine <= lines);
    if (!read.problem.empty())
        return;
    FUZZ_CHECK(!read.lines.empty() && !read.tool.empty());
    FUZZ_CHECK(read.tool.find_first_of("/\\") == std::string::npos);
    for (const RecordedLine& line : read.lines)
        FUZZ_CHECK(line.number > 0 && line.number <= lines);
}

} // namespace

void fuzz::harness(Input& input) {
    const int kind = input.between(0, 3);
    if (kind < 2)
        comesBack(input);
    else if (kind == 2)
        anything(R"({"event":"start","tool":"a","argv":[]})"
                 "\n" +
                 input.rest());
    else
        anything(input.rest());
}
