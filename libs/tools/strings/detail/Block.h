// SPDX-License-Identifier: Apache-2.0
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

/// The memory of a block. Four bytes in front of the header, which nobody sees, tell
/// how many characters it has room for: more than the buffer length says, once a
/// block has grown a second time. They cost nothing, because the header is 12 bytes
/// and the allocator hands out multiples of 16.
///
/// A block that grows for the first time gets what is asked for; from then on it takes
/// half as much more, so that appending costs one move for each step of that size
/// instead of one for each 16 characters (10,000 appends of ten characters: 20
/// instead of 6,250).
class BlockMemory {
public:
    /// A block that has no header yet.
    static KazStringRep* from(void* memory, std::int32_t room) {
        auto* const mark = static_cast<std::int32_t*>(memory);
        *mark = room;
        return static_cast<KazStringRep*>(static_cast<void*>(mark + 1));
    }
    static void release(KazStringRep* rep) { std::free(markOf(rep)); }

    /// Characters that fit. Of the form 16k + 3, like every capacity.
    static std::int32_t room(KazStringRep* rep) { return *markOf(rep) & ~grown; }

    /// The block, moved perhaps, with room for @p wanted characters of @p width bytes
    /// at least; @p most is what a header can tell.
    static KazStringRep* grow(KazStringRep* rep, std::int32_t wanted, std::size_t width,
                              std::int32_t most) {
        std::int32_t room = wanted;
        if ((*markOf(rep) & grown) != 0)
            room = wanted < most - wanted / 2 ? wanted + (wanted / 2 & ~15) : most;
        return from(moved(rep, bytes(room, width), width), room | grown);
    }

    static std::size_t bytes(std::int32_t room, std::size_t width) {
        return sizeof(std::int32_t) + sizeof(KazStringRep) +
               (static_cast<std::size_t>(room) + 1) * width;
    }

private:
    /// A bit that no capacity has.
    static constexpr std::int32_t grown = 8;

    /// The memory with all that it holds, @p size bytes large. What malloc keeps for the
    /// next one of a small size realloc does not take: 100 appends of ten characters took
    /// 860 instead of 500 ns.
    static void* moved(KazStringRep* rep, std::size_t size, std::size_t width) {
        if (size > 1024)
            return reallocate(markOf(rep), size);
        void* const memory = allocate(size);
        std::memcpy(memory, markOf(rep), bytes(room(rep), width));
        release(rep);
        return memory;
    }

    static std::int32_t* markOf(KazStringRep* rep) {
        return static_cast<std::int32_t*>(static_cast<void*>(rep)) - 1;
    }
};

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
        const bool isExact = room - length < granularity && reachesBack(room);
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
    static Ch* extend(Ch* text, std::int64_t capacity) {
        KazStringRep* const rep = resized(text, bufferLength(capacity));
        zeroSpare(rep);
        return characters(rep);
    }

    /// extend() where the memory of the block is large enough. False where it is not.
    static bool stretch(Ch* text, std::int64_t capacity) {
        KazStringRep* const rep = KazStringRep::of(text);
        if (capacity > BlockMemory::room(rep))
            return false;
        // At least one step more than before, so that these lie behind the text.
        rep->bufferLength = bufferLength(capacity);
        std::memset(text + rep->bufferLength + 1 - granularity, 0, granularity * sizeof(Ch));
        return true;
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

    /// Do header and characters of such a block cover the room of 16 characters?
    static bool reachesBack(std::int32_t room) {
        return sizeof(KazStringRep) + (static_cast<std::size_t>(room) + 1) * sizeof(Ch) >=
               granularity * sizeof(Ch);
    }

    /// A block of undefined content.
    static KazStringRep* fresh(std::int32_t room) {
        if constexpr (sizeof(Ch) == 1)
            if (KazStringRep* const spare = spareBlocks.take(room))
                return spare;
        return BlockMemory::from(allocate(bytes(room)), room);
    }
    static KazStringRep* freshZeroed(std::int32_t room) {
        if constexpr (sizeof(Ch) == 1)
            if (KazStringRep* const spare = spareBlocks.take(room)) {
                std::memset(characters(spare), 0, static_cast<std::size_t>(room) + 1);
                return spare;
            }
        return BlockMemory::from(allocateZeroed(bytes(room)), room);
    }

    static KazStringRep* resized(Ch* text, std::int32_t room) {
        KazStringRep* rep = KazStringRep::of(text);
        if (room > BlockMemory::room(rep))
            rep = BlockMemory::grow(rep, room, sizeof(Ch), maxCapacity);
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

    static std::size_t bytes(std::int32_t room) { return BlockMemory::bytes(room, sizeof(Ch)); }

    static void zeroSpare(KazStringRep* rep) {
        Ch* const text = characters(rep);
        std::fill(text + rep->stringLength, text + rep->bufferLength + 1, Ch{});
    }
};

} // namespace kaz::detail
