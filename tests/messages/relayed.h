// SPDX-License-Identifier: Apache-2.0
/// @file
/// The fixture of the tests of tools that run tools.
#pragma once

#include "kit/table.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

inline Words joined(Words words, const Words& second, const Words& third = {},
                    const Words& fourth = {}) {
    for (const Words* more : {&second, &third, &fourth})
        words.insert(words.end(), more->begin(), more->end());
    return words;
}

/// What the first tool says is recorded, so that a test sees it in its order.
class Relayed : public testing::Test {
protected:
    Relayed() {
        options.cwd = tree.path();
        options.env = {{"ToolInfo", tree.write("ToolInfo", "")},
                       {"KAZ_DIALOGUE", "a"},
                       {"KAZ_PROGRESS_FD", moxkit::unset}};
    }

    static Words running(int share, const Words& child) {
        const Words line = {"run:a:" + std::to_string(share), std::to_string(child.size() + 1),
                            moxkit::binDirectory() + "/step_tool"};
        return joined(line, child);
    }

    moxkit::Result relay(const Words& words) {
        return moxkit::run(joined({"step_tool"}, words), options);
    }

    /// The recording in short: "N %", "> " output of children, "! " errors, ". " messages; each
    /// kind for itself, as they come by different ways.
    std::string told() const {
        std::map<char, std::string> result;
        for (const std::string& line : kit::lines(tree.read("a")))
            addInShort(result, line);
        return result['%'] + result['>'] + result['!'] + result['.'];
    }

    moxkit::TempTree tree;
    moxkit::RunOptions options;

private:
    static void addInShort(std::map<char, std::string>& result, const std::string& line) {
        const auto behind = [&](const std::string& mark) {
            const std::size_t place = line.find(mark);
            return place == line.npos ? "" : line.substr(place + mark.size());
        };
        std::string text = behind("\"text\":\"");
        text = text.substr(0, text.rfind('"'));
        for (std::size_t place; (place = text.find("\\\"")) != text.npos;)
            text.erase(place, 1);
        const std::string event = line.substr(10, line.find('"', 10) - 10);
        if (event == "progress")
            result['%'] += std::to_string(std::stoi(behind("\"percent\":"))) + " % ";
        else if (event == "command-output")
            result['>'] += "> " + text + " ";
        else if (event == "error")
            result['!'] += "! " + text + " ";
        else if (event == "message")
            result['.'] += ". " + text + " ";
    }
};
