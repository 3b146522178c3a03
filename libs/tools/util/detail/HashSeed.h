// SPDX-License-Identifier: Apache-2.0
/// @file
/// What makes the hashes of one process differ from those of another.
#pragma once

#include <cstdint>

namespace kaz::detail {

/// A key of TextProbe::hash. Names come from files that others write: with a
/// seed that they cannot know, they cannot choose names that all have one hash.
struct HashSeed {
    std::uint64_t first;
    std::uint64_t last;
};

/// This process's seed: random, drawn at the first call. An index takes it when it
/// is made and keeps it.
HashSeed processHashSeed();

/// Indexes that are made from now on take @p seed, so that a test can be repeated.
void fixHashSeed(HashSeed seed);

} // namespace kaz::detail
