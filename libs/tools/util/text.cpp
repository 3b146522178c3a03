// SPDX-License-Identifier: Apache-2.0
// Results are terminated texts in blocks of their own that the caller frees; null reads as ""
// unless the header says otherwise. Sizes are measured first and the block is allocated once.
// Comparison without regard to case goes by the table of the locale, byte by byte, and by vectors
// only where that table changes no more than the letters of ASCII.
#include "tools/util/text.h"

#include "tools/platform/case_map.h"
#include "tools/platform/processor/vector.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/compare_no_case.h"
#include "tools/util/detail/or_empty.h"
#include "tools/util/detail/within.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

using kaz::detail::orEmpty;

namespace {

char* newText(std::size_t length) {
    return static_cast<char*>(kaz::detail::allocate(length + 1));
}

char* copyOf(const char* text, std::size_t length) {
    char* copy = newText(length);
    std::memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}

/// Joins what @p range holds, in two passes: measure, then write.
template <typename Range>
char* join(const Range& texts, const char* separator) {
    const std::size_t gap = std::strlen(separator);
    std::size_t length = 0;
    // A separator too many is counted, which costs a few bytes and no test.
    for (const char* text : texts)
        length += std::strlen(orEmpty(text)) + gap;
    char* result = newText(length);
    char* end = result;
    bool first = true;
    for (const char* text : texts) {
        if (!first)
            end = std::copy_n(separator, gap, end);
        first = false;
        end = std::copy_n(orEmpty(text), std::strlen(orEmpty(text)), end);
    }
    *end = '\0';
    return result;
}

struct TextArray {
    const char* const* texts;
    int count;
    const char* const* begin() const { return texts; }
    const char* const* end() const { return texts + count; }
};

} // namespace

char* mkcpy(const char* text) {
    return text != nullptr ? copyOf(text, std::strlen(text)) : nullptr;
}

char* mkncpy(const char* text, int length) {
    if (text == nullptr)
        return nullptr;
    return copyOf(text, strnlen(text, static_cast<std::size_t>(std::max(length, 0))));
}

char* concat(const char* a, const char* b) {
    return join(std::initializer_list<const char*>{a, b}, "");
}

char* concat3(const char* a, const char* b, const char* c) {
    return join(std::initializer_list<const char*>{a, b, c}, "");
}

char* concat4(const char* a, const char* b, const char* c, const char* d) {
    return join(std::initializer_list<const char*>{a, b, c, d}, "");
}

char* concat_texts(const char* const* texts, int count, const char* separator) {
    const bool any = texts != nullptr && count > 0;
    return join(TextArray{texts, any ? count : 0}, orEmpty(separator));
}

char* concat_onto(char* text, const char* more) {
    const std::size_t length = std::strlen(orEmpty(text));
    const std::size_t added = std::strlen(orEmpty(more));
    // realloc may move the block that `more` points into.
    const bool own = kaz::detail::isWithin(more, text, length);
    const std::size_t offset = own ? static_cast<std::size_t>(more - text) : 0;
    char* result = static_cast<char*>(kaz::detail::reallocate(text, length + added + 1));
    std::memcpy(result + length, own ? result + offset : orEmpty(more), added);
    result[length + added] = '\0';
    return result;
}

namespace {

/// The order that a character decides in which two texts differ, or in which
/// both end; 2 when they go on.
int orderAt(char a, char b, const kaz::host::CaseMap& lower) {
    if (a != b) {
        const auto l = static_cast<unsigned char>(lower(a));
        const auto r = static_cast<unsigned char>(lower(b));
        if (l != r)
            return l < r ? -1 : 1;
    }
    return a == '\0' ? 0 : 2;
}

} // namespace

int kaz::detail::compareNoCase(const char* a, const char* b, std::size_t n) {
    const auto lower = kaz::host::CaseMap::lower();
    // Whether vectors may be used is a question that pays for longer texts only.
    const bool inSteps = n >= 32 && lower.isAsciiForLetters();
    for (std::size_t i = 0;; ++i) {
        if (inSteps)
            i += kaz::host::bytes().endOfSameNoCase(a + i, b + i, n - i);
        const int order = orderAt(a[i], b[i], lower);
        if (order != 2)
            return order;
    }
}

int kaz_fast_stricmp(const char* a, const char* b) {
    const char* left = orEmpty(a);
    const char* right = orEmpty(b);
    const auto lower = kaz::host::CaseMap::lower();
    for (int i = 0; i < 32; ++i) {
        // Both texts have their end, and nothing goes past the nearer one.
        // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
        const int order = orderAt(left[i], right[i], lower);
        if (order != 2)
            return order;
    }
    left += 32;
    right += 32;
    return kaz::detail::compareNoCase(left, right,
                                      std::min(std::strlen(left), std::strlen(right)) + 1);
}

bool is_pattern(const char* name, int classes) {
    return std::strpbrk(orEmpty(name), classes != 0 ? "*?[" : "*?") != nullptr;
}

char* string_replace_char(const char* text, char c, const char* replacement) {
    if (text == nullptr || c == '\0')
        return mkcpy(text);
    const char* insert = orEmpty(replacement);
    const std::size_t insertLength = std::strlen(insert);
    const std::size_t length = std::strlen(text);
    const auto hits = static_cast<std::size_t>(std::count(text, text + length, c));
    char* result = newText(length - hits + hits * insertLength);
    char* end = result;
    for (const char* from = text; *from != '\0'; ++from) {
        if (*from == c)
            end = std::copy_n(insert, insertLength, end);
        else
            *end++ = *from;
    }
    *end = '\0';
    return result;
}
