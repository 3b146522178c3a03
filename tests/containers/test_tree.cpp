// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazIntTreeIterator.h"
#include "tools/containers/KazStringTree.h"
#include "tools/containers/KazStringTreeIterator.h"
#include "tools/containers/KazTreeIterator.h"

#include "elements.h"
#include "tools/app/exceptions/KazTreeClashException.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

namespace {

using moxkit::Counted;

std::vector<int> forwards(KazTree& tree) {
    std::vector<int> result;
    for (KazTreeIterator i(tree); !i.isDone(); i.next())
        result.push_back(valueOf(i.item()));
    return result;
}

TEST(TreeTest, IteratorsSurviveTheirTreeAndItsContents) {
    auto tree = std::make_unique<OwningTree>();
    // A value added where one stands in the gap lies ahead.
    tree->put(0);
    KazTreeIterator gap(*tree);
    tree->remove(tree->smallest());
    tree->put(0);
    EXPECT_EQ(gap.item(), nullptr);
    EXPECT_TRUE(gap.next());
    EXPECT_EQ(valueOf(gap.item()), 0);
    KazTreeIterator other(*tree);
    other = gap;
    tree->remove(tree->smallest()); // both are in a gap when the tree goes
    tree.reset();
    EXPECT_TRUE(gap.isDone());
    EXPECT_EQ(other.item(), nullptr);
    other.toFirst();
    EXPECT_FALSE(other.next());
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
    {
        KazStringTree tree(false);
        tree.add(text);
        tree.add("alpha");
        tree.add("");
        EXPECT_EQ(references(text), 2);
        try {
            tree.add("TEXT");
            ADD_FAILURE() << "no clash";
        } catch (KazTreeClashException& clash) {
            EXPECT_STREQ(KazString::undisguise(clash.getClashData()).getValue(), "Text");
        }
        EXPECT_TRUE(tree.contains(""));
        EXPECT_TRUE(tree.smallest().isEmpty());
        EXPECT_STREQ(tree.find("tExT").getValue(), "Text");
        EXPECT_STREQ(tree.valueAt(1).getValue(), "alpha");
        EXPECT_TRUE(tree.replace("text"));
        EXPECT_EQ(references(text), 1);
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
    EXPECT_EQ(references(text), 1);
    KazStringTree exact;
    exact.add("a");
    exact.add("A");
    EXPECT_STREQ(exact.smallest().getValue(), "A");
}

} // namespace
