/// @file
/// Directory listings as sets.
#pragma once

#include "tools/files/tifiles.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace tree {

inline std::set<std::string> listed(const std::string& pattern) {
    KazStringColl entries;
    const int count = read_a_dir(pattern.c_str(), entries);
    std::set<std::string> result;
    for (int i = 0; i < entries.getSize(); ++i)
        result.insert(entries[i].getValue());
    EXPECT_EQ(result.size(), static_cast<std::size_t>(count)); // each once
    return result;
}

} // namespace tree
