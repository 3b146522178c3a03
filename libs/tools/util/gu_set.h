// SPDX-License-Identifier: Apache-2.0
/// @file
/// Sets of untyped elements: pointers, or numbers converted to pointers. Null is
/// an element like any other. The set never looks behind an element and owns
/// none.
///
/// Elements are kept in the order in which they were added and are found by
/// hashing: adding, removing and asking take constant time on average, and the
/// operations on two sets time proportional to their sizes.
///
/// A null set reads as the empty set; adding to one does nothing. Memory
/// exhaustion ends in `memory_panic`, with the sets unchanged.
///
/// @code
///   gu_set* open = gu_set_create(0);
///   gu_set_add(open, node);
///   for (auto i = gu_set_init(open); !gu_set_done(i); gu_set_next(&i))
///       visit(gu_set_element(i));
///   gu_set_destroy(open);
/// @endcode
#pragma once

#include "tools/export.h"

struct _gu_set_struct_;
/// The name that callers use.
typedef _gu_set_struct_ gu_set;

/// Called with each element and the caller's @p data.
typedef void (*gu_set_action)(void* element, void* data);

/// @name Making and releasing
/// @{

/// A new empty set with room for @p sizeHint elements, 65536 at most; 0 or less
/// is a good choice when the size is not known.
KAZ_API gu_set* gu_set_create(int sizeHint);

/// Releases the set, not what its elements point to. Null is ignored.
KAZ_API void gu_set_destroy(gu_set* set);

/// A set of its own with the same elements in the same order; never null.
KAZ_API gu_set* gu_set_copy(const gu_set* set);
/// @}

/// @name Elements
/// @{

/// True when @p element was added, false when it was in the set before.
KAZ_API bool gu_set_add(gu_set* set, void* element);

/// True when @p element was in the set and has been removed.
KAZ_API bool gu_set_remove(gu_set* set, void* element);

/// Whether @p element is in the set.
KAZ_API bool gu_set_contains(const gu_set* set, void* element);
/// The number of elements.
KAZ_API int gu_set_size(const gu_set* set);

/// Removes all elements.
KAZ_API void gu_set_clear(gu_set* set);
/// @}

/// @name Two sets
/// Both arguments may be the same set. A result is a new set, which the caller
/// destroys: the elements of @p a in their order, then those of @p b.
/// @{

/// What is in either.
KAZ_API gu_set* gu_set_union(const gu_set* a, const gu_set* b);

/// What is in both.
KAZ_API gu_set* gu_set_intersection(const gu_set* a, const gu_set* b);

/// What is in @p a and not in @p b.
KAZ_API gu_set* gu_set_difference(const gu_set* a, const gu_set* b);

/// What is in one of them only.
KAZ_API gu_set* gu_set_symmetric_difference(const gu_set* a, const gu_set* b);

/// Adds every element of @p other to @p set; how many were new.
KAZ_API int gu_set_add_all(gu_set* set, const gu_set* other);

/// Removes every element of @p other from @p set; how many were removed.
KAZ_API int gu_set_remove_all(gu_set* set, const gu_set* other);

/// Keeps of @p set what @p other contains as well; how many were removed.
KAZ_API int gu_set_retain_all(gu_set* set, const gu_set* other);

/// Whether every element of @p part is in @p whole. The empty set is part of
/// every set.
KAZ_API bool gu_set_subset(const gu_set* part, const gu_set* whole);

/// Whether both have the same elements, in whatever order.
KAZ_API bool gu_set_equal(const gu_set* a, const gu_set* b);

/// Whether they share no element.
KAZ_API bool gu_set_disjoint(const gu_set* a, const gu_set* b);
/// @}

/// @name Iteration
/// In the order of adding. Elements may be removed meanwhile, the current one
/// included, or all of them, which finishes the iteration; adding ends the validity
/// of all iterators of the set.
/// @{

/// Passed by value; refers to the set and owns nothing.
struct gu_set_iterator {
    const gu_set* set; ///< not owned
    int position;      ///< of the current element; -1 when iteration is over
};

/// At the first element, or finished at once.
KAZ_API gu_set_iterator gu_set_init(const gu_set* set);

/// To the next element; nothing when already finished.
KAZ_API void gu_set_next(gu_set_iterator* iterator);

/// Whether iteration is over.
KAZ_API bool gu_set_done(gu_set_iterator iterator);

/// The current element; null when finished, or when the element was removed
/// meanwhile.
KAZ_API void* gu_set_element(gu_set_iterator iterator);

/// Calls @p action with every element; it may remove elements.
KAZ_API void gu_set_foreach(const gu_set* set, gu_set_action action, void* data);
/// @}
