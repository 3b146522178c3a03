// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringToStringMap.h"
#include "tools/containers/KazStringToStringMapIterator.h"

#include "elements.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

TEST(StringMapClassTest, CaseCountsOnlyWhereItShould) {
    for (const bool caseSensitive : {true, false}) {
        KazStringToStringMap map(caseSensitive, 11);
        EXPECT_TRUE(map.bind("Path", "first", false));
        map.bind("p", "found last", false); // what was found last needs no hash
        EXPECT_EQ(map.bind("PATH", "other", false), caseSensitive);
        EXPECT_EQ(map.rebind("path", "last"), !caseSensitive);
        bool found = false;
        EXPECT_EQ(map.valueOf("PATH", found), caseSensitive ? "other" : "last");
        EXPECT_TRUE(found);
        EXPECT_TRUE(map.valueOf("absent", found).isEmpty());
        EXPECT_FALSE(found);
        EXPECT_EQ(map.unbind("PATh"), !caseSensitive);
    }
    KazStringToStringMap map(false, 11);
    map.bind("Key", "before", false);
    map.bind("KEY", "", true);
    const KazStringToStringMapIterator i(map);
    EXPECT_EQ(i.getKey(), "Key"); // it stays as it was
    EXPECT_TRUE(i.getValue().isEmpty());
}

TEST(StringMapClassTest, ExchangesAValueForItself) {
    KazStringToStringMap map;
    map.bind("key", "only", true);
    void* stored = map.valueOf("key").disguise();
    // The argument borrows the map's own reference, which the exchange drops.
    const auto& borrowed = reinterpret_cast<const KazString&>(stored);
    map.bind("key", borrowed, true);
    EXPECT_STREQ(map.valueOf("key").getValue(), "only");
    map.rebind("key", borrowed);
    EXPECT_STREQ(map.valueOf("key").getValue(), "only");
    EXPECT_EQ(references(map.valueOf("key")), 2);
}

// An edit that shared blocks keep to themselves reaches the keys of a table, too.
TEST(StringMapClassTest, KeyEditedInPlaceIsFoundUnderItsNewText) {
    KazStringToStringMap map(true, 1);
    map.bind("b", "before", false);
    KazString key("m/m");
    map.bind(key, "old", false);
    map.bind("z", "after", false);
    key.replaceAllInSet("/", '_');

    EXPECT_FALSE(map.isBound("m/m"));
    EXPECT_STREQ(map.valueOf("m_m").getValue(), "old");
    EXPECT_TRUE(map.rebind("m_m", "new"));
    EXPECT_FALSE(map.bind("m_m", "other", false));
    EXPECT_STREQ(map.valueOf("m_m").getValue(), "new");
    EXPECT_STREQ(map.valueOf("b").getValue(), "before");
    EXPECT_TRUE(map.unbind("m_m"));
    EXPECT_FALSE(map.isBound("m_m"));
    EXPECT_STREQ(map.valueOf("z").getValue(), "after");
    EXPECT_EQ(map.getSize(), 2);
    EXPECT_EQ(references(key), 1);
}

// A key is a terminated text, whatever the string says of its length.
TEST(StringMapClassTest, KeysEndAtTheirFirstNul) {
    KazStringToStringMap map;
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    for (std::size_t n = 0; n < letters.size(); ++n)
        map.bind(letters.substr(0, n).c_str(), std::to_string(n).c_str(), false);
    for (std::size_t n = 0; n < letters.size(); ++n) {
        KazString cut(letters.c_str());
        cut.getBuffer(0)[n] = '\0';
        EXPECT_STREQ(map.valueOf(cut), std::to_string(n).c_str());
        EXPECT_FALSE(map.bind(cut, "another", false));
        KazString grown("abc");
        std::strcpy(grown.getBuffer(40), letters.substr(0, n).c_str());
        EXPECT_STREQ(map.valueOf(grown), std::to_string(n).c_str());
    }
    EXPECT_EQ(map.getSize(), static_cast<int>(letters.size()));
}

} // namespace
