// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazHashTableIterator.h"
#include "tools/containers/KazStringToStringMap.h"
#include "tools/strings/KazString.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <thread>
#include <utility>
#include <vector>

namespace {

void* number(std::intptr_t n) {
    return reinterpret_cast<void*>(n);
}

TEST(HashTableTest, PointersCompareByDifferenceOrSign) {
    EXPECT_EQ(KazHashTable::comparePointers(number(7), number(10)), -3);
    EXPECT_EQ(KazHashTable::comparePointers(number(5), number(5)), 0);
    EXPECT_EQ(KazHashTable::comparePointers(number(INTPTR_MAX), number(INTPTR_MIN)), 1);
    EXPECT_EQ(KazHashTable::comparePointers(number(INTPTR_MIN), number(1)), -1);
    EXPECT_EQ(KazHashTable::comparePointers(number(0x100000000), number(0)), 1);
    EXPECT_EQ(KazHashTable::hashPointer(number(-1)), 0xFFFFFFFFU);
}

std::function<void()> duringCheckIn;

void* actOnce(void* element) {
    if (const auto action = std::exchange(duringCheckIn, nullptr))
        action();
    return element;
}

TEST(HashTableTest, OtherThreadsWaitForElementFunctions) {
    using namespace std::chrono_literals;
    KazHashTable table(KazHashTable::comparePointers, KazHashTable::hashPointer, 3);
    table.setValueCheckIn(actOnce);
    const std::function<void()> uses[] = {
        [&] { table.bind(number(2), nullptr, true); },
        [&] { table.rebind(number(2), number(2)); },
        [&] { table.valueOf(number(2)); },
        [&] { table.getSize(); },
        [&] { table.freeExtra(); },
        [&] { table.unbind(number(2)); },
        [&] { table.clear(); },
    };
    for (const auto& use : uses) {
        std::future<void> other;
        duringCheckIn = [&] {
            other = std::async(std::launch::async, use);
            EXPECT_EQ(other.wait_for(20ms), std::future_status::timeout);
        };
        table.bind(number(1), number(3), true);
        other.get();
    }
    EXPECT_EQ(table.getSize(), 0);
}

TEST(HashTableTest, BorrowedKeysStayInTheOrderInWhichTheyWereBound) {
    KazHashTable table(KazString::compareDisguised, KazString::hashDisguised, 1);
    char later[] = "b", earlier[] = "a";
    table.bind(later, number(2), false);
    table.bind(earlier, number(1), false);
    later[0] = 'A';
    KazHashTableIterator i(table);
    EXPECT_EQ(i.getValue(), number(1));
    EXPECT_TRUE(i.next());
    EXPECT_EQ(i.getValue(), number(2));
}

/// What the threads of a test share without atomics, so that the table's lock alone
/// protects it.
struct Ledger {
    KazHashTable* table = nullptr;
    int checkedIn = 0;
    int depth = 0;
} ledger;

void* countCheckIn(void* value) {
    EXPECT_EQ(++ledger.depth, 1);
    ++ledger.checkedIn;
    // The lock is the calling thread's already, twice over here.
    EXPECT_LE(ledger.table->getSize(), 2);
    ledger.table->valueOf(value);
    --ledger.depth;
    return value;
}

// Between one thread and several the lock changes its ways: each round begins and
// ends with one, and once with the lock held.
TEST(HashTableTest, ThreadsTakeTurns) {
    constexpr int threads = 4;
    constexpr int turns = 2000;
    KazHashTable table(KazHashTable::comparePointers, KazHashTable::hashPointer, 3);
    ledger = {&table, 0, 0};
    table.setValueCheckIn(countCheckIn);
    table.setKeyCheckIn(actOnce);
    const auto takeTurns = [&] {
        for (int i = 0; i < turns; ++i) {
            table.bind(number(1), number(i), true);
            table.rebind(number(1), number(i));
        }
    };
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> others;
        duringCheckIn = [&] {
            for (int i = 1; i < threads; ++i)
                others.emplace_back(takeTurns);
        };
        table.bind(number(2), nullptr, true);
        takeTurns();
        for (std::thread& other : others)
            other.join();
        table.unbind(number(2));
        takeTurns();
    }
    EXPECT_EQ(ledger.checkedIn, 3 * (1 + 2 * turns * (threads + 1)));
}

/// How many hold the block of @p text, which is not empty.
int references(const KazString& text) {
    return KazStringRep::of(text.disguise())->referenceCount;
}

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
        EXPECT_TRUE(map.valueOf("absent", found).isEmpty() && !found);
        EXPECT_EQ(map.unbind("PATh"), !caseSensitive);
    }
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
    EXPECT_TRUE(map.rebind("m_m", "new"));
    EXPECT_FALSE(map.bind("m_m", "other", false));
    EXPECT_STREQ(map.valueOf("m_m").getValue(), "new");
    EXPECT_STREQ(map.valueOf("b").getValue(), "before");
    EXPECT_TRUE(map.unbind("m_m"));
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
