/// @file
/// The last words of a run.
#pragma once

#include "copy.h"

/// Tells what was copied to @p destination in how many seconds.
void printSummary(const CopyResult& result, const KazString& destination, double seconds);

/// Tells what was not copied, and why, on the error channel.
void printFailures(const std::vector<Failure>& failures);
