// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a run tells about its work.
#pragma once

#include "copy.h"

/// Tells what there is to copy.
void printPlan(const Plan& plan, const KazString& system);

/// Tells what was copied to @p destination in how many seconds, and how many files of an
/// earlier copy are still there.
void printSummary(const CopyResult& result, const KazString& destination, double seconds,
                  std::size_t keptFiles);

/// Tells what was not copied, and why, on the error channel.
void printFailures(const Failures& failures);
