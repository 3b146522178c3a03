#include "tools/containers/KazHashTableIterator.h"

void KazHashTableIterator::reset() {
    bucket = 0;
    index = -1;
    next();
}

bool KazHashTableIterator::next() {
    if (!table || bucket >= table->bucketSlots())
        return false;
    ++index;
    while (bucket < table->bucketSlots() && isDone()) {
        ++bucket;
        index = 0;
    }
    return !isDone();
}

bool KazHashTableIterator::isDone() const {
    if (!table || bucket >= table->bucketSlots())
        return true;
    const KazBucket* block = table->buckets[bucket];
    return !block || index >= block->count;
}

const KazBucketEntry* KazHashTableIterator::entry() const {
    if (table && table->unsortedCount.load(std::memory_order_acquire) > 0)
        table->putAllInOrder();
    return isDone() ? nullptr : table->buckets[bucket]->entries() + index;
}

void* KazHashTableIterator::getKey() const {
    const KazBucketEntry* present = entry();
    return present ? present->key : nullptr;
}

void* KazHashTableIterator::getValue() const {
    const KazBucketEntry* present = entry();
    return present ? present->value : nullptr;
}
