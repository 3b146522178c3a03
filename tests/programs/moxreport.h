// SPDX-License-Identifier: Apache-2.0
/// @file
/// The fixture of the tests of moxreport.
#pragma once

#include "fuzz/document_readers.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace moxreport_test {

class MoxReport : public testing::Test {
protected:
    MoxReport() {
        options.cwd = tree.path();
        options.env = {{"LC_ALL", "C"},
                       {"TZ", "UTC0"},
                       {"HOME", tree.path()},
                       {"ToolInfo", tree.write("ToolInfo", "")},
                       {"TOOLINFO", moxkit::unset},
                       {"SOURCE_DATE_EPOCH", "1700000000"}};
    }

    moxkit::Result run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "moxreport");
        return moxkit::run(arguments, options);
    }

    /// The text of a report of the project "plant", which a strict reader has to accept.
    std::string textOf(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"-projdir", "plant"});
        return reference::HtmlReader().read(run(arguments).out);
    }

    /// In memory: thousands of files take their time on a disk.
    moxkit::TempTree tree{std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : ""};
    moxkit::RunOptions options;
};

/// Each text behind the one before it.
inline void expectInOrder(const std::string& text, const std::vector<std::string>& parts) {
    std::size_t at = 0;
    for (const std::string& part : parts) {
        const std::size_t found = text.find(part, at);
        ASSERT_NE(found, std::string::npos) << part << " is not behind\n" << text.substr(0, at);
        at = found + part.size();
    }
}

inline std::size_t count(const std::string& text, const std::string& part) {
    std::size_t result = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size())
        ++result;
    return result;
}

} // namespace moxreport_test
