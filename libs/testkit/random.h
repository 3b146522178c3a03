// SPDX-License-Identifier: Apache-2.0
/// @file
/// Random tests that can be run again.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace moxkit {

/// The seed of this run: the environment variable KIT_SEED when set, else a
/// fixed number, so that a plain run is the same everywhere.
std::uint64_t seed();
/// "KIT_SEED=" and the seed: what a failing test is to show, as with
/// SCOPED_TRACE(moxkit::seedText()).
std::string seedText();

/// A small generator with the questions that tests ask. The same seed gives the same
/// answers on every host.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {} ///< begins with @p seed

    /// A whole number from 0 to limit - 1; 0 when limit is below 2.
    int below(int limit) {
        return limit < 2 ? 0 : static_cast<int>(engine_() % static_cast<std::uint64_t>(limit));
    }
    /// A whole number from low to high, both included.
    int between(int low, int high) { return low + below(high - low + 1); }
    /// True once in n times.
    bool oneIn(int n) { return below(n) == 0; }
    /// 64 random bits.
    std::uint64_t bits() { return engine_(); }
    /// Text of 0 to maxLength characters of @p alphabet.
    std::string text(int maxLength, const std::string& alphabet) {
        std::string result;
        for (int n = below(maxLength + 1); n > 0; --n)
            result += alphabet[static_cast<std::size_t>(below(static_cast<int>(alphabet.size())))];
        return result;
    }

private:
    std::mt19937_64 engine_;
};

} // namespace moxkit
