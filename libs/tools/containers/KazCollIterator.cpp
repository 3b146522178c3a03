// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazCollIterator.h"

KazCollIterator::KazCollIterator(KazColl* walked) : collection_(walked) {
    if (collection_ == nullptr)
        return;
    nextIterator_ = collection_->iterators_;
    collection_->iterators_ = this;
    reset();
}

KazCollIterator::KazCollIterator(const KazCollIterator& other)
    : KazCollIterator(other.collection_) {
    index_ = other.index_;
}

KazCollIterator::~KazCollIterator() {
    if (collection_ == nullptr)
        return;
    KazCollIterator** link = &collection_->iterators_;
    while (*link != this)
        link = &(*link)->nextIterator_;
    *link = nextIterator_;
}

// Assignment is for remembering a position; the list that an iterator is on
// says whose changes move it, and that does not change.
KazCollIterator& KazCollIterator::operator=(const KazCollIterator& other) {
    index_ = other.index_;
    return *this;
}

void KazCollIterator::reset() {
    index_ = collection_ != nullptr && collection_->size > 0 ? 0 : done;
}
