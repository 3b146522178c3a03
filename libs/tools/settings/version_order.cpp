// SPDX-License-Identifier: Apache-2.0
// The order of versions: Semantic Versioning 2.0.0, section 11, with as many numbers as
// there are.
#include "tools/settings/KazProductInfo.h"

#include "tools/util/detail/compared.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <string_view>

namespace {

/// Takes the first component off; "" at the end.
std::string_view take(std::string_view& text) {
    const std::string_view first = text.substr(0, text.find('.'));
    text.remove_prefix(std::min(first.size() + 1, text.size()));
    return first;
}

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

/// Numbers of any length by value, before all texts; texts by bytes.
int compareComponents(std::string_view a, std::string_view b) {
    if (isNumber(a) != isNumber(b))
        return isNumber(a) ? -1 : 1;
    if (isNumber(a)) {
        // Without leading zeros the longer number is the greater one, and equal lengths go by
        // bytes: no number is too long.
        a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
        b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
        if (a.size() != b.size())
            return a.size() < b.size() ? -1 : 1;
    }
    return kaz::detail::signOf(a.compare(b));
}

/// What lacks is 0, so "1.2" and "1.2.0" are equal.
int compareNumbers(std::string_view a, std::string_view b) {
    while (!a.empty() || !b.empty()) {
        const std::string_view left = a.empty() ? "0" : take(a);
        const std::string_view right = b.empty() ? "0" : take(b);
        if (const int order = compareComponents(left, right); order != 0)
            return order;
    }
    return 0;
}

/// Of two with the same beginning the longer one comes later.
int compareReleases(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty())
        if (const int order = compareComponents(take(a), take(b)); order != 0)
            return order;
    return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

struct Version {
    explicit Version(const char* text) : numbers(kaz::detail::orEmpty(text)) {
        // The build's name is cut first: it may hold a "-" of its own.
        numbers = numbers.substr(0, numbers.find('+'));
        const std::size_t dash = numbers.find('-');
        isFinal = dash == numbers.npos;
        if (!isFinal)
            before = numbers.substr(dash + 1);
        numbers = numbers.substr(0, dash);
    }

    std::string_view numbers;
    std::string_view before; ///< what comes before the final version
    bool isFinal;
};

} // namespace

int KazProductInfo::compareVersions(const char* a, const char* b) {
    const Version left(a), right(b);
    if (const int order = compareNumbers(left.numbers, right.numbers); order != 0)
        return order;
    if (left.isFinal != right.isFinal)
        return left.isFinal ? 1 : -1;
    return compareReleases(left.before, right.before);
}
