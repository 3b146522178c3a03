// SPDX-License-Identifier: Apache-2.0
#include "tools/files/streams.h"

#include "tools/platform/host_streams.h"

void TI_passBytes(FILE* stream) {
    if (stream != nullptr)
        kaz::host::passBytes(stream);
}
