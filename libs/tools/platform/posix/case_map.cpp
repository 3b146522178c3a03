// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/case_map.h"

#include <ctype.h>
#include <locale.h>
#include <strings.h>

namespace kaz::host {

const std::int32_t* upperCaseTable() {
    return *__ctype_toupper_loc();
}

const std::int32_t* lowerCaseTable() {
    return *__ctype_tolower_loc();
}

/// The tables belong to the locale of the thread; a copy of that keeps them alive when somebody
/// sets another one and frees this.
void HeldCaseTables::renew() {
    release();
    locale_ = duplocale(uselocale(locale_t{}));
    lower_ = locale_ != nullptr ? lowerCaseTable() : nullptr;
}

void HeldCaseTables::release() {
    if (locale_ != nullptr)
        freelocale(static_cast<locale_t>(locale_));
    locale_ = nullptr;
}

int compareLowered(const char* a, const char* b) {
    return strcasecmp(a, b);
}

} // namespace kaz::host
