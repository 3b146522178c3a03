// SPDX-License-Identifier: Apache-2.0
/// @file
/// Doubly linked lists of untyped elements.
///
/// A position in a list is a node; it stays good until it is removed from its
/// list, whatever happens to its neighbours. Functions that take a list and a
/// node expect a node of that list. The elements belong to the caller unless
/// the list was made with a release function; it is then called on every
/// element that the list drops, and not on those that it hands back.
///
/// A null list reads as empty, and nothing can be added to it. Memory
/// exhaustion ends in `memory_panic`, with the list unchanged.
///
/// @code
///   gu_list* names = gu_list_create(free);
///   gu_list_append(names, mkcpy("b"));
///   for (gu_list_node* n = gu_list_first(names); n != nullptr; n = gu_list_next(n))
///       show(gu_list_element(n));
///   gu_list_destroy(names);
/// @endcode
#pragma once

#include "tools/export.h"

struct gu_list;
struct gu_list_node;

/// Disposes of an element that the list drops.
typedef void (*gu_list_release)(void* element);
/// Gives what a copied list holds in the place of @p element.
typedef void* (*gu_list_copy_element)(void* element);
/// Below 0, 0 or above 0 as @p a comes before, with or after @p b.
typedef int (*gu_list_compare)(const void* a, const void* b);
/// Called with each element and the caller's @p data.
typedef void (*gu_list_action)(void* element, void* data);

/// @name Making and releasing
/// @{

/// A new empty list; null for @p release leaves the elements to the caller.
KAZ_API gu_list* gu_list_create(gu_list_release release);

/// Releases the list and, through its release function, the elements. Null is
/// ignored.
KAZ_API void gu_list_destroy(gu_list* list);

/// Drops all elements, the first one first.
KAZ_API void gu_list_clear(gu_list* list);

/// A new list, never null. With @p copy it holds what @p copy makes of each
/// element and releases as @p list does; without, it shares the elements and
/// releases none.
KAZ_API gu_list* gu_list_copy(const gu_list* list, gu_list_copy_element copy);
/// @}

/// @name Adding: the new node, or null for a null list
/// @{

/// Behind all others, or in front of them.
KAZ_API gu_list_node* gu_list_append(gu_list* list, void* element);
KAZ_API gu_list_node* gu_list_prepend(gu_list* list, void* element);

/// In front of @p node; at the end for a null @p node.
KAZ_API gu_list_node* gu_list_insert_before(gu_list* list, gu_list_node* node, void* element);

/// Behind @p node; at the start for a null @p node.
KAZ_API gu_list_node* gu_list_insert_after(gu_list* list, gu_list_node* node, void* element);

/// In a list that is sorted by @p compare: behind the last element that does
/// not come after it.
KAZ_API gu_list_node* gu_list_insert_sorted(gu_list* list, void* element, gu_list_compare compare);
/// @}

/// @name Removing
/// @{

/// Drops the first node that holds @p element; false when there is none.
KAZ_API bool gu_list_remove(gu_list* list, const void* element);

/// Drops @p node and gives the one behind it. Null is ignored.
KAZ_API gu_list_node* gu_list_remove_node(gu_list* list, gu_list_node* node);

/// Removes @p node and hands its element back, which is not released. Null
/// gives null.
KAZ_API void* gu_list_take_node(gu_list* list, gu_list_node* node);

/// The same for the first and the last node; null for an empty list.
KAZ_API void* gu_list_take_first(gu_list* list);
KAZ_API void* gu_list_take_last(gu_list* list);
/// @}

/// @name Walking and looking
/// @{

/// The node at that end; null for an empty list.
KAZ_API gu_list_node* gu_list_first(const gu_list* list);
KAZ_API gu_list_node* gu_list_last(const gu_list* list);

/// The neighbour; null at the end, and for null.
KAZ_API gu_list_node* gu_list_next(const gu_list_node* node);
KAZ_API gu_list_node* gu_list_prev(const gu_list_node* node);

/// The element of @p node; null for null.
KAZ_API void* gu_list_element(const gu_list_node* node);

/// Stores another element in @p node and returns the one before, unreleased.
KAZ_API void* gu_list_set_element(gu_list_node* node, void* element);

/// The first node that holds the pointer @p element, or null.
KAZ_API gu_list_node* gu_list_find(const gu_list* list, const void* element);

/// The first node whose element compares as 0 with @p key, or null.
KAZ_API gu_list_node* gu_list_find_by(const gu_list* list, const void* key,
                                      gu_list_compare compare);

/// The node at @p index (from 0), from the nearer end; null outside the list.
KAZ_API gu_list_node* gu_list_at(const gu_list* list, int index);

/// Counted as it grows: takes no time.
KAZ_API int gu_list_size(const gu_list* list);

/// Calls @p action with each element from first to last; it may remove the
/// node of that element and add others.
KAZ_API void gu_list_foreach(const gu_list* list, gu_list_action action, void* data);
/// @}

/// @name Rearranging: no node is made or released
/// @{

/// Moves all nodes of @p other to the end of @p list, at once; @p other is
/// empty then. Nothing happens when either is null or both are the same.
KAZ_API void gu_list_concat(gu_list* list, gu_list* other);

/// Turns the order round.
KAZ_API void gu_list_reverse(gu_list* list);

/// Sorts in n log n steps; elements that compare as 0 keep their order.
/// @p compare must not throw.
KAZ_API void gu_list_sort(gu_list* list, gu_list_compare compare);
/// @}
