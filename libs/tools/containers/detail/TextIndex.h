/// @file
/// Finds the entries of a table whose keys are texts.
#pragma once

#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"

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
    /// The slot of a key equal to @p key, or null. Looks first where it found
    /// the last one.
    TextSlot* find(const void* key);

    /// The slot of the entry that was added with this very @p key, whatever has
    /// become of its text; or null. Looks at all of them.
    TextSlot* slotOf(const void* key);

    /// Makes room for one more key. KazMemoryException leaves all as it was.
    void reserve();

    /// Adds a key that find does not know, after reserve.
    void add(void* key, void* value);

    /// Takes out the entry in @p slot.
    void remove(const TextSlot* slot);

    void clear();

    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* block) { std::free(block); }

private:
    static constexpr int groupSlots = 7;
    struct Group;

    Group& home(std::uint32_t hash) const;
    Group& after(const Group& group) const;
    void put(const TextSlot& entry);

    HeapPtr<Group> groups;
    std::size_t groupCount = 0; ///< 0 or a power of two
    std::size_t used = 0;
    TextSlot* latest = nullptr;
};

} // namespace kaz::detail
