// SPDX-License-Identifier: Apache-2.0
/// @file
/// First-in first-out queues of untyped elements. Adding and taking cost
/// constant time, averaged over the growth of the one block behind a queue.
///
/// The elements belong to the caller unless the queue was made with a release
/// function, which is called on every element that the queue drops, and not on
/// those that it hands back. A null queue reads as empty, and nothing can be
/// added to it. Memory exhaustion ends in `memory_panic`, with the queue
/// unchanged.
#pragma once

#include "tools/export.h"

struct gu_queue;

/// Disposes of an element that the queue drops.
typedef void (*gu_queue_release)(void* element);
/// Gives what a copied queue holds in the place of @p element.
typedef void* (*gu_queue_copy_element)(void* element);
/// Called with each element and the caller's @p data.
typedef void (*gu_queue_action)(void* element, void* data);

/// A new empty queue; null for @p release leaves the elements to the caller.
KAZ_API gu_queue* gu_queue_create(gu_queue_release release);

/// Releases the queue and, through its release function, what is still waiting.
/// Null is ignored.
KAZ_API void gu_queue_destroy(gu_queue* queue);

/// A new queue, never null. With @p copy it holds what @p copy makes of each
/// element and releases as @p queue does; without, it shares the elements and
/// releases none.
KAZ_API gu_queue* gu_queue_copy(const gu_queue* queue, gu_queue_copy_element copy);

/// Adds @p element at the end.
KAZ_API void gu_queue_add(gu_queue* queue, void* element);

/// Takes the element that has waited longest; null when the queue is empty.
/// Where null is an element, ask `gu_queue_size` first.
KAZ_API void* gu_queue_take(gu_queue* queue);

/// The element that `gu_queue_take` would give; null when the queue is empty.
KAZ_API void* gu_queue_first(const gu_queue* queue);

/// The element that was added last; null when the queue is empty.
KAZ_API void* gu_queue_last(const gu_queue* queue);

/// The element with @p index others in front of it; null outside the queue.
KAZ_API void* gu_queue_at(const gu_queue* queue, int index);

/// How many elements are waiting.
KAZ_API int gu_queue_size(const gu_queue* queue);

/// Whether @p element, the same pointer, is waiting.
KAZ_API bool gu_queue_contains(const gu_queue* queue, const void* element);

/// Drops all elements, the one that has waited longest first.
KAZ_API void gu_queue_clear(gu_queue* queue);

/// Calls @p action with each element, the one that has waited longest first.
/// Elements that it adds are met as well.
KAZ_API void gu_queue_foreach(const gu_queue* queue, gu_queue_action action, void* data);
