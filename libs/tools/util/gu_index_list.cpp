// SPDX-License-Identifier: Apache-2.0
// A list is a set of ranges in ascending order between which there is always a gap, so equal
// lists have equal ranges and one text. Bounds are added to with care: a range may begin at the
// least or end at the greatest int. Memory is taken before anything changes.
#include "tools/util/gu_index_list.h"

#include "tools/util/detail/or_empty.h"
#include "tools/util/detail/panic.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <utility>

namespace {

struct IndexListOwner {
    static constexpr const char* functionName = "gu_index_list_add";
};

/// From the first member of a range to its last. Ranges neither overlap nor
/// touch: there is a gap of one number at least between two of them.
using Ranges = std::map<int, int, std::less<>,
                        kaz::detail::PanicAllocator<std::pair<const int, int>, IndexListOwner>>;

} // namespace

struct gu_index_list {
    Ranges ranges;
};

namespace {

struct DestroyList {
    void operator()(gu_index_list* list) const { gu_index_list_destroy(list); }
};
using OwnedList = std::unique_ptr<gu_index_list, DestroyList>;

const Ranges& rangesOf(const gu_index_list* list) {
    // Never destroyed: lists may be asked from destructors of static objects.
    static const Ranges& none = *new Ranges;
    return list != nullptr ? list->ranges : none;
}

/// The first range that reaches @p from, as a mutable or a constant iterator.
template <typename Map>
/// In logarithmic time: ranges are apart, so only the one that begins at @p from or before can.
auto reaching(Map& ranges, int from) {
    auto range = ranges.upper_bound(from);
    if (range != ranges.begin() && std::prev(range)->second >= from)
        --range;
    return range;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/// Reads the text form from left to right.
class Reader {
public:
    explicit Reader(const char* text) : text_(text), at_(text) {}

    bool readInto(gu_index_list* list) {
        skipBlanks();
        if (*at_ == '\0')
            return true;
        while (readRange(list)) {
            if (*at_ == '\0')
                return true;
            if (*at_ != ',')
                return false;
            ++at_;
        }
        return false;
    }

    int position() const {
        return static_cast<int>(std::min<std::ptrdiff_t>(at_ - text_, INT_MAX));
    }

private:
    void skipBlanks() {
        while (isBlank(*at_))
            ++at_;
    }

    /// A number with the blanks around it; stays in front of a bad one.
    bool readNumber(int& number) {
        skipBlanks();
        // Looked at first, as strtoll() takes line ends and "+", which are no part of the form.
        const char* digits = *at_ == '-' ? at_ + 1 : at_;
        if (*digits < '0' || *digits > '9')
            return false;
        char* end = nullptr;
        errno = 0;
        const long long value = std::strtoll(at_, &end, 10);
        if (errno != 0 || value < INT_MIN || value > INT_MAX)
            return false;
        number = static_cast<int>(value);
        at_ = end;
        skipBlanks();
        return true;
    }

    bool readRange(gu_index_list* list) {
        int first = 0;
        if (!readNumber(first))
            return false;
        int last = first;
        if (*at_ == '-') {
            const char* dash = at_++;
            if (!readNumber(last))
                return false;
            // The dash is what a message points at: both numbers are good.
            if (last < first) {
                at_ = dash;
                return false;
            }
        }
        gu_index_list_add_range(list, first, last);
        return true;
    }

    const char* text_;
    const char* at_;
};

struct DestroyBuffer {
    void operator()(dd_buffer* buffer) const { dd_destroy(buffer); }
};

} // namespace

gu_index_list* gu_index_list_create() {
    return new (kaz::detail::allocateOrPanic(sizeof(gu_index_list), "gu_index_list_create"))
        gu_index_list;
}

void gu_index_list_destroy(gu_index_list* list) {
    if (list == nullptr)
        return;
    list->~gu_index_list();
    std::free(list);
}

gu_index_list* gu_index_list_copy(const gu_index_list* list) {
    OwnedList copy(gu_index_list_create());
    copy->ranges = rangesOf(list);
    return copy.release();
}

gu_index_list* gu_index_list_parse(const char* text, int* errorPosition) {
    OwnedList list(gu_index_list_create());
    Reader reader(kaz::detail::orEmpty(text));
    const bool good = reader.readInto(list.get());
    if (errorPosition != nullptr)
        *errorPosition = good ? -1 : reader.position();
    return good ? list.release() : nullptr;
}

char* gu_index_list_text(const gu_index_list* list) {
    const std::unique_ptr<dd_buffer, DestroyBuffer> text(dd_create(0));
    for (const auto& [first, last] : rangesOf(list)) {
        dd_add_format(text.get(), dd_length(text.get()) > 0 ? ",%d" : "%d", first);
        if (last > first)
            dd_add_format(text.get(), "-%d", last);
    }
    return dd_take(text.get());
}

bool gu_index_list_add(gu_index_list* list, int index) {
    if (list == nullptr || gu_index_list_contains(list, index))
        return false;
    gu_index_list_add_range(list, index, index);
    return true;
}

void gu_index_list_add_range(gu_index_list* list, int first, int last) {
    if (list == nullptr || last < first)
        return;
    // A range that ends right in front grows, else a new one is made; either
    // way nothing can fail after that.
    auto range = reaching(list->ranges, first > INT_MIN ? first - 1 : first);
    if (range == list->ranges.end() || range->first > first)
        range = list->ranges.emplace_hint(range, first, last);
    range->second = std::max(range->second, last);
    // Touching counts as overlapping. The sum is safe behind the test for the greatest int.
    for (auto next = std::next(range);
         next != list->ranges.end() &&
         (range->second == INT_MAX || next->first <= range->second + 1);
         next = list->ranges.erase(next))
        range->second = std::max(range->second, next->second);
}

bool gu_index_list_remove(gu_index_list* list, int index) {
    if (!gu_index_list_contains(list, index))
        return false;
    gu_index_list_remove_range(list, index, index);
    return true;
}

void gu_index_list_remove_range(gu_index_list* list, int first, int last) {
    if (list == nullptr || last < first)
        return;
    // What stays above is split off first: only that can fail.
    const auto end = reaching(list->ranges, last);
    if (end != list->ranges.end() && end->first <= last && end->second > last)
        list->ranges.emplace_hint(std::next(end), last + 1, end->second);
    auto range = reaching(list->ranges, first);
    if (range != list->ranges.end() && range->first < first) {
        range->second = first - 1;
        ++range;
    }
    list->ranges.erase(range, list->ranges.upper_bound(last));
}

void gu_index_list_clear(gu_index_list* list) {
    if (list != nullptr)
        list->ranges.clear();
}

bool gu_index_list_contains(const gu_index_list* list, int index) {
    const auto range = reaching(rangesOf(list), index);
    return range != rangesOf(list).end() && range->first <= index;
}

/// All ints are 2^32, which int does not hold.
long long gu_index_list_size(const gu_index_list* list) {
    long long size = 0;
    for (const auto& [first, last] : rangesOf(list))
        size += static_cast<long long>(last) - first + 1;
    return size;
}

int gu_index_list_range_count(const gu_index_list* list) {
    return static_cast<int>(rangesOf(list).size());
}

bool gu_index_list_find_range(const gu_index_list* list, int from, int* first, int* last) {
    const auto range = reaching(rangesOf(list), from);
    if (range == rangesOf(list).end())
        return false;
    *first = std::max(range->first, from);
    *last = range->second;
    return true;
}

gu_index_list* gu_index_list_union(const gu_index_list* a, const gu_index_list* b) {
    OwnedList result(gu_index_list_copy(a));
    for (const auto& [first, last] : rangesOf(b))
        gu_index_list_add_range(result.get(), first, last);
    return result.release();
}

/// a without what is only in a: n ranges cost n log n, with no second algorithm to be right.
gu_index_list* gu_index_list_intersection(const gu_index_list* a, const gu_index_list* b) {
    const OwnedList onlyA(gu_index_list_difference(a, b));
    return gu_index_list_difference(a, onlyA.get());
}

gu_index_list* gu_index_list_difference(const gu_index_list* a, const gu_index_list* b) {
    OwnedList result(gu_index_list_copy(a));
    for (const auto& [first, last] : rangesOf(b))
        gu_index_list_remove_range(result.get(), first, last);
    return result.release();
}

/// Into a copy, so that a list for which there is no memory stays as it was.
void gu_index_list_add_all(gu_index_list* list, const gu_index_list* other) {
    if (list == nullptr)
        return;
    const OwnedList both(gu_index_list_union(list, other));
    list->ranges.swap(both->ranges);
}

bool gu_index_list_subset(const gu_index_list* part, const gu_index_list* whole) {
    const Ranges& ranges = rangesOf(part);
    return std::all_of(ranges.begin(), ranges.end(), [whole](const auto& range) {
        // A range lies in one range of the other or in none, as those never touch.
        int first = 0;
        int last = 0;
        return gu_index_list_find_range(whole, range.first, &first, &last) &&
               first == range.first && last >= range.second;
    });
}

bool gu_index_list_equal(const gu_index_list* a, const gu_index_list* b) {
    return rangesOf(a) == rangesOf(b);
}

gu_index_list_iterator gu_index_list_init(const gu_index_list* list) {
    const Ranges& ranges = rangesOf(list);
    return {list, ranges.empty() ? 0 : ranges.begin()->first, ranges.empty()};
}

/// A search for each step: the list may be changed between two of them.
void gu_index_list_next(gu_index_list_iterator* iterator) {
    if (iterator == nullptr || iterator->done)
        return;
    int last = 0;
    iterator->done =
        iterator->index == INT_MAX ||
        !gu_index_list_find_range(iterator->list, iterator->index + 1, &iterator->index, &last);
}

bool gu_index_list_done(gu_index_list_iterator iterator) {
    return iterator.done;
}
