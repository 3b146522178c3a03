// SPDX-License-Identifier: Apache-2.0
// The elements stand in a ring: a block whose capacity is a power of two, with
// `size` elements from `head` on, going on at the start of the block.

#include "tools/util/gu_queue.h"

#include "tools/util/detail/panic.h"
#include "tools/util/memory.h"

#include <cstdlib>
#include <memory>
#include <new>

struct gu_queue {
    void** ring;
    int capacity;
    int head;
    int size;
    gu_queue_release release;
};

namespace {

constexpr int firstCapacity = 8;
constexpr int maxCapacity = 1 << 30;

struct DestroyQueue {
    void operator()(gu_queue* queue) const { gu_queue_destroy(queue); }
};

void*& slotAt(const gu_queue* queue, int index) {
    // Unsigned: head and index together may pass the range of int.
    const auto at = static_cast<unsigned>(queue->head) + static_cast<unsigned>(index);
    return queue->ring[at & static_cast<unsigned>(queue->capacity - 1)];
}

/// Moves the elements, now from the start on, into a block of twice the size.
/// Twice the size, so that adding takes constant time on average. The old block is freed last:
/// on failure the queue is as it was.
void grow(gu_queue* queue) {
    if (queue->capacity == maxCapacity)
        memory_panic("gu_queue_add");
    const int capacity = queue->capacity > 0 ? 2 * queue->capacity : firstCapacity;
    void** ring = static_cast<void**>(kaz::detail::allocateOrPanic(
        static_cast<std::size_t>(capacity) * sizeof(void*), "gu_queue_add"));
    for (int i = 0; i < queue->size; ++i)
        ring[i] = slotAt(queue, i);
    std::free(queue->ring);
    *queue = gu_queue{ring, capacity, 0, queue->size, queue->release};
}

void makeRoom(gu_queue* queue) {
    if (queue->size == queue->capacity)
        grow(queue);
}

} // namespace

gu_queue* gu_queue_create(gu_queue_release release) {
    void* block = kaz::detail::allocateOrPanic(sizeof(gu_queue), "gu_queue_create");
    return new (block) gu_queue{nullptr, 0, 0, 0, release};
}

void gu_queue_destroy(gu_queue* queue) {
    if (queue == nullptr)
        return;
    gu_queue_clear(queue);
    std::free(queue->ring);
    std::free(queue);
}

gu_queue* gu_queue_copy(const gu_queue* queue, gu_queue_copy_element copy) {
    const bool owns = copy != nullptr && queue != nullptr;
    std::unique_ptr<gu_queue, DestroyQueue> result(
        gu_queue_create(owns ? queue->release : nullptr));
    for (int i = 0; i < gu_queue_size(queue); ++i) {
        // Room first: a copied element has its place at once.
        makeRoom(result.get());
        void* element = slotAt(queue, i);
        gu_queue_add(result.get(), copy != nullptr ? copy(element) : element);
    }
    return result.release();
}

void gu_queue_add(gu_queue* queue, void* element) {
    if (queue == nullptr)
        return;
    makeRoom(queue);
    slotAt(queue, queue->size) = element;
    ++queue->size;
}

/// The block never shrinks: queues fill and drain again and again.
void* gu_queue_take(gu_queue* queue) {
    if (gu_queue_size(queue) == 0)
        return nullptr;
    void* element = slotAt(queue, 0);
    queue->head = (queue->head + 1) & (queue->capacity - 1);
    --queue->size;
    return element;
}

void* gu_queue_first(const gu_queue* queue) {
    return gu_queue_at(queue, 0);
}

void* gu_queue_last(const gu_queue* queue) {
    return gu_queue_at(queue, gu_queue_size(queue) - 1);
}

void* gu_queue_at(const gu_queue* queue, int index) {
    return index >= 0 && index < gu_queue_size(queue) ? slotAt(queue, index) : nullptr;
}

int gu_queue_size(const gu_queue* queue) {
    return queue != nullptr ? queue->size : 0;
}

bool gu_queue_contains(const gu_queue* queue, const void* element) {
    for (int i = 0; i < gu_queue_size(queue); ++i)
        if (slotAt(queue, i) == element)
            return true;
    return false;
}

void gu_queue_clear(gu_queue* queue) {
    // One by one, so that a release function that adds something finds a queue in order.
    while (gu_queue_size(queue) > 0) {
        void* element = gu_queue_take(queue);
        if (queue->release != nullptr)
            queue->release(element);
    }
}

void gu_queue_foreach(const gu_queue* queue, gu_queue_action action, void* data) {
    for (int i = 0; action != nullptr && i < gu_queue_size(queue); ++i)
        action(slotAt(queue, i), data);
}
