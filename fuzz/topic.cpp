// SPDX-License-Identifier: Apache-2.0
#include "fuzz/harness.h"

#ifdef FUZZ_FAILING
constexpr bool fails = true;
#else
constexpr bool fails = false;
#endif

const fuzz::Topic fuzz::topic{FUZZ_TOPIC, FUZZ_CORPUS, fails};

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::harness(input);
    return 0;
}
