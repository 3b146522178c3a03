// SPDX-License-Identifier: Apache-2.0
#include "tools/messages/KazProgressRange.h"

namespace {

/// Not "equal": two values that are not numbers are the same here.
bool same(double a, double b) {
    return !(a < b) && !(a > b);
}

} // namespace

KazProgressRange::~KazProgressRange() = default;

bool KazProgressRange::operator==(const KazProgressRange& other) const {
    return this == &other ||
           (same(start, other.start) && same(end, other.end) && same(share, other.share) &&
            same(percent, other.percent) && same(scale, other.scale));
}

bool KazProgressRange::operator!=(const KazProgressRange& other) const {
    return !(*this == other);
}
