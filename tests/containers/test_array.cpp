// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazArrayPtr.h"

#include "testkit/alloc_failure.h"
#include "tools/app/exceptions/KazMemoryException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using Items = std::vector<void*>;

struct Array : KazArrayPtr {
    explicit Array(int count = 0) {
        for (int i = 1; i <= count; ++i)
            add(item(i));
    }
    static void* item(int n) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(n)); }
    Items contents() const { return Items(data, data + size); }
    int room() const { return capacity; }
    float rate() const { return growthRate; }
};

Items items(std::initializer_list<int> numbers) {
    Items result;
    for (int n : numbers)
        result.push_back(Array::item(n));
    return result;
}

TEST(ArrayTest, GrowsByTheRateInFours) {
    Array array;
    for (float rate : {1.0F, 0.5F, std::nanf("")}) { // these would not grow
        array.setGrowthRate(2.0F);
        EXPECT_EQ(array.rate(), 2.0F);
        array.setGrowthRate(rate);
        EXPECT_EQ(array.rate(), 1.3F);
    }

    Array fitted(5);
    fitted.freeExtra();
    EXPECT_EQ(fitted.room(), 5);
    fitted.setGrowthRate(2.0F);
    fitted.inflate(6);
    EXPECT_EQ(fitted.room(), 12); // (5 + 5 + 4) in fours; at least 8
    fitted.inflate(101);
    fitted.inflate(50);
    EXPECT_EQ(fitted.room(), 104);
    fitted.removeAt(0, 5);
    fitted.freeExtra();
    EXPECT_EQ(fitted.getData(), nullptr);
    EXPECT_EQ(fitted.room(), 0);
}

TEST(ArrayTest, FailedGrowthChangesNothing) {
    Array array(4);
    constexpr int most = std::numeric_limits<int>::max();
    EXPECT_THROW(array.setSize(most), KazMemoryException);
    EXPECT_THROW(array.setAtGrow(most, nullptr), KazMemoryException);
    EXPECT_THROW(array.insertAt(most, Array::item(1)), KazMemoryException);
    array.setGrowthRate(1e30F);
    EXPECT_THROW(array.add(nullptr), KazMemoryException);
    EXPECT_EQ(array.contents(), items({1, 2, 3, 4}));
    array.remove();
    moxkit::FailAllocation failure(1);
    array.freeExtra();
    EXPECT_TRUE(failure.hit());
    EXPECT_EQ(array.room(), 4);
}

} // namespace
