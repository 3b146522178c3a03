// SPDX-License-Identifier: Apache-2.0
/* The growing arrays of the regular expressions, in one piece. */
#include <libc-config.h>

#include <malloc/dynarray_at_failure.c>
#include <malloc/dynarray_emplace_enlarge.c>
#include <malloc/dynarray_finalize.c>
#include <malloc/dynarray_resize.c>
#include <malloc/dynarray_resize_clear.c>
