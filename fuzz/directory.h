// SPDX-License-Identifier: Apache-2.0
/// @file
/// A place for the files of a harness.
#pragma once

#include "testkit/temp_tree.h"

#include <filesystem>

namespace fuzz {

/// In memory where that is possible; removed at the end.
inline const moxkit::TempTree& directory() {
    static const moxkit::TempTree tree(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "");
    return tree;
}

} // namespace fuzz
