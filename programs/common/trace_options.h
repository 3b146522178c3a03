// SPDX-License-Identifier: Apache-2.0
/// @file
/// The options of traces, which the programs of the suite have in common.
#pragma once

#include "tools/app/KazCommandLine.h"

/// What the library traces; a program has no topics of its own.
inline constexpr KazCommandLine::Option traceTopics = {
    arg_trace,
    "TOPIC",
    "trace what is done: arguments, config, files, messages or all",
    false,
    KazCommandLine::OneOf,
    "all|arguments|config|files|messages"};

inline constexpr KazCommandLine::Option traceFile = {
    arg_trace_file, "FILE", "write the traces to this file instead of standard error", false,
    KazCommandLine::AnyFile};
