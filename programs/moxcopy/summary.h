/// @file
/// What a run tells about its work.
#pragma once

#include "copy.h"

/// Tells what there is to copy.
void printPlan(const Plan& plan, const KazString& system);

/// Tells what was copied to @p destination in how many seconds.
void printSummary(const CopyResult& result, const KazString& destination, double seconds);

/// Tells what was not copied, and why, on the error channel.
void printFailures(const std::vector<Failure>& failures);
