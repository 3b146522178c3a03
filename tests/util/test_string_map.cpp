#include "tools/util/string_map.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> table(string_map_tp* map) {
    char** keys = string_map_domain_table(map);
    std::vector<std::string> result;
    for (char** key = keys; *key != nullptr; ++key)
        result.emplace_back(*key);
    string_map_domain_table_free(&keys);
    EXPECT_EQ(nullptr, keys);
    return result;
}

} // namespace

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
