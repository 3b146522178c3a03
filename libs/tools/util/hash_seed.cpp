// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host_random.h"
#include "tools/util/detail/HashSeed.h"

#include <chrono>

namespace kaz::detail {

namespace {

/// A host without random bytes is no reason to fail: then what differs from process
/// to process has to do, the place where the host has put it in memory and the time.
HashSeed drawnSeed() {
    HashSeed seed{};
    if (host::randomBytes(&seed, sizeof seed) == 0)
        return seed;
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15U; // 2^64 by the golden ratio
    const auto place = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&seed));
    const auto time = std::chrono::steady_clock::now().time_since_epoch().count();
    return {place * spread, (static_cast<std::uint64_t>(time) ^ place) * spread};
}

HashSeed& seedInUse() {
    static HashSeed seed = drawnSeed();
    return seed;
}

} // namespace

HashSeed processHashSeed() {
    return seedInUse();
}

void fixHashSeed(HashSeed seed) {
    seedInUse() = seed;
}

} // namespace kaz::detail
