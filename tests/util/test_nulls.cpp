// SPDX-License-Identifier: Apache-2.0
// What the plain functions make of nulls, and of what does not fit together.

#include "owned.h"

#include <gtest/gtest.h>

TEST(BitVector, NullsAndOtherSizes) {
    bitvec_put_val(nullptr, 0, 1);
    bitvec_put_val(nullptr, 0, 0);
    bitvec_clear(nullptr);
    EXPECT_FALSE(bitvec_is_set(nullptr, 0));
    EXPECT_EQ(0, bitvec_is_all_clear(nullptr));
    EXPECT_EQ(-1, bitvec_find_unset(nullptr));
    EXPECT_EQ(nullptr, bitvec_copy(nullptr));
    const Owned<_bvs_> bv(bitvec_new(3));
    const Owned<_bvs_> larger(bitvec_new(4));
    for (const _bvs_* other : {static_cast<_bvs_*>(nullptr), larger.get()}) {
        EXPECT_EQ(1, bitvec_compare(bv.get(), other));
        EXPECT_EQ(1, bitvec_compare(other, bv.get()));
        EXPECT_EQ(1, bitvec_compare_sub(bv.get(), other, 0, 1));
    }
    EXPECT_EQ(1, bitvec_compare(nullptr, nullptr));
}

TEST(StringMap, NullsHaveNoPlace) {
    for (const bool caseSensitive : {true, false}) {
        string_map_tp* map = string_map_create(nullptr, 0, nullptr, caseSensitive);
        EXPECT_EQ(127, map->bucketCount);
        EXPECT_FALSE(string_map_define(map, nullptr, map, true));
        EXPECT_FALSE(string_map_undefine(map, nullptr, true));
        EXPECT_EQ(nullptr, string_map_find(map, nullptr));
        EXPECT_EQ(0, string_map_size(map));
        string_map_destroy(&map);
        string_map_destroy(&map);
    }
    EXPECT_FALSE(string_map_define(nullptr, "k", nullptr, true));
    EXPECT_FALSE(string_map_undefine(nullptr, "k", true));
    EXPECT_EQ(nullptr, string_map_find(nullptr, "k"));
    EXPECT_EQ(0, string_map_size(nullptr));
    char** keys = string_map_domain_table(nullptr);
    EXPECT_EQ(nullptr, keys[0]);
    string_map_domain_table_free(&keys);
    string_map_destroy(nullptr);
    string_map_domain_table_free(nullptr);
}
