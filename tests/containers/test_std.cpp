// SPDX-License-Identifier: Apache-2.0
// The library's types in the algorithms and containers of the standard library.

#include "kit/random.h"
#include "tools/std.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <memory>
#include <numeric>
#include <ranges>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

static_assert(std::ranges::contiguous_range<KazColl> &&
              std::ranges::contiguous_range<const KazColl>);
static_assert(std::ranges::contiguous_range<KazStringColl>);
static_assert(std::ranges::contiguous_range<const KazStringColl>);
static_assert(std::ranges::random_access_range<KazIntColl>);
static_assert(std::ranges::random_access_range<const KazIntColl>);
static_assert(std::ranges::random_access_range<KazTree>);
static_assert(std::ranges::random_access_range<const KazIntTree>);
static_assert(std::ranges::random_access_range<KazStringTree>);
static_assert(std::ranges::input_range<KazStringToStringMap>);
static_assert(std::ranges::input_range<const KazStringToStringMap>);
static_assert(std::ranges::input_range<decltype(kazTokens(KazString(), "", false))>);

namespace {

const std::string bytes("ab\0\xff ", 5);

TEST(Std, TextGoesBothWaysWholly) {
    kit::Random random;
    for (int i = 0; i < 500; ++i) {
        const std::string text = random.text(40, bytes);
        const KazString string = kazString(text);
        EXPECT_EQ(std::string(kazView(string)), text);
        EXPECT_EQ(string.getLength(), static_cast<int>(text.size()));
    }
    EXPECT_EQ(kazString("").disguise(), nullptr);
}

TEST(Std, EqualStringsHashAlike) {
    kit::Random random;
    const std::hash<KazString> hash;
    std::unordered_set<KazString> ours;
    std::vector<KazString> model; // held against `==` alone
    for (int i = 0; i < 500; ++i) {
        const std::string text = random.text(3, bytes);
        const KazString string = kazString(text);
        EXPECT_EQ(hash(string), hash(KazString(text.c_str())));
        ours.insert(string);
        if (std::find(model.begin(), model.end(), string) == model.end())
            model.push_back(string);
    }
    EXPECT_EQ(ours.size(), model.size());
}

TEST(Std, CollectionsAreRanges) {
    kit::Random random;
    KazIntColl numbers;
    KazStringColl strings;
    KazColl pointers;
    std::vector<int> model;
    EXPECT_EQ(std::distance(begin(strings), end(strings)), 0);
    EXPECT_EQ(std::distance(begin(pointers), end(pointers)), 0);
    for (int i = 0; i < 200; ++i) {
        model.push_back(random.between(-50, 50));
        numbers.add(model.back());
        strings.add(std::to_string(model.back()).c_str());
        pointers.add(&numbers);
    }
    EXPECT_TRUE(std::ranges::equal(numbers, model));
    EXPECT_TRUE(std::ranges::equal(strings, model, {},
                                   [](const KazString& s) { return std::stoi(s.getValue()); }));
    EXPECT_EQ(std::ranges::count(pointers, static_cast<void*>(&numbers)), 200);
    EXPECT_EQ(std::ranges::max(numbers), std::ranges::max(model));
    auto backwards = end(numbers);
    for (auto i = model.rbegin(); i != model.rend(); ++i)
        EXPECT_EQ(*--backwards, *i);
    for (KazString& s : strings)
        s += "!";
    EXPECT_EQ(std::string(strings[7]), std::to_string(model[7]) + "!");
    int sum = 0;
    for (const int number : std::as_const(numbers))
        sum += number;
    EXPECT_EQ(sum, std::accumulate(model.begin(), model.end(), 0));
}

TEST(Std, TreesAreSortedRanges) {
    kit::Random random;
    KazIntTree numbers;
    KazStringTree strings;
    std::set<int> model;
    std::set<std::string> texts;
    for (int i = 0; i < 200; ++i) {
        const int number = random.between(-500, 500);
        if (!model.insert(number).second)
            continue;
        numbers.add(number);
        texts.insert(std::to_string(number));
        strings.add(std::to_string(number).c_str());
    }
    EXPECT_TRUE(std::ranges::equal(numbers, model));
    EXPECT_TRUE(std::ranges::equal(strings, texts, {}, kazView));
    for (const int number : {-501, 0, 17, 500})
        EXPECT_EQ(std::ranges::lower_bound(numbers, number) - begin(numbers),
                  std::distance(model.begin(), model.lower_bound(number)));
}

TEST(Std, MapsGivePairs) {
    kit::Random random;
    KazStringToStringMap ours(true, 7);
    std::map<std::string, std::string> model;
    EXPECT_EQ(begin(ours), end(ours));
    for (int i = 0; i < 200; ++i) {
        const std::string key = random.text(2, "abcd");
        model[key] = std::to_string(i);
        ours.bind(key.c_str(), model[key].c_str(), true);
    }
    std::map<std::string, std::string> seen;
    for (const auto& [key, value] : ours)
        EXPECT_TRUE(seen.emplace(key.getValue(), value.getValue()).second);
    EXPECT_EQ(seen, model);
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::distance(ours)), model.size());
}

TEST(Std, TokensSetsAndPlainMaps) {
    kit::Random random;
    for (int i = 0; i < 300; ++i) {
        const KazString text = random.text(12, "ab,;").c_str();
        const bool skipRuns = random.oneIn(2);
        std::vector<KazString> expected;
        for (KazStringTokenizer tokens(text, ",;"); !tokens.isDone();)
            expected.push_back(tokens.nextString(skipRuns));
        std::vector<KazString> tokens;
        for (const KazString& token : kazTokens(text, ",;", skipRuns))
            tokens.push_back(token);
        EXPECT_EQ(tokens, expected) << text.getValue();
    }
    const std::unique_ptr<gu_set, void (*)(gu_set*)> set(gu_set_create(0), gu_set_destroy);
    string_map_tp* map = string_map_create(nullptr, 3, nullptr, true);
    std::map<std::string, void*> entries;
    std::vector<void*> elements;
    for (int i = 0; i < 20; ++i) {
        elements.push_back(&entries + i);
        gu_set_add(set.get(), elements.back());
        entries[std::to_string(i)] = elements.back();
        string_map_define(map, std::to_string(i).c_str(), elements.back(), true);
    }
    EXPECT_TRUE(std::ranges::equal(kazElements(set.get()), elements));
    std::map<std::string, void*> seen;
    for (const auto& [key, value] : kazEntries(map))
        seen[key] = value;
    EXPECT_EQ(seen, entries);
    EXPECT_EQ(std::ranges::distance(kazEntries(nullptr)), 0);
    EXPECT_EQ(std::ranges::distance(kazElements(nullptr)), 0);
    string_map_destroy(&map);
}

} // namespace
