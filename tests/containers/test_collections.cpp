// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazColl.h"
#include "tools/containers/KazCollIterator.h"
#include "tools/containers/KazIntColl.h"
#include "tools/containers/KazIntCollIterator.h"

#include "elements.h"
#include "testkit/alloc_failure.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

namespace {

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
    EXPECT_EQ(first.item(), 0);
    EXPECT_FALSE(first.next());
    first.reset();
    EXPECT_TRUE(first.isDone());
    EXPECT_TRUE(KazCollIterator(nullptr).isDone());
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

TEST(IntCollTest, KeepsIntegers) {
    constexpr int least = std::numeric_limits<int>::min();
    KazIntColl coll;
    const int numbers[] = {-1, 0, -1 - least, least, 0};
    coll.insertAt(0, numbers, 5);
    coll.insertAt(1, 7);
    coll.setAt(0, -5);
    EXPECT_EQ(coll.find(0), 5);
    EXPECT_EQ(coll.find(least), 4);
    EXPECT_EQ(coll.find(1), -1);
    KazIntColl other;
    other.copy(coll);
    other.insertAt(1, coll);
    std::vector<int> walked;
    for (KazIntCollIterator i(other); !i.isDone(); i.next())
        walked.push_back(i.item());
    EXPECT_EQ(walked,
              (std::vector<int>{-5, -5, 7, 0, -1 - least, least, 0, 7, 0, -1 - least, least, 0}));
}

} // namespace
