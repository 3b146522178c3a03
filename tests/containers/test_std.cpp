// SPDX-License-Identifier: Apache-2.0
// The library's types in the algorithms and containers of the standard library.

#include "kit/random.h"
#include "tools/app/exceptions/KazTreeClashException.h"
#include "tools/containers/KazIntTreeIterator.h"
#include "tools/std.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <memory>
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

TEST(Std, TextGoesBothWaysWhollyAndHashes) {
    kit::Random random;
    std::unordered_set<KazString> ours;
    std::vector<KazString> model; // held against `==` alone
    for (int i = 0; i < 1000; ++i) {
        const std::string text = random.text(i % 2 == 0 ? 40 : 3, bytes);
        const KazString string = kazString(text);
        EXPECT_EQ(std::string(kazView(string)), text);
        EXPECT_EQ(std::hash<KazString>()(string), std::hash<KazString>()(text.c_str()));
        ours.insert(string);
        if (std::find(model.begin(), model.end(), string) == model.end())
            model.push_back(string);
    }
    EXPECT_EQ(ours.size(), model.size());
    EXPECT_EQ(kazString("").disguise(), nullptr);
}

TEST(Std, CollectionsAreRanges) {
    kit::Random random;
    KazIntColl numbers;
    KazStringColl strings;
    KazColl pointers;
    std::vector<int> model = {INT_MIN, INT_MAX};
    EXPECT_EQ(std::distance(begin(strings), end(strings)), 0);
    EXPECT_EQ(std::distance(begin(pointers), end(pointers)), 0);
    numbers.insertAt(0, model.data(), 2);
    for (int i = 0; i < 200; ++i) {
        model.push_back(random.between(-50, 50));
        numbers.add(model.back());
        strings.add(std::to_string(model.back()).c_str());
        pointers.add(&numbers);
    }
    for (KazString& s : strings)
        s += "0";
    EXPECT_TRUE(
        std::ranges::equal(strings, std::vector<int>(model.begin() + 2, model.end()), {},
                           [](const KazString& s) { return std::stoi(s.getValue()) / 10; }));
    EXPECT_EQ(std::ranges::count(pointers, static_cast<void*>(&numbers)), 200);
    KazIntColl copied;
    copied.copy(numbers);
    copied.insertAt(1, numbers);
    copied.insertAt(0, 7);
    copied.setAt(0, -5);
    const std::vector<int> inserted(model);
    model.insert(model.begin() + 1, inserted.begin(), inserted.end());
    model.insert(model.begin(), -5);
    EXPECT_TRUE(std::ranges::equal(std::as_const(copied), model));
    auto backwards = end(copied);
    for (auto i = model.rbegin(); i != model.rend(); ++i)
        EXPECT_EQ(*--backwards, *i);
    for (const int number : {0, INT_MIN, 7})
        EXPECT_EQ(copied.find(number),
                  model.rend() - std::find(model.rbegin(), model.rend(), number) - 1);
}

TEST(Std, TreesAreSortedRanges) {
    kit::Random random;
    KazIntTree numbers;
    KazStringTree strings;
    std::set<int> model;
    std::set<std::string> texts;
    for (int i = 0; i < 300; ++i) {
        const int number = i < 2 ? (i == 0 ? INT_MIN : INT_MAX) : random.between(-200, 200);
        EXPECT_EQ(numbers.contains(number), model.count(number) == 1);
        if (model.insert(number).second)
            numbers.add(number);
        else
            EXPECT_THROW(numbers.add(number), KazTreeClashException);
        const std::string text = random.text(9, "aAbB\xE9");
        if (texts.insert(text).second)
            strings.add(text.c_str());
        const int gone = random.between(-200, 200);
        EXPECT_EQ(numbers.remove(gone), model.erase(gone) == 1);
    }
    EXPECT_TRUE(std::ranges::equal(numbers, model));
    EXPECT_TRUE(std::ranges::equal(strings, texts, {}, kazView));
    auto expected = model.begin();
    for (KazIntTreeIterator i(numbers); !i.isDone(); i.next())
        EXPECT_EQ(i.item(), *expected++);
    EXPECT_EQ(numbers.smallest(), INT_MIN);
    EXPECT_EQ(numbers.largest(), INT_MAX);
    for (const int number : {-501, 0, 17, 500})
        EXPECT_EQ(std::ranges::lower_bound(numbers, number) - begin(numbers),
                  std::distance(model.begin(), model.lower_bound(number)));
}

TEST(Std, MapsGivePairs) {
    kit::Random random;
    KazStringToStringMap ours(true, 7);
    std::map<std::string, std::string> model, seen;
    EXPECT_EQ(begin(ours), end(ours));
    for (int i = 0; i < 200; ++i) {
        const std::string key = random.text(2, "abcd");
        model[key] = std::to_string(i);
        ours.bind(key.c_str(), model[key].c_str(), true);
    }
    for (const auto& [key, value] : ours)
        EXPECT_TRUE(seen.emplace(key.getValue(), value.getValue()).second);
    EXPECT_EQ(seen, model);
}

TEST(Std, TokensSetsAndPlainMaps) {
    kit::Random random;
    for (int i = 0; i < 300; ++i) {
        const KazString text = random.text(12, "ab,;").c_str();
        const bool skipRuns = random.oneIn(2);
        KazStringTokenizer expected(text, ",;");
        for (const KazString& token : kazTokens(text, ",;", skipRuns))
            EXPECT_EQ(token, expected.nextString(skipRuns)) << text.getValue();
        EXPECT_TRUE(expected.isDone());
    }
    const std::unique_ptr<gu_set, void (*)(gu_set*)> set(gu_set_create(0), gu_set_destroy);
    string_map_tp* map = string_map_create(nullptr, 3, nullptr, true);
    std::map<std::string, void*> entries, seen;
    std::vector<void*> elements;
    for (int i = 0; i < 20; ++i) {
        elements.push_back(&entries + i);
        gu_set_add(set.get(), elements.back());
        entries[std::to_string(i)] = elements.back();
        string_map_define(map, std::to_string(i).c_str(), elements.back(), true);
    }
    EXPECT_TRUE(std::ranges::equal(kazElements(set.get()), elements));
    for (const auto& [key, value] : kazEntries(map))
        seen[key] = value;
    EXPECT_EQ(seen, entries);
    EXPECT_EQ(std::ranges::distance(kazEntries(nullptr)), 0);
    EXPECT_EQ(std::ranges::distance(kazElements(nullptr)), 0);
    string_map_destroy(&map);
}

} // namespace
