// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringCollIterator.h"

KazString KazStringCollIterator::item() const {
    return KazString::undisguise(KazCollIterator::item());
}
