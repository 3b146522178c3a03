// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/case_map.h"

#include <ctype.h>
#include <strings.h>

namespace kaz::host {

const std::int32_t* upperCaseTable() {
    return *__ctype_toupper_loc();
}

const std::int32_t* lowerCaseTable() {
    return *__ctype_tolower_loc();
}

int compareLowered(const char* a, const char* b) {
    return strcasecmp(a, b);
}

} // namespace kaz::host
