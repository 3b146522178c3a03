// SPDX-License-Identifier: Apache-2.0
/* What the regular expressions need to know of this platform; comes before
   everything else in their sources. */
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <sys/types.h>

#define _GNU_SOURCE 1
#define __USE_GNU 1
#define _REGEX_INCLUDE_LIMITS_H 1
#define HAVE_LANGINFO_H 1
#define DYNARRAY_PREFIX_GLIBC 1

#define _GL_ATTRIBUTE_PURE
#define _GL_ATTRIBUTE_FALLTHROUGH
#define _GL_ATTRIBUTE_MAYBE_UNUSED
