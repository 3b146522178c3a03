// The containers beside those of the standard library.

#include "tools/containers/KazArrayPtr.h"
#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazStringColl.h"
#include "tools/containers/KazStringToStringMap.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

std::vector<int> shuffledNumbers(std::int64_t count) {
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    return numbers;
}

std::vector<std::string> names(std::int64_t count) {
    std::vector<std::string> result;
    for (int number : shuffledNumbers(count))
        result.push_back("variable_" + std::to_string(number));
    return result;
}

std::vector<KazString> kazStrings(const std::vector<std::string>& texts) {
    std::vector<KazString> result;
    for (const std::string& text : texts)
        result.emplace_back(text.c_str());
    return result;
}

void addToArray(benchmark::State& state) {
    for (auto _ : state) {
        KazArrayPtr array;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            array.add(&array);
        benchmark::DoNotOptimize(array.getData());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(addToArray)->Arg(1000000);

void addToVector(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<void*> array;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            array.push_back(&array);
        benchmark::DoNotOptimize(array.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(addToVector)->Arg(1000000);

void addStrings(benchmark::State& state) {
    const KazString text("a text that is stored");
    for (auto _ : state) {
        KazStringColl coll;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            coll.add(text);
        benchmark::DoNotOptimize(coll.getSize());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(addStrings)->Arg(100000);

void insertIntoTree(benchmark::State& state) {
    const std::vector<int> numbers = shuffledNumbers(state.range(0));
    for (auto _ : state) {
        KazIntTree tree;
        for (int number : numbers)
            tree.add(number);
        benchmark::DoNotOptimize(tree.getSize());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(insertIntoTree)->Arg(100000)->Unit(benchmark::kMillisecond);

void insertIntoSet(benchmark::State& state) {
    const std::vector<int> numbers = shuffledNumbers(state.range(0));
    for (auto _ : state) {
        std::set<int> tree(numbers.begin(), numbers.end());
        benchmark::DoNotOptimize(tree.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(insertIntoSet)->Arg(100000)->Unit(benchmark::kMillisecond);

/// All keys in one bucket, in ascending order, as the ToolInfo table is filled.
void fillOneBucket(benchmark::State& state) {
    std::vector<std::string> keys = names(state.range(0));
    std::sort(keys.begin(), keys.end());
    const std::vector<KazString> sorted = kazStrings(keys);
    for (auto _ : state) {
        KazStringToStringMap map(true, 1);
        for (const KazString& key : sorted)
            map.bind(key, key, true);
        benchmark::DoNotOptimize(map.getSize());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(fillOneBucket)->Arg(100000)->Unit(benchmark::kMillisecond);

void fillMap(benchmark::State& state) {
    std::vector<std::string> keys = names(state.range(0));
    std::sort(keys.begin(), keys.end());
    for (auto _ : state) {
        std::map<std::string, std::string> map;
        for (const std::string& key : keys)
            map.emplace(key, key);
        benchmark::DoNotOptimize(map.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(fillMap)->Arg(100000)->Unit(benchmark::kMillisecond);

void lookUpInStringMap(benchmark::State& state) {
    const std::vector<KazString> probes = kazStrings(names(2000));
    KazStringToStringMap map(true, static_cast<int>(state.range(0)));
    for (const KazString& key : probes)
        map.bind(key, key, true);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.isBound(probes[next]));
        next = (next + 1) % probes.size();
    }
}
BENCHMARK(lookUpInStringMap)->Arg(1)->Arg(127)->Arg(4001);

void lookUpInUnorderedMap(benchmark::State& state) {
    const std::vector<std::string> probes = names(2000);
    std::unordered_map<std::string, std::string> map;
    for (const std::string& key : probes)
        map.emplace(key, key);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(probes[next]));
        next = (next + 1) % probes.size();
    }
}
BENCHMARK(lookUpInUnorderedMap);

} // namespace

BENCHMARK_MAIN();
