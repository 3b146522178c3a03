// SPDX-License-Identifier: Apache-2.0
/// @file
/// Ordered lists of integers, each at most once, kept as ranges: the list of
/// all even numbers is long, the list of a million neighbours is short.
///
/// The text form names ranges and single numbers in ascending order: "1-3,7",
/// "-5--2,0". Adding and asking cost time by the logarithm of the number of
/// ranges. A null list reads as empty; adding to one does nothing. Memory
/// exhaustion ends in `memory_panic`, with the lists unchanged.
///
/// @code
///   gu_index_list* pages = gu_index_list_parse("1-3, 7", nullptr);
///   gu_index_list_add(pages, 4);
///   for (auto i = gu_index_list_init(pages); !gu_index_list_done(i); gu_index_list_next(&i))
///       print(i.index);
///   char* text = gu_index_list_text(pages); // "1-4,7"
/// @endcode
#pragma once

#include "tools/export.h"

struct gu_index_list;

/// @name Making and releasing
/// @{

/// A new empty list; never null. `gu_index_list_destroy` it.
KAZ_API gu_index_list* gu_index_list_create();

/// Null is ignored.
KAZ_API void gu_index_list_destroy(gu_index_list* list);

/// A list of its own with the same members; never null.
KAZ_API gu_index_list* gu_index_list_copy(const gu_index_list* list);

/// A new list from its text form. Ranges may come in any order, overlap, and
/// stand between blanks; an empty text is the empty list. Null when the text is
/// bad: no number, one that does not fit an int, a range whose end lies below
/// its start, anything else than a comma behind. @p *errorPosition (may be
/// null) then gets the offset of what could not be read, else -1.
KAZ_API gu_index_list* gu_index_list_parse(const char* text, int* errorPosition);

/// The text form, which `gu_index_list_parse` reads back; free it.
KAZ_API char* gu_index_list_text(const gu_index_list* list);
/// @}

/// @name Members
/// @{

/// True when @p index was added, false when it was a member before.
KAZ_API bool gu_index_list_add(gu_index_list* list, int index);

/// Adds @p first to @p last, both included; nothing when @p last is below.
KAZ_API void gu_index_list_add_range(gu_index_list* list, int first, int last);

/// True when @p index was a member and has been removed.
KAZ_API bool gu_index_list_remove(gu_index_list* list, int index);

/// Removes @p first to @p last, both included; nothing when @p last is below.
KAZ_API void gu_index_list_remove_range(gu_index_list* list, int first, int last);

/// Removes all members.
KAZ_API void gu_index_list_clear(gu_index_list* list);

/// Whether @p index is a member; in time logarithmic in the number of ranges.
KAZ_API bool gu_index_list_contains(const gu_index_list* list, int index);

/// Number of members, summed up over the ranges. All integers are 2^32.
KAZ_API long long gu_index_list_size(const gu_index_list* list);

/// Number of ranges, neighbouring members being one.
KAZ_API int gu_index_list_range_count(const gu_index_list* list);

/// Stores in @p *first and @p *last what remains, from @p from on, of the first
/// range that reaches it; false, and nothing stored, when there is none.
KAZ_API bool gu_index_list_find_range(const gu_index_list* list, int from, int* first, int* last);
/// @}

/// @name Two lists
/// Both arguments may be the same list; results are new lists.
/// @{

/// What is in either, in both, or in @p a and not in @p b; `gu_index_list_destroy` it.
KAZ_API gu_index_list* gu_index_list_union(const gu_index_list* a, const gu_index_list* b);
KAZ_API gu_index_list* gu_index_list_intersection(const gu_index_list* a, const gu_index_list* b);
KAZ_API gu_index_list* gu_index_list_difference(const gu_index_list* a, const gu_index_list* b);

/// Adds all members of @p other.
KAZ_API void gu_index_list_add_all(gu_index_list* list, const gu_index_list* other);

/// Whether all members of @p part are in @p whole.
KAZ_API bool gu_index_list_subset(const gu_index_list* part, const gu_index_list* whole);
/// Whether both have the same members.
KAZ_API bool gu_index_list_equal(const gu_index_list* a, const gu_index_list* b);
/// @}

/// @name Iteration
/// In ascending order. The list may change meanwhile: what follows is always
/// the next greater member.
/// @{

/// Passed by value; refers to the list and owns nothing.
struct gu_index_list_iterator {
    const gu_index_list* list; ///< not owned
    int index;                 ///< the current member
    bool done;                 ///< whether there is no current member
};

/// At the smallest member, or finished at once.
KAZ_API gu_index_list_iterator gu_index_list_init(const gu_index_list* list);

/// To the next member; nothing when already finished.
KAZ_API void gu_index_list_next(gu_index_list_iterator* iterator);

/// Whether iteration is over.
KAZ_API bool gu_index_list_done(gu_index_list_iterator iterator);
/// @}
