// SPDX-License-Identifier: Apache-2.0
// What the models of arrays, collections and trees cannot see: limits, iterators that outlive
// their collection, and what shallow copies share, which must be freed once, checked out
// once, and never be touched after that.
#include "testkit/alloc_failure.h"
#include "testkit/counted.h"
#include "tools/app/exceptions/KazTreeClashException.h"
#include "tools/containers/KazCollIterator.h"
#include "tools/containers/KazIntColl.h"
#include "tools/containers/KazIntCollIterator.h"
#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazIntTreeIterator.h"
#include "tools/containers/KazStringTree.h"
#include "tools/containers/KazStringTreeIterator.h"
#include "tools/containers/KazTreeIterator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace {

using moxkit::Counted;

/// The value of a Counted in a slot; 0 for none.
int valueOf(const void* element) {
    return element ? static_cast<const moxkit::Counted*>(element)->value() : 0;
}

/// How many hold the block of @p text, which is not empty.
int references(const KazString& text) {
    return KazStringRep::of(text.disguise())->referenceCount;
}

struct OwningColl : KazColl {
    OwningColl() {
        setCheckIn(Counted::checkIn);
        setCheckOut(Counted::checkOut);
    }
    void fill(int from, int to) {
        for (int i = from; i <= to; ++i) {
            Counted element(i);
            add(&element);
        }
    }
};

using Items = std::vector<void*>;

struct Array : KazArrayPtr {
    explicit Array(int count = 0) {
        for (std::intptr_t i = 1; i <= count; ++i)
            add(reinterpret_cast<void*>(i));
    }
    Items contents() const { return Items(data, data + size); }
    int room() const { return capacity; }
    float rate() const { return growthRate; }
};

TEST(ArrayTest, GrowsByTheRateInFours) {
    Array array;
    for (float rate : {1.0F, 0.5F, std::nanf("")}) { // these would not grow
        array.setGrowthRate(2.0F);
        array.setGrowthRate(rate);
        EXPECT_EQ(array.rate(), 1.3F);
    }
    Array fitted(5);
    fitted.freeExtra();
    fitted.setGrowthRate(2.0F);
    fitted.inflate(6);
    EXPECT_EQ(fitted.room(), 12); // (5 + 5 + 4) in fours; at least 8
    fitted.inflate(101);
    fitted.inflate(50);
    EXPECT_EQ(fitted.room(), 104);
}

TEST(ArrayTest, FailedGrowthChangesNothing) {
    Array array(4);
    const Items before = array.contents();
    constexpr int most = std::numeric_limits<int>::max();
    EXPECT_THROW(array.setSize(most), KazMemoryException);
    EXPECT_THROW(array.setAtGrow(most, nullptr), KazMemoryException);
    EXPECT_THROW(array.insertAt(most, &array), KazMemoryException);
    array.setGrowthRate(1e30F);
    EXPECT_THROW(array.add(nullptr), KazMemoryException);
    EXPECT_EQ(array.contents(), before);
}

TEST(CollectionTest, IteratorsOutliveTheirCollection) {
    auto coll = std::make_unique<KazIntColl>();
    coll->add(1);
    KazIntCollIterator first(*coll), second(first);
    KazIntColl other;
    other.add(5);
    other.add(6);
    KazIntCollIterator elsewhere(other);
    elsewhere.next();
    first = elsewhere; // the position, not the collection
    EXPECT_EQ(first.item(), 0);
    EXPECT_EQ(second.item(), 1);
    coll.reset();
    EXPECT_TRUE(first.isDone());
    EXPECT_FALSE(second.next());
    first = elsewhere;
    EXPECT_TRUE(first.item() == 0 && !first.next());
    first.reset();
    EXPECT_TRUE(first.isDone());
}

TEST(CollectionTest, CopyingTakesTheMemoryBeforeItGivesAnythingUp) {
    OwningColl source, coll;
    source.fill(1, 9);
    coll.fill(20, 21);
    {
        const moxkit::FailAllocation failure(1);
        EXPECT_THROW(coll.copy(source), KazMemoryException);
    }
    ASSERT_EQ(coll.getSize(), 2);
    EXPECT_EQ(valueOf(coll[1]), 21);
}

TEST(SharedStorageTest, ElementsAreCheckedOutByTheLastToLetGo) {
    auto first = std::make_unique<OwningColl>();
    first->fill(1, 3);
    OwningColl second;
    second.fill(10, 14);
    KazCollIterator onSecond(second), late(second);
    for (int i = 0; i < 3; ++i)
        late.next();
    second = *first;
    EXPECT_EQ(Counted::live(), 3); // what it held before is gone
    EXPECT_EQ(onSecond.item(), second[0]);
    EXPECT_TRUE(late.isDone());

    Counted nine(9);
    second.setAt(1, &nine);
    EXPECT_EQ(valueOf((*first)[1]), 9);
    KazCollIterator onFirst(*first);
    onFirst.next();
    onFirst.next();
    second.removeAt(0, 1);
    EXPECT_EQ(valueOf((*first)[1]), 3);
    EXPECT_EQ(onFirst.item(), (*first)[1]);
    EXPECT_EQ((*first)[2], nullptr);
    first.reset();
    EXPECT_TRUE(onFirst.isDone());
    EXPECT_EQ(Counted::live(), 3); // nine, and two elements

    OwningColl third(second);
    second.removeAll();
    EXPECT_EQ(valueOf(third[0]), 9);
    third.removeAll();
    EXPECT_EQ(Counted::live(), 1);
}

TEST(SharedStorageTest, WhatASharerHasLeftGoesWithTheSlotsThatAnArrayHolds) {
    const int before = Counted::live();
    {
        OwningColl coll;
        coll.fill(1, 2);
        OwningColl(coll).fill(3, 3); // in the room that both have
        const KazArrayPtr slots(coll);
        coll.inflate(20);
        EXPECT_EQ(Counted::live(), before + 3);
    }
    EXPECT_EQ(Counted::live(), before);
}

TEST(TreeTest, IteratorsSurviveTheirTreeAndItsContents) {
    auto tree = std::make_unique<KazIntTree>();
    // A value added where one stands in the gap lies ahead.
    tree->add(5);
    KazIntTreeIterator gap(*tree);
    tree->remove(5);
    tree->add(5);
    EXPECT_EQ(gap.item(), 0);
    EXPECT_TRUE(gap.next());
    EXPECT_EQ(gap.item(), 5);
    KazIntTreeIterator other(*tree);
    other = gap;
    tree->remove(5); // both are in a gap when the tree goes
    tree.reset();
    EXPECT_TRUE(gap.isDone());
    EXPECT_EQ(other.item(), 0);
    other.toFirst();
    EXPECT_FALSE(other.next());
}

TEST(TreeTest, AComparatorThatThrowsLeavesTheTreeAlone) {
    static int left;
    left = 1000;
    const auto failing = [](const void* a, const void* b) {
        return --left == 0 ? throw left : Counted::compare(a, b);
    };
    Counted values[] = {Counted(1), Counted(3), Counted(5), Counted(7), Counted(4)};
    KazTree tree(failing);
    for (int i = 0; i < 4; ++i)
        tree.add(&values[i]);
    const KazTreeIterator first(tree);
    for (int n = 1; tree.getSize() == 4; ++n) {
        left = n;
        try {
            tree.add(&values[4]);
        } catch (int) {
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(tree.valueAt(i), &values[i]);
        }
    }
    EXPECT_EQ(first.item(), &values[0]);
}

TEST(StringTreeTest, HoldsOneReferenceForEachString) {
    const KazString text("Text");
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
    EXPECT_TRUE(tree.contains("") && tree.smallest().isEmpty());
    EXPECT_STREQ(tree.find("tExT").getValue(), "Text");
    EXPECT_TRUE(tree.replace("text"));
    EXPECT_EQ(references(text), 1);
    EXPECT_TRUE(tree.replace(tree.largest()));
    EXPECT_FALSE(tree.replace("none"));
    KazStringTree copied;
    copied.copy(tree);
    EXPECT_TRUE(copied.remove("TEXT"));
    KazStringTreeIterator i(tree);
    i.toLast();
    EXPECT_STREQ(i.item().getValue(), "text");
}

} // namespace
