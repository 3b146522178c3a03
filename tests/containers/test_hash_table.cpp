#include "tools/containers/KazHashTable.h"
#include "tools/strings/KazString.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <utility>

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

} // namespace
