// SPDX-License-Identifier: Apache-2.0
/// @file
/// Traces of the topic "files".
#pragma once

#include "tools/messages/trace.h"
#include "tools/platform/host.h"
#include "tools/util/detail/or_empty.h"

#include <cerrno>
#include <string>

namespace kaz::detail {

/// @p result of an operation on @p path, and on @p target where it has one; traced with the
/// reason, errno, where the result is a failure.
inline int traced(int result, const char* operation, const char* path,
                  const char* target = nullptr) {
    KAZ_TRACE("files", "%s %s%s%s%s", operation, orEmpty(path), target != nullptr ? " to " : "",
              orEmpty(target),
              (result == 0 ? std::string() : ": " + host::errorText(errno)).c_str());
    return result;
}

/// The same for an operation that gives null with errno set when it fails.
template <typename Result>
Result* traced(Result* result, const char* operation, const char* path) {
    traced(result != nullptr ? 0 : -1, operation, path);
    return result;
}

} // namespace kaz::detail
