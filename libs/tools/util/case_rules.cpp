// SPDX-License-Identifier: Apache-2.0
#include "tools/util/detail/CaseRules.h"

#include "tools/platform/case_map.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace kaz::detail {

bool CaseRules::note() {
    const std::int32_t* const lowerTable = host::lowerCaseTable();
    const std::int32_t* const upperTable = host::upperCaseTable();
    areKnown = false;
    if (lowerTable == nullptr || upperTable == nullptr)
        return false;
    std::copy_n(lowerTable, byteCount, lower);
    std::copy_n(upperTable, byteCount, upper);
    areKnown = areConsistent();
    tables.renew();
    isAscii = true;
    for (int c = 0; c < byteCount; ++c)
        isAscii = isAscii && lower[c] == (c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return areKnown;
}

/// The tables of another locale may say the same: then the next look is short again.
bool CaseRules::areSame() {
    if (std::memcmp(lower, host::lowerCaseTable(), sizeof lower) != 0 ||
        std::memcmp(upper, host::upperCaseTable(), sizeof upper) != 0)
        return false;
    tables.renew();
    return true;
}

/// Equal in one case means equal in the other, and nothing but NUL ends a text.
bool CaseRules::areConsistent() const {
    std::int32_t upperOf[byteCount];
    std::fill(std::begin(upperOf), std::end(upperOf), -1);
    for (int c = 0; c < byteCount; ++c) {
        if (lower[c] < 0 || lower[c] >= byteCount || (lower[c] == 0) != (c == 0))
            return false;
        std::int32_t& known = upperOf[lower[c]];
        if (known != -1 && known != upper[c])
            return false;
        known = upper[c];
    }
    return true;
}

std::uint64_t CaseRules::loweredByTable(std::uint64_t bytes) const {
    unsigned char each[sizeof bytes];
    std::memcpy(each, &bytes, sizeof bytes);
    for (unsigned char& c : each)
        c = static_cast<unsigned char>(lower[c]);
    std::memcpy(&bytes, each, sizeof bytes);
    return bytes;
}

int CaseRules::compare(const void* a, const void* b) const {
    const char* left = orEmpty(static_cast<const char*>(a));
    const char* right = orEmpty(static_cast<const char*>(b));
    for (;; ++left, ++right) {
        const std::int32_t l = lower[static_cast<unsigned char>(*left)];
        const std::int32_t r = lower[static_cast<unsigned char>(*right)];
        if (l != r)
            return l < r ? -1 : 1;
        if (*left == '\0' || *right == '\0')
            return 0;
    }
}

} // namespace kaz::detail
