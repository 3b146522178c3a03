// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazColl.h"
#include "tools/containers/KazCollIterator.h"
#include "tools/containers/KazIntColl.h"
#include "tools/containers/KazIntCollIterator.h"
#include "tools/containers/KazStringColl.h"
#include "tools/containers/KazStringCollIterator.h"

#include "elements.h"
#include "kit/alloc_failure.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

namespace {

using kit::Counted;

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

std::vector<std::pair<char, int>> elementLog;

TEST(CollectionTest, ElementFunctionsAreCalledInOrder) {
    const auto in = [](void* element) {
        elementLog.emplace_back('i', valueOf(element));
        return Counted::checkIn(element);
    };
    const auto out = [](void* element) {
        elementLog.emplace_back('o', valueOf(element));
        Counted::checkOut(element);
    };
    using Log = std::vector<std::pair<char, int>>;
    const auto logged = [] { return std::exchange(elementLog, {}); };
    KazColl source;
    Counted one(1), two(2), three(3);
    for (Counted* element : {&one, &two, &three})
        source.add(element);
    KazColl coll;
    EXPECT_EQ(coll.setCheckIn(in), nullptr);
    EXPECT_EQ(coll.setCheckOut(out), nullptr);
    coll.append(source);
    EXPECT_EQ(logged(), (Log{{'i', 1}, {'i', 2}, {'i', 3}}));
    coll.setAt(1, &one);
    EXPECT_EQ(logged(), (Log{{'o', 2}, {'i', 1}}));
    coll.copy(source);
    EXPECT_EQ(logged(), (Log{{'o', 3}, {'o', 1}, {'o', 1}, {'i', 1}, {'i', 2}, {'i', 3}}));
    coll.copy(coll);
    EXPECT_EQ(logged(), Log{});
    coll.removeAt(0, 2);
    EXPECT_EQ(logged(), (Log{{'o', 1}, {'o', 2}}));
    coll.insertAt(0, source);
    logged();
    coll.removeAll();
    EXPECT_EQ(logged(), (Log{{'o', 3}, {'o', 3}, {'o', 2}, {'o', 1}}));
    EXPECT_EQ(coll.setCheckOut(nullptr), static_cast<KazColl::CheckOut>(out));
}

TEST(CollectionTest, CopyingTakesTheMemoryBeforeItGivesAnythingUp) {
    OwningColl source, coll;
    source.fill(1, 9);
    coll.fill(20, 21);
    {
        const kit::FailAllocation failure(1);
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

TEST(StringCollTest, HoldsOneReferenceForEachElement) {
    KazString a("a"), b("b");
    {
        KazStringColl coll;
        coll.add(a);
        coll.add(b);
        coll.add(a);
        EXPECT_EQ(references(a), 3);
        EXPECT_EQ(coll.find("a"), 2);
        EXPECT_EQ(coll.find("c"), -1);
        EXPECT_EQ(coll.findNoCase("B"), 1);
        EXPECT_EQ(coll.findNoCase("C"), -1);
        coll.add("");
        EXPECT_EQ(coll.find(nullptr), 3);

        coll.getAt(2) = "other"; // the slot is the string
        EXPECT_EQ(references(a), 2);
        coll.setAt(2, coll[2]); // its only reference
        EXPECT_STREQ(coll[2].getValue(), "other");

        KazStringColl copied;
        copied.copy(coll);
        const KazString array[] = {a, b};
        copied.insertAt(1, array, 2);
        EXPECT_EQ(references(b), 5); // b, array, coll, copied twice
        KazStringCollIterator i(copied);
        EXPECT_EQ(references(i.item()), 6);
        coll.removeAt(0, 1);
        EXPECT_EQ(references(a), 4);
        EXPECT_TRUE(KazStringCollIterator(nullptr).item().isEmpty());
    }
    EXPECT_EQ(references(a), 1);
    EXPECT_EQ(references(b), 1);
}

} // namespace
