// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/case_map.h"

namespace kaz::host {

/// This runtime library shows no table: each character is asked for by a call.
const std::int32_t* upperCaseTable() {
    return nullptr;
}

const std::int32_t* lowerCaseTable() {
    return nullptr;
}

void HeldCaseTables::renew() {}
void HeldCaseTables::release() {}

int compareLowered(const char* a, const char* b) {
    const CaseMap lower = CaseMap::lower();
    while (*a != '\0' && lower(*a) == lower(*b)) {
        ++a;
        ++b;
    }
    return static_cast<unsigned char>(lower(*a)) - static_cast<unsigned char>(lower(*b));
}

} // namespace kaz::host
