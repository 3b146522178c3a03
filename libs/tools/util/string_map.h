// SPDX-License-Identifier: Apache-2.0
/// @file
/// A small hash map from texts to untyped values, with keys that respect case
/// or do not. The map owns copies of its keys and, when it has a release
/// function, its values.
///
/// Keys have at most 255 characters: a longer key, like a null one, cannot be
/// defined and is never found. Memory exhaustion ends in `memory_panic` with
/// the map unchanged.
///
/// @code
///   string_map_tp* map = string_map_create(nullptr, 0, free, true);
///   string_map_define(map, "name", mkcpy("value"), true);
///   for (auto i = string_map_init(map); !string_map_done(i); string_map_next(&i))
///       show(string_map_domain(i), string_map_range(i));
///   string_map_destroy(&map);
/// @endcode
#pragma once

#include "tools/export.h"

/// Gives the bucket, 0..bucketCount-1, of a key; a result outside that range
/// falls back to the map's own rule. A map without case passes the key lowered.
typedef unsigned int (*string_map_hash)(const char* key, int bucketCount);
/// Disposes of a value that the map drops.
typedef void (*string_map_release)(void* value);

/// One definition; in a chain of its bucket. Made and freed by the map.
struct string_map_entry {
    char* key;              ///< the map's own copy
    void* value;            ///< the caller's, or the map's when there is a release function
    string_map_entry* next; ///< in the same bucket, defined earlier
};

/// The map. Its fields are for reading.
struct string_map_tp {
    /// The chains. Behind the scenes there are as many, less one, below index
    /// 0: a key whose bytes sum up to a negative number has its chain there.
    string_map_entry** buckets;
    int count;                  ///< always 0: `string_map_size` counts
    int bucketCount;            ///< for good
    string_map_hash hash;       ///< or null
    string_map_release release; ///< called on a value that the map drops; or null
    bool caseSensitive;         ///< whether keys that differ in case are different
};

/// Passed by value; refers to the map and owns nothing. Good until the current
/// entry is undefined; entries defined meanwhile may be met or not.
struct string_map_iterator {
    string_map_tp* map;      ///< not owned
    string_map_entry* entry; ///< null when iteration is over
    int bucket;              ///< of the current entry
};

/// A new empty map with @p size buckets, 127 for a size of 0 or less. Null
/// functions stand for the map's own bucket rule and for values that nobody
/// releases.
KAZ_API string_map_tp* string_map_create(string_map_hash hash, int size, string_map_release release,
                                         bool caseSensitive);

/// Releases the map with its keys and, through its release function, its
/// values; @p *map becomes null. Null and a null @p *map are ignored.
KAZ_API void string_map_destroy(string_map_tp** map);

/// Binds @p key to @p value and tells whether it did. A key that is there
/// keeps its value unless @p replace is set; the old value is then released.
/// A value that the map refuses stays the caller's.
KAZ_API bool string_map_define(string_map_tp* map, const char* key, void* value, bool replace);

/// Removes the entry of @p key and tells whether there was one. Its value is
/// released only with @p releaseValue.
KAZ_API bool string_map_undefine(string_map_tp* map, const char* key, bool releaseValue);

/// The value of @p key; null when it is absent or @p map is null.
KAZ_API void* string_map_find(const string_map_tp* map, const char* key);

/// @name Iteration
/// Bucket by bucket from 0 upward, then those of negative byte sums from -1
/// downward; inside a bucket from the latest definition to the oldest.
/// @{

/// At the first entry; finished at once for an empty or null map.
KAZ_API string_map_iterator string_map_init(string_map_tp* map);

/// To the next entry; nothing when already finished.
KAZ_API void string_map_next(string_map_iterator* iterator);

/// Whether iteration is over.
KAZ_API bool string_map_done(string_map_iterator iterator);

/// The current key, the map's own, or null when finished.
KAZ_API const char* string_map_domain(string_map_iterator iterator);

/// The current value, or null when finished.
KAZ_API void* string_map_range(string_map_iterator iterator);
/// @}

/// The number of entries, counted by iterating.
KAZ_API int string_map_size(string_map_tp* map);

/// An array of all keys and a null behind them, sorted: by bytes as unsigned
/// characters, or without case when the map ignores it. The keys are the map's
/// own; `string_map_domain_table_free` the array.
KAZ_API char** string_map_domain_table(string_map_tp* map);

/// Frees the array, not the keys; @p *table becomes null. Null is ignored.
KAZ_API void string_map_domain_table_free(char*** table);
