// SPDX-License-Identifier: Apache-2.0
// The containers beside those that a tool would otherwise use.

#include "tools/containers/KazArrayPtr.h"
#include "tools/containers/KazIntColl.h"
#include "tools/containers/KazIntCollIterator.h"
#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazStringColl.h"
#include "tools/containers/KazStringToStringMap.h"

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#ifdef MOX_PEER_ABSEIL
#include <absl/container/btree_set.h>
#include <absl/container/flat_hash_map.h>
#include <absl/hash/hash.h>
#include <absl/strings/ascii.h>
#include <absl/strings/match.h>
#endif
#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif
#ifdef MOX_PEER_QT
#include <QByteArray>
#include <QByteArrayList>
#include <QHash>
#include <QList>
#endif

namespace {

std::vector<int> shuffledNumbers(std::int64_t count) {
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    return numbers;
}

std::vector<std::string> names(std::int64_t count, const char* prefix = "variable_") {
    std::vector<std::string> result;
    for (int number : shuffledNumbers(count))
        result.push_back(prefix + std::to_string(number));
    return result;
}

template <typename Key>
std::vector<Key> keysOf(const std::vector<std::string>& texts) {
    std::vector<Key> result;
    for (const std::string& text : texts)
        result.emplace_back(text.c_str());
    return result;
}

/// Heap memory in use, with what the allocator adds to each block.
std::int64_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
}

// ---- Maps from text to text. Each class gives the same work the same name.

template <int buckets> // 0: as many as there are keys
class OurMap {
public:
    using Key = KazString;
    explicit OurMap(std::size_t size) : map(true, buckets > 0 ? buckets : static_cast<int>(size)) {}
    void add(const Key& key, const Key& value) { map.bind(key, value, false); }
    int find(const Key& key) { return map.valueOf(key).getLength(); }

private:
    KazStringToStringMap map;
};

template <typename Map>
class StandardMap {
public:
    using Key = std::string;
    explicit StandardMap(std::size_t) {}
    void add(const Key& key, const Key& value) { map.emplace(key, value); }
    int find(const Key& key) {
        const auto found = map.find(key);
        return found != map.end() ? static_cast<int>(found->second.size()) : 0;
    }

private:
    Map map;
};

#ifdef MOX_PEER_GLIB
class GlibMap {
public:
    using Key = std::string;
    explicit GlibMap(std::size_t)
        : map(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free)) {}
    GlibMap(const GlibMap&) = delete;
    GlibMap& operator=(const GlibMap&) = delete;
    ~GlibMap() { g_hash_table_destroy(map); }
    void add(const Key& key, const Key& value) {
        g_hash_table_insert(map, g_strdup(key.c_str()), g_strdup(value.c_str()));
    }
    int find(const Key& key) {
        const void* value = g_hash_table_lookup(map, key.c_str());
        return value ? static_cast<const char*>(value)[0] : 0;
    }

private:
    GHashTable* map;
};
#endif

#ifdef MOX_PEER_QT
class QtMap {
public:
    using Key = QByteArray;
    explicit QtMap(std::size_t) {}
    void add(const Key& key, const Key& value) { map.insert(key, value); }
    int find(const Key& key) { return static_cast<int>(map.value(key).size()); }

private:
    QHash<QByteArray, QByteArray> map;
};
#endif

template <typename Map>
void loadMap(benchmark::State& state) {
    const auto keys = keysOf<typename Map::Key>(names(state.range(0)));
    for (auto _ : state) {
        Map map(keys.size());
        for (const auto& key : keys)
            map.add(key, key);
        benchmark::DoNotOptimize(&map);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Looks for @p probes in turn in a map of the names.
template <typename Map>
void lookUp(benchmark::State& state, const std::vector<std::string>& probeTexts) {
    const auto keys = keysOf<typename Map::Key>(names(state.range(0)));
    Map map(keys.size());
    for (const auto& key : keys)
        map.add(key, key);
    auto probes = keysOf<typename Map::Key>(probeTexts);
    std::shuffle(probes.begin(), probes.end(), std::mt19937(2));
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(probes[next]));
        next = next + 1 < probes.size() ? next + 1 : 0;
    }
}

template <typename Map>
void hit(benchmark::State& state) {
    lookUp<Map>(state, names(state.range(0)));
}

template <typename Map>
void miss(benchmark::State& state) {
    lookUp<Map>(state, names(state.range(0), "variety_"));
}

template <typename Map>
void repeatedHit(benchmark::State& state) {
    lookUp<Map>(state, {names(state.range(0)).front()});
}

template <typename Map>
void memoryOfMap(benchmark::State& state) {
    using Key = typename Map::Key;
    const std::vector<std::string> texts = names(state.range(0));
    std::int64_t bytes = 0;
    for (auto _ : state) {
        const std::int64_t before = heapInUse();
        Map map(texts.size());
        for (const std::string& text : texts)
            map.add(Key(text.c_str()), Key(text.c_str())); // two texts of the map's own
        bytes = heapInUse() - before;
    }
    state.counters["bytes"] = static_cast<double>(bytes) / static_cast<double>(state.range(0));
}

// ---- The same with keys whose case does not count, looked for in capitals

class OurBlindMap {
public:
    using Key = KazString;
    explicit OurBlindMap(std::size_t) : map(false, 127) {}
    void add(const Key& key, const Key& value) { map.bind(key, value, false); }
    int find(const Key& key) { return map.valueOf(key).getLength(); }

private:
    KazStringToStringMap map;
};

struct BlindEqual {
    bool operator()(const std::string& a, const std::string& b) const {
        return a.size() == b.size() && strcasecmp(a.c_str(), b.c_str()) == 0;
    }
};

struct BlindHash {
    std::size_t operator()(std::string text) const {
        for (char& c : text)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return std::hash<std::string>()(text);
    }
};

#ifdef MOX_PEER_ABSEIL
struct BlindAbseilEqual {
    bool operator()(const std::string& a, const std::string& b) const {
        return absl::EqualsIgnoreCase(a, b);
    }
};

struct BlindAbseilHash {
    std::size_t operator()(const std::string& text) const {
        return absl::Hash<std::string>()(absl::AsciiStrToLower(text));
    }
};
#endif

template <typename Map>
void blindHit(benchmark::State& state) {
    lookUp<Map>(state, names(state.range(0), "VARIABLE_"));
}

template <typename Map>
void blindMiss(benchmark::State& state) {
    lookUp<Map>(state, names(state.range(0), "VARIETY_"));
}

template <typename Map>
void repeatedBlindHit(benchmark::State& state) {
    lookUp<Map>(state, {names(state.range(0), "VARIABLE_").front()});
}

using Sizes = std::vector<std::int64_t>;

void add(const std::string& work, const char* impl, void (*run)(benchmark::State&),
         const Sizes& sizes) {
    auto* row = benchmark::RegisterBenchmark((work + "/" + impl).c_str(), run);
    for (std::int64_t size : sizes)
        row->Arg(size);
}

template <typename Map>
void addMapRows(const std::string& table, const char* impl, const Sizes& sizes) {
    add(table + ": load shuffled", impl, loadMap<Map>, sizes);
    add(table + ": hit", impl, hit<Map>, sizes);
    add(table + ": miss", impl, miss<Map>, sizes);
    add(table + ": repeated hit", impl, repeatedHit<Map>, sizes);
    add("memory: entry of " + table, impl, memoryOfMap<Map>, {sizes.back()});
}

template <typename Map>
void addBlindRows(const char* impl, const Sizes& sizes) {
    const std::string table = "string map without case";
    add(table + ": load shuffled", impl, loadMap<Map>, sizes);
    add(table + ": hit", impl, blindHit<Map>, sizes);
    add(table + ": miss", impl, blindMiss<Map>, sizes);
    add(table + ": repeated hit", impl, repeatedBlindHit<Map>, sizes);
}

void addBlindTable(const Sizes& sizes) {
    addBlindRows<OurBlindMap>("moxtools", sizes);
    using Text = std::string;
    addBlindRows<StandardMap<std::unordered_map<Text, Text, BlindHash, BlindEqual>>>("std", sizes);
#ifdef MOX_PEER_ABSEIL
    using Abseil = absl::flat_hash_map<Text, Text, BlindAbseilHash, BlindAbseilEqual>;
    addBlindRows<StandardMap<Abseil>>("absl", sizes);
#endif
}

template <typename Ours>
void addTable(const std::string& table, const Sizes& sizes) {
    addMapRows<Ours>(table, "moxtools", sizes);
    addMapRows<StandardMap<std::unordered_map<std::string, std::string>>>(table, "std", sizes);
#ifdef MOX_PEER_ABSEIL
    addMapRows<StandardMap<absl::flat_hash_map<std::string, std::string>>>(table, "absl", sizes);
#endif
#ifdef MOX_PEER_GLIB
    addMapRows<GlibMap>(table, "glib", sizes);
#endif
#ifdef MOX_PEER_QT
    addMapRows<QtMap>(table, "qt", sizes);
#endif
}

// ---- Sequences

const char* const storedText = "a text that is stored";

void appendOurs(benchmark::State& state) {
    const KazString text(storedText);
    for (auto _ : state) {
        KazStringColl texts;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            texts.add(text);
        benchmark::DoNotOptimize(&texts);
    }
}

void appendNumber(KazIntColl& numbers, int number) {
    numbers.add(number);
}
template <typename Sequence>
void appendNumber(Sequence& numbers, int number) {
    numbers.push_back(number);
}

template <typename Sequence>
void appendNumbers(benchmark::State& state) {
    for (auto _ : state) {
        Sequence numbers;
        for (int i = 0; i < static_cast<int>(state.range(0)); ++i)
            appendNumber(numbers, i);
        benchmark::DoNotOptimize(&numbers);
    }
}

/// @p Sequence holds a copy of each text that is added.
template <typename Sequence, typename Text>
void appendTheirs(benchmark::State& state) {
    const Text text(storedText);
    for (auto _ : state) {
        Sequence texts;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            texts.push_back(text);
        benchmark::DoNotOptimize(&texts);
    }
}

template <typename Sequence>
Sequence numbers(std::int64_t count) {
    Sequence result;
    for (int number : shuffledNumbers(count)) {
        if constexpr (std::is_same_v<Sequence, KazIntColl>)
            result.add(number);
        else
            result.push_back(number);
    }
    return result;
}

/// The number looked for stands first, so that all are looked at.
template <typename Sequence>
void findFromEnd(benchmark::State& state) {
    const auto sequence = numbers<Sequence>(state.range(0));
    const int wanted = sequence[0];
    for (auto _ : state) {
        benchmark::ClobberMemory();
        if constexpr (std::is_same_v<Sequence, KazIntColl>)
            benchmark::DoNotOptimize(sequence.find(wanted));
        else
            benchmark::DoNotOptimize(std::find(sequence.rbegin(), sequence.rend(), wanted));
    }
}

/// The first of all texts, which share most of their characters.
void findTextOurs(benchmark::State& state) {
    KazStringColl texts;
    for (const std::string& text : names(state.range(0)))
        texts.add(text.c_str());
    const std::string wanted(texts[0].getValue());
    for (auto _ : state) {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(texts.find(wanted.c_str()));
    }
}

template <typename Sequence, typename Text>
void findTextTheirs(benchmark::State& state) {
    Sequence texts;
    for (const std::string& text : names(state.range(0)))
        texts.push_back(text.c_str());
    const Text wanted = texts[0];
    for (auto _ : state) {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(std::find(texts.rbegin(), texts.rend(), wanted));
    }
}

void iterateOurs(benchmark::State& state) {
    KazStringColl texts;
    for (const std::string& text : names(state.range(0)))
        texts.add(text.c_str());
    for (auto _ : state) {
        std::int64_t sum = 0;
        for (int i = 0; i < texts.getSize(); ++i)
            sum += texts[i].getLength();
        benchmark::DoNotOptimize(sum);
    }
}

template <typename Sequence>
void iterateTheirs(benchmark::State& state) {
    Sequence texts;
    for (const std::string& text : names(state.range(0)))
        texts.push_back(text.c_str());
    for (auto _ : state) {
        std::int64_t sum = 0;
        for (const auto& text : texts)
            sum += static_cast<std::int64_t>(text.size());
        benchmark::DoNotOptimize(sum);
    }
}

void iterateNumbersOurs(benchmark::State& state) {
    auto sequence = numbers<KazIntColl>(state.range(0));
    for (auto _ : state) {
        std::int64_t sum = 0;
        for (KazIntCollIterator i(sequence); !i.isDone(); i.next())
            sum += i.item();
        benchmark::DoNotOptimize(sum);
    }
}

template <typename Set>
void iterateSet(benchmark::State& state) {
    const std::vector<int> values = shuffledNumbers(state.range(0));
    const Set set(values.begin(), values.end());
    for (auto _ : state) {
        std::int64_t sum = 0;
        for (int value : set)
            sum += value;
        benchmark::DoNotOptimize(sum);
    }
}

void addSequenceRows() {
    const Sizes sizes = {100, 10000, 1000000};
    const std::string append = "append a text to a collection";
    add(append, "moxtools", appendOurs, sizes);
    add(append, "std", appendTheirs<std::vector<std::string>, std::string>, sizes);
    const std::string appendInt = "append an int to a collection";
    add(appendInt, "moxtools", appendNumbers<KazIntColl>, sizes);
    add(appendInt, "std", appendNumbers<std::vector<int>>, sizes);
    const std::string find = "find an int from the end";
    add(find, "moxtools", findFromEnd<KazIntColl>, sizes);
    add(find, "std", findFromEnd<std::vector<int>>, sizes);
    const std::string findText = "find a text from the end";
    add(findText, "moxtools", findTextOurs, sizes);
    add(findText, "std", findTextTheirs<std::vector<std::string>, std::string>, sizes);
    const std::string iterate = "iterate over texts";
    add(iterate, "moxtools", iterateOurs, sizes);
    add(iterate, "std", iterateTheirs<std::vector<std::string>>, sizes);
    add("iterate over ints with a registered iterator", "moxtools", iterateNumbersOurs, sizes);
    add("iterate over ints with a registered iterator", "std", iterateSet<std::vector<int>>, sizes);
#ifdef MOX_PEER_QT
    add(append, "qt", appendTheirs<QByteArrayList, QByteArray>, sizes);
    add(appendInt, "qt", appendNumbers<QList<int>>, sizes);
    add(find, "qt", findFromEnd<QList<int>>, sizes);
    add(findText, "qt", findTextTheirs<QByteArrayList, QByteArray>, sizes);
    add(iterate, "qt", iterateTheirs<QByteArrayList>, sizes);
#endif
}

// ---- Ordered sets of integers

class OurSet {
public:
    void insert(int value) { tree.add(value); }
    bool contains(int value) const { return tree.contains(value); }

private:
    KazIntTree tree;
};

/// The numbers below @p count in several random orders. One alone, over and over
/// again, the processor would soon foretell.
std::vector<std::vector<int>> randomOrders(std::int64_t count) {
    std::vector<std::vector<int>> orders(static_cast<std::size_t>(1 + 100000 / count),
                                         shuffledNumbers(count));
    std::mt19937 random(2);
    for (auto& order : orders)
        std::shuffle(order.begin(), order.end(), random);
    return orders;
}

template <typename Set>
void insertInto(benchmark::State& state, const std::vector<std::vector<int>>& orders) {
    std::size_t next = 0;
    for (auto _ : state) {
        Set set;
        for (int value : orders[next])
            set.insert(value);
        benchmark::DoNotOptimize(&set);
        next = next + 1 < orders.size() ? next + 1 : 0;
    }
}

template <typename Set>
void insertShuffled(benchmark::State& state) {
    insertInto<Set>(state, randomOrders(state.range(0)));
}

template <typename Set>
void insertAscending(benchmark::State& state) {
    std::vector<int> values = shuffledNumbers(state.range(0));
    std::sort(values.begin(), values.end());
    insertInto<Set>(state, {values});
}

template <typename Set>
void findInSet(benchmark::State& state) {
    std::vector<int> probes;
    for (const auto& order : randomOrders(state.range(0)))
        probes.insert(probes.end(), order.begin(), order.end());
    Set set;
    for (int value : shuffledNumbers(state.range(0)))
        set.insert(value);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(set.contains(probes[next]));
        next = next + 1 < probes.size() ? next + 1 : 0;
    }
}

template <typename Set>
void memoryOfSet(benchmark::State& state) {
    const std::vector<int> values = shuffledNumbers(state.range(0));
    std::int64_t bytes = 0;
    for (auto _ : state) {
        const std::int64_t before = heapInUse();
        Set set;
        for (int value : values)
            set.insert(value);
        bytes = heapInUse() - before;
    }
    state.counters["bytes"] = static_cast<double>(bytes) / static_cast<double>(state.range(0));
}

template <typename Set>
void addSetRows(const char* impl) {
    const Sizes sizes = {100, 1000, 10000, 100000};
    add("tree: find", impl, findInSet<Set>, sizes);
    add("tree: insert shuffled", impl, insertShuffled<Set>, sizes);
    add("tree: insert ascending", impl, insertAscending<Set>, sizes);
    add("memory: tree node", impl, memoryOfSet<Set>, {sizes.back()});
}

} // namespace

int main(int argc, char** argv) {
    const Sizes sizes = {100, 1000, 10000, 100000};
    addTable<OurMap<127>>("string map of 127 buckets", sizes);
    addTable<OurMap<0>>("string map of n buckets", sizes);
    addTable<OurMap<1>>("string map of one bucket", sizes);
    addBlindTable(sizes);
    addSequenceRows();
    addSetRows<OurSet>("moxtools");
    addSetRows<std::set<int>>("std");
#ifdef MOX_PEER_ABSEIL
    addSetRows<absl::btree_set<int>>("absl");
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
