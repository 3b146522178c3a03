#include "tools/containers/detail/TextIndex.h"

#include <bit>
#include <cstring>

namespace kaz::detail {

/// A text that is looked for. Hash and comparison are written out, as most names
/// are short: finding one among a thousand took 26 ns with std::hash and strcmp,
/// and takes 17 so.
struct TextProbe {
    const char* text;
    std::uint32_t length;

    explicit TextProbe(const void* key)
        : text(key != nullptr ? static_cast<const char*>(key) : ""),
          length(static_cast<std::uint32_t>(std::strlen(text))) {}

    static std::uint64_t word(const char* bytes) {
        std::uint64_t result;
        std::memcpy(&result, bytes, sizeof result);
        return result;
    }

    bool matches(const TextSlot& slot) const {
        if (slot.length != length)
            return false;
        const auto* other = static_cast<const char*>(slot.key);
        if (length < 8 || length > 16)
            return length == 0 || std::memcmp(text, other, length) == 0;
        const std::uint32_t last = length - 8;
        return word(text) == word(other) && word(text + last) == word(other + last);
    }

    /// Not the string class's own hash: that one gives half of 100,000 numbered
    /// names the hash of another.
    std::uint32_t hash() const {
        constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15U; // 2^64 by the golden ratio
        std::uint64_t result = length;
        const auto add = [&result](std::uint64_t bits) {
            result = (result ^ bits) * multiplier;
            result ^= result >> 32;
        };
        if (length >= 8) {
            const char* last = text + length - 8;
            for (const char* place = text; place < last; place += 8)
                add(word(place));
            add(word(last));
        } else {
            std::uint64_t bits = 0;
            for (const char* place = text; *place != 0; ++place)
                bits = bits << 8 | static_cast<unsigned char>(*place);
            add(bits);
        }
        return static_cast<std::uint32_t>(result * multiplier >> 32);
    }
};

namespace {

constexpr std::uint64_t eachByte = 0x0101010101010101U;
constexpr std::uint64_t lowestTags = 0x0080808080808080U;
constexpr int countShift = 56;
constexpr std::uint64_t fullCount = 0xFF;

/// What a group keeps of a hash: one byte, never 0.
std::uint64_t tagOf(std::uint32_t hash) {
    return hash >> 24 | 0x80;
}

/// The tags of a word that equal @p tag, or may do so: the top bit of each.
std::uint64_t candidates(std::uint64_t tags, std::uint64_t tag) {
    const std::uint64_t difference = tags ^ (eachByte * tag);
    return (difference - eachByte) & ~difference & lowestTags;
}

int firstOf(std::uint64_t matches) {
    return std::countr_zero(matches) / 8;
}

} // namespace

/// Seven slots, looked through at once. The lower bytes of the word are the tags
/// of the slots, 0 for a free one; the top byte counts the keys that belong here
/// or before and found no free slot. Most keys that are not there are told so by
/// this word alone.
struct TextIndex::Group {
    std::uint64_t tags;
    TextSlot slots[groupSlots];

    std::uint64_t passedBy() const { return tags >> countShift; }

    bool isUsed(int slot) const { return (tags >> (8 * slot) & 0xFF) != 0; }

    void setTag(int slot, std::uint64_t tag) {
        const int shift = 8 * slot;
        tags = (tags & ~(std::uint64_t{0xFF} << shift)) | tag << shift;
    }
};

TextIndex::Group& TextIndex::home(std::uint32_t hash) const {
    return groups.get()[hash & (groupCount - 1)];
}

TextIndex::Group& TextIndex::after(const Group& group) const {
    return groups.get()[static_cast<std::size_t>(&group - groups.get() + 1) & (groupCount - 1)];
}

TextSlot* TextIndex::find(const void* key) {
    const TextProbe probe(key);
    if (latest != nullptr && probe.matches(*latest))
        return latest;
    if (used == 0)
        return nullptr;
    const std::uint32_t hash = probe.hash();
    Group* group = &home(hash);
    // Each group may have been passed by once: the count alone is no end.
    for (std::size_t left = groupCount; left > 0; --left) {
        std::uint64_t matches = candidates(group->tags, tagOf(hash));
        for (; matches != 0; matches &= matches - 1) {
            TextSlot& slot = group->slots[firstOf(matches)];
            if (slot.hash == hash && probe.matches(slot))
                return latest = &slot;
        }
        if (group->passedBy() == 0)
            break;
        group = &after(*group);
    }
    return nullptr;
}

TextSlot* TextIndex::slotOf(const void* key) {
    for (std::size_t i = 0; i < groupCount; ++i) {
        Group& group = groups.get()[i];
        for (int slot = 0; slot < groupSlots; ++slot)
            if (group.isUsed(slot) && group.slots[slot].key == key)
                return &group.slots[slot];
    }
    return nullptr;
}

void TextIndex::reserve() {
    // Four fifths full at most: few keys then find no place in their group.
    if ((used + 1) * 5 <= groupCount * groupSlots * 4)
        return;
    const std::size_t oldCount = groupCount;
    const std::size_t newCount = oldCount > 0 ? 2 * oldCount : 2;
    HeapPtr<Group> old(static_cast<Group*>(allocateZeroed(newCount * sizeof(Group))));
    groups.swap(old);
    groupCount = newCount;
    latest = nullptr;
    for (std::size_t i = 0; i < oldCount; ++i) {
        const Group& group = old.get()[i];
        for (int slot = 0; slot < groupSlots; ++slot) {
            if (group.isUsed(slot))
                put(group.slots[slot]);
        }
    }
}

void TextIndex::put(const TextSlot& entry) {
    Group* group = &home(entry.hash);
    std::uint64_t free = candidates(group->tags, 0);
    while (free == 0) {
        if (group->passedBy() < fullCount)
            group->tags += std::uint64_t{1} << countShift;
        group = &after(*group);
        free = candidates(group->tags, 0);
    }
    const int slot = firstOf(free);
    group->setTag(slot, tagOf(entry.hash));
    group->slots[slot] = entry;
}

void TextIndex::add(void* key, void* value) {
    const TextProbe probe(key);
    put({key, value, probe.hash(), probe.length});
    ++used;
}

void TextIndex::remove(const TextSlot* slot) {
    Group* group = &home(slot->hash);
    while (slot < group->slots || slot >= group->slots + groupSlots) {
        // A count that was full once does not know how many there are.
        if (group->passedBy() < fullCount)
            group->tags -= std::uint64_t{1} << countShift;
        group = &after(*group);
    }
    group->setTag(static_cast<int>(slot - group->slots), 0);
    --used;
    latest = nullptr;
}

void TextIndex::clear() {
    groups.reset();
    groupCount = 0;
    used = 0;
    latest = nullptr;
}

} // namespace kaz::detail
