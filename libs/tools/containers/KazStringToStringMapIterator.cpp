// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringToStringMapIterator.h"

KazString KazStringToStringMapIterator::getKey() const {
    return KazString::undisguise(KazHashTableIterator::getKey());
}

KazString KazStringToStringMapIterator::getValue() const {
    return KazString::undisguise(KazHashTableIterator::getValue());
}
