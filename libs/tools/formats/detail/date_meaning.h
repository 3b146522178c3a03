// SPDX-License-Identifier: Apache-2.0
/// @file
/// From what a text states to the moment that it means.
#pragma once

#include "tools/formats/detail/date_items.h"
#include "tools/formats/detail/zones.h"

namespace kaz::dates {

/// @p zone is that of texts that state none; @p now is "the present" when it is out of
/// range. A partime_status_enum value; @p result is complete on success, and has
/// `errorAt` on failure.
int findMeaning(const Statement& statement, Zone zone, std::int64_t now, partime_result& result);

} // namespace kaz::dates
