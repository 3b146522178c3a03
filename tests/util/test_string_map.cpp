#include "kit/alloc_failure.h"
#include "kit/random.h"
#include "tools/util/string_map.h"
#include "tools/util/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

int live = 0;

void* newValue(int number) {
    ++live;
    return new int(number);
}
void releaseValue(void* value) {
    --live;
    delete static_cast<int*>(value);
}
int numberOf(void* value) {
    return *static_cast<int*>(value);
}

/// A rule that is often out of range, so that the map's own must step in.
unsigned int roughHash(const char* key, int bucketCount) {
    const auto first = static_cast<unsigned char>(key[0]);
    return first % 3 == 0 ? first % static_cast<unsigned>(bucketCount) : 0x80000000U + first;
}

std::vector<std::string> iterate(string_map_tp* map) {
    std::vector<std::string> keys;
    for (auto i = string_map_init(map); !string_map_done(i); string_map_next(&i))
        keys.emplace_back(string_map_domain(i));
    return keys;
}

std::vector<std::string> table(string_map_tp* map) {
    char** keys = string_map_domain_table(map);
    std::vector<std::string> result;
    for (char** key = keys; *key != nullptr; ++key)
        result.emplace_back(*key);
    string_map_domain_table_free(&keys);
    EXPECT_EQ(nullptr, keys);
    return result;
}

struct Less {
    bool caseSensitive;
    bool operator()(const std::string& a, const std::string& b) const {
        return caseSensitive ? a < b : kaz_fast_stricmp(a.c_str(), b.c_str()) < 0;
    }
};
using Model = std::map<std::string, int, Less>;

void expectSame(string_map_tp* map, const Model& model) {
    std::vector<std::string> sorted;
    for (const auto& [key, number] : model) {
        sorted.push_back(key);
        void* value = string_map_find(map, key.c_str());
        ASSERT_NE(nullptr, value) << key;
        ASSERT_EQ(number, numberOf(value));
    }
    ASSERT_EQ(sorted, table(map));
    std::vector<std::string> met = iterate(map);
    ASSERT_EQ(string_map_size(map), static_cast<int>(met.size()));
    std::sort(met.begin(), met.end(), model.key_comp());
    ASSERT_EQ(sorted, met);
}

/// One random definition or removal on both sides.
void step(kit::Random& rng, string_map_tp* map, Model& model, int number) {
    const std::string key = rng.text(3, "aAbBz\xE9\xC9\xFF\x80");
    const bool present = model.count(key) != 0;
    if (rng.oneIn(3)) {
        const bool release = rng.oneIn(2);
        void* kept = release ? nullptr : string_map_find(map, key.c_str());
        ASSERT_EQ(present, string_map_undefine(map, key.c_str(), release));
        if (kept != nullptr)
            releaseValue(kept);
        model.erase(key);
        return;
    }
    const bool replace = rng.oneIn(2);
    void* value = newValue(number);
    const bool defined = string_map_define(map, key.c_str(), value, replace);
    ASSERT_EQ(!present || replace, defined);
    if (defined)
        model.insert({key, 0}).first->second = number;
    else
        releaseValue(value);
}

} // namespace

TEST(StringMap, RandomHistoriesAgreeWithAStandardMap) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 120; ++round) {
        const bool caseSensitive = rng.oneIn(2);
        const int sizes[] = {0, 1, 2, 7, 127, 1000};
        string_map_tp* map = string_map_create(rng.oneIn(2) ? roughHash : nullptr,
                                               sizes[rng.below(6)], releaseValue, caseSensitive);
        Model model{Less{caseSensitive}};
        for (int i = rng.below(400); i > 0; --i)
            ASSERT_NO_FATAL_FAILURE(step(rng, map, model, i));
        ASSERT_NO_FATAL_FAILURE(expectSame(map, model));
        EXPECT_EQ(static_cast<int>(model.size()), live);
        string_map_destroy(&map);
        EXPECT_EQ(nullptr, map);
        ASSERT_EQ(0, live);
    }
}

TEST(StringMap, BucketsAreVisitedUpwardAndChainsFromTheLatest) {
    string_map_tp* map = string_map_create(nullptr, 10, nullptr, true);
    // Byte sums: ab and ba 195, d 100, \xFE -2, \xFF -1, \xF1\xF0 -31.
    for (const char* key : {"\xF1\xF0", "ab", "d", "\xFE", "ba", "\xFF"})
        EXPECT_TRUE(string_map_define(map, key, map, false));
    EXPECT_EQ((std::vector<std::string>{"d", "ba", "ab", "\xFF", "\xF1\xF0", "\xFE"}),
              iterate(map));
    EXPECT_EQ(0, map->count);
    string_map_iterator finished{map, nullptr, 0};
    string_map_next(&finished);
    EXPECT_TRUE(string_map_done(finished));
    EXPECT_EQ(nullptr, string_map_domain(finished));
    EXPECT_EQ(nullptr, string_map_range(finished));
    string_map_destroy(&map);
}

TEST(StringMap, TheCallersRuleGetsTheLoweredKeyAndDecidesWithinRange) {
    static std::string seen;
    const auto hash = [](const char* key, int) {
        seen = key;
        return *key == 'x' ? 4U : 5U;
    };
    string_map_tp* map = string_map_create(hash, 5, nullptr, false);
    EXPECT_TRUE(string_map_define(map, "Xylo", map, false));
    EXPECT_EQ("xylo", seen);
    EXPECT_EQ(4, string_map_init(map).bucket);
    // 5 is out of range: the byte sum 97 decides.
    EXPECT_TRUE(string_map_define(map, "A", map, false));
    EXPECT_EQ(97 % 5, string_map_init(map).bucket);
    string_map_destroy(&map);
}

TEST(StringMap, NullsAndKeysAbove255CharactersHaveNoPlace) {
    const std::string longest(255, 'k');
    const std::string tooLong(256, 'k');
    for (const bool caseSensitive : {true, false}) {
        string_map_tp* map = string_map_create(nullptr, 0, nullptr, caseSensitive);
        EXPECT_EQ(127, map->bucketCount);
        EXPECT_TRUE(table(map).empty());
        EXPECT_TRUE(string_map_define(map, longest.c_str(), map, false));
        EXPECT_TRUE(string_map_define(map, "", map, false));
        EXPECT_EQ(map, string_map_find(map, longest.c_str()));
        for (const char* key : {tooLong.c_str(), static_cast<const char*>(nullptr)}) {
            EXPECT_FALSE(string_map_define(map, key, map, true));
            EXPECT_FALSE(string_map_undefine(map, key, true));
            EXPECT_EQ(nullptr, string_map_find(map, key));
        }
        EXPECT_EQ(2, string_map_size(map));
        string_map_destroy(&map);
        string_map_destroy(&map);
    }
    EXPECT_FALSE(string_map_define(nullptr, "k", nullptr, true));
    EXPECT_FALSE(string_map_undefine(nullptr, "k", true));
    EXPECT_EQ(nullptr, string_map_find(nullptr, "k"));
    EXPECT_EQ(0, string_map_size(nullptr));
    EXPECT_TRUE(table(nullptr).empty());
    string_map_destroy(nullptr);
    string_map_domain_table_free(nullptr);
}

TEST(StringMap, FailedAllocationsLeaveTheMapAsItWas) {
    string_map_tp* map = nullptr;
    EXPECT_EQ(2, kit::sweepAllocations([&] { map = string_map_create(nullptr, 3, nullptr, true); },
                                       [&] { EXPECT_EQ(nullptr, map); }));
    int value = 0;
    EXPECT_EQ(2, kit::sweepAllocations([&] { string_map_define(map, "k", &value, true); },
                                       [&] { EXPECT_EQ(0, string_map_size(map)); }));
    char** keys = nullptr;
    EXPECT_EQ(1, kit::sweepAllocations([&] { keys = string_map_domain_table(map); },
                                       [&] { EXPECT_EQ(nullptr, keys); }));
    EXPECT_STREQ("k", keys[0]);
    string_map_domain_table_free(&keys);
    string_map_destroy(&map);
}
