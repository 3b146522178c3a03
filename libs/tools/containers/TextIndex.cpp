#include "tools/containers/detail/TextIndex.h"

namespace kaz::detail {

TextIndex::Group& TextIndex::after(const Group& group) const {
    return groups.get()[static_cast<std::size_t>(&group - groups.get() + 1) & (groupCount - 1)];
}

TextSlot* TextIndex::findFurther(const TextProbe& probe, std::uint32_t hash) {
    Group* group = &home(hash);
    // Each group may have been passed by once: the count alone is no end.
    for (std::size_t left = groupCount; left > 0; --left) {
        for (std::uint64_t matches = group->matching(hash); matches != 0; matches &= matches - 1) {
            TextSlot& slot = group->slots[firstOf(matches)];
            if (slot.hash == hash && probe.matches(slot.key, slot.length))
                return &slot;
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

/// Four fifths full at most: few keys then find no place in their group.
bool TextIndex::hasRoom(std::size_t groups, std::size_t keys) {
    return keys * 5 <= groups * groupSlots * 4;
}

/// By fours while they are few: moving keys is most of what small ones cost.
std::size_t TextIndex::grownCount() const {
    if (groupCount > 0)
        return groupCount * (groupCount < 64 ? 4 : 2);
    std::size_t count = 2;
    while (!hasRoom(count, firstRoom))
        count *= 2;
    return count;
}

void TextIndex::reserve() {
    if (hasRoom(groupCount, used + 1))
        return;
    const std::size_t oldCount = groupCount;
    const std::size_t newCount = grownCount();
    HeapPtr<Group> old(static_cast<Group*>(allocate(newCount * sizeof(Group))));
    groups.swap(old);
    groupCount = newCount;
    for (std::size_t i = 0; i < newCount; ++i)
        groups.get()[i].tags = 0;
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
    std::uint64_t free = group->withTag(0);
    while (free == 0) {
        if (group->passedBy() < fullCount)
            group->tags += std::uint64_t{1} << countShift;
        group = &after(*group);
        free = group->withTag(0);
    }
    const int slot = firstOf(free);
    group->setTag(slot, tagOf(entry.hash));
    group->slots[slot] = entry;
}

void TextIndex::add(void* key, void* value, std::uint32_t length, std::uint32_t hash) {
    put({key, value, hash, length});
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
}

void TextIndex::clear() {
    groups.reset();
    groupCount = 0;
    used = 0;
}

} // namespace kaz::detail
