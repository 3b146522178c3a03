// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/processor/slots.h"

namespace kaz::host {

std::ptrdiff_t findLastSlotPortable(const SlotAddress* slots, std::ptrdiff_t count,
                                    SlotAddress item) {
    while (--count >= 0 && slots[count] != item)
        continue;
    return count;
}

} // namespace kaz::host
