// SPDX-License-Identifier: Apache-2.0
// The file of settings: any bytes as the file, then changes through the interface. A second
// reader finds what the rules say; what is not understood stays through every commit; and
// what was set is there afterwards.
#include "fuzz/directory.h"
#include "fuzz/harness.h"
#include "kit/table.h"
#include "testkit/env.h"
#include "tools/app/KazException.h"
#include "tools/settings/KazSettings.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

using fuzz::directory;

constexpr const char* file = "Tarvo/Mox/settings";

Lines linesOf(const std::string& text) {
    Lines lines = kit::lines(text);
    for (std::string& line : lines)
        if (line.ends_with('\r') && (&line != &lines.back() || text.ends_with('\n')))
            line.pop_back();
    return lines;
}

/// The text values of section "A" that a simple reader is sure of: plain ASCII, no escapes.
std::map<std::string, std::string> plainTexts(const std::string& text, bool& isSure) {
    std::map<std::string, std::string> found;
    bool inside = false;
    for (const std::string& line : linesOf(text)) {
        const bool isPlain = std::all_of(
            line.begin(), line.end(), [](char c) { return c >= ' ' && c < '\x7F' && c != '\\'; });
        if (!line.empty() && line[0] == '[') {
            isSure = isSure && isPlain;
            inside = fuzz::lowered(line) == "[a]";
            continue;
        }
        if (!inside || line.empty() || line[0] == '#')
            continue;
        isSure = isSure && isPlain;
        const std::size_t equals = line.find('=');
        if (equals == line.npos || equals == 0 || equals > 200 ||
            line.substr(0, equals).find('/') != line.npos)
            continue;
        const std::string name = fuzz::lowered(line.substr(0, equals)),
                          value = line.substr(equals + 1);
        if (value.starts_with("s:") && value.size() <= 65537)
            found[name] = value.substr(2);
        else if (value.size() >= 2 && value[1] == ':' &&
                 std::string("irbl").find(value[0]) != std::string::npos)
            isSure = false; // may be understood, and then counts
    }
    return found;
}

/// Lines without "=" in sections that are understood, and in none.
Lines strangers(const std::string& text) {
    Lines result;
    for (const std::string& line : linesOf(text))
        if (!line.empty() && line[0] != '#' && line[0] != '[' && line.find('=') == line.npos)
            result.push_back(line);
    std::sort(result.begin(), result.end());
    return result;
}

std::string someFile(fuzz::Input& input) {
    static const Lines pieces =
        kit::parts("\n,[A]\n,[a/B]\n,[]\n,[,a=s:,B=i:12,c=l:a|b|,=,|,\\n,\\x4,b=b:1\n,"
                   "r=r:1e5\n,\\,#,# Mox settings 2\n,],/,x,\r\n",
                   ",");
    std::string text;
    while (input.remaining() > 40)
        text += input.byte() % 8 == 0 ? input.text(6) : input.pick(pieces);
    return text;
}

std::string someName(fuzz::Input& input) {
    const std::string name = input.textOf("abAB=[]#| .", 4);
    return name.empty() ? "n" : name;
}

void change(fuzz::Input& input, KazSettings& settings, std::map<std::string, std::string>& wanted) {
    const std::string name = someName(input), text = input.textOf("ab\n\r\t\\|=\x01\x7F#[]", 8);
    const int operation = input.between(0, 3);
    if (operation == 0) {
        settings.remove(name.c_str());
        wanted[fuzz::lowered(name)] = "-";
    } else if (operation == 1) {
        settings.setBool(name.c_str(), input.flag());
        wanted.erase(fuzz::lowered(name));
    } else {
        settings.setText(name.c_str(), text.c_str());
        wanted[fuzz::lowered(name)] = "=" + text;
    }
}

} // namespace

void fuzz::harness(Input& input) {
    static const moxkit::ScopedEnv config("XDG_CONFIG_HOME", directory().path().c_str());
    const std::string before = input.flag() ? input.rest() : someFile(input);
    directory().write(file, before);
    KazSettings settings("A");
    bool isSure = before.find('\0') == before.npos;
    for (const auto& [name, text] : plainTexts(before, isSure))
        FUZZ_CHECK(!isSure || settings.getText(name.c_str(), "none") == text.c_str());

    std::map<std::string, std::string> wanted; // "=" and the text, or "-"
    for (int n = input.between(1, 5); n > 0; --n)
        change(input, settings, wanted);
    settings.setInteger("always", 1);
    settings.commit();
    const std::string after = directory().read(file);
    FUZZ_CHECK(strangers(after) == strangers(before));
    const KazSettings again("a");
    FUZZ_CHECK(again.getInteger("ALWAYS") == 1);
    for (const auto& [name, text] : wanted)
        FUZZ_CHECK(text == "-" ? !again.isSet(name.c_str())
                               : again.getText(name.c_str(), "none") == text.substr(1).c_str());
    // What was put in order stays as it is.
    settings.setInteger("always", 2);
    settings.commit();
    settings.setInteger("always", 1);
    settings.commit();
    FUZZ_CHECK(directory().read(file) == after);
}
