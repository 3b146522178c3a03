// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazHashTable.h"
#include "tools/containers/KazHashTableIterator.h"
#include "tools/strings/KazString.h"

#include <gtest/gtest.h>

#include <chrono>
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

TEST(HashTableTest, OtherThreadsWaitForElementFunctions) {
    using namespace std::chrono_literals;
    KazHashTable table(KazHashTable::comparePointers, KazHashTable::hashPointer, 3);
    table.setValueCheckIn([](void* value) {
        if (const auto action = std::exchange(duringCheckIn, nullptr))
            action();
        return value;
    });
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
    const auto takeTurns = [&] {
        for (int i = 0; i < turns; ++i) {
            table.bind(number(1), number(i), true);
            table.rebind(number(1), number(i));
        }
    };
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> others;
        table.setKeyCheckIn(nullptr);
        duringCheckIn = [&] {
            for (int i = 1; i < threads; ++i)
                others.emplace_back(takeTurns);
        };
        table.setKeyCheckIn([](void* key) {
            if (const auto action = std::exchange(duringCheckIn, nullptr))
                action();
            return key;
        });
        table.bind(number(2), nullptr, true);
        takeTurns();
        for (std::thread& other : others)
            other.join();
        table.unbind(number(2));
        takeTurns();
    }
    EXPECT_EQ(ledger.checkedIn, 3 * (1 + 2 * turns * (threads + 1)));
}

} // namespace
