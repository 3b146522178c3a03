// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a tool does inside, for who looks for a fault: by topic, and only where it is asked
/// for.
///
/// People ask by the option "-trace TOPIC" of tools that list it (see KazCommandLine), once
/// kaz_arg_parse() has accepted the command line, and by the environment variable
/// "KAZ_TRACE=a,b", for every tool from its start on. A topic is a word without comma; "all"
/// is each one. Traces are lines "trace TOPIC: TEXT" on standard error, or in the file of
/// the option "-trace_file", which is written anew and alone means all topics. One that
/// cannot be written is said once, and standard error is used. A dialogue that is recorded
/// has them as events. A trace is no message: no director sees it, and nothing that a tool
/// promises of its output holds for it.
///
/// Topics of the library:
///
///     arguments   what each word of the command line was read as
///     config      the ToolInfo files that are tried, read, and not opened
///     files       what is opened, made, copied, renamed and removed, and what of it fails
///     messages    the message file, texts that are not in it, and directors that give way
///
/// A tool's own topics stand beside these. This header is included by no other one but
/// moxtools.h.
#pragma once

#include "tools/export.h"

namespace kaz::detail {

/// Whether a trace may have been asked for. False for good once it is known that none was:
/// then KAZ_TRACE costs this test. Only for KAZ_TRACE.
extern KAZ_API bool mayTrace;

} // namespace kaz::detail

/// Whether traces of @p topic were asked for; never for null. For work that only a trace
/// needs.
KAZ_API bool kazIsTraced(const char* topic);

/// Writes a trace, where those of @p topic were asked for. @p format is a printf format,
/// null counts as "". errno stays as it is. A trace for which there is no memory is left
/// out, and so is one that comes up while another is being written.
KAZ_API void kazTrace(const char* topic, const char* format, ...) KAZ_PRINTF(2, 3);

/// KAZ_TRACE(topic, format, ...): writes a trace, a statement. The arguments behind @p topic
/// are evaluated only where it is asked for, so that they may cost something:
///
/// @code
///   KAZ_TRACE("layout", "%d crossings left", countCrossings(graph));
/// @endcode
#define KAZ_TRACE(topic, ...)                                                                      \
    do {                                                                                           \
        if (const char* const kazTopic_ = kaz::detail::mayTrace ? (topic) : nullptr;               \
            kazTopic_ != nullptr && kazIsTraced(kazTopic_))                                        \
            kazTrace(kazTopic_, __VA_ARGS__);                                                      \
    } while (false)
