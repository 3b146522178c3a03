// SPDX-License-Identifier: Apache-2.0
// The chains are the map: they decide what is found and in which order it is shown.
// Where the bucket of a key and its equality depend on its bytes alone, as they do in
// a map that respects case and has no rule of its caller's, an index of all keys
// stands beside them and finds the same entries; without memory for it, the chains
// are searched. Each entry knows the link that leads to it, so that it leaves its
// chain without a search.
#include "tools/util/string_map.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/util/detail/TextIndex.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/panic.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr int defaultBucketCount = 127;
constexpr std::size_t maxKeyLength = 255;

/// No chain has this number: they are -(bucketCount - 1) to bucketCount - 1.
constexpr int noBucket = INT_MIN;

/// Up to so many entries the chains are as quick as the index, which takes memory.
constexpr std::size_t indexedFrom = 64;

struct Entry : string_map_entry {
    string_map_entry** link; ///< what points to it
};

Entry* own(string_map_entry* entry) {
    return static_cast<Entry*>(entry);
}

struct Map : string_map_tp {
    explicit Map(const string_map_tp& fields) : string_map_tp(fields) {}

    std::size_t entries = 0;
    /// At rest, which is empty, below indexedFrom and after it found no memory.
    kaz::detail::TextIndex<string_map_entry*> index{2 * indexedFrom};
    std::size_t nextIndexing = indexedFrom; ///< so many entries wake it
};

Map* own(string_map_tp* map) {
    return static_cast<Map*>(map);
}

const Map* own(const string_map_tp* map) {
    return static_cast<const Map*>(map);
}

/// The map's own rule. Bytes count as signed on every platform, so the sum may
/// be negative, and the remainder with it.
int defaultBucket(const char* key, std::size_t length, int bucketCount) {
    int sum = 0;
    for (std::size_t i = 0; i < length; ++i)
        sum += static_cast<signed char>(key[i]);
    return sum % bucketCount;
}

/// A key that is too long has no bucket, and so is neither defined nor found.
int bucketOf(const string_map_tp* map, const char* key) {
    const std::size_t length = key != nullptr ? strnlen(key, maxKeyLength + 1) : 0;
    if (key == nullptr || length > maxKeyLength)
        return noBucket;
    char lowered[maxKeyLength + 1];
    if (!map->caseSensitive) {
        // With the terminator, which the rule of the caller needs.
        std::transform(key, key + length + 1, lowered, [](char c) {
            return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        });
        key = lowered;
    }
    // A number out of range would lead out of the array: the map's own rule stands in.
    if (map->hash != nullptr) {
        const unsigned int bucket = map->hash(key, map->bucketCount);
        if (bucket < static_cast<unsigned int>(map->bucketCount))
            return static_cast<int>(bucket);
    }
    return defaultBucket(key, length, map->bucketCount);
}

bool keysEqual(const string_map_tp* map, const char* a, const char* b) {
    return map->caseSensitive ? std::strcmp(a, b) == 0 : kaz_fast_stricmp(a, b) == 0;
}

/// The entry of @p key, whose bucket is @p bucket; or null.
string_map_entry* findEntry(const string_map_tp* map, const char* key, int bucket) {
    if (own(map)->index.size() > 0) {
        const auto* slot = own(map)->index.find(kaz::detail::TextProbe(key));
        return slot != nullptr ? slot->value : nullptr;
    }
    string_map_entry* entry = map->buckets[bucket];
    while (entry != nullptr && !keysEqual(map, entry->key, key))
        entry = entry->next;
    return entry;
}

void addToIndex(Map* map, string_map_entry* entry) {
    const kaz::detail::TextProbe probe(entry->key);
    map->index.add(entry->key, entry, probe.length(), map->index.hashOf(probe));
}

/// Makes room for one more entry in the index, and wakes it where it is time.
void prepareIndex(Map* map) {
    const bool byBytes = map->caseSensitive && map->hash == nullptr;
    const bool rests = map->index.size() == 0;
    if (!byBytes || (rests && map->entries < map->nextIndexing))
        return;
    try {
        map->index.reserve(rests ? map->entries + 1 : 1);
        for (auto i = string_map_init(map); rests && !string_map_done(i); string_map_next(&i))
            addToIndex(map, i.entry);
    } catch (const KazMemoryException&) {
        map->index.clear();
        // Not with each entry again: the next try comes when there are twice as many.
        map->nextIndexing = 2 * map->entries;
    }
}

/// Both blocks before anything is linked: on failure the map is as it was.
string_map_entry* makeEntry(const char* key, void* value, string_map_entry** link) {
    constexpr const char* function = "string_map_define";
    const std::size_t size = std::strlen(key) + 1;
    kaz::detail::HeapPtr<char> copy(
        static_cast<char*>(kaz::detail::allocateOrPanic(size, function)));
    std::memcpy(copy.get(), key, size);
    void* block = kaz::detail::allocateOrPanic(sizeof(Entry), function);
    return new (block) Entry{{copy.release(), value, *link}, link};
}

/// Puts @p entry where @p link leads, before what is there.
void enter(string_map_entry** link, string_map_entry* entry) {
    if (entry->next != nullptr)
        own(entry->next)->link = &entry->next;
    *link = entry;
}

void leave(string_map_entry* entry) {
    if (entry->next != nullptr)
        own(entry->next)->link = own(entry)->link;
    *own(entry)->link = entry->next;
}

void freeEntry(string_map_entry* entry) {
    std::free(entry->key);
    std::free(entry);
}

void releaseValue(const string_map_tp* map, void* value) {
    if (map->release != nullptr)
        map->release(value);
}

/// The bucket visited after @p bucket: the negative ones come last. Gives
/// -bucketCount behind the last one.
int bucketAfter(const string_map_tp* map, int bucket) {
    if (bucket < 0)
        return bucket - 1;
    return bucket + 1 < map->bucketCount ? bucket + 1 : -1;
}

/// Moves to the head of the first non-empty bucket from @p bucket on.
void enterBucket(string_map_iterator& iterator, int bucket) {
    const string_map_tp* map = iterator.map;
    while (bucket > -map->bucketCount && map->buckets[bucket] == nullptr)
        bucket = bucketAfter(map, bucket);
    iterator.bucket = bucket;
    iterator.entry = bucket > -map->bucketCount ? map->buckets[bucket] : nullptr;
}

} // namespace

string_map_tp* string_map_create(string_map_hash hash, int size, string_map_release release,
                                 bool caseSensitive) {
    constexpr const char* function = "string_map_create";
    const int bucketCount = size > 0 ? size : defaultBucketCount;
    // Sums of signed bytes are negative, too: `buckets` points into the middle of the block.
    const std::size_t below = static_cast<std::size_t>(bucketCount) - 1;
    const std::size_t chains = below + static_cast<std::size_t>(bucketCount);
    kaz::detail::HeapPtr<string_map_entry*> heads(static_cast<string_map_entry**>(
        kaz::detail::allocateZeroedOrPanic(chains * sizeof(string_map_entry*), function)));
    void* block = kaz::detail::allocateOrPanic(sizeof(Map), function);
    return new (block) Map({heads.release() + below, 0, bucketCount, hash, release, caseSensitive});
}

void string_map_destroy(string_map_tp** map) {
    if (map == nullptr || *map == nullptr)
        return;
    // The caller's pointer is cleared first, since a release function may look at it.
    string_map_tp* old = std::exchange(*map, nullptr);
    auto iterator = string_map_init(old);
    while (!string_map_done(iterator)) {
        string_map_entry* entry = iterator.entry;
        // On before the entry is freed.
        string_map_next(&iterator);
        releaseValue(old, entry->value);
        freeEntry(entry);
    }
    std::free(old->buckets - (old->bucketCount - 1));
    std::destroy_at(own(old));
    std::free(old);
}

bool string_map_define(string_map_tp* map, const char* key, void* value, bool replace) {
    const int bucket = map != nullptr ? bucketOf(map, key) : noBucket;
    if (bucket == noBucket)
        return false;
    string_map_entry* entry = findEntry(map, key, bucket);
    if (entry == nullptr) {
        string_map_entry** link = &map->buckets[bucket];
        prepareIndex(own(map));
        entry = makeEntry(key, value, link);
        enter(link, entry);
        ++own(map)->entries;
        if (own(map)->index.size() > 0)
            addToIndex(own(map), entry);
        return true;
    }
    if (replace)
        releaseValue(map, std::exchange(entry->value, value));
    return replace;
}

bool string_map_undefine(string_map_tp* map, const char* key, bool dropValue) {
    const int bucket = map != nullptr ? bucketOf(map, key) : noBucket;
    if (bucket == noBucket)
        return false;
    string_map_entry* entry = findEntry(map, key, bucket);
    if (entry == nullptr)
        return false;
    if (const auto* slot = own(map)->index.slotOf(entry->key))
        own(map)->index.remove(slot);
    leave(entry);
    --own(map)->entries;
    if (dropValue)
        releaseValue(map, entry->value);
    freeEntry(entry);
    return true;
}

void* string_map_find(const string_map_tp* map, const char* key) {
    const int bucket = map != nullptr ? bucketOf(map, key) : noBucket;
    const string_map_entry* entry = bucket != noBucket ? findEntry(map, key, bucket) : nullptr;
    return entry != nullptr ? entry->value : nullptr;
}

string_map_iterator string_map_init(string_map_tp* map) {
    string_map_iterator iterator{map, nullptr, 0};
    if (map != nullptr)
        enterBucket(iterator, 0);
    return iterator;
}

void string_map_next(string_map_iterator* iterator) {
    if (iterator == nullptr || iterator->entry == nullptr)
        return;
    iterator->entry = iterator->entry->next;
    if (iterator->entry == nullptr)
        enterBucket(*iterator, bucketAfter(iterator->map, iterator->bucket));
}

bool string_map_done(string_map_iterator iterator) {
    return iterator.entry == nullptr;
}

const char* string_map_domain(string_map_iterator iterator) {
    return iterator.entry != nullptr ? iterator.entry->key : nullptr;
}

void* string_map_range(string_map_iterator iterator) {
    return iterator.entry != nullptr ? iterator.entry->value : nullptr;
}

int string_map_size(string_map_tp* map) {
    int size = 0;
    for (auto i = string_map_init(map); !string_map_done(i); string_map_next(&i))
        ++size;
    return size;
}

/// The keys are the map's own, and as short-lived as their entries.
char** string_map_domain_table(string_map_tp* map) {
    const std::size_t slots = static_cast<std::size_t>(string_map_size(map)) + 1;
    char** table = static_cast<char**>(
        kaz::detail::allocateOrPanic(slots * sizeof(char*), "string_map_domain_table"));
    char** end = table;
    for (auto i = string_map_init(map); !string_map_done(i); string_map_next(&i))
        *end++ = i.entry->key;
    *end = nullptr;
    const auto compare = map == nullptr || map->caseSensitive ? std::strcmp : kaz_fast_stricmp;
    std::sort(table, end, [compare](const char* a, const char* b) { return compare(a, b) < 0; });
    return table;
}

void string_map_domain_table_free(char*** table) {
    if (table != nullptr)
        std::free(std::exchange(*table, nullptr));
}
