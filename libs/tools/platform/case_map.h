// SPDX-License-Identifier: Apache-2.0
/// @file
/// The runtime's mapping of single bytes to another case.
#pragma once

#include <cctype>
#include <cstddef>
#include <cstdint>

namespace kaz::host {

/// What `toupper` or `tolower` makes of every byte in the current locale, as a
/// table that lives until the locale is changed; null where the runtime has none
/// to show.
const std::int32_t* upperCaseTable();
const std::int32_t* lowerCaseTable();

/// Keeps the tables of the current locale where they are while it lives: no others come
/// to have their addresses. Empty without memory for that, or without tables.
class HeldCaseTables {
public:
    HeldCaseTables() = default;
    HeldCaseTables(const HeldCaseTables&) = delete;
    HeldCaseTables& operator=(const HeldCaseTables&) = delete;
    ~HeldCaseTables() { release(); }

    /// Holds those of the locale that is current now, and no longer the earlier ones.
    void renew();
    bool areCurrent() const { return lower_ != nullptr && lower_ == lowerCaseTable(); }

private:
    void release();

    void* locale_ = nullptr;
    const std::int32_t* lower_ = nullptr;
};

/// Compares two texts byte by byte through `tolower`, as unsigned characters up to
/// the first difference or NUL: below, equal to or above 0.
int compareLowered(const char* a, const char* b);

/// One of the two mappings. It is made for one call and not kept: the locale may
/// change between two.
class CaseMap {
public:
    static CaseMap upper() { return {upperCaseTable(), std::toupper, 'a', 'A'}; }
    static CaseMap lower() { return {lowerCaseTable(), std::tolower, 'A', 'a'}; }

    char operator()(char c) const {
        const auto code = static_cast<unsigned char>(c);
        return static_cast<char>(table_ != nullptr ? table_[code] : map_(code));
    }

    /// The table behind it; null where the runtime has none to show.
    const std::int32_t* table() const { return table_; }

    /// Whether the letters of ASCII map as in ASCII.
    /// Where there is no table, asking would take as long as what it saves.
    bool isAsciiForLetters() const { return table_ != nullptr && isAscii('A', 'z' - 'A' + 1); }

    /// Maps the @p n bytes at @p s to @p out, which may be @p s.
    void apply(char* out, const char* s, std::size_t n) const;

private:
    CaseMap(const std::int32_t* table, int (*map)(int), char from, char to)
        : table_(table), map_(map), from_(from), to_(to) {}

    bool isAscii(int first, int count) const {
        std::int32_t different = 0;
        for (int c = first; c < first + count; ++c)
            different |= table_[c] ^ ascii(c);
        return different == 0;
    }

    int ascii(int c) const {
        const bool isMapped = static_cast<unsigned>(c - from_) < 26U;
        return isMapped ? c ^ (from_ ^ to_) : c;
    }

    const std::int32_t* table_;
    int (*map_)(int);
    char from_;
    char to_;
};

} // namespace kaz::host
