// SPDX-License-Identifier: Apache-2.0
/// @file
/// Between the counting of allocations and what each host needs to reach them all.
#pragma once

namespace moxkit::detail {

/// Counts one allocation; true when it is to fail (errno is set then).
bool shallFail();

/// Called whenever an allocation is about to be made to fail; null for nothing.
inline void (*atFailure)() = nullptr;

/// Brings the hooks into place, where being linked is not enough.
void installHooks();

} // namespace moxkit::detail
