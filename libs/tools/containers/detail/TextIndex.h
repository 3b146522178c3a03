/// @file
/// Finds the entries of a table whose keys are texts.
#pragma once

#include "tools/containers/detail/TextProbe.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace kaz::detail {

/// What the index repeats of an entry.
struct TextSlot {
    void* key;
    void* value;
    std::uint32_t hash;
    std::uint32_t length;
};

/// A second way into a table of terminated texts (null counts as ""): a hash of
/// its keys beside its buckets. It repeats key and value of each entry and knows
/// nothing of positions, so that the buckets can be put in order whenever
/// somebody looks at them. Slots move when others come, never when one goes.
class TextIndex {
public:
    /// With the first key there is room for @p expected ones.
    explicit TextIndex(std::size_t expected) : firstRoom(expected) {}

    /// The slot of a key equal to @p probe, or null; @p hash is the probe's. The
    /// usual cases are inline: a key in its place, and one that is not there.
    TextSlot* find(const TextProbe& probe, std::uint32_t hash) {
        if (used == 0)
            return nullptr;
        Group& group = home(hash);
        const std::uint64_t matches = group.matching(hash);
        if (matches != 0) {
            TextSlot& slot = group.slots[firstOf(matches)];
            if (slot.hash == hash && probe.matchesShort(slot.key, slot.length))
                return &slot;
        } else if (group.passedBy() == 0) {
            return nullptr;
        }
        return findFurther(probe, hash);
    }

    /// The slot of the entry that was added with this very @p key, whatever has
    /// become of its text; or null. Looks at all of them.
    TextSlot* slotOf(const void* key);

    /// Makes room for one more key. KazMemoryException leaves all as it was.
    void reserve();

    /// Adds a key that find does not know, after reserve.
    void add(void* key, void* value, std::uint32_t length, std::uint32_t hash);

    /// Takes out the entry in @p slot.
    void remove(const TextSlot* slot);

    void clear();

    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* block) { std::free(block); }

private:
    static constexpr int groupSlots = 7;

    /// Seven slots, looked through at once. The lower bytes of the word are the tags
    /// of the slots, 0 for a free one; the top byte counts the keys that belong here
    /// or before and found no free slot. Most keys that are not there are told so by
    /// this word alone.
    struct Group {
        std::uint64_t tags;
        TextSlot slots[groupSlots];

        std::uint64_t passedBy() const { return tags >> countShift; }

        /// The slots whose tag is that of @p hash, or that may have it: the top bit
        /// of each byte.
        std::uint64_t matching(std::uint32_t hash) const { return withTag(tagOf(hash)); }
        std::uint64_t withTag(std::uint64_t tag) const {
            const std::uint64_t difference = tags ^ (eachByte * tag);
            return (difference - eachByte) & ~difference & lowestTags;
        }

        bool isUsed(int slot) const { return (tags >> (8 * slot) & 0xFF) != 0; }

        void setTag(int slot, std::uint64_t tag) {
            const int shift = 8 * slot;
            tags = (tags & ~(std::uint64_t{0xFF} << shift)) | tag << shift;
        }
    };

    static constexpr std::uint64_t eachByte = 0x0101010101010101U;
    static constexpr std::uint64_t lowestTags = 0x0080808080808080U;
    static constexpr int countShift = 56;
    static constexpr std::uint64_t fullCount = 0xFF;

    /// What a group keeps of a hash: one byte, never 0.
    static std::uint64_t tagOf(std::uint32_t hash) { return hash >> 24 | 0x80; }

    static int firstOf(std::uint64_t matches) { return std::countr_zero(matches) / 8; }

    Group& home(std::uint32_t hash) const { return groups.get()[hash & (groupCount - 1)]; }
    Group& after(const Group& group) const;
    static bool hasRoom(std::size_t groups, std::size_t keys);
    std::size_t grownCount() const;
    TextSlot* findFurther(const TextProbe& probe, std::uint32_t hash);
    void put(const TextSlot& entry);

    HeapPtr<Group> groups;
    std::size_t groupCount = 0; ///< 0 or a power of two
    std::size_t firstRoom;
    std::size_t used = 0;
};

} // namespace kaz::detail
