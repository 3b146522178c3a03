// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/KazStringRep.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/strings/detail/Block.h"
#include "tools/strings/detail/SpareBlocks.h"

#include <cstdio>

/// Blocks are kept for new strings, which spares most programs the allocator.
void KazStringRep::destroy(void* text) {
    KazStringRep* const rep = of(text);
    if (!kaz::detail::spareBlocks.keep(rep))
        kaz::detail::BlockMemory::release(rep);
}

/// Out of line, so that the inline functions that may end here stay small.
void kaz::detail::throwTextTooLong() {
    throw KazMemoryException();
}

void kaz::detail::reportBlock(const KazStringRep& rep, std::ptrdiff_t realLength) {
    if (rep.stringLength != realLength)
        std::printf(
            "Error: wrong internal string length - internal length = %d, real length = %d\n",
            rep.stringLength, static_cast<int>(realLength));
    if (rep.stringLength > rep.bufferLength)
        std::printf("Error: buffer overflow - string length = %d, buffer length = %d\n",
                    rep.stringLength, rep.bufferLength);
}
