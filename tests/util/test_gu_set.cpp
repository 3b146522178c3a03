#include "tools/util/gu_set.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace {

void* element(int value) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(value));
}

struct Destroy {
    void operator()(gu_set* set) const { gu_set_destroy(set); }
};
using Set = std::unique_ptr<gu_set, Destroy>;

} // namespace

TEST(GuSet, ElementsMayGoDuringIteration) {
    const Set set(gu_set_create(0));
    for (int i = 0; i < 1000; ++i)
        gu_set_add(set.get(), element(i));
    static int seen;
    seen = 0;
    const auto removeTwo = [](void* e, void* from) {
        ++seen;
        gu_set_remove(static_cast<gu_set*>(from), e);
        gu_set_remove(static_cast<gu_set*>(from), static_cast<char*>(e) + 1);
    };
    gu_set_foreach(set.get(), removeTwo, set.get());
    EXPECT_EQ(500, seen);
    EXPECT_EQ(0, gu_set_size(set.get()));
}

TEST(GuSet, NullReadsAsEmpty) {
    EXPECT_FALSE(gu_set_add(nullptr, nullptr));
    EXPECT_FALSE(gu_set_remove(nullptr, nullptr));
    EXPECT_EQ(0, gu_set_add_all(nullptr, nullptr));
    gu_set_clear(nullptr);
    const Set empty(gu_set_copy(nullptr));
    EXPECT_TRUE(gu_set_equal(empty.get(), nullptr));
    EXPECT_TRUE(gu_set_subset(nullptr, empty.get()));
    gu_set_foreach(nullptr, nullptr, nullptr);
}
