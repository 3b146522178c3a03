// SPDX-License-Identifier: Apache-2.0
/// @file
/// "Did you mean": names that are near to one that nothing has.
///
///     print_err("there is no system %s%s", name, kazDidYouMean(name, systems).getValue());
///
/// Words are as near as the fewest insertions, deletions, replacements and swaps of
/// neighbours that make one of the other (the restricted Damerau-Levenshtein distance);
/// ASCII case and leading dashes do not count. A word of up to 2 characters is near to
/// none that is not the same otherwise; one of up to 4 may be 1 away, of up to 8, 2, a
/// longer one 3. The cost is the product of the lengths for each candidate; beyond 256
/// characters nothing is near.
#pragma once

#include "tools/containers/KazStringColl.h"
#include "tools/export.h"

/// Sets @p nearest to those of @p candidates that are nearest to @p word, three at most,
/// in their order; to none when all are too far away, or when one of them is the word
/// itself: that was no slip of the pen. @p nearest is not @p candidates.
KAZ_API void kazNearWords(const char* word, const KazStringColl& candidates,
                          KazStringColl& nearest);

/// These as the end of a message: "; did you mean A, B or C?", printable (see
/// kazPrintable); "" for none.
KAZ_API KazString kazDidYouMean(const char* word, const KazStringColl& candidates);
