// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazHashTableIterator.h"

#include "tools/containers/detail/HeldTable.h"

void KazHashTableIterator::reset() {
    bucket_ = 0;
    index_ = -1;
    next();
}

bool KazHashTableIterator::next() {
    if (table_ == nullptr || bucket_ >= table_->hidden_->bucketSlots)
        return false;
    ++index_;
    while (bucket_ < table_->hidden_->bucketSlots && isDone()) {
        ++bucket_;
        index_ = 0;
    }
    return !isDone();
}

bool KazHashTableIterator::isDone() const {
    if (table_ == nullptr || bucket_ >= table_->hidden_->bucketSlots)
        return true;
    const KazBucket* block = table_->buckets_[bucket_];
    return block == nullptr || index_ >= block->count;
}

const KazBucketEntry* KazHashTableIterator::entry() const {
    auto* texts = table_ != nullptr && table_->hidden_->texts ? &*table_->hidden_->texts : nullptr;
    if (texts != nullptr && !texts->isInOrder()) {
        const KazHashTable::Guard guard(*table_);
        texts->putAllInOrder();
    }
    return isDone() ? nullptr : table_->buckets_[bucket_]->entries() + index_;
}

void* KazHashTableIterator::getKey() const {
    const KazBucketEntry* present = entry();
    return present != nullptr ? present->key : nullptr;
}

void* KazHashTableIterator::getValue() const {
    const KazBucketEntry* present = entry();
    return present != nullptr ? present->value : nullptr;
}
