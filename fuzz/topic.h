// SPDX-License-Identifier: Apache-2.0
/// @file
/// What tells one harness from another: the replaying program around it is compiled once.
#pragma once

namespace fuzz {

struct Topic {
    const char* name;   ///< Of the harness, as in fuzz_NAME.
    const char* corpus; ///< The directory of its inputs, which need not be there.
    bool fails;         ///< Whether memory runs out in some of its steps.
};

extern const Topic topic;

} // namespace fuzz
