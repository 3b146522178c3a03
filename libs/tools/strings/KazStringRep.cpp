// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/KazStringRep.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/strings/detail/Block.h"
#include "tools/strings/detail/SpareBlocks.h"

#include <cstdio>

void KazStringRep::destroy(void* text) {
    KazStringRep* const rep = of(text);
    if (!kaz::detail::spareBlocks.keep(rep))
        kaz::detail::BlockMemory::release(rep);
}

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
