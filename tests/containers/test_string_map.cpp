#include "tools/containers/KazStringToStringMap.h"

#include "kit/random.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

int references(const KazString& text) {
    return static_cast<const std::int32_t*>(text.disguise())[-1];
}

TEST(StringMapClassTest, BehavesLikeAMap) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (bool caseSensitive : {true, false}) {
        KazStringToStringMap map(caseSensitive, 11);
        std::map<std::string, std::string> model;
        const auto folded = [&](std::string key) {
            for (char& c : key)
                c = caseSensitive ? c : static_cast<char>(std::tolower(c));
            return key;
        };
        for (int step = 0; step < 5000; ++step) {
            const std::string name = random.text(3, "aAbB\xE9");
            const std::string text = random.text(4, "xyz");
            const auto bound = model.find(folded(name));
            const bool isBound = bound != model.end();
            switch (random.below(4)) {
            case 0:
                EXPECT_TRUE(map.bind(name.c_str(), text.c_str(), true));
                model[folded(name)] = text;
                break;
            case 1:
                EXPECT_EQ(map.rebind(name.c_str(), text.c_str()), isBound);
                if (isBound)
                    bound->second = text;
                break;
            case 2:
                EXPECT_EQ(map.unbind(name.c_str()), isBound);
                model.erase(folded(name));
                break;
            default: {
                KazString value("before");
                EXPECT_EQ(map.valueOf(name.c_str(), value), isBound);
                EXPECT_STREQ(value.getValue(), isBound ? bound->second.c_str() : "before");
            }
            }
        }
        std::map<std::string, std::string> walked;
        for (KazStringToStringMapIterator i(map); !i.isDone(); i.next())
            walked[folded(i.getKey().getValue())] = i.getValue().getValue();
        EXPECT_EQ(walked, model);
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

} // namespace
