#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazStringTree.h"
#include "tools/containers/KazTree.h"

#include "kit/alloc_failure.h"
#include "kit/counted.h"
#include "kit/random.h"
#include "tools/app/KazTreeClashException.h"

#include <gtest/gtest.h>

#include <limits>
#include <list>
#include <memory>
#include <set>
#include <vector>

namespace {

using kit::Counted;

int valueOf(const void* element) {
    return element ? static_cast<const Counted*>(element)->value() : -1;
}

struct OwningTree : KazTree {
    OwningTree() : KazTree(Counted::compare) {
        setCheckIn(Counted::checkIn);
        setCheckOut(Counted::checkOut);
    }
    void addValue(int value) {
        Counted element(value);
        add(&element);
    }
    bool removeValue(int value) {
        Counted element(value);
        return remove(&element);
    }
};

std::vector<int> forwards(KazTree& tree) {
    std::vector<int> result;
    for (KazTreeIterator i(tree); !i.isDone(); i.next())
        result.push_back(valueOf(i.item()));
    return result;
}

std::vector<int> backwards(KazTree& tree) {
    std::vector<int> result;
    KazTreeIterator i(tree);
    for (i.toLast(); !i.isDone(); i.previous())
        result.push_back(valueOf(i.item()));
    return {result.rbegin(), result.rend()};
}

TEST(TreeTest, BehavesLikeASetWithLiveIterators) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    Counted::resetCounts();
    {
        OwningTree tree;
        std::set<int> model;
        // Iterators that stand on values keep to them.
        std::list<std::pair<KazTreeIterator, int>> standing;
        for (int step = 0; step < 8000; ++step) {
            Counted element(random.below(300));
            const int value = element.value();
            const bool present = model.count(value) > 0;
            switch (random.below(9)) {
            case 0:
            case 1:
            case 2:
                try {
                    tree.add(&element);
                    EXPECT_FALSE(present);
                } catch (KazTreeClashException& clash) {
                    EXPECT_TRUE(present);
                    EXPECT_EQ(clash.getClashData(), tree.find(&element));
                }
                model.insert(value);
                break;
            case 3:
            case 4:
                EXPECT_EQ(tree.remove(&element), present);
                model.erase(value);
                break;
            case 5:
                EXPECT_EQ(tree.replace(&element), present);
                break;
            case 6:
                if (standing.size() < 5 && !model.empty()) {
                    standing.emplace_back(KazTreeIterator(tree), *model.begin());
                    for (int steps = random.below(20); steps > 0; --steps)
                        standing.back().first.next();
                    if (standing.back().first.isDone())
                        standing.back().first.toLast();
                    standing.back().second = valueOf(standing.back().first.item());
                }
                break;
            case 7:
                if (!standing.empty())
                    standing.pop_front();
                break;
            default:
                if (random.oneIn(100))
                    tree.balance();
                if (random.oneIn(1000)) {
                    tree.removeAll();
                    model.clear();
                    for (auto& [iterator, stood] : standing)
                        EXPECT_TRUE(iterator.isDone());
                    standing.clear();
                }
            }
            for (auto& [iterator, stood] : standing) {
                ASSERT_EQ(valueOf(iterator.item()), model.count(stood) ? stood : -1);
                if (model.count(stood))
                    continue;
                // In the gap: both neighbours can be reached from here.
                KazTreeIterator ahead(iterator), behind(iterator);
                const auto above = model.lower_bound(stood);
                ASSERT_EQ(ahead.next(), above != model.end());
                ASSERT_EQ(behind.previous(), above != model.begin());
                if (!ahead.isDone()) {
                    ASSERT_EQ(valueOf(ahead.item()), *above);
                }
                if (!behind.isDone()) {
                    ASSERT_EQ(valueOf(behind.item()), *std::prev(above));
                }
            }
            // A gap does not keep the place of its value when that comes back.
            standing.remove_if([&](auto& each) { return !model.count(each.second); });
            ASSERT_EQ(tree.getSize(), static_cast<int>(model.size()));
            if (step % 100 == 0) {
                const std::vector<int> expected(model.begin(), model.end());
                ASSERT_EQ(forwards(tree), expected);
                ASSERT_EQ(backwards(tree), expected);
                ASSERT_EQ(valueOf(tree.smallest()), expected.empty() ? -1 : expected.front());
                ASSERT_EQ(valueOf(tree.largest()), expected.empty() ? -1 : expected.back());
            }
        }
    }
    EXPECT_EQ(Counted::live(), 0);
    EXPECT_EQ(Counted::checkIns(), Counted::checkOuts());
}

TEST(TreeTest, IteratorsSurviveTheirTreeAndItsContents) {
    auto tree = std::make_unique<OwningTree>();
    for (int i = 0; i < 200; ++i)
        tree->addValue(i);
    // Removing what one stands on while walking reaches every value.
    int seen = 0;
    for (KazTreeIterator i(*tree); !i.isDone(); i.next()) {
        const int value = valueOf(i.item());
        EXPECT_EQ(value, seen++);
        if (value % 2 == 0) {
            EXPECT_TRUE(tree->removeValue(value));
        }
    }
    EXPECT_EQ(tree->getSize(), 100);
    // A value added where one stands in the gap lies ahead.
    KazTreeIterator gap(*tree);
    tree->removeValue(valueOf(gap.item()));
    tree->addValue(0);
    EXPECT_EQ(gap.item(), nullptr);
    EXPECT_TRUE(gap.next());
    EXPECT_EQ(valueOf(gap.item()), 0);

    KazTreeIterator survivor(*tree), other(*tree);
    other = survivor;
    tree.reset();
    EXPECT_TRUE(survivor.isDone());
    EXPECT_EQ(other.item(), nullptr);
    EXPECT_FALSE(other.next());
    other.toFirst();
    EXPECT_TRUE(other.isDone());
}

TEST(TreeTest, CopiesAreIndependent) {
    {
        OwningTree tree;
        for (int i = 0; i < 20; ++i)
            tree.addValue(i * 7 % 20);
        OwningTree copied(tree);
        EXPECT_EQ(Counted::live(), 40);
        tree.removeValue(3);
        EXPECT_EQ(copied.getSize(), 20);
        copied = tree;
        EXPECT_EQ(Counted::live(), 38);
        copied.copy(copied);
        EXPECT_EQ(forwards(copied), forwards(tree));

        KazTree borrowing(Counted::compare);
        borrowing.copy(tree, nullptr);
        EXPECT_EQ(borrowing.largest(), tree.largest());
        EXPECT_EQ(Counted::live(), 38);

        // A copy that fails half way leaves both as they were.
        OwningTree target;
        target.addValue(99);
        const long failures =
            kit::sweepAllocations([&] { target.copy(tree); },
                                  [&] {
                                      EXPECT_EQ(forwards(target), std::vector<int>{99});
                                      EXPECT_EQ(Counted::live(), 39);
                                  });
        EXPECT_GE(failures, 38); // nodes and values
        EXPECT_EQ(forwards(target), forwards(tree));
        Counted extra(50);
        kit::sweepAllocations([&] { target.add(&extra); },
                              [&] { EXPECT_EQ(target.getSize(), 19); });
        EXPECT_TRUE(target.contains(&extra));
    }
    EXPECT_EQ(Counted::live(), 0);
}

TEST(IntTreeTest, OrdersIntegers) {
    const int low = std::numeric_limits<int>::min();
    const int high = std::numeric_limits<int>::max();
    KazIntTree tree;
    for (int value : {0, high, low, -1, 5})
        tree.add(value);
    EXPECT_THROW(tree.add(0), KazTreeClashException);
    std::vector<int> walked;
    for (KazIntTreeIterator i(tree); !i.isDone(); i.next())
        walked.push_back(i.item());
    EXPECT_EQ(walked, (std::vector<int>{low, -1, 0, 5, high}));
    EXPECT_EQ(tree.smallest(), low);
    EXPECT_EQ(tree.largest(), high);
    EXPECT_TRUE(tree.contains(0));
    EXPECT_TRUE(tree.remove(0));
    EXPECT_FALSE(tree.contains(0));
    EXPECT_EQ(tree.valueAt(2), 5);
}

TEST(StringTreeTest, HoldsOneReferenceForEachString) {
    const KazString text("Text");
    const auto references = [&] { return static_cast<const std::int32_t*>(text.disguise())[-1]; };
    {
        KazStringTree tree(false);
        tree.add(text);
        tree.add("alpha");
        tree.add("");
        EXPECT_EQ(references(), 2);
        try {
            tree.add("TEXT");
            ADD_FAILURE() << "no clash";
        } catch (KazTreeClashException& clash) {
            EXPECT_STREQ(KazString::undisguise(clash.getClashData()).getValue(), "Text");
        }
        EXPECT_TRUE(tree.contains("tExT"));
        EXPECT_TRUE(tree.contains(""));
        EXPECT_TRUE(tree.smallest().isEmpty());
        EXPECT_STREQ(tree.find("tExT").getValue(), "Text");
        EXPECT_TRUE(tree.replace("text"));
        EXPECT_EQ(references(), 1);
        EXPECT_STREQ(tree.largest().getValue(), "text");
        EXPECT_TRUE(tree.replace(tree.largest()));
        EXPECT_FALSE(tree.replace("none"));
        KazStringTree copied;
        copied.copy(tree);
        EXPECT_TRUE(copied.remove("TEXT"));
        KazStringTreeIterator i(tree);
        i.toLast();
        EXPECT_STREQ(i.item().getValue(), "text");
    }
    EXPECT_EQ(references(), 1);
}

} // namespace
