// KazString beside std::string.

#include "tools/strings/KazString.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

std::string textOf(std::size_t n) {
    std::string text;
    while (text.size() < n)
        text += "the quick brown fox jumps over the lazy dog ";
    text.resize(n);
    return text;
}

void add(KazString& s, char c) {
    s.append(c);
}

void add(std::string& s, char c) {
    s.push_back(c);
}

template <class String>
void appendCharacters(benchmark::State& state) {
    for (auto _ : state) {
        String s;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            add(s, static_cast<char>('a' + i % 26));
        benchmark::DoNotOptimize(s);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class String>
void copy(benchmark::State& state) {
    const String source(textOf(static_cast<std::size_t>(state.range(0))).c_str());
    for (auto _ : state) {
        String s = source;
        benchmark::DoNotOptimize(s);
    }
}

template <class String>
void compare(benchmark::State& state) {
    const std::string text = textOf(static_cast<std::size_t>(state.range(0)));
    const String a(text.c_str()), b((text + "x").c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(a < b);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <class String>
void find(benchmark::State& state) {
    const String hay((textOf(static_cast<std::size_t>(state.range(0))) + "needle").c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(hay.find("needle"));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

/// A search text that nearly occurs everywhere.
template <class String>
void findNearMisses(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    const String hay(std::string(n, 'a').c_str());
    const std::string needle = std::string(n / 4, 'a') + "b";
    for (auto _ : state)
        benchmark::DoNotOptimize(hay.find(needle.c_str()));
}

std::size_t hashOf(const KazString& s) {
    return KazString::hash(s);
}

std::size_t hashOf(const std::string& s) {
    return std::hash<std::string>()(s);
}

template <class String>
void hash(benchmark::State& state) {
    const String s(textOf(static_cast<std::size_t>(state.range(0))).c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(hashOf(s));
}

BENCHMARK(appendCharacters<KazString>)->Arg(1000)->Arg(100000)->Arg(1000000);
BENCHMARK(appendCharacters<std::string>)->Arg(1000)->Arg(100000)->Arg(1000000);
BENCHMARK(copy<KazString>)->Arg(10)->Arg(1000);
BENCHMARK(copy<std::string>)->Arg(10)->Arg(1000);
BENCHMARK(compare<KazString>)->Arg(10)->Arg(1000);
BENCHMARK(compare<std::string>)->Arg(10)->Arg(1000);
BENCHMARK(find<KazString>)->Arg(100)->Arg(100000);
BENCHMARK(find<std::string>)->Arg(100)->Arg(100000);
BENCHMARK(findNearMisses<KazString>)->Arg(10000);
BENCHMARK(findNearMisses<std::string>)->Arg(10000);
BENCHMARK(hash<KazString>)->Arg(16)->Arg(256)->Arg(65536);
BENCHMARK(hash<std::string>)->Arg(16)->Arg(256)->Arg(65536);

} // namespace

BENCHMARK_MAIN();
