// SPDX-License-Identifier: Apache-2.0
/// @file
/// Questions that are asked again and again while memory fails.
#pragma once

#include "testkit/alloc_failure.h"

#include <functional>
#include <string>
#include <vector>

namespace kit {

/// Asks what changes nothing while each allocation fails in turn, in each of
/// @p modes: it throws KazMemoryException or gives its answer, and gives it when
/// it is asked once more.
void sweepQuestion(const std::string& name, const std::function<std::string()>& ask,
                   const std::vector<moxkit::FailAllocation::Mode>& modes = {
                       moxkit::FailAllocation::once, moxkit::FailAllocation::onward});

} // namespace kit
