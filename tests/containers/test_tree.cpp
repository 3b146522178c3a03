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

/// An iterator and the value that it stands on, which it must keep to.
struct Standing {
    KazTreeIterator iterator;
    int value;

    void check(const std::set<int>& model) const {
        const bool present = model.count(value) > 0;
        ASSERT_EQ(valueOf(iterator.item()), present ? value : -1);
        // From here, or from the gap, both neighbours can be reached.
        KazTreeIterator ahead(iterator), behind(iterator);
        const auto above = model.upper_bound(value);
        const auto here = model.lower_bound(value);
        ASSERT_EQ(ahead.next(), above != model.end());
        ASSERT_EQ(behind.previous(), here != model.begin());
        ASSERT_EQ(valueOf(ahead.item()), above != model.end() ? *above : -1);
        ASSERT_EQ(valueOf(behind.item()), here != model.begin() ? *std::prev(here) : -1);
    }
};

TEST(TreeTest, BehavesLikeASetWithLiveIterators) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    Counted::resetCounts();
    {
        OwningTree tree;
        std::set<int> model;
        std::list<Standing> standing;
        for (int step = 0; step < 8000; ++step) {
            Counted element(random.below(300));
            const int value = element.value();
            const bool present = model.count(value) > 0;
            switch (random.below(8)) {
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
                if (standing.size() == 5)
                    standing.pop_front();
                standing.push_back({KazTreeIterator(tree), 0});
                while (random.below(20) > 0 && standing.back().iterator.next()) {
                }
                standing.back().value = valueOf(standing.back().iterator.item());
                break;
            default:
                if (random.oneIn(20))
                    tree.balance();
                if (random.oneIn(200)) {
                    tree.removeAll();
                    model.clear();
                    for (auto& each : standing)
                        EXPECT_TRUE(each.iterator.isDone());
                }
            }
            standing.remove_if([](const Standing& each) { return each.iterator.isDone(); });
            for (const Standing& each : standing)
                ASSERT_NO_FATAL_FAILURE(each.check(model));
            // A gap does not keep the place of its value when that comes back.
            standing.remove_if([&](const Standing& each) { return !model.count(each.value); });
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
        EXPECT_TRUE(tree->removeValue(value));
    }
    EXPECT_EQ(seen, 200);
    // A value added where one stands in the gap lies ahead.
    tree->addValue(0);
    KazTreeIterator gap(*tree);
    tree->removeValue(0);
    tree->addValue(0);
    EXPECT_EQ(gap.item(), nullptr);
    EXPECT_TRUE(gap.next());
    EXPECT_EQ(valueOf(gap.item()), 0);
    KazTreeIterator other(*tree);
    other = gap;
    tree.reset();
    EXPECT_TRUE(gap.isDone());
    EXPECT_EQ(other.item(), nullptr);
    other.toFirst();
    EXPECT_FALSE(other.next());
}

TEST(TreeTest, CopiesAndFailuresLeaveTheirSourceAlone) {
    {
        OwningTree tree;
        for (int i = 0; i < 20; ++i)
            tree.addValue(i * 7 % 20);
        OwningTree copied(tree);
        tree.removeValue(3);
        EXPECT_EQ(copied.getSize(), 20);
        copied = tree;
        EXPECT_EQ(Counted::live(), 38);
        KazTree borrowing(Counted::compare);
        borrowing.copy(tree, nullptr);
        EXPECT_EQ(borrowing.largest(), tree.largest());
        EXPECT_EQ(Counted::live(), 38);

        // A copy that fails half way leaves both as they were.
        OwningTree target;
        target.addValue(99);
        const auto unchanged = [&] {
            EXPECT_EQ(forwards(target), std::vector<int>{99});
            EXPECT_EQ(Counted::live(), 39);
        };
        EXPECT_GE(kit::sweepAllocations([&] { target.copy(tree); }, unchanged), 38);
        EXPECT_EQ(forwards(target), forwards(tree));
        kit::sweepAllocations([&] { target.addValue(50); },
                              [&] { EXPECT_EQ(target.getSize(), 19); });
        EXPECT_EQ(valueOf(target.largest()), 50);
    }
    EXPECT_EQ(Counted::live(), 0);
}

TEST(TreeTest, AComparatorThatThrowsLeavesTheTreeAlone) {
    static int left;
    left = 1000;
    const auto failing = [](const void* a, const void* b) {
        return --left == 0 ? throw left : Counted::compare(a, b);
    };
    Counted values[] = {Counted(3), Counted(1), Counted(5), Counted(7), Counted(4)};
    KazTree tree(failing);
    for (int i = 0; i < 4; ++i)
        tree.add(&values[i]);
    const KazTreeIterator first(tree);
    for (int n = 1; tree.getSize() == 4; ++n) {
        left = n;
        try {
            tree.add(&values[4]);
        } catch (int) {
            EXPECT_EQ(forwards(tree), (std::vector<int>{1, 3, 5, 7}));
        }
    }
    EXPECT_EQ(first.item(), &values[1]);
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
