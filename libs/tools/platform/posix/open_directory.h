// SPDX-License-Identifier: Apache-2.0
/// @file
/// What POSIX holds a directory by; see tools/platform/host_directory.h.
#pragma once

#include "tools/platform/posix/descriptor.h"

namespace kaz::host {

struct OpenDirectory {
    Descriptor descriptor{};
    /// Permission bits that new files here have got when they were asked for. What takes
    /// bits away stays as it is while copies run, so nobody looks a second time.
    mutable unsigned granted = 0;
};

} // namespace kaz::host
