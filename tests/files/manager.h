// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the tests of the file manager share.
#pragma once

#include "kit/table.h"
#include "testkit/director.h"
#include "testkit/temp_tree.h"
#include "tools/files/KazFileManager.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace manager_test {

using Names = std::set<std::string>;
using Messages = std::vector<std::string>;

/// A failure list as a set; only for names without line ends.
inline Names namesIn(const KazString& errors) {
    const Messages names = kit::lines(errors.getValue());
    return Names(names.begin(), names.end());
}
inline Names errorsOf(const KazFileManager& manager) {
    return namesIn(manager.getErrors());
}

inline Messages sorted(Messages messages) {
    std::sort(messages.begin(), messages.end());
    return messages;
}

/// Dates a file so many seconds from now; a directory where that can be done.
inline void setAge(const std::string& path, std::chrono::seconds fromNow) {
    std::error_code error;
    std::filesystem::last_write_time(path, std::chrono::file_clock::now() + fromNow, error);
    if (error && !std::filesystem::is_directory(path))
        throw std::filesystem::filesystem_error("not dated", path, error);
}

/// A target that is older than any copy of this test.
inline void makeOld(const std::string& path) {
    setAge(path, -std::chrono::hours(1000));
}

/// A tree to work in. The director keeps the manager's messages out of the test's
/// output.
class FileManager : public testing::Test {
protected:
    /// In memory: a disk that is forced to write each file out takes its time.
    moxkit::TempTree tree{std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : ""};
    moxkit::RecordingDirector director;
};

} // namespace manager_test
