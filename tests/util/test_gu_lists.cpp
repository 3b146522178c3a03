// Linked lists against std::list, queues against std::deque, index lists
// against std::set.

#include "kit/alloc_failure.h"
#include "kit/counted.h"
#include "kit/random.h"
#include "tools/util/gu_index_list.h"
#include "tools/util/gu_list.h"
#include "tools/util/gu_queue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <iterator>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

void* element(int value) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(value));
}
int number(const void* value) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(value));
}
int byTens(const void* a, const void* b) {
    return number(a) / 10 - number(b) / 10;
}

struct Destroy {
    void operator()(gu_list* list) const { gu_list_destroy(list); }
    void operator()(gu_queue* queue) const { gu_queue_destroy(queue); }
    void operator()(gu_index_list* list) const { gu_index_list_destroy(list); }
};
using List = std::unique_ptr<gu_list, Destroy>;
using Queue = std::unique_ptr<gu_queue, Destroy>;
using Indices = std::unique_ptr<gu_index_list, Destroy>;

/// The elements, after walking both ways.
std::list<int> contentOf(const gu_list* list) {
    std::list<int> forward;
    std::list<int> backward;
    for (gu_list_node* n = gu_list_first(list); n != nullptr; n = gu_list_next(n))
        forward.push_back(number(gu_list_element(n)));
    for (gu_list_node* n = gu_list_last(list); n != nullptr; n = gu_list_prev(n))
        backward.push_front(number(gu_list_element(n)));
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(static_cast<int>(forward.size()), gu_list_size(list));
    return forward;
}

/// One random change on both sides.
void change(kit::Random& rng, gu_list* list, std::list<int>& model) {
    const int value = rng.below(50);
    const int at = rng.below(static_cast<int>(model.size()) + 1);
    const auto place = std::next(model.begin(), at);
    gu_list_node* node = gu_list_at(list, at);
    ASSERT_EQ(place == model.end(), node == nullptr);
    const auto tensBefore = [](int a, int b) { return a / 10 < b / 10; };
    switch (rng.below(8)) {
    case 0:
        gu_list_insert_before(list, node, element(value));
        model.insert(place, value);
        break;
    case 1:
        EXPECT_EQ(element(value),
                  gu_list_element(gu_list_insert_after(list, node, element(value))));
        model.insert(node != nullptr ? std::next(place) : model.begin(), value);
        break;
    case 2: {
        const auto first = std::find(model.begin(), model.end(), value);
        EXPECT_EQ(first != model.end(), gu_list_remove(list, element(value)));
        if (first != model.end())
            model.erase(first);
        break;
    }
    case 3: {
        gu_list_node* next = gu_list_next(node);
        EXPECT_EQ(next, gu_list_remove_node(list, node));
        if (place != model.end())
            model.erase(place);
        break;
    }
    case 4:
        EXPECT_EQ(element(model.empty() ? 0 : model.back()), gu_list_take_last(list));
        if (!model.empty())
            model.pop_back();
        break;
    case 5:
        gu_list_reverse(list);
        model.reverse();
        break;
    case 6: // all tens are equal: only a stable sort agrees
        gu_list_sort(list, byTens);
        model.sort(tensBefore);
        gu_list_insert_sorted(list, element(value), byTens);
        model.insert(std::upper_bound(model.begin(), model.end(), value, tensBefore), value);
        break;
    default:
        if (node != nullptr) {
            EXPECT_EQ(element(*place), gu_list_set_element(node, element(value)));
            *place = value;
        }
    }
}

std::set<int> contentOf(const gu_index_list* list) {
    std::set<int> content;
    for (auto i = gu_index_list_init(list); !gu_index_list_done(i); gu_index_list_next(&i)) {
        EXPECT_TRUE(content.empty() || *content.rbegin() < i.index);
        content.insert(i.index);
    }
    EXPECT_EQ(static_cast<long long>(content.size()), gu_index_list_size(list));
    return content;
}

std::string textOf(const Indices& list) {
    const std::unique_ptr<char, decltype(&std::free)> text(gu_index_list_text(list.get()),
                                                           std::free);
    return text.get();
}

Indices parse(const std::string& text) {
    int error = -2;
    Indices list(gu_index_list_parse(text.c_str(), &error));
    EXPECT_EQ(-1, error) << text;
    return list;
}

/// The text form by the definition: neighbours joined.
std::string textOf(const std::set<int>& model) {
    std::string text;
    for (auto i = model.begin(); i != model.end();) {
        const int first = *i;
        int last = first;
        while (++i != model.end() && *i == last + 1)
            ++last;
        text += (text.empty() ? "" : ",") + std::to_string(first);
        text += last > first ? "-" + std::to_string(last) : "";
    }
    return text;
}

template <typename Operation>
std::set<int> combine(const std::set<int>& a, const std::set<int>& b, Operation operation) {
    std::set<int> result;
    operation(a.begin(), a.end(), b.begin(), b.end(), std::inserter(result, result.end()));
    return result;
}

} // namespace

TEST(GuList, RandomChangesAgreeWithAStandardList) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 200; ++round) {
        const List list(gu_list_create(nullptr));
        std::list<int> model;
        for (int step = rng.below(200); step > 0; --step)
            ASSERT_NO_FATAL_FAILURE(change(rng, list.get(), model));
        ASSERT_EQ(model, contentOf(list.get()));
        const List other(gu_list_copy(list.get(), nullptr));
        EXPECT_EQ(model, contentOf(other.get()));
        gu_list_concat(list.get(), other.get());
        gu_list_concat(list.get(), list.get());
        EXPECT_EQ(0, gu_list_size(other.get()));
        std::list<int> twice = model;
        twice.insert(twice.end(), model.begin(), model.end());
        EXPECT_EQ(twice, contentOf(list.get()));
        gu_list_append(other.get(), element(7));
        EXPECT_EQ(std::list<int>{7}, contentOf(other.get()));
    }
}

TEST(GuList, ActionsMayRemoveTheirNode) {
    const List list(gu_list_create(nullptr));
    for (int i = 0; i < 10; ++i)
        gu_list_append(list.get(), element(i));
    const auto removeEven = [](void* e, void* from) {
        if (number(e) % 2 == 0)
            gu_list_remove(static_cast<gu_list*>(from), e);
    };
    gu_list_foreach(list.get(), removeEven, list.get());
    EXPECT_EQ((std::list<int>{1, 3, 5, 7, 9}), contentOf(list.get()));
}

TEST(GuQueue, RandomHistoriesAgreeWithADeque) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 100; ++round) {
        const Queue queue(gu_queue_create(nullptr));
        std::deque<int> model;
        for (int step = rng.below(500); step > 0; --step) {
            if (rng.oneIn(3)) {
                EXPECT_EQ(element(model.empty() ? 0 : model.front()), gu_queue_take(queue.get()));
                if (!model.empty())
                    model.pop_front();
            } else {
                gu_queue_add(queue.get(), element(step));
                model.push_back(step);
            }
        }
        std::deque<int> met;
        const auto note = [](void* e, void* to) {
            static_cast<std::deque<int>*>(to)->push_back(number(e));
        };
        gu_queue_foreach(queue.get(), note, &met);
        EXPECT_EQ(model, met);
        EXPECT_EQ(element(model.empty() ? 0 : model.back()), gu_queue_last(queue.get()));
        EXPECT_EQ(nullptr, gu_queue_at(queue.get(), gu_queue_size(queue.get())));
        const Queue copy(gu_queue_copy(queue.get(), nullptr));
        for (const int value : model) {
            EXPECT_TRUE(gu_queue_contains(queue.get(), element(value)));
            EXPECT_EQ(element(value), gu_queue_first(copy.get()));
            EXPECT_EQ(element(value), gu_queue_take(copy.get()));
        }
        EXPECT_FALSE(gu_queue_contains(queue.get(), element(1000)));
    }
}

TEST(GuLists, OwnedElementsAreReleasedExactlyOnce) {
    {
        const List list(gu_list_create(kit::Counted::checkOut));
        const Queue queue(gu_queue_create(kit::Counted::checkOut));
        for (int i = 0; i < 20; ++i) {
            gu_list_append(list.get(), new kit::Counted(i));
            gu_queue_add(queue.get(), new kit::Counted(i));
        }
        const List copy(gu_list_copy(list.get(), kit::Counted::checkIn));
        const Queue copiedQueue(gu_queue_copy(queue.get(), kit::Counted::checkIn));
        const List shared(gu_list_copy(list.get(), nullptr));
        const Queue sharedQueue(gu_queue_copy(queue.get(), nullptr));
        EXPECT_EQ(80, kit::Counted::live());
        const kit::Counted probe(7);
        gu_list_node* found = gu_list_find_by(copy.get(), &probe, kit::Counted::compare);
        ASSERT_EQ(gu_list_at(copy.get(), 7), found);
        gu_list_remove_node(copy.get(), found);
        EXPECT_EQ(nullptr, gu_list_find_by(copy.get(), &probe, kit::Counted::compare));
        delete static_cast<kit::Counted*>(gu_list_take_first(copy.get()));
        delete static_cast<kit::Counted*>(gu_queue_take(queue.get()));
        // Moved nodes are released by their new list.
        gu_list_concat(list.get(), copy.get());
        EXPECT_EQ(78, kit::Counted::live()); // the probe is one of them
    }
    EXPECT_EQ(0, kit::Counted::live());
}

TEST(GuLists, NullReadsAsEmpty) {
    EXPECT_EQ(nullptr, gu_list_append(nullptr, nullptr));
    EXPECT_EQ(nullptr, gu_list_take_first(nullptr));
    EXPECT_FALSE(gu_list_remove(nullptr, nullptr));
    EXPECT_EQ(nullptr, gu_list_at(nullptr, 0));
    gu_list_sort(nullptr, byTens);
    gu_list_reverse(nullptr);
    gu_list_concat(nullptr, nullptr);
    gu_list_destroy(nullptr);
    EXPECT_EQ(0, gu_list_size(List(gu_list_copy(nullptr, kit::Counted::checkIn)).get()));
    gu_queue_add(nullptr, nullptr);
    EXPECT_EQ(nullptr, gu_queue_take(nullptr));
    EXPECT_EQ(nullptr, gu_queue_last(nullptr));
    gu_queue_destroy(nullptr);
    gu_index_list_add(nullptr, 1);
    EXPECT_EQ(0, gu_index_list_size(nullptr));
    EXPECT_TRUE(gu_index_list_done(gu_index_list_init(nullptr)));
    gu_index_list_destroy(nullptr);
}

TEST(GuIndexList, RandomHistoriesAgreeWithAStandardSetAndSurviveTheirText) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 300; ++round) {
        const Indices list(gu_index_list_create());
        std::set<int> model;
        const int range = rng.between(2, 60);
        for (int step = rng.below(60); step > 0; --step) {
            const int first = rng.between(-range, range);
            const int last = first + rng.between(-2, 9);
            const bool adding = rng.oneIn(2);
            if (last == first) {
                const bool changed = adding ? model.insert(first).second : model.erase(first) == 1;
                EXPECT_EQ(changed,
                          (adding ? gu_index_list_add : gu_index_list_remove)(list.get(), first));
                continue;
            }
            (adding ? gu_index_list_add_range : gu_index_list_remove_range)(list.get(), first,
                                                                            last);
            for (int i = first; i <= last; ++i)
                adding ? void(model.insert(i)) : void(model.erase(i));
            ASSERT_EQ(textOf(model), textOf(list));
        }
        ASSERT_EQ(model, contentOf(list.get()));
        const std::string text = textOf(list);
        EXPECT_EQ(text.empty() ? 0 : 1 + std::count(text.begin(), text.end(), ','),
                  gu_index_list_range_count(list.get()));
        EXPECT_TRUE(gu_index_list_equal(list.get(), parse(text).get()));
        for (int i = -range - 12; i < range + 12; ++i)
            ASSERT_EQ(model.count(i) == 1, gu_index_list_contains(list.get(), i));
    }
}

TEST(GuIndexList, AlgebraAgreesWithTheStandardAlgorithms) {
    kit::Random rng(kit::seed() + 1);
    SCOPED_TRACE(kit::seedText());
    const auto make = [&rng](gu_index_list* list) {
        for (int n = rng.below(6); n > 0; --n) {
            const int first = rng.below(30);
            gu_index_list_add_range(list, first, first + rng.below(8));
        }
        return contentOf(list);
    };
    for (int round = 0; round < 500; ++round) {
        const Indices a(gu_index_list_create());
        const Indices b(gu_index_list_create());
        const std::set<int> x = make(a.get());
        const std::set<int> y = make(b.get());
        const auto both = combine(x, y, [](auto... i) { std::set_union(i...); });
        const auto common = combine(x, y, [](auto... i) { std::set_intersection(i...); });
        const auto onlyA = combine(x, y, [](auto... i) { std::set_difference(i...); });
        const auto check = [](const std::set<int>& expected, gu_index_list* result) {
            EXPECT_EQ(textOf(expected), textOf(Indices(result)));
        };
        check(both, gu_index_list_union(a.get(), b.get()));
        check(common, gu_index_list_intersection(a.get(), b.get()));
        check(onlyA, gu_index_list_difference(a.get(), b.get()));
        EXPECT_EQ(onlyA.empty(), gu_index_list_subset(a.get(), b.get()));
        EXPECT_EQ(x == y, gu_index_list_equal(a.get(), b.get()));
        gu_index_list_add_all(a.get(), b.get());
        EXPECT_EQ(textOf(both), textOf(a));
    }
}

TEST(GuIndexList, TextForm) {
    EXPECT_EQ("1-3,7", textOf(parse("1-3,7")));
    EXPECT_EQ("-5--2,0-4,9", textOf(parse("  9 , 3-4,0 - 2,1-3\t,-5--2 ")));
    EXPECT_EQ("", textOf(parse("  ")));
    EXPECT_EQ("", textOf(Indices(gu_index_list_parse(nullptr, nullptr))));
    const struct {
        const char* text;
        int position;
    } bad[] = {
        {"x", 0},     {"1,", 2},    {",1", 0},         {"1-", 2},  {"3-1", 1},
        {"1 2", 2},   {"1-3-5", 3}, {"2147483648", 0}, {"--1", 0}, {"99999999999999999999", 0},
        {"1,, 2", 2}, {"+1", 0}};
    for (const auto& row : bad) {
        int position = -2;
        EXPECT_EQ(nullptr, gu_index_list_parse(row.text, &position)) << row.text;
        EXPECT_EQ(row.position, position) << row.text;
    }
}

TEST(GuIndexList, TheWholeRangeOfIntegers) {
    const Indices all = parse("-2147483648-2147483647");
    EXPECT_EQ(1LL << 32, gu_index_list_size(all.get()));
    EXPECT_FALSE(gu_index_list_add(all.get(), INT_MIN));
    gu_index_list_remove_range(all.get(), INT_MIN + 1, INT_MAX - 1);
    EXPECT_EQ((std::set<int>{INT_MIN, INT_MAX}), contentOf(all.get()));
    gu_index_list_add_range(all.get(), 5, INT_MAX);
    EXPECT_EQ("-2147483648,5-2147483647", textOf(all));
    int first = 0;
    int last = 0;
    EXPECT_TRUE(gu_index_list_find_range(all.get(), 100, &first, &last));
    EXPECT_EQ(100, first);
    EXPECT_EQ(INT_MAX, last);
    EXPECT_TRUE(gu_index_list_find_range(all.get(), -7, &first, &last));
    EXPECT_EQ(5, first);
}

TEST(GuLists, FailedAllocationsLeaveThemAsTheyWere) {
    const Indices some = parse("1-9,20-30");
    const Indices more = parse("12,14,16");
    const auto unchanged = [&] { EXPECT_EQ("1-9,20-30", textOf(some)); };
    gu_index_list* list = some.get();
    EXPECT_EQ(1, kit::sweepAllocations([&] { gu_index_list_remove_range(list, 4, 25); },
                                       [&] { EXPECT_EQ("1-9,20-30", textOf(some)); }));
    gu_index_list_add_range(list, 4, 9);
    gu_index_list_add_range(list, 20, 25);
    EXPECT_GT(kit::sweepAllocations([&] { gu_index_list_add_all(list, more.get()); }, unchanged),
              3);
    EXPECT_EQ("1-9,12,14,16,20-30", textOf(some));

    const List owner(gu_list_create(kit::Counted::checkOut));
    for (int i = 0; i < 5; ++i)
        gu_list_append(owner.get(), new kit::Counted(i));
    List copy;
    EXPECT_GT(
        kit::sweepAllocations([&] { copy.reset(gu_list_copy(owner.get(), kit::Counted::checkIn)); },
                              [&] { EXPECT_EQ(5, kit::Counted::live()); }),
        5);
    const Queue queue(gu_queue_create(nullptr));
    EXPECT_EQ(1, kit::sweepAllocations([&] { gu_queue_add(queue.get(), element(1)); },
                                       [&] { EXPECT_EQ(0, gu_queue_size(queue.get())); }));
}
