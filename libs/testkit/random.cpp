// SPDX-License-Identifier: Apache-2.0
#include "testkit/random.h"

#include <cstdlib>

namespace moxkit {

std::uint64_t seed() {
    const char* text = std::getenv("KIT_SEED");
    // Fixed unless asked for: a run of the tests can always be repeated.
    return text != nullptr ? std::strtoull(text, nullptr, 10) : 20240229;
}

std::string seedText() {
    return "KIT_SEED=" + std::to_string(seed());
}

} // namespace moxkit
