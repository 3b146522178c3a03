// SPDX-License-Identifier: Apache-2.0
#include "tools/config/KazEnvValue.h"

#include "tools/util/detail/or_empty.h"

void KazEnvValue::assign(const char* newText) {
    keep(kaz::detail::orEmpty(newText));
    assigned_ = true;
}

void KazEnvValue::keep(const char* newText) {
    if (newText == nullptr) {
        clear();
        return;
    }
    if (null_ || text_ != newText)
        text_ = newText;
    null_ = false;
}

void KazEnvValue::clear() {
    *this = KazEnvValue();
}
