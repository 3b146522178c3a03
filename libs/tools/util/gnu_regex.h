// SPDX-License-Identifier: Apache-2.0
/// @file
/// The GNU regular-expression interface, unchanged and under its own names, on
/// every platform: `re_compile_pattern`, `re_search`, `re_match` and
/// `re_set_syntax` with `re_pattern_buffer` and `re_registers`, and `regcomp`,
/// `regexec`, `regerror` and `regfree` with `regex_t` and `regmatch_t`.
///
/// It comes from the C library where that has it, and otherwise with this
/// library. Include it before other system headers where the compiler does not
/// offer GNU extensions by itself.
#pragma once

#ifndef _GNU_SOURCE
#define _GNU_SOURCE 1 ///< the functions are extensions of the C library
#endif

#include <regex.h>
