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

/// The bits by asking for each; what lies outside must read as clear.
std::vector<bool> bitsOf(const Vector& bv) {
    std::vector<bool> bits;
    for (int i = -3; i <= bv->size + 40; ++i) {
        if (i < 0 || i > bv->size)
            EXPECT_FALSE(bitvec_is_set(bv.get(), i));
        else
            bits.push_back(bitvec_is_set(bv.get(), i));
    }
    return bits;
}

} // namespace

TEST(BitVector, AgreesWithAVectorOfBools) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 300; ++round) {
        const int n = rng.oneIn(4) ? 32 * rng.below(4) + rng.between(30, 32) : rng.below(140);
        const Vector bv = make(n);
        std::vector<bool> model(static_cast<std::size_t>(n) + 1);
        const int density = rng.between(2, 100);
        for (int step = 0; step < 5 * n; ++step) {
            const int i = rng.between(-3, n + 40);
            const int value = rng.oneIn(density) ? 0 : -7;
            bitvec_put_val(bv.get(), i, value);
            if (i >= 0 && i <= n)
                model[static_cast<std::size_t>(i)] = value != 0;
        }
        ASSERT_EQ(model, bitsOf(bv));
        const auto first =
            static_cast<int>(std::find(model.begin(), model.end(), false) - model.begin());
        EXPECT_EQ(first % 32 == 0 && first > n ? -1 : first, bitvec_find_unset(bv.get()));
        const bool allClear = std::count(model.begin(), model.end(), true) == 0;
        EXPECT_EQ(allClear ? 1 : 0, bitvec_is_all_clear(bv.get()));

        // A copy that differs in one bit, compared over random ranges.
        const Vector copy(bitvec_copy(bv.get()));
        EXPECT_EQ(0, bitvec_compare(bv.get(), copy.get()));
        const int flip = rng.below(n + 1);
        bitvec_put_val(copy.get(), flip, !bitvec_is_set(copy.get(), flip));
        EXPECT_EQ(1, bitvec_compare(bv.get(), copy.get()));
        for (int range = 0; range < 50; ++range) {
            const int from = rng.oneIn(20) ? INT_MAX : rng.between(-20, n + 20);
            const int to = rng.oneIn(20) ? INT_MIN : rng.between(-20, n + 20);
            const auto [low, high] = std::minmax({std::max(from, 0), std::min(to, n)});
            ASSERT_EQ(low <= flip && flip <= high ? 1 : 0,
                      bitvec_compare_sub(bv.get(), copy.get(), from, to))
                << from << ".." << to << " of " << n;
        }
        bitvec_clear(bv.get());
        EXPECT_EQ(1, bitvec_is_all_clear(bv.get()));
    }
    EXPECT_EQ(0, make(-5)->size);
}

TEST(BitVector, NullsAndOtherSizes) {
    bitvec_put_val(nullptr, 0, 1);
    bitvec_put_val(nullptr, 0, 0);
    bitvec_clear(nullptr);
    EXPECT_FALSE(bitvec_is_set(nullptr, 0));
    EXPECT_EQ(0, bitvec_is_all_clear(nullptr));
    EXPECT_EQ(-1, bitvec_find_unset(nullptr));
    EXPECT_EQ(nullptr, bitvec_copy(nullptr));
    const Vector bv = make(3);
    const Vector larger = make(4);
    for (const _bvs_* other : {static_cast<_bvs_*>(nullptr), larger.get()}) {
        EXPECT_EQ(1, bitvec_compare(bv.get(), other));
        EXPECT_EQ(1, bitvec_compare(other, bv.get()));
        EXPECT_EQ(1, bitvec_compare_sub(bv.get(), other, 0, 1));
    }
    EXPECT_EQ(1, bitvec_compare(nullptr, nullptr));
}

TEST(BitVector, WithoutMemoryThereIsNoVector) {
    for (long n = 1; n <= 2; ++n) {
        kit::FailAllocation failure(n);
        EXPECT_EQ(nullptr, bitvec_new(100));
        EXPECT_TRUE(failure.hit());
    }
}
