// SPDX-License-Identifier: Apache-2.0
// Compiled for processors with AVX2: see CMakeLists.txt.

#include "tools/platform/processor/slots.h"

#if defined(__x86_64__)

#include <cstring>

namespace kaz::host {

std::ptrdiff_t findLastSlotWide(const SlotAddress* slots, std::ptrdiff_t count, SlotAddress item) {
    typedef std::intptr_t Four __attribute__((__vector_size__(32)));
    // Passes over whole blocks that do not have the item; the one that has, and
    // the rest, are searched one by one.
    constexpr std::ptrdiff_t block = 32;
    const auto each = static_cast<std::intptr_t>(item);
    const Four wanted = {each, each, each, each};
    for (; count >= block; count -= block) {
        const SlotAddress* first = slots + count - block;
        Four equal{};
        for (std::ptrdiff_t i = 0; i < block; i += 4) {
            // Slots need no alignment of a vector and are in use as pointers; a copy of the bytes
            // is one unaligned load, and breaks no rule of aliasing.
            Four part;
            std::memcpy(&part, first + i, sizeof part);
            equal |= part == wanted;
        }
        // One test a block instead of one a vector: most blocks have no hit.
        if ((equal[0] | equal[1] | equal[2] | equal[3]) != 0)
            break;
    }
    return findLastSlotPortable(slots, count, item);
}

} // namespace kaz::host

#endif
