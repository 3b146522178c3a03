// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringTreeIterator.h"

KazString KazStringTreeIterator::item() const {
    return KazString::undisguise(KazTreeIterator::item());
}
