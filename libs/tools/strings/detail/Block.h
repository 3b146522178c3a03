/// @file
/// Making and extending string blocks.
#pragma once

#include "tools/strings/KazStringRep.h"
#include "tools/strings/detail/Characters.h"
#include "tools/strings/detail/SpareBlocks.h"
#include "tools/util/detail/allocate.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace kaz::detail {

/// Throws KazMemoryException: no memory can hold a text of that length.
[[noreturn]] void throwTextTooLong();

/// Prints a line to standard output for each way in which @p rep contradicts
/// itself or the text, which is @p realLength characters long.
void reportBlock(const KazStringRep& rep, std::ptrdiff_t realLength);

/// Blocks of characters of type Ch. Lengths and capacities come in 64 bits and
/// are checked here, in one place, against what the header can hold.
template <class Ch>
struct Block {
    /// The largest number of the form 16k + 3 that is an int32.
    static constexpr std::int64_t maxCapacity = 0x7FFFFFF3;

    static Ch* characters(KazStringRep* rep) {
        return static_cast<Ch*>(static_cast<void*>(rep + 1));
    }

    /// A block for @p capacity characters that says it holds @p length of them.
    /// The caller writes these; all behind them is zero, so that no text ever
    /// shows memory of others.
    static Ch* make(std::int64_t length, std::int64_t capacity) {
        const std::int32_t room = bufferLength(capacity);
        KazStringRep* const rep = length == 0 ? freshZeroed(room) : fresh(room);
        // A block of exact size has few spare characters. Clearing a fixed number
        // at its end takes one instruction instead of a call; what else lies
        // there is written after that.
        const bool isExact = room - length < granularity && bytes(room) >= granularity * sizeof(Ch);
        if (isExact)
            std::memset(characters(rep) + room + 1 - granularity, 0, granularity * sizeof(Ch));
        *rep = {static_cast<std::int32_t>(length), room, 1};
        if (length > 0 && !isExact)
            zeroSpare(rep);
        return characters(rep);
    }

    /// A block for @p capacity characters with as many of @p s as fit.
    static Ch* make(Text<Ch> s, std::int64_t capacity) {
        s.length = std::max<std::int64_t>(0, std::min<std::int64_t>(s.length, capacity));
        Ch* const text = make(s.length, capacity);
        put(text, s);
        return text;
    }

    /// A block for exactly @p s. The short way: tokens and pieces of texts are made
    /// so.
    static Ch* make(Text<Ch> s) {
        const std::int32_t room = bufferLength(s.length);
        KazStringRep* const rep = fresh(room);
        Ch* const text = characters(rep);
        // In the smallest block the last 16 bytes are all of it.
        if constexpr (sizeof(Ch) == 1)
            std::memset(text + room + 1 - granularity, 0, granularity);
        *rep = {static_cast<std::int32_t>(s.length), room, 1};
        if constexpr (sizeof(Ch) > 1)
            zeroSpare(rep);
        std::memcpy(text, s.data, static_cast<std::size_t>(s.length) * sizeof(Ch));
        return text;
    }

    /// The unshared block of @p text with room for @p capacity characters.
    /// realloc instead of a new block and a copy: it mostly extends in place,
    /// which keeps exact growth linear in practice.
    static Ch* extend(Ch* text, std::int64_t capacity) {
        KazStringRep* const rep = resized(text, bufferLength(capacity));
        zeroSpare(rep);
        return characters(rep);
    }

    /// extend() by one character of a text that fills its block: the step that
    /// appending character by character takes once in 16, so every call counts.
    static Ch* extendFull(Ch* text) {
        const std::int32_t full = KazStringRep::of(text)->bufferLength;
        if (full > maxCapacity - granularity)
            throwTextTooLong();
        KazStringRep* const rep = resized(text, full + granularity);
        Ch* const moved = characters(rep);
        std::memset(moved + full + 1, 0, granularity * sizeof(Ch));
        return moved;
    }

private:
    static constexpr std::int32_t granularity = 16;

    /// A block of undefined content.
    static KazStringRep* fresh(std::int32_t room) {
        if constexpr (sizeof(Ch) == 1)
            if (KazStringRep* const spare = spareBlocks.take(room))
                return spare;
        return static_cast<KazStringRep*>(allocate(bytes(room)));
    }
    static KazStringRep* freshZeroed(std::int32_t room) {
        if constexpr (sizeof(Ch) == 1)
            if (KazStringRep* const spare = spareBlocks.take(room)) {
                std::memset(characters(spare), 0, static_cast<std::size_t>(room) + 1);
                return spare;
            }
        return static_cast<KazStringRep*>(allocateZeroed(bytes(room)));
    }

    static KazStringRep* resized(Ch* text, std::int32_t room) {
        auto* const rep =
            static_cast<KazStringRep*>(reallocate(KazStringRep::of(text), bytes(room)));
        rep->bufferLength = room;
        return rep;
    }

    /// Blocks come in multiples of 16 bytes (of 16 characters, when these are
    /// wider), header and terminator included.
    static std::int32_t bufferLength(std::int64_t needed) {
        if (needed > maxCapacity)
            throwTextTooLong();
        needed = std::max<std::int64_t>(needed, 0);
        return static_cast<std::int32_t>(((needed + 28) & ~std::int64_t{15}) - 13);
    }

    static std::size_t bytes(std::int32_t room) {
        return sizeof(KazStringRep) + (static_cast<std::size_t>(room) + 1) * sizeof(Ch);
    }

    static void zeroSpare(KazStringRep* rep) {
        Ch* const text = characters(rep);
        std::fill(text + rep->stringLength, text + rep->bufferLength + 1, Ch{});
    }
};

} // namespace kaz::detail
