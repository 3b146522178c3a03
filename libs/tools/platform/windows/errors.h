// SPDX-License-Identifier: Apache-2.0
/// @file
/// Failures of the Windows implementation: system codes become errno values here
/// and nowhere else.
#pragma once

namespace kaz::host {

/// Fails with @p number.
int failWith(int number);

/// The errno value for a code of GetLastError(); EINVAL for one without a kin.
int errnoOf(unsigned long code);

/// Fails with the errno value of GetLastError().
int failWithLastError();

/// 0 for a call that succeeded, else fails with its error.
int succeededOrFail(int success);

} // namespace kaz::host
