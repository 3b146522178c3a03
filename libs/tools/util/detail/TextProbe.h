// SPDX-License-Identifier: Apache-2.0
/// @file
/// A text that is looked for in an index.
#pragma once

#include "tools/util/detail/CaseRules.h"
#include "tools/util/detail/HashSeed.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kaz::detail {

/// A text with its length and its hash, both of what @p Fold makes of its bytes. All
/// are written out inline, as most names are short: finding one among a thousand took
/// 26 ns with std::hash and strcmp.
template <typename Fold>
class FoldedTextProbe {
public:
    /// So much of a text as @p text shows; it need not be terminated there.
    explicit FoldedTextProbe(std::string_view text, Fold rule = Fold())
        : text_(text.data()), length_(static_cast<std::uint32_t>(text.size())), fold_(rule) {
        if (isShort(length_))
            ends_ = folded(endsOf(text_, length_));
    }

    /// A terminated text. @p key may be null, which means "".
    explicit FoldedTextProbe(const void* key, Fold rule = Fold())
        : FoldedTextProbe(std::string_view(key != nullptr ? static_cast<const char*>(key) : ""),
                          rule) {}

    /// The same when @p length is likely to be that of @p key, and @p key has so
    /// many characters at least. Measuring a short text takes a quarter of finding it.
    FoldedTextProbe(const char* key, std::int32_t length, Fold rule = Fold())
        : text_(key != nullptr ? key : ""),
          length_(static_cast<std::uint32_t>(length)),
          fold_(rule) {
        if (isShort(length_) && text_[length_] == 0) {
            ends_ = endsOf(text_, length_);
            if (!holdsNul(ends_, length_)) {
                ends_ = folded(ends_);
                return;
            }
        }
        *this = FoldedTextProbe(static_cast<const void*>(key), rule);
    }

    const char* text() const { return text_; }
    std::uint32_t length() const { return length_; }

    /// Not the string class's own hash: that one gives half of 100,000 numbered
    /// names the hash of another. Two words are multiplied and the halves of the
    /// product folded, as wyhash (public domain) does it; who does not know the seed
    /// cannot choose texts whose hashes meet.
    std::uint32_t hash(const HashSeed& seed) const {
        // The lengths make keys of their own: words of two texts may agree.
        const std::uint64_t start = std::rotl(seed.first, static_cast<int>(length_));
        if (isShort(length_))
            return mixed(start ^ ends_.first, seed.last ^ ends_.last) >> 32;
        // Asked once: a question for each word made a hit a quarter longer.
        return fold_.folds() ? longHash(start, seed, fold_) : longHash(start, seed, AsWritten());
    }

    /// Whether the text of so many characters at @p text is the same.
    bool matches(const void* text, std::uint32_t length) const {
        if (isShort(length))
            return matchesShort(text, length);
        return length == length_ && matchesLong(static_cast<const char*>(text));
    }

    /// The same, but false for all long texts, which take a call.
    bool matchesShort(const void* text, std::uint32_t length) const {
        if (length != length_ || !isShort(length))
            return false;
        const Ends ends = folded(endsOf(static_cast<const char*>(text), length));
        return ends.first == ends_.first && ends.last == ends_.last;
    }

private:
    /// All of a short text: its first and its last eight characters, which may
    /// overlap, or twice the few that there are.
    struct Ends {
        std::uint64_t first;
        std::uint64_t last;
    };

    Ends folded(const Ends& ends) const {
        if (!fold_.folds()) // one question for both words
            return ends;
        return {fold_(ends.first), fold_(ends.last)};
    }
    std::uint64_t foldedWord(const char* bytes) const { return fold_(word(bytes)); }

    template <typename Rule>
    std::uint32_t longHash(std::uint64_t state, const HashSeed& seed, const Rule& rule) const {
        const char* const last = text_ + length_ - 16;
        for (const char* place = text_; place < last; place += 16)
            state = mixed(state ^ rule(word(place)), seed.last ^ rule(word(place + 8)));
        return mixed(state ^ rule(word(last)), seed.last ^ rule(word(last + 8))) >> 32;
    }

    /// Whether a text of as many characters is the same.
    bool matchesLong(const char* text) const {
        if (!fold_.folds())
            return std::memcmp(text_, text, length_) == 0;
        const std::uint32_t last = length_ - 8;
        for (std::uint32_t i = 0; i < last; i += 8)
            if (foldedWord(text_ + i) != foldedWord(text + i))
                return false;
        return foldedWord(text_ + last) == foldedWord(text + last);
    }

    static bool isShort(std::uint32_t length) { return length <= 16; }

    static std::uint64_t word(const char* bytes) {
        std::uint64_t result;
        std::memcpy(&result, bytes, sizeof result);
        return result;
    }

    static std::uint64_t halfWord(const char* bytes) {
        std::uint32_t result;
        std::memcpy(&result, bytes, sizeof result);
        return result;
    }

    static std::uint64_t byte(const char* place) { return static_cast<unsigned char>(*place); }

    static Ends endsOf(const char* text, std::uint32_t length) {
        if (length >= 8)
            return {word(text), word(text + length - 8)};
        std::uint64_t all = 0;
        if (length >= 4)
            all = halfWord(text) | halfWord(text + length - 4) << 32;
        else if (length > 0)
            all = byte(text) | byte(text + length / 2) << 8 | byte(text + length - 1) << 16;
        return {all, all};
    }

    static bool holdsNul(const Ends& ends, std::uint32_t length) {
        constexpr std::uint64_t ones = 0x0101010101010101U;
        constexpr std::uint64_t tops = 0x8080808080808080U;
        // Where there are fewer than four characters the rest of the word is 0.
        const std::uint64_t rest = length == 0  ? ~std::uint64_t{0}
                                   : length < 4 ? ~std::uint64_t{0} << 24
                                                : 0;
        const std::uint64_t first = ends.first | rest;
        const std::uint64_t last = ends.last | rest;
        return ((((first - ones) & ~first) | ((last - ones) & ~last)) & tops) != 0;
    }

    /// Both halves of the product of two words.
    static std::uint64_t mixed(std::uint64_t a, std::uint64_t b) {
        __extension__ using Wide = unsigned __int128;
        const Wide product = static_cast<Wide>(factor(a)) * factor(b);
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    /// Never 0, beside which the other factor would not count.
    static std::uint64_t factor(std::uint64_t word) { return word + (word == 0 ? 1 : 0); }

    const char* text_;
    std::uint32_t length_;
    Ends ends_ = {0, 0};
    [[no_unique_address]] Fold fold_;
};

/// A text as it is written.
using TextProbe = FoldedTextProbe<AsWritten>;

} // namespace kaz::detail
