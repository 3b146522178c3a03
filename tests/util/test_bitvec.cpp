#include "kit/alloc_failure.h"
#include "kit/random.h"
#include "tools/util/bitvec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <vector>

namespace {

struct Delete {
    void operator()(_bvs_* bv) const { bitvec_delete(bv); }
};
using Vector = std::unique_ptr<_bvs_, Delete>;

Vector make(int n) {
    return Vector(bitvec_new(n));
}

/// What the comparison of a range means, bit by bit.
int compareRange(const std::vector<bool>& a, const std::vector<bool>& b, int from, int to) {
    const int size = static_cast<int>(a.size()) - 1;
    int low = std::max(from, 0);
    int high = std::min(to, size);
    if (low > high)
        std::swap(low, high);
    for (int i = low; i <= high; ++i)
        if (i >= 0 && i <= size && a[static_cast<std::size_t>(i)] != b[static_cast<std::size_t>(i)])
            return 1;
    return 0;
}

} // namespace

TEST(BitVector, AgreesWithAVectorOfBools) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 300; ++round) {
        const int n = rng.below(140);
        const Vector bv = make(n);
        std::vector<bool> model(static_cast<std::size_t>(n) + 1);
        const bool dense = rng.oneIn(2);
        for (int step = 0; step < 3 * n; ++step) {
            const int i = rng.between(-3, n + 40);
            const bool valid = i >= 0 && i <= n;
            const int value = dense ? !rng.oneIn(8) : rng.oneIn(2) * -7;
            bitvec_put_val(bv.get(), i, value);
            if (valid)
                model[static_cast<std::size_t>(i)] = value != 0;
            EXPECT_EQ(valid && value != 0, bitvec_is_set(bv.get(), i));
        }
        for (int i = -3; i < n + 40; ++i)
            ASSERT_EQ(i >= 0 && i <= n && model[static_cast<std::size_t>(i)],
                      bitvec_is_set(bv.get(), i));
        const auto clear = std::find(model.begin(), model.end(), false);
        const auto first = static_cast<int>(clear - model.begin());
        EXPECT_EQ(first % 32 == 0 && first > n ? -1 : first, bitvec_find_unset(bv.get()));
        EXPECT_EQ(std::count(model.begin(), model.end(), true) == 0,
                  bitvec_is_all_clear(bv.get()) == 1);

        // A copy that differs in one bit, compared over random ranges.
        const Vector copy(bitvec_copy(bv.get()));
        EXPECT_EQ(0, bitvec_compare(bv.get(), copy.get()));
        const int flip = rng.below(n + 1);
        bitvec_put_val(copy.get(), flip, !bitvec_is_set(copy.get(), flip));
        EXPECT_EQ(1, bitvec_compare(bv.get(), copy.get()));
        std::vector<bool> other = model;
        other[static_cast<std::size_t>(flip)].flip();
        for (int range = 0; range < 50; ++range) {
            const int from = rng.between(-20, n + 20);
            const int to = rng.between(-20, n + 20);
            ASSERT_EQ(compareRange(model, other, from, to),
                      bitvec_compare_sub(bv.get(), copy.get(), from, to))
                << from << ".." << to << " of " << n;
        }
        bitvec_clear(bv.get());
        EXPECT_EQ(1, bitvec_is_all_clear(bv.get()));
    }
}

TEST(BitVector, SizesAtWordBoundaries) {
    EXPECT_EQ(0, make(-5)->size);
    for (const int n : {0, 30, 31, 32, 62, 63, 64}) {
        const Vector bv = make(n);
        for (int i = 0; i <= n; ++i) {
            EXPECT_EQ(i, bitvec_find_unset(bv.get()));
            bitvec_set(bv.get(), i);
        }
        EXPECT_EQ((n + 1) % 32 == 0 ? -1 : n + 1, bitvec_find_unset(bv.get())) << n;
        bitvec_unset(bv.get(), n);
        EXPECT_EQ(n, bitvec_find_unset(bv.get()));
    }
}

TEST(BitVector, RangesBeyondTheSizeReadAsClear) {
    const Vector a = make(20);
    const Vector b = make(20);
    bitvec_set(a.get(), 20);
    EXPECT_EQ(1, bitvec_compare_sub(a.get(), b.get(), 25, 30));
    EXPECT_EQ(0, bitvec_compare_sub(a.get(), b.get(), 10, 3));
    bitvec_set(b.get(), 7);
    EXPECT_EQ(1, bitvec_compare_sub(a.get(), b.get(), 10, 3));
    EXPECT_EQ(1, bitvec_compare_sub(a.get(), b.get(), INT_MAX, INT_MIN));
    const Vector shorter = make(19);
    EXPECT_EQ(1, bitvec_compare(a.get(), shorter.get()));
    EXPECT_EQ(1, bitvec_compare_sub(a.get(), shorter.get(), 0, 0));
}

TEST(BitVector, NullHasNoBits) {
    bitvec_set(nullptr, 0);
    bitvec_unset(nullptr, 0);
    bitvec_put_val(nullptr, 0, 1);
    bitvec_clear(nullptr);
    bitvec_delete(nullptr);
    EXPECT_FALSE(bitvec_is_set(nullptr, 0));
    EXPECT_EQ(0, bitvec_is_all_clear(nullptr));
    EXPECT_EQ(-1, bitvec_find_unset(nullptr));
    EXPECT_EQ(nullptr, bitvec_copy(nullptr));
    const Vector bv = make(3);
    EXPECT_EQ(1, bitvec_compare(nullptr, bv.get()));
    EXPECT_EQ(1, bitvec_compare(bv.get(), nullptr));
    EXPECT_EQ(1, bitvec_compare(nullptr, nullptr));
    EXPECT_EQ(1, bitvec_compare_sub(bv.get(), nullptr, 0, 1));
}

TEST(BitVector, WithoutMemoryThereIsNoVector) {
    for (long n = 1; n <= 2; ++n) {
        kit::FailAllocation failure(n);
        EXPECT_EQ(nullptr, bitvec_new(100));
        EXPECT_TRUE(failure.hit());
    }
}
