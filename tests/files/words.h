// SPDX-License-Identifier: Apache-2.0
/// @file
/// Command lines as lists of words.
#pragma once

#include "tools/files/process.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace words {

using Words = std::vector<std::string>;

inline Words split(const std::string& line) {
    char** argv = nullptr;
    const int argc = str_to_argv(line.c_str(), &argv);
    const std::unique_ptr<char*, decltype(&std::free)> owned(argv, &std::free);
    EXPECT_GE(argc, 0) << line;
    EXPECT_EQ(argv[argc], nullptr);
    return {argv, argv + argc};
}

inline std::string join(const Words& words) {
    std::vector<const char*> argv;
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    return argv_to_str(static_cast<int>(argv.size()), argv.data()).getValue();
}

} // namespace words
