#include "tools/containers/KazStringToStringMap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

namespace {

int references(const KazString& text) {
    return static_cast<const std::int32_t*>(text.disguise())[-1];
}

TEST(StringMapClassTest, CaseCountsOnlyWhereItShould) {
    for (const bool caseSensitive : {true, false}) {
        KazStringToStringMap map(caseSensitive, 11);
        std::map<std::string, std::string> bound;
        for (const char* key : {"Path", "PATH", "path", "", "p"}) {
            const bool isNew = caseSensitive || bound.empty() || std::strlen(key) < 4;
            EXPECT_EQ(map.bind(key, "value", false), isNew) << key;
            EXPECT_EQ(map.rebind(key, key), true);
            if (isNew)
                bound[key] = key;
            else
                bound["Path"] = key; // the key stays as it was
        }
        EXPECT_FALSE(map.rebind("absent", "value"));
        KazString value("before");
        EXPECT_FALSE(map.valueOf("absent", value));
        EXPECT_EQ(value, "before");
        EXPECT_TRUE(map.valueOf("PATH", value));
        EXPECT_EQ(value, caseSensitive ? "PATH" : "path");
        std::map<std::string, std::string> walked;
        for (KazStringToStringMapIterator i(map); !i.isDone(); i.next())
            walked[i.getKey().getValue()] = i.getValue().getValue();
        EXPECT_EQ(walked, bound);
        EXPECT_TRUE(map.unbind("pAtH") != caseSensitive);
    }
}

TEST(StringMapClassTest, SharesBlocksAndKeepsThemAlive) {
    const KazString value("value");
    {
        KazStringToStringMap map;
        map.bind("key", value, false);
        EXPECT_EQ(references(value), 2);
        {
            const KazString given = map.valueOf("key");
            EXPECT_EQ(given.disguise(), value.disguise());
            EXPECT_EQ(references(value), 3);
        }
        map.bind("other", "only", true);
        void* stored = map.valueOf("other").disguise();
        // The argument borrows the map's own reference, which the exchange drops.
        const auto& borrowed = reinterpret_cast<const KazString&>(stored);
        map.bind("other", borrowed, true);
        EXPECT_STREQ(map.valueOf("other").getValue(), "only");
        map.rebind("other", borrowed);
        EXPECT_STREQ(map.valueOf("other").getValue(), "only");
        EXPECT_EQ(references(map.valueOf("other")), 2);

        bool found = false;
        map.bind("empty", "", true);
        EXPECT_TRUE(map.valueOf("empty", found).isEmpty());
        EXPECT_TRUE(found);
        EXPECT_TRUE(map.valueOf("KEY", found).isEmpty());
        EXPECT_FALSE(found);
        map.unbind("key");
        EXPECT_EQ(references(value), 1);
    }
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

} // namespace
