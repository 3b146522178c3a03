// SPDX-License-Identifier: Apache-2.0
// A cell is assigned, kept or empty. Only an assigned one is believed by the next question; what
// is merely kept is there for the lifetime of a pointer that was handed out.
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
    // An equal text keeps its block, so pointers that callers hold stay good.
    if (null_ || text_ != newText)
        text_ = newText;
    null_ = false;
}

void KazEnvValue::clear() {
    *this = KazEnvValue();
}
