// SPDX-License-Identifier: Apache-2.0
// The rules are a copy of the locale's tables, taken only where an index can go by them: equal in
// lower case must mean equal in upper case, and nothing but NUL may become NUL. Whether they are
// still in force is a look at an address in most cases; the tables are compared where that has
// changed.
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
    areKnown_ = false;
    if (lowerTable == nullptr || upperTable == nullptr)
        return false;
    std::copy_n(lowerTable, byteCount, lower_);
    std::copy_n(upperTable, byteCount, upper_);
    areKnown_ = areConsistent();
    tables_.renew();
    isAscii_ = true;
    for (int c = 0; c < byteCount; ++c)
        isAscii_ = isAscii_ && lower_[c] == (c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return areKnown_;
}

/// The tables of another locale may say the same: then the next look is short again.
bool CaseRules::areSame() {
    if (std::memcmp(lower_, host::lowerCaseTable(), sizeof lower_) != 0 ||
        std::memcmp(upper_, host::upperCaseTable(), sizeof upper_) != 0)
        return false;
    tables_.renew();
    return true;
}

/// Equal in one case means equal in the other, and nothing but NUL ends a text.
bool CaseRules::areConsistent() const {
    std::int32_t upperOf[byteCount];
    std::fill(std::begin(upperOf), std::end(upperOf), -1);
    for (int c = 0; c < byteCount; ++c) {
        if (lower_[c] < 0 || lower_[c] >= byteCount || (lower_[c] == 0) != (c == 0))
            return false;
        std::int32_t& known = upperOf[lower_[c]];
        if (known != -1 && known != upper_[c])
            return false;
        known = upper_[c];
    }
    return true;
}

std::uint64_t CaseRules::loweredByTable(std::uint64_t bytes) const {
    unsigned char each[sizeof bytes];
    std::memcpy(each, &bytes, sizeof bytes);
    for (unsigned char& c : each)
        c = static_cast<unsigned char>(lower_[c]);
    std::memcpy(&bytes, each, sizeof bytes);
    return bytes;
}

int CaseRules::compare(const void* a, const void* b) const {
    const char* left = orEmpty(static_cast<const char*>(a));
    const char* right = orEmpty(static_cast<const char*>(b));
    for (;; ++left, ++right) {
        const std::int32_t l = lower_[static_cast<unsigned char>(*left)];
        const std::int32_t r = lower_[static_cast<unsigned char>(*right)];
        if (l != r)
            return l < r ? -1 : 1;
        if (*left == '\0' || *right == '\0')
            return 0;
    }
}

} // namespace kaz::detail
