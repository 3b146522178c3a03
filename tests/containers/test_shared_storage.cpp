// SPDX-License-Identifier: Apache-2.0
// Assignment is shallow: what two objects share must be freed once, checked
// out once, and never be touched after that.

#include "tools/containers/KazCollIterator.h"
#include "tools/containers/KazStringColl.h"

#include "elements.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using moxkit::Counted;

int valueAt(const KazColl& coll, int index) {
    return valueOf(coll[index]);
}

TEST(SharedStorageTest, ElementsAreCheckedOutByTheLastToLetGo) {
    auto first = std::make_unique<OwningColl>();
    first->fill(1, 3);
    OwningColl second;
    second.fill(10, 14);
    KazCollIterator onSecond(second);
    KazCollIterator late(second);
    for (int i = 0; i < 3; ++i)
        late.next();
    second = *first;
    EXPECT_EQ(Counted::live(), 3); // what it held before is gone
    EXPECT_EQ(onSecond.item(), second[0]);
    EXPECT_TRUE(late.isDone());

    Counted nine(9);
    second.setAt(1, &nine);
    EXPECT_EQ(valueAt(*first, 1), 9);
    KazCollIterator onFirst(*first);
    onFirst.next();
    onFirst.next();
    second.removeAt(0, 1);
    EXPECT_EQ(valueAt(*first, 1), 3);
    EXPECT_EQ(onFirst.item(), (*first)[1]);
    EXPECT_EQ((*first)[2], nullptr);
    first.reset();
    EXPECT_TRUE(onFirst.isDone());
    EXPECT_EQ(Counted::live(), 3); // nine, and two elements

    OwningColl third(second);
    second.removeAll();
    EXPECT_EQ(valueAt(third, 0), 9);
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

TEST(SharedStorageTest, GrowthSeparates) {
    {
        OwningColl first;
        first.fill(1, 4);
        OwningColl second(first);
        second.fill(5, 5);
        Counted nine(9);
        second.setAt(0, &nine);
        EXPECT_EQ(valueAt(first, 0), 1);
        EXPECT_EQ(valueAt(second, 4), 5);
        EXPECT_EQ(Counted::live(), 4 + 5 + 1);
    }
    {
        KazColl first; // with nothing to check in, elements are never held twice
        first.setCheckOut(Counted::checkOut);
        for (int i = 1; i <= 4; ++i)
            first.add(new Counted(i));
        KazColl second(first);
        second.add(new Counted(5));
        first.removeAt(0, 1);
        EXPECT_EQ(valueAt(second, 0), 2);
    }
    EXPECT_EQ(Counted::live(), 0);
    KazStringColl first;
    first.add("one");
    {
        KazStringColl second(first);
        second.getAt(0) = "changed";
        for (int i = 0; i < 10; ++i)
            second.add("more");
        second.getAt(0) = "apart";
    }
    EXPECT_STREQ(first[0].getValue(), "changed");
}

} // namespace
