// SPDX-License-Identifier: Apache-2.0
/// @file
/// The header of a string's block, shared by the narrow and the wide class.
#pragma once

#include "tools/export.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// A string block is one piece of malloc memory: this header and, directly
/// behind it, the characters with their terminator. Strings (and containers
/// that hold representations) point at the first character, so that the same
/// pointer is an ordinary terminated text; the header lies at a fixed distance
/// in front of it.
///
/// Invariants: 0 <= stringLength <= bufferLength, the character at stringLength
/// is NUL, bufferLength is of the form 16k + 3. A block that several holders
/// share is never written, with the one exception that KazString documents.
/// The count is a plain integer: a block belongs to one thread at a time.
struct KAZ_API KazStringRep {
    std::int32_t stringLength;   ///< characters in use, terminator not counted
    std::int32_t bufferLength;   ///< characters that fit, terminator not counted
    std::int32_t referenceCount; ///< holders of the block

    /// The header of the block whose characters start at @p text (not null).
    static KazStringRep* of(void* text) { return static_cast<KazStringRep*>(text) - 1; }
    static const KazStringRep* of(const void* text) {
        return static_cast<const KazStringRep*>(text) - 1;
    }

    /// Adds a holder; null is ignored.
    static void retain(void* text) {
        if (text != nullptr)
            ++of(text)->referenceCount;
    }

    /// Drops a holder and frees the block with the last one; null is ignored.
    static void release(void* text) {
        if (text != nullptr && --of(text)->referenceCount == 0)
            destroy(text);
    }

    /// How many characters appendInPlace() takes at most.
    template <class Ch>
    static constexpr std::int32_t fewCharacters = 16 / sizeof(Ch);

    /// Puts the @p n characters at @p s, 1 to fewCharacters of them, behind the text
    /// @p text, in which they may lie. False, and nothing done, where that is null, its
    /// block shared, or the memory too small. For the string classes. Always inline: where
    /// @p n is known, a few instructions are left, which the compiler does not foresee.
    template <class Ch>
    [[gnu::always_inline]] static bool appendInPlace(void* text, const Ch* s, std::int32_t n) {
        if (text == nullptr)
            return false;
        KazStringRep* const rep = of(text);
        const std::int32_t length = rep->stringLength;
        if (rep->referenceCount != 1 ||
            (rep->bufferLength - length < n && !rep->takeNextStep<Ch>()))
            return false;
        Ch* const end = static_cast<Ch*>(text) + length;
        moveFew(end, s, static_cast<std::size_t>(n) * sizeof(Ch));
        end[n] = 0; // not earlier: they may have been behind the text
        rep->stringLength = length + n;
        return true;
    }

private:
    static void destroy(void* text);

    /// Makes the capacity 16 characters larger, of value 0, if there is memory for them.
    template <class Ch>
    bool takeNextStep() {
        // The word in front of the header tells how many characters the memory has room
        // for, or up to 15 more than that. Room and capacity differ by sixteens.
        const std::int32_t room = static_cast<const std::int32_t*>(static_cast<void*>(this))[-1];
        if (room - bufferLength < 16)
            return false;
        Ch* const characters = static_cast<Ch*>(static_cast<void*>(this + 1));
        std::memset(characters + bufferLength + 1, 0, 16 * sizeof(Ch));
        bufferLength += 16;
        return true;
    }

    /// memmove() of 1 to 16 bytes, without the call.
    [[gnu::always_inline]] static void moveFew(void* to, const void* from, std::size_t n) {
        if (n >= 8)
            moveEnds<std::uint64_t>(to, from, n);
        else if (n >= 4)
            moveEnds<std::uint32_t>(to, from, n);
        else if (n >= 2)
            moveEnds<std::uint16_t>(to, from, n);
        else
            std::memcpy(to, from, 1);
    }

    /// The same for one to two words' size: the words at both ends are all there is.
    template <class Word>
    static void moveEnds(void* to, const void* from, std::size_t n) {
        Word first, last;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, static_cast<const char*>(from) + n - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(static_cast<char*>(to) + n - sizeof last, &last, sizeof last);
    }
};

static_assert(sizeof(KazStringRep) == 12 && std::is_trivial_v<KazStringRep>,
              "the characters start 12 bytes into the block");
