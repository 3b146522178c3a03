#include "tools/containers/KazArrayPtr.h"

#include "kit/alloc_failure.h"
#include "kit/random.h"
#include "tools/app/KazMemoryException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

struct Array : KazArrayPtr {
    int room() const { return capacity; }
    float rate() const { return growthRate; }
};

void* item(int n) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(n));
}

std::vector<void*> contents(const KazArrayPtr& array) {
    return {array.getData(), array.getData() + array.getSize()};
}

TEST(ArrayTest, CapacitiesGrowByTheRateInFours) {
    Array array;
    std::vector<int> capacities;
    for (int i = 0; i < 90; ++i) {
        array.add(item(i));
        if (capacities.empty() || capacities.back() != array.room())
            capacities.push_back(array.room());
    }
    EXPECT_EQ(capacities, (std::vector<int>{4, 8, 12, 16, 24, 32, 44, 60, 80, 104}));

    Array doubled;
    doubled.setGrowthRate(2.0F);
    doubled.inflate(5);
    EXPECT_EQ(doubled.room(), 8);
    doubled.inflate(9);
    EXPECT_EQ(doubled.room(), 20);
    doubled.inflate(101);
    EXPECT_EQ(doubled.room(), 104);
    doubled.inflate(50);
    EXPECT_EQ(doubled.room(), 104);
}

TEST(ArrayTest, GrowthRatesThatWouldNotGrowMeanTheDefault) {
    Array array;
    for (float rate : {1.0F, 0.5F, -3.0F, std::nanf("")}) {
        array.setGrowthRate(2.0F);
        EXPECT_EQ(array.rate(), 2.0F);
        array.setGrowthRate(rate);
        EXPECT_EQ(array.rate(), 1.3F);
    }
}

TEST(ArrayTest, GapsAreNull) {
    KazArrayPtr grown;
    grown.setAtGrow(5, item(1));
    EXPECT_EQ(contents(grown),
              (std::vector<void*>{nullptr, nullptr, nullptr, nullptr, nullptr, item(1)}));

    Array array;
    for (int i = 1; i <= 3; ++i)
        array.add(item(i));
    array.insertAt(10, item(9));
    ASSERT_EQ(array.getSize(), 11);
    for (int i = 3; i < 10; ++i)
        EXPECT_EQ(array[i], nullptr);

    // What was there before must not come back.
    array.setSize(1);
    EXPECT_EQ(array.room(), 12);
    array.setSize(4);
    EXPECT_EQ(contents(array), (std::vector<void*>{item(1), nullptr, nullptr, nullptr}));
}

TEST(ArrayTest, FreeExtraFitsTheStorage) {
    Array array;
    for (int i = 0; i < 5; ++i)
        array.add(item(i));
    array.freeExtra();
    EXPECT_EQ(array.room(), 5);
    array.add(item(5)); // 5 + 1 + 4, in fours; at least 8
    EXPECT_EQ(array.room(), 8);
    array.removeAt(0, 6);
    array.freeExtra();
    EXPECT_EQ(array.getData(), nullptr);
    EXPECT_EQ(array.room(), 0);
}

TEST(ArrayTest, InsertsItsOwnSlots) {
    KazArrayPtr array;
    for (int i = 1; i <= 4; ++i)
        array.add(item(i));
    array.insertAt(2, array);
    EXPECT_EQ(contents(array), (std::vector<void*>{item(1), item(2), item(1), item(2), item(3),
                                                   item(4), item(3), item(4)}));
    array.setSize(4);
    EXPECT_EQ(array.append(array), 4);
    EXPECT_EQ(array[7], array[3]);
    array.copy(array);
    EXPECT_EQ(array.getSize(), 8);
}

TEST(ArrayTest, BehavesLikeAVector) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    KazArrayPtr array;
    std::vector<void*> model;
    for (int step = 0; step < 20000; ++step) {
        const int size = static_cast<int>(model.size());
        void* value = item(random.between(1, 50));
        const int at = random.below(size + 3);
        switch (random.below(size > 60 ? 11 : 9)) {
        case 0:
        case 1:
            EXPECT_EQ(array.add(value), size);
            model.push_back(value);
            break;
        case 2:
            array.setAtGrow(at, value);
            if (at >= size)
                model.resize(static_cast<std::size_t>(at) + 1);
            model[static_cast<std::size_t>(at)] = value;
            break;
        case 3: {
            std::vector<void*> items(static_cast<std::size_t>(random.between(1, 4)), value);
            array.insertAt(at, items.data(), static_cast<int>(items.size()));
            if (at > size)
                model.resize(static_cast<std::size_t>(at));
            model.insert(model.begin() + at, items.begin(), items.end());
            break;
        }
        case 4: {
            const int last =
                static_cast<int>(model.rend() - std::find(model.rbegin(), model.rend(), value)) - 1;
            EXPECT_EQ(array.findPtr(value), last);
            break;
        }
        case 5:
            array.remove();
            if (size > 0)
                model.pop_back();
            break;
        case 6:
            array.freeExtra();
            break;
        case 7:
            array.setSize(at);
            model.resize(static_cast<std::size_t>(at));
            break;
        default:
            if (size > 0) {
                const int from = random.below(size);
                const int count = random.between(1, size - from);
                array.removeAt(from, count);
                model.erase(model.begin() + from, model.begin() + from + count);
            }
        }
        ASSERT_EQ(contents(array), model) << "step " << step;
    }
}

TEST(ArrayTest, FailedGrowthChangesNothing) {
    Array array;
    for (int i = 0; i < 4; ++i)
        array.add(item(i));
    const std::vector<void*> before = contents(array);
    const auto unchanged = [&] {
        EXPECT_EQ(contents(array), before);
        EXPECT_EQ(array.room(), 4);
    };
    long failed = 0;
    {
        kit::FailAllocation failure(1);
        EXPECT_THROW(array.add(item(9)), KazMemoryException);
        failed += failure.hit();
    }
    unchanged();
    const int most = std::numeric_limits<int>::max();
    EXPECT_THROW(array.setSize(most), KazMemoryException);
    EXPECT_THROW(array.setAtGrow(most, item(1)), KazMemoryException);
    EXPECT_THROW(array.insertAt(most, item(1)), KazMemoryException);
    unchanged();
    array.setGrowthRate(1e30F);
    EXPECT_THROW(array.add(item(9)), KazMemoryException);
    unchanged();
    {
        array.remove();
        kit::FailAllocation failure(1);
        array.freeExtra();
        failed += failure.hit();
        EXPECT_EQ(array.room(), 4);
    }
    EXPECT_EQ(failed, 2);
}

} // namespace
