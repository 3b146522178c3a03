// SPDX-License-Identifier: Apache-2.0
/// @file
/// Finds entries by their texts.
#pragma once

#include "tools/util/detail/HashSeed.h"
#include "tools/util/detail/TextProbe.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace kaz::detail {

/// A hash of terminated texts (null counts as "") beside whatever keeps the
/// entries: it holds each entry's key and a small @p Payload of it, and owns
/// neither. Slots move when others come, never when one goes. Texts are equal that
/// are so once @p Fold has been applied to their bytes.
///
/// Seven slots make a group, which is looked through at once by one word: its
/// lower bytes are the tags of the slots, 0 for a free one; the top byte counts the
/// keys that belong here or before and found no free slot. The words stand
/// together and apart from the slots, so that most keys that are not there are told
/// so by an array of little more than a byte a key. With the words among their
/// slots, such a question to 100,000 keys took three times as long.
template <typename Payload, typename Fold = AsWritten>
class TextIndex {
    static_assert(std::is_trivially_copyable_v<Payload>);

public:
    using Probe = FoldedTextProbe<Fold>;

    struct Slot {
        const void* key;
        Payload value;
        std::uint32_t hash;
        std::uint32_t length;
    };

    /// With the first key there is room for @p expected ones.
    explicit TextIndex(std::size_t expected, Fold rule = Fold())
        : firstRoom_(expected), fold_(rule) {}

    std::size_t size() const { return used_; }
    /// A text to be looked for; the arguments are those of the probe.
    template <typename... Text>
    Probe probe(Text... text) const {
        return Probe(text..., fold_);
    }
    template <typename Text>
    std::uint32_t hashOf(const Text& probe) const {
        return probe.hash(seed_);
    }

    /// The slot of a key equal to @p probe, or null; @p hash is the probe's. The
    /// usual cases are inline: a key in its place, and one that is not there. Where
    /// nothing is folded, a TextProbe takes a fifth fewer instructions.
    template <typename Text>
    Slot* find(const Text& probe, std::uint32_t hash) const {
        if (used_ == 0)
            return nullptr;
        const std::size_t home = hash & (groupCount_ - 1);
        const Tags tags(block_.get()[home]);
        const std::uint64_t matches = tags.matching(hash);
        if (matches != 0) {
            Slot& slot = slotsOf(home)[Tags::firstOf(matches)];
            if (slot.hash == hash && probe.matchesShort(slot.key, slot.length))
                return &slot;
        } else if (tags.passedBy() == 0) {
            return nullptr;
        }
        return findFurther(probe, hash);
    }
    template <typename Text>
    Slot* find(const Text& probe) const {
        return find(probe, hashOf(probe));
    }

    /// The slot of the entry that was added with this very @p key; null when its
    /// text is not what it was then.
    Slot* slotOf(const void* key) const {
        Slot* slot = find(probe(key));
        return slot != nullptr && slot->key == key ? slot : nullptr;
    }

    /// Whether every key has the text with which it was added. Reads all of them.
    bool isUpToDate() const {
        return eachSlot([this](const Slot& slot) {
            const Probe now = probe(slot.key);
            return now.length() == slot.length && hashOf(now) == slot.hash;
        });
    }

    /// Makes room for @p more keys. KazMemoryException leaves all as it was.
    void reserve(std::size_t more = 1) {
        if (!hasRoom(groupCount_, used_ + more))
            moveTo(grownCount(used_ + more));
    }

    /// Adds a key that find does not know, after reserve.
    void add(const void* key, const Payload& value, std::uint32_t length, std::uint32_t hash) {
        put({key, value, hash, length});
        ++used_;
    }

    /// Takes out the entry in @p slot.
    void remove(const Slot* slot) {
        const auto place = static_cast<std::size_t>(slot - slots_);
        std::size_t group = slot->hash & (groupCount_ - 1);
        for (; group != place / groupSlots; group = after(group))
            Tags(block_.get()[group]).leave();
        Tags(block_.get()[group]).set(static_cast<int>(place % groupSlots), 0);
        --used_;
    }

    void clear() {
        block_.reset();
        slots_ = nullptr;
        groupCount_ = 0;
        used_ = 0;
    }

    /// Whether all of the above holds together; for tests.
    bool isSound() const;

private:
    static constexpr int groupSlots = 7;

    /// A group's word.
    class Tags {
    public:
        explicit Tags(std::uint64_t& word) : word_(word) {}

        std::uint64_t passedBy() const { return word_ >> countShift; }
        /// A count that was full once does not know how many there are.
        void pass() { word_ += passedBy() < fullCount ? one : 0; }
        void leave() { word_ -= passedBy() < fullCount ? one : 0; }

        /// The slots whose tag is that of @p hash, or that may have it: the top bit
        /// of each byte.
        std::uint64_t matching(std::uint32_t hash) const { return with(tagOf(hash)); }
        std::uint64_t with(std::uint64_t tag) const {
            const std::uint64_t difference = word_ ^ (eachByte * tag);
            return (difference - eachByte) & ~difference & lowestTags;
        }

        std::uint64_t at(int slot) const { return word_ >> (8 * slot) & 0xFF; }
        void set(int slot, std::uint64_t tag) {
            const int shift = 8 * slot;
            word_ = (word_ & ~(std::uint64_t{0xFF} << shift)) | tag << shift;
        }

        static int firstOf(std::uint64_t matches) { return std::countr_zero(matches) / 8; }
        /// What a group keeps of a hash: one byte, never 0.
        static std::uint64_t tagOf(std::uint32_t hash) { return hash >> 24 | 0x80; }

        static constexpr std::uint64_t fullCount = 0xFF;

    private:
        static constexpr std::uint64_t eachByte = 0x0101010101010101U;
        static constexpr std::uint64_t lowestTags = 0x0080808080808080U;
        static constexpr int countShift = 56;
        static constexpr std::uint64_t one = std::uint64_t{1} << countShift;

        std::uint64_t& word_;
    };

    Slot* slotsOf(std::size_t group) const { return slots_ + group * groupSlots; }
    std::size_t after(std::size_t group) const { return (group + 1) & (groupCount_ - 1); }

    /// Four fifths full at most: few keys then find no place in their group.
    static bool hasRoom(std::size_t groups, std::size_t keys) {
        return keys * 5 <= groups * groupSlots * 4;
    }

    /// By fours while they are few: moving keys is most of what small ones cost.
    std::size_t grownCount(std::size_t keys) const {
        std::size_t count = groupCount_ == 0 ? 2 : groupCount_ * (groupCount_ < 64 ? 4 : 2);
        while (!hasRoom(count, groupCount_ == 0 && firstRoom_ > keys ? firstRoom_ : keys))
            count *= 2;
        return count;
    }

    template <typename Text>
    Slot* findFurther(const Text& probe, std::uint32_t hash) const {
        std::size_t group = hash & (groupCount_ - 1);
        // Each group may have been passed by once: the count alone is no end.
        for (std::size_t left = groupCount_; left > 0; --left, group = after(group)) {
            const Tags tags(block_.get()[group]);
            for (std::uint64_t some = tags.matching(hash); some != 0; some &= some - 1) {
                Slot& slot = slotsOf(group)[Tags::firstOf(some)];
                if (slot.hash == hash && probe.matches(slot.key, slot.length))
                    return &slot;
            }
            if (tags.passedBy() == 0)
                break;
        }
        return nullptr;
    }

    /// Whether @p holds is true of every slot in use.
    template <typename Holds>
    bool eachSlot(Holds holds) const {
        for (std::size_t group = 0; group < groupCount_; ++group)
            for (int i = 0; i < groupSlots; ++i)
                if (Tags(block_.get()[group]).at(i) != 0 && !holds(slotsOf(group)[i]))
                    return false;
        return true;
    }

    void moveTo(std::size_t newCount) {
        TextIndex larger(firstRoom_, fold_);
        larger.seed_ = seed_;
        const std::size_t bytes = newCount * (sizeof(std::uint64_t) + groupSlots * sizeof(Slot));
        larger.block_.reset(static_cast<std::uint64_t*>(allocate(bytes)));
        larger.groupCount_ = newCount;
        larger.slots_ = reinterpret_cast<Slot*>(larger.block_.get() + newCount);
        for (std::size_t group = 0; group < newCount; ++group)
            larger.block_.get()[group] = 0;
        eachSlot([&larger](const Slot& slot) { return larger.put(slot), true; });
        block_ = std::move(larger.block_);
        slots_ = larger.slots_;
        groupCount_ = newCount;
    }

    void put(const Slot& entry) {
        std::size_t group = entry.hash & (groupCount_ - 1);
        std::uint64_t free = 0;
        while ((free = Tags(block_.get()[group]).with(0)) == 0) {
            Tags(block_.get()[group]).pass();
            group = after(group);
        }
        const int slot = Tags::firstOf(free);
        Tags(block_.get()[group]).set(slot, Tags::tagOf(entry.hash));
        slotsOf(group)[slot] = entry;
    }

    HeapPtr<std::uint64_t> block_; ///< the groups' words, then all slots
    Slot* slots_ = nullptr;
    std::size_t groupCount_ = 0; ///< 0 or a power of two
    std::size_t used_ = 0;
    HashSeed seed_ = processHashSeed();
    std::size_t firstRoom_;
    [[no_unique_address]] Fold fold_;
};

template <typename Payload, typename Fold>
bool TextIndex<Payload, Fold>::isSound() const {
    std::size_t count = 0;
    std::vector<std::uint64_t> passed(groupCount_);
    bool sound = eachSlot([&](const Slot& slot) {
        ++count;
        const std::size_t group = static_cast<std::size_t>(&slot - slots_) / groupSlots;
        const auto number = static_cast<int>((&slot - slots_) % groupSlots);
        for (std::size_t i = slot.hash & (groupCount_ - 1); i != group; i = after(i))
            ++passed[i];
        return Tags(block_.get()[group]).at(number) == Tags::tagOf(slot.hash);
    });
    for (std::size_t group = 0; group < groupCount_; ++group) {
        const std::uint64_t noted = Tags(block_.get()[group]).passedBy();
        sound = sound && (noted == Tags::fullCount || noted == passed[group]);
    }
    return sound && count == used_ && hasRoom(groupCount_, used_);
}

} // namespace kaz::detail
