// SPDX-License-Identifier: Apache-2.0
/// @file
/// The runtime's rules of case, as they were when somebody began to rely on them.
#pragma once

#include "tools/platform/case_map.h"
#include "tools/util/detail/allocate.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace kaz::detail {

/// What the runtime makes of each byte in upper and in lower case. The tables count
/// and not the locale's name: most locales have the same ones for single bytes, and a
/// thread may have a locale of its own.
class CaseRules {
public:
    CaseRules() = default;
    CaseRules(const CaseRules&) = delete;
    CaseRules& operator=(const CaseRules&) = delete;

    /// Takes down the present rules. False, and nothing is current, where the runtime
    /// shows no tables, and where bytes that are equal in lower case differ in upper
    /// case: who hashes by one and compares by the other then tells them apart.
    bool note();

    /// Whether the present rules are those that were taken down. While the tables are the
    /// same ones that is a look at their address; to compare their 2 KiB takes as long as
    /// a search.
    bool areCurrent() { return areKnown_ && (tables_.areCurrent() || areSame()); }

    /// Eight bytes in lower case.
    std::uint64_t lowered(std::uint64_t bytes) const {
        return isAscii_ ? loweredAscii(bytes) : loweredByTable(bytes);
    }

    /// The order of kaz_fast_stricmp() under these rules. Null means "".
    int compare(const void* a, const void* b) const;

    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* block) { std::free(block); }

private:
    static constexpr int byteCount = 256;

    /// Only the letters of ASCII change: eight bytes at once.
    static std::uint64_t loweredAscii(std::uint64_t bytes) {
        constexpr std::uint64_t each = 0x0101010101010101U;
        const std::uint64_t low = bytes & (each * 0x7F);
        const std::uint64_t fromA = low + each * (0x80 - 'A');
        const std::uint64_t behindZ = low + each * (0x7F - 'Z');
        const std::uint64_t capitals = (fromA ^ behindZ) & ~bytes & (each * 0x80);
        return bytes | capitals >> 2;
    }
    std::uint64_t loweredByTable(std::uint64_t bytes) const;

    bool areSame();
    bool areConsistent() const;

    bool areKnown_ = false;
    bool isAscii_ = false;
    host::HeldCaseTables tables_; ///< none where there was no memory to hold them
    std::int32_t lower_[byteCount];
    std::int32_t upper_[byteCount];
};

/// What an index makes of its texts before it looks at them: nothing.
struct AsWritten {
    static constexpr bool folds() { return false; }
    std::uint64_t operator()(std::uint64_t bytes) const { return bytes; }
};

/// The same for an index that goes by the rules of case that it is given, which must
/// outlive it; by none, texts are as they are written.
class CaseFold {
public:
    explicit CaseFold(const CaseRules* ruling = nullptr) : rules_(ruling) {}
    bool folds() const { return rules_ != nullptr; }
    std::uint64_t operator()(std::uint64_t bytes) const {
        return rules_ != nullptr ? rules_->lowered(bytes) : bytes;
    }

private:
    const CaseRules* rules_;
};

} // namespace kaz::detail
