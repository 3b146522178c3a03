#include "tools/containers/KazHashTable.h"

#include "elements.h"
#include "kit/alloc_failure.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <utility>
#include <vector>

namespace {

using kit::Counted;

void* number(std::intptr_t n) {
    return reinterpret_cast<void*>(n);
}

/// A table that owns Counted keys and values.
struct OwningTable : KazHashTable {
    explicit OwningTable(int size) : KazHashTable(Counted::compare, Counted::hash, size) {
        setKeyCheckIn(Counted::checkIn);
        setKeyCheckOut(Counted::checkOut);
        setValueCheckIn(Counted::checkIn);
        setValueCheckOut(Counted::checkOut);
    }
};

std::map<int, int> walk(const KazHashTable& table) {
    std::map<int, int> result;
    for (KazHashTableIterator i(table); !i.isDone(); i.next())
        result.emplace(valueOf(i.getKey()), valueOf(i.getValue()));
    return result;
}

TEST(HashTableTest, BehavesLikeAMap) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    Counted::resetCounts();
    for (int size : {-3, 0, 1, 2, 7, 127}) {
        OwningTable table(size);
        std::map<int, int> model;
        for (int step = 0; step < 20000; ++step) {
            Counted key(random.below(120)), value(step + 1);
            const auto bound = model.find(key.value());
            const bool isBound = bound != model.end();
            switch (random.below(9)) {
            case 0:
                EXPECT_EQ(table.bind(&key, &value, false), !isBound);
                model.emplace(key.value(), value.value());
                break;
            case 1:
                EXPECT_TRUE(table.bind(&key, &value, true));
                model[key.value()] = value.value();
                break;
            case 2:
                EXPECT_EQ(table.rebind(&key, &value), isBound);
                if (isBound)
                    bound->second = value.value();
                break;
            case 3:
            case 4:
                EXPECT_EQ(table.unbind(&key), isBound);
                model.erase(key.value());
                break;
            case 5:
                EXPECT_EQ(table.isBound(&key), isBound);
                break;
            case 6:
                EXPECT_EQ(valueOf(table.valueOf(&key)), isBound ? bound->second : 0);
                break;
            case 7:
                table.freeExtra();
                break;
            default:
                if (random.oneIn(300)) {
                    table.clear();
                    model.clear();
                }
            }
            ASSERT_EQ(table.getSize(), static_cast<int>(model.size()));
            if (step % 50 == 0) {
                ASSERT_EQ(walk(table), model) << "step " << step;
            }
        }
    }
    EXPECT_EQ(Counted::live(), 0);
    EXPECT_EQ(Counted::checkIns(), Counted::checkOuts());
}

TEST(HashTableTest, KeepsBucketsSortedInBlocksThatGrowByAThird) {
    KazHashTable table(KazHashTable::comparePointers, KazHashTable::hashPointer, 4);
    std::vector<int> capacities;
    const auto blockNumbers = [&](int bucket) {
        return reinterpret_cast<const std::int32_t*>(table.getBucketData(bucket)) - 2;
    };
    for (int i = 0; i < 16; ++i) {
        table.bind(number(4 * (16 - i) + 1), number(i), false);
        const int capacity = blockNumbers(1)[1];
        if (capacities.empty() || capacities.back() != capacity)
            capacities.push_back(capacity);
    }
    EXPECT_EQ(capacities, (std::vector<int>{1, 3, 5, 7, 11, 15, 21}));
    EXPECT_EQ(blockNumbers(1)[0], 16);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(table.getBucketData(1)[2 * i], number(4 * i + 5));
    for (int i = 1; i < 4; ++i)
        table.unbind(number(4 * i + 1));
    table.unbind(number(17));
    table.freeExtra(); // 12 entries need 12 * 8 + 23 bytes, in blocks of 16: room for 13
    EXPECT_EQ(blockNumbers(1)[1], 13);
    table.unbind(number(21));
    table.freeExtra();
    EXPECT_EQ(blockNumbers(1)[1], 11);

    EXPECT_EQ(table.getBucketData(3), nullptr);
    table.bind(number(3), nullptr, false);
    EXPECT_NE(table.getBucketData(3), nullptr);
    bool found = false;
    EXPECT_EQ(table.valueOf(number(3), found), nullptr);
    EXPECT_TRUE(found);
    table.unbind(number(3));
    EXPECT_EQ(table.getBucketData(3), nullptr);
    EXPECT_EQ(table.valueOf(number(3), found), nullptr);
    EXPECT_FALSE(found);
}

int comparisons = 0;
int hashes = 0;

TEST(HashTableTest, RemembersTheEntryLastFound) {
    KazHashTable table(
        [](const void* a, const void* b) {
            ++comparisons;
            return KazHashTable::comparePointers(a, b);
        },
        [](const void* key) {
            ++hashes;
            return KazHashTable::hashPointer(key);
        },
        5);
    const auto cost = [](auto action) {
        comparisons = hashes = 0;
        action();
        return std::pair(comparisons, hashes);
    };
    using Cost = std::pair<int, int>;
    for (int key = 10; key < 60; key += 10)
        table.bind(number(key), number(key), false);
    EXPECT_EQ(cost([&] { table.isBound(number(50)); }), Cost(1, 0)); // just bound
    EXPECT_EQ(cost([&] { table.valueOf(number(30)); }), Cost(2, 1));
    EXPECT_EQ(cost([&] { table.valueOf(number(30)); }), Cost(1, 0));
    EXPECT_FALSE(table.isBound(number(31)));
    EXPECT_FALSE(table.unbind(number(31)));
    EXPECT_FALSE(table.bind(number(50), nullptr, false));
    EXPECT_EQ(cost([&] { table.rebind(number(30), nullptr); }), Cost(1, 0));
    table.unbind(number(10));
    EXPECT_EQ(cost([&] { table.valueOf(number(30)); }).second, 1);
}

TEST(HashTableTest, PointersCompareByDifferenceOrSign) {
    EXPECT_EQ(KazHashTable::comparePointers(number(7), number(10)), -3);
    EXPECT_EQ(KazHashTable::comparePointers(number(5), number(5)), 0);
    EXPECT_EQ(KazHashTable::comparePointers(number(INTPTR_MAX), number(INTPTR_MIN)), 1);
    EXPECT_EQ(KazHashTable::comparePointers(number(INTPTR_MIN), number(1)), -1);
    EXPECT_EQ(KazHashTable::comparePointers(number(0x100000000), number(0)), 1);
    EXPECT_EQ(KazHashTable::hashPointer(number(-1)), 0xFFFFFFFFU);
}

TEST(HashTableTest, FailureLeavesTheTableAsItWas) {
    OwningTable table(3);
    for (int i = 0; i < 9; ++i) {
        Counted key(i), value(10 * i);
        table.bind(&key, &value, false);
    }
    const std::map<int, int> before = walk(table);
    Counted key(30), value(3);
    const auto unchanged = [&] {
        EXPECT_EQ(walk(table), before);
        EXPECT_EQ(table.getSize(), 9);
        EXPECT_EQ(Counted::live(), 20);
    };
    EXPECT_EQ(kit::sweepAllocations([&] { table.bind(&key, &value, false); }, unchanged),
              3); // key, value, block
    // The old value goes first, so a new one that cannot be had leaves none.
    bool found = false;
    EXPECT_EQ(kit::sweepAllocations([&] { table.rebind(&key, &value); },
                                    [&] {
                                        EXPECT_EQ(table.valueOf(&key, found), nullptr);
                                        EXPECT_TRUE(found);
                                    }),
              1);
    EXPECT_EQ(valueOf(table.valueOf(&key)), 3);
    table.unbind(&key);
    {
        kit::FailAllocation failure(1, kit::FailAllocation::onward);
        table.freeExtra();
    }
    unchanged();
}

TEST(HashTableTest, ElementFunctionsMayChangeTheTable) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    Meddler::random = &random;
    for (int size : {1, 4}) {
        KazHashTable table(Counted::compare, Counted::hash, size);
        table.setKeyCheckIn(Meddler::in);
        table.setKeyCheckOut(Meddler::out);
        table.setValueCheckIn(Meddler::in);
        table.setValueCheckOut(Meddler::out);
        const auto change = [&] {
            Counted key(random.below(30)), value(random.below(100));
            switch (random.below(6)) {
            case 0:
            case 1:
                table.bind(&key, &value, random.oneIn(2));
                break;
            case 2:
                table.rebind(&key, &value);
                break;
            case 3:
            case 4:
                table.unbind(&key);
                break;
            default:
                random.oneIn(100) ? table.clear() : table.freeExtra();
            }
        };
        Meddler::action = change;
        for (int step = 0; step < 20000; ++step) {
            change();
            const std::map<int, int> entries = walk(table);
            ASSERT_EQ(table.getSize(), static_cast<int>(entries.size()));
            for (const auto& [k, v] : entries) {
                Counted probe(k);
                ASSERT_EQ(valueOf(table.valueOf(&probe)), v);
            }
        }
        Meddler::action = nullptr;
    }
    EXPECT_EQ(Counted::live(), 0);
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

} // namespace
