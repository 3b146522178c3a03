// SPDX-License-Identifier: Apache-2.0
// Templates of editors beside a plain reading of their rules: words are split first, then
// references are replaced once, and a file's name stays within its word.
#include "fuzz/harness.h"
#include "tools/config/vstring.h"
#include "tools/files/process.h"
#include "tools/services/sourcenav.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Words = std::vector<std::string>;

/// -1 for an open quote.
int split(const std::string& text, Words& words) {
    char** argv = nullptr;
    const int count = str_to_argv(text.c_str(), &argv);
    const std::unique_ptr<char*, decltype(&std::free)> owner(argv, std::free);
    for (int i = 0; i < count; ++i)
        words.emplace_back(argv[i]);
    return count;
}

constexpr const char* ownValue = "${file} 'x";

struct Place {
    std::string file;
    int line;
    int column;
};

std::string valueOf(const std::string& name, const Place& place) {
    const std::size_t slash = place.file.find_last_of("\\/");
    if (name == "file")
        return place.file;
    if (name == "dir")
        return place.file.substr(0, slash);
    if (name == "name")
        return place.file.substr(slash + 1);
    if (name == "line" || name == "column")
        return std::to_string(std::max(name == "line" ? place.line : place.column, 1));
    return name == "own" ? ownValue : "";
}

/// Character by character.
std::string replaced(const std::string& word, const Place& place) {
    std::string result;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const bool begins = word[i] == '$' && i + 1 < word.size() && word[i + 1] == '{';
        const std::size_t end = begins ? word.find('}', i) : std::string::npos;
        if (end == std::string::npos) {
            result += word[i];
        } else {
            result += valueOf(word.substr(i + 2, end - i - 2), place);
            i = end;
        }
    }
    return result;
}

bool isPreset(const std::string& name) {
    for (const kaz_source_preset* row = kaz_source_presets(); row->name != nullptr; ++row)
        if (name == row->name)
            return true;
    return false;
}

void holds(const std::string& text, const Place& place) {
    Words words;
    bool isGood = split(text, words) > 0;
    const bool needsTerminal = isGood && words[0] == "@terminal";
    if (needsTerminal)
        words.erase(words.begin());
    isGood = isGood && !words.empty();
    bool hasFile = false;
    for (std::string& word : words) {
        hasFile = hasFile || word.find("${file}") != std::string::npos;
        word = replaced(word, place);
    }
    if (!hasFile)
        words.push_back(place.file);
    KazStringColl found;
    found.add("before");
    const int result =
        kaz_source_command(text.c_str(), place.file.c_str(), place.line, place.column, found);
    FUZZ_CHECK(result == (isGood ? needsTerminal : -1));
    FUZZ_CHECK(found.getSize() == (isGood ? static_cast<int>(words.size()) : 0));
    for (int i = 0; i < found.getSize(); ++i)
        FUZZ_CHECK(words[static_cast<std::size_t>(i)] == found.getAt(i).getValue());
}

/// Absolute, and as the host spells it: whatever it is called, it has no more components.
std::string fileOf(fuzz::Input& input) {
    KazStringColl words;
    const std::string name = "/d/n" + input.textOf("ab '\"`$(){};&-%\x1b\xc3", 20);
    FUZZ_CHECK(kaz_source_command("e ${file}", name.c_str(), 1, 1, words) == 0);
    const std::string file = words.getAt(1).getValue();
    FUZZ_CHECK(file.find("d") < file.find_last_of("\\/"));
    return file;
}

} // namespace

void fuzz::harness(Input& input) {
    // Asked before the configuration, which knows other names.
    [[maybe_unused]] static const bool pushed = vstring_push_lookup_func(
        [](const char* name) { return std::string_view(name) == "own" ? ownValue : ""; });
    Place place;
    place.file = fileOf(input);
    place.line = input.raw<int>();
    place.column = input.raw<int>();
    const char* const pieces[] = {"${file}", "${line}", "${column}",  "${dir}", "${name}", "${own}",
                                  "${",      "}",       "$",          " ",      "'",       "\"",
                                  "\\",      "e",       "@terminal ", "-x",     "\t",      "{"};
    std::string text;
    for (int n = input.between(0, 12); n > 0; --n)
        text += input.pick(pieces);
    text += input.cText(20);
    // A preset's name stands for its template.
    if (!isPreset(text))
        holds(text, place);
    const std::string raw = input.rest();
    if (!isPreset(raw.c_str()))
        holds(raw.c_str(), place);
}
