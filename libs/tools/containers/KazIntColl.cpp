// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazIntColl.h"

void KazIntColl::insertAt(int index, const int* values, int count) {
    if (count < 0)
        count = 0;
    openSlots(index, count);
    for (int i = 0; i < count; ++i)
        slot(index + i) = toItem(values[i]);
}
