#include "tools/util/bitvec.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

struct Delete {
    void operator()(_bvs_* bv) const { bitvec_delete(bv); }
};
using Vector = std::unique_ptr<_bvs_, Delete>;

Vector make(int n) {
    return Vector(bitvec_new(n));
}

} // namespace

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
