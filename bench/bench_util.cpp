// SPDX-License-Identifier: Apache-2.0
// The plain functions beside what a tool would otherwise use.

#include "tools/util/bitvec.h"
#include "tools/util/string_map.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <bit>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif

namespace {

// ---- The first bit that is not set, which is the last one.

void firstUnsetOurs(benchmark::State& state) {
    const auto last = static_cast<int>(state.range(0));
    bitvec* bits = bitvec_new(last);
    for (int i = 0; i < last; ++i)
        bitvec_set(bits, i);
    for (auto _ : state) {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(bitvec_find_unset(bits));
    }
    bitvec_delete(bits);
}

/// What one writes by hand: word by word, 64 bits each.
void firstUnsetWords(benchmark::State& state) {
    std::vector<std::uint64_t> words(static_cast<std::size_t>(state.range(0) / 64),
                                     ~std::uint64_t{0});
    words.push_back((std::uint64_t{1} << state.range(0) % 64) - 1);
    for (auto _ : state) {
        benchmark::ClobberMemory();
        const auto found = std::find_if(words.begin(), words.end(), [](std::uint64_t word) {
            return word != ~std::uint64_t{0};
        });
        benchmark::DoNotOptimize((found - words.begin()) * 64 + std::countr_one(*found));
    }
}

// ---- Each bit set, and asked for

void setAndTestOurs(benchmark::State& state) {
    const auto last = static_cast<int>(state.range(0));
    bitvec* bits = bitvec_new(last);
    for (auto _ : state) {
        for (int i = 0; i <= last; i += 3) {
            bitvec_set(bits, i);
            benchmark::DoNotOptimize(bitvec_is_set(bits, last - i));
        }
    }
    bitvec_delete(bits);
}

void setAndTestStandard(benchmark::State& state) {
    const auto last = static_cast<std::size_t>(state.range(0));
    std::vector<bool> bits(last + 1);
    for (auto _ : state) {
        for (std::size_t i = 0; i <= last; i += 3) {
            bits[i] = true;
            benchmark::DoNotOptimize(static_cast<bool>(bits[last - i]));
        }
    }
}

// ---- Two that are equal

void compareOurs(benchmark::State& state) {
    bitvec* bits = bitvec_new(static_cast<int>(state.range(0)));
    bitvec* other = bitvec_copy(bits);
    for (auto _ : state) {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(bitvec_compare(bits, other));
    }
    bitvec_delete(other);
    bitvec_delete(bits);
}

void compareWords(benchmark::State& state) {
    const std::vector<std::uint64_t> bits(static_cast<std::size_t>(state.range(0) / 64 + 1));
    const std::vector<std::uint64_t> other = bits;
    for (auto _ : state) {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(bits == other);
    }
}

// ---- Maps from text to pointer, 127 buckets

std::vector<std::string> names(std::int64_t count) {
    std::vector<std::string> result;
    for (std::int64_t i = 0; i < count; ++i)
        result.push_back("variable_" + std::to_string(i));
    std::shuffle(result.begin(), result.end(), std::mt19937(1));
    return result;
}

class OurMap {
public:
    OurMap() = default;
    OurMap(const OurMap&) = delete;
    OurMap& operator=(const OurMap&) = delete;
    ~OurMap() { string_map_destroy(&map); }
    void add(const std::string& key) { string_map_define(map, key.c_str(), this, true); }
    const void* find(const std::string& key) { return string_map_find(map, key.c_str()); }

private:
    string_map_tp* map = string_map_create(nullptr, 127, nullptr, true);
};

class StandardMap {
public:
    void add(const std::string& key) { map[key] = this; }
    const void* find(const std::string& key) {
        const auto found = map.find(key);
        return found != map.end() ? found->second : nullptr;
    }

private:
    std::unordered_map<std::string, void*> map;
};

#ifdef MOX_PEER_GLIB
class GlibMap {
public:
    GlibMap() = default;
    GlibMap(const GlibMap&) = delete;
    GlibMap& operator=(const GlibMap&) = delete;
    ~GlibMap() { g_hash_table_destroy(map); }
    void add(const std::string& key) { g_hash_table_insert(map, g_strdup(key.c_str()), this); }
    const void* find(const std::string& key) { return g_hash_table_lookup(map, key.c_str()); }

private:
    GHashTable* map = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, nullptr);
};
#endif

template <typename Map>
void define(benchmark::State& state) {
    const std::vector<std::string> keys = names(state.range(0));
    for (auto _ : state) {
        Map map;
        for (const std::string& key : keys)
            map.add(key);
        benchmark::DoNotOptimize(&map);
    }
}

template <typename Map>
void find(benchmark::State& state) {
    std::vector<std::string> keys = names(state.range(0));
    Map map;
    for (const std::string& key : keys)
        map.add(key);
    std::shuffle(keys.begin(), keys.end(), std::mt19937(2));
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(keys[next]));
        next = next + 1 < keys.size() ? next + 1 : 0;
    }
}

void add(const std::string& name, void (*run)(benchmark::State&),
         const std::vector<std::int64_t>& sizes) {
    auto* row = benchmark::RegisterBenchmark(name.c_str(), run);
    for (std::int64_t size : sizes)
        row->Arg(size);
}

template <typename Map>
void addMapRows(const std::string& impl) {
    const std::vector<std::int64_t> sizes = {10, 100, 1000, 10000, 100000};
    add("plain string map: define/" + impl, define<Map>, sizes);
    add("plain string map: find/" + impl, find<Map>, sizes);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::int64_t> sizes = {100, 10000, 1000000};
    add("bit vector: first unset/moxtools", firstUnsetOurs, sizes);
    add("bit vector: first unset/std", firstUnsetWords, sizes);
    add("bit vector: set and test/moxtools", setAndTestOurs, {1000});
    add("bit vector: set and test/std", setAndTestStandard, {1000});
    add("bit vector: compare/moxtools", compareOurs, sizes);
    add("bit vector: compare/std", compareWords, sizes);
    addMapRows<OurMap>("moxtools");
    addMapRows<StandardMap>("std");
#ifdef MOX_PEER_GLIB
    addMapRows<GlibMap>("glib");
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
