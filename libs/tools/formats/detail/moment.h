// SPDX-License-Identifier: Apache-2.0
/// @file
/// Moments taken apart.
#pragma once

#include "tools/formats/datetime.h"

namespace kaz::dates {

constexpr bool isMoment(std::int64_t seconds) {
    return date_min <= seconds && seconds <= date_max;
}

/// A moment as a clock shows it that is @p offset seconds east of UTC.
date_parts partsOf(std::int64_t seconds, int offset);

} // namespace kaz::dates
