// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazCollIterator.h"

KazCollIterator::KazCollIterator(KazColl* walked) : collection(walked) {
    if (!collection)
        return;
    nextIterator = collection->iterators_;
    collection->iterators_ = this;
    reset();
}

KazCollIterator::KazCollIterator(const KazCollIterator& other) : KazCollIterator(other.collection) {
    index = other.index;
}

KazCollIterator::~KazCollIterator() {
    if (!collection)
        return;
    KazCollIterator** link = &collection->iterators_;
    while (*link != this)
        link = &(*link)->nextIterator;
    *link = nextIterator;
}

// Assignment is for remembering a position; the list that an iterator is on
// says whose changes move it, and that does not change.
KazCollIterator& KazCollIterator::operator=(const KazCollIterator& other) {
    index = other.index;
    return *this;
}

void KazCollIterator::reset() {
    index = collection && collection->size > 0 ? 0 : done;
}
