#include "kit/alloc_failure.h"
#include "kit/random.h"
#include "tools/util/gu_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <set>
#include <vector>

namespace {

void* element(int value) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(value));
}

struct Destroy {
    void operator()(gu_set* set) const { gu_set_destroy(set); }
};
using Set = std::unique_ptr<gu_set, Destroy>;
using Model = std::set<void*>;

std::vector<void*> inOrder(const gu_set* set) {
    std::vector<void*> elements;
    for (auto i = gu_set_init(set); !gu_set_done(i); gu_set_next(&i))
        elements.push_back(gu_set_element(i));
    return elements;
}

Model contentOf(const Set& set) {
    const std::vector<void*> elements = inOrder(set.get());
    Model content(elements.begin(), elements.end());
    EXPECT_EQ(elements.size(), content.size());
    EXPECT_EQ(static_cast<int>(elements.size()), gu_set_size(set.get()));
    return content;
}

template <typename Operation>
Model combine(const Model& a, const Model& b, Operation operation) {
    Model result;
    operation(a.begin(), a.end(), b.begin(), b.end(), std::inserter(result, result.end()));
    return result;
}

/// A set and its model after a random history over -range..range.
struct Pair {
    Set set;
    Model model;
    std::vector<void*> order;

    Pair(kit::Random& rng, int range) : set(gu_set_create(rng.between(-1, 30))) {
        for (int step = rng.below(8 * range); step > 0; --step) {
            void* e = element(rng.between(-range, range));
            if (rng.oneIn(3)) {
                EXPECT_EQ(model.erase(e) == 1, gu_set_remove(set.get(), e));
                order.erase(std::remove(order.begin(), order.end(), e), order.end());
            } else {
                const bool isNew = model.insert(e).second;
                EXPECT_EQ(isNew, gu_set_add(set.get(), e));
                if (isNew)
                    order.push_back(e);
            }
        }
    }
};

} // namespace

TEST(GuSet, RandomHistoriesAgreeWithAStandardSetInTheOrderOfAdding) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 300; ++round) {
        const int range = rng.between(1, 60);
        const Pair a(rng, range);
        ASSERT_EQ(a.order, inOrder(a.set.get()));
        for (int i = -range; i <= range; ++i)
            ASSERT_EQ(a.model.count(element(i)) == 1, gu_set_contains(a.set.get(), element(i)));
        const Set copy(gu_set_copy(a.set.get()));
        EXPECT_EQ(a.order, inOrder(copy.get()));
        EXPECT_TRUE(gu_set_equal(a.set.get(), copy.get()));
        gu_set_clear(copy.get());
        EXPECT_TRUE(contentOf(copy).empty());
        EXPECT_TRUE(gu_set_add(copy.get(), nullptr));
        EXPECT_EQ(a.model, contentOf(a.set));
    }
}

TEST(GuSet, AlgebraAgreesWithTheStandardAlgorithms) {
    kit::Random rng(kit::seed() + 1);
    SCOPED_TRACE(kit::seedText());
    const auto unite = [](auto... x) { std::set_union(x...); };
    const auto intersect = [](auto... x) { std::set_intersection(x...); };
    const auto subtract = [](auto... x) { std::set_difference(x...); };
    const auto differ = [](auto... x) { std::set_symmetric_difference(x...); };
    for (int round = 0; round < 300; ++round) {
        Pair a(rng, rng.between(1, 12));
        const Pair other(rng, rng.between(1, 12));
        const Pair& b = rng.oneIn(10) ? a : other;
        gu_set* x = a.set.get();
        const gu_set* y = b.set.get();
        const Model common = combine(a.model, b.model, intersect);
        const Model onlyA = combine(a.model, b.model, subtract);
        const Model all = combine(a.model, b.model, unite);
        EXPECT_EQ(all, contentOf(Set(gu_set_union(x, y))));
        EXPECT_EQ(common, contentOf(Set(gu_set_intersection(x, y))));
        EXPECT_EQ(onlyA, contentOf(Set(gu_set_difference(x, y))));
        EXPECT_EQ(combine(a.model, b.model, differ),
                  contentOf(Set(gu_set_symmetric_difference(x, y))));
        EXPECT_EQ(onlyA.empty(), gu_set_subset(x, y));
        EXPECT_EQ(a.model == b.model, gu_set_equal(x, y));
        EXPECT_EQ(common.empty(), gu_set_disjoint(x, y));
        const struct {
            int (*change)(gu_set*, const gu_set*);
            const Model& result;
        } changes[] = {
            {gu_set_add_all, all}, {gu_set_remove_all, onlyA}, {gu_set_retain_all, common}};
        const auto& [change, result] = changes[rng.below(3)];
        const auto before = static_cast<int>(a.model.size());
        EXPECT_EQ(std::abs(static_cast<int>(result.size()) - before), change(x, y));
        EXPECT_EQ(result, contentOf(a.set));
    }
}

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

TEST(GuSet, FailedAllocationsLeaveBothSetsAsTheyWere) {
    const Set set(gu_set_create(0));
    const Set other(gu_set_create(0));
    for (int i = 0; i < 8; ++i)
        gu_set_add(set.get(), element(i));
    for (int i = 4; i < 100; ++i)
        gu_set_add(other.get(), element(i));
    const auto unchanged = [&] { EXPECT_EQ(8, gu_set_size(set.get())); };
    const auto unite = [&] { gu_set_destroy(gu_set_union(set.get(), other.get())); };
    EXPECT_GT(kit::sweepAllocations(unite, unchanged), 3);
    const auto addAll = [&] { gu_set_add_all(set.get(), other.get()); };
    EXPECT_GT(kit::sweepAllocations(addAll, unchanged), 0);
    EXPECT_EQ(100, gu_set_size(set.get()));
}
