// SPDX-License-Identifier: Apache-2.0
/// @file
/// What every harness is made of: its input, what it holds to be true, memory that runs out.
#pragma once

#include "fuzz/check.h"
#include "fuzz/failures.h"
#include "fuzz/input.h"

#include <cctype>
#include <string>

namespace fuzz {

/// The harness of the program: takes @p input and finds out whether the library does with it
/// what it promises.
void harness(Input& input);

/// What tells one harness from another: the replaying program around it is compiled once.
struct Topic {
    const char* name;   ///< Of the harness, as in fuzz_NAME.
    const char* corpus; ///< The directory of its inputs, which need not be there.
    bool fails;         ///< Whether memory runs out in some of its steps.
};

extern const Topic topic;

/// By the rules of case that the process has.
inline std::string lowered(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

} // namespace fuzz
