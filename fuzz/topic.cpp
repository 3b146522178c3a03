// SPDX-License-Identifier: Apache-2.0
#include "fuzz/topic.h"

#ifdef FUZZ_FAILING
constexpr bool fails = true;
#else
constexpr bool fails = false;
#endif

const fuzz::Topic fuzz::topic{FUZZ_TOPIC, FUZZ_CORPUS, fails};
