// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazHashTableIterator.h"

#include "tools/containers/detail/HeldTable.h"

void KazHashTableIterator::reset() {
    bucket = 0;
    index = -1;
    next();
}

bool KazHashTableIterator::next() {
    if (!table || bucket >= table->hidden_->bucketSlots)
        return false;
    ++index;
    while (bucket < table->hidden_->bucketSlots && isDone()) {
        ++bucket;
        index = 0;
    }
    return !isDone();
}

bool KazHashTableIterator::isDone() const {
    if (!table || bucket >= table->hidden_->bucketSlots)
        return true;
    const KazBucket* block = table->buckets_[bucket];
    return !block || index >= block->count;
}

const KazBucketEntry* KazHashTableIterator::entry() const {
    auto* texts = table && table->hidden_->texts ? &*table->hidden_->texts : nullptr;
    if (texts && !texts->isInOrder()) {
        const KazHashTable::Guard guard(*table);
        texts->putAllInOrder();
    }
    return isDone() ? nullptr : table->buckets_[bucket]->entries() + index;
}

void* KazHashTableIterator::getKey() const {
    const KazBucketEntry* present = entry();
    return present ? present->key : nullptr;
}

void* KazHashTableIterator::getValue() const {
    const KazBucketEntry* present = entry();
    return present ? present->value : nullptr;
}
