// SPDX-License-Identifier: Apache-2.0
// Each allocation of the plain functions fails in turn, once or from then on:
// KazMemoryException, everything as it was, nothing leaked; at last it works.

#include "kit/alloc_failure.h"
#include "kit/counted.h"
#include "owned.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using kit::Counted;
using kit::FailAllocation;

/// Functions that make something: all or nothing.
template <typename Make>
void sweepMaking(long least, Make make) {
    using Result = decltype(make());
    for (const auto mode : {FailAllocation::once, FailAllocation::onward}) {
        const int live = Counted::live();
        Result made = nullptr;
        const long points = kit::sweepAllocations([&] { made = make(); },
                                                  [&] {
                                                      EXPECT_EQ(made, nullptr);
                                                      EXPECT_EQ(Counted::live(), live);
                                                  },
                                                  mode);
        EXPECT_GE(points, least);
        EXPECT_NE(Owned<std::remove_pointer_t<Result>>(made), nullptr);
    }
}

/// Functions that change something, made by @p make and told in figures by
/// @p measure: unchanged, or done.
template <typename Make, typename Measure, typename Change>
void sweepChange(long least, Make make, Measure measure, Change change) {
    for (const auto mode : {FailAllocation::once, FailAllocation::onward}) {
        const Owned<std::remove_pointer_t<decltype(make())>> object(make());
        const auto before = measure(object.get());
        const long points = kit::sweepAllocations(
            [&] { change(object.get()); }, [&] { EXPECT_EQ(measure(object.get()), before); }, mode);
        EXPECT_GE(points, least);
        EXPECT_NE(measure(object.get()), before);
    }
}

gu_set* makeSet(int first, int last) {
    gu_set* set = gu_set_create(0);
    for (int i = first; i <= last; ++i)
        gu_set_add(set, element(i));
    return set;
}

gu_index_list* makeIndices(const char* text) {
    return gu_index_list_parse(text, nullptr);
}

std::string textOf(const gu_index_list* list) {
    return take(gu_index_list_text(list));
}

generic_tree* makeTree() {
    generic_tree* root = nullptr;
    bool added = false;
    for (const int value : {50, 30, 70, 20, 40, 60, 80})
        root = add_tree_node(root, make_tree_node(element(value)), compare_integers, added);
    return root;
}

TEST(UtilMemory, TextsAndBuffers) {
    sweepMaking(1, [] { return mkcpy("a"); });
    sweepMaking(1, [] { return mkncpy("abc", 2); });
    sweepMaking(1, [] { return concat("a", "b"); });
    sweepMaking(1, [] { return concat4("a", "b", "c", "d"); });
    sweepMaking(1, [] { return string_replace_char("a", 'a', "b"); });
    sweepMaking(1, [] { return quote_word("a b"); });
    sweepMaking(1, [] { return unquote_word("'a b'"); });
    sweepMaking(1, [] {
        const char* line = "word";
        char* word = nullptr;
        next_word(&line, &word);
        return word;
    });
    sweepMaking(2, [] { return dd_create(10); });

    const std::string large(1000, 'x');
    const auto make = [] {
        dd_buffer* buffer = dd_create(0);
        dd_add_text(buffer, "kept");
        return buffer;
    };
    const auto text = [](const dd_buffer* buffer) { return std::string(dd_text(buffer)); };
    sweepChange(2, make, text, [&](dd_buffer* b) { dd_add_format(b, "%s", large.c_str()); });
    sweepChange(2, make, text, [](dd_buffer* b) { dd_insert(b, 0, dd_text(b)); });
    sweepChange(1, make, text, [](dd_buffer* b) { dd_add_fill(b, '-', 100); });
    const Owned<dd_buffer> buffer(make());
    sweepMaking(2, [&] { return dd_copy(buffer.get()); });
    Owned<char> grown(mkcpy("text"));
    kit::sweepAllocations(
        [&] {
            char* longer = concat_onto(grown.get(), large.c_str());
            grown.release();
            grown.reset(longer);
        },
        [&] { EXPECT_STREQ(grown.get(), "text"); });
    EXPECT_EQ(grown.get(), "text" + large);
}

TEST(UtilMemory, ListsAndQueues) {
    const Owned<gu_list> list(gu_list_create(Counted::checkOut));
    const Owned<gu_queue> queue(gu_queue_create(Counted::checkOut));
    for (int i = 0; i < 5; ++i) {
        gu_list_append(list.get(), new Counted(i));
        gu_queue_add(queue.get(), new Counted(i));
    }
    sweepMaking(11, [&] { return gu_list_copy(list.get(), Counted::checkIn); });
    sweepMaking(7, [&] { return gu_queue_copy(queue.get(), Counted::checkIn); });
    const auto makeList = [] { return gu_list_create(nullptr); };
    sweepChange(1, makeList, gu_list_size, [](gu_list* l) { gu_list_append(l, nullptr); });
    sweepChange(1, makeList, gu_list_size,
                [](gu_list* l) { gu_list_insert_after(l, nullptr, nullptr); });
    sweepChange(
        1,
        [] {
            gu_queue* full = gu_queue_create(nullptr);
            for (int i = 0; i < 8; ++i)
                gu_queue_add(full, element(i));
            return full;
        },
        gu_queue_size, [](gu_queue* q) { gu_queue_add(q, nullptr); });
}

TEST(UtilMemory, Sets) {
    const Owned<gu_set> a(makeSet(0, 7)), b(makeSet(4, 100));
    sweepMaking(3, [] { return gu_set_create(10); });
    sweepMaking(4, [&] { return gu_set_union(a.get(), b.get()); });
    sweepMaking(3, [&] { return gu_set_intersection(a.get(), b.get()); });
    sweepMaking(4, [&] { return gu_set_symmetric_difference(a.get(), b.get()); });
    const auto make = [] { return makeSet(0, 7); };
    sweepChange(2, make, gu_set_size, [](gu_set* s) { gu_set_add(s, element(9)); });
    sweepChange(2, make, gu_set_size, [&](gu_set* s) { gu_set_add_all(s, b.get()); });
}

TEST(UtilMemory, IndexLists) {
    const auto make = [] { return makeIndices("1-9,20-30"); };
    const Owned<gu_index_list> other(makeIndices("12,14,16"));
    sweepMaking(3, make);
    sweepMaking(4, [&] { return gu_index_list_union(other.get(), other.get()); });
    sweepMaking(1, [&] { return gu_index_list_text(other.get()); });
    sweepChange(1, make, textOf, [](gu_index_list* l) { gu_index_list_add(l, 40); });
    sweepChange(1, make, textOf, [](gu_index_list* l) { gu_index_list_remove_range(l, 4, 25); });
    sweepChange(4, make, textOf, [&](gu_index_list* l) { gu_index_list_add_all(l, other.get()); });
}

TEST(UtilMemory, StringMapsAndBitVectors) {
    const auto make = [] { return string_map_create(nullptr, 3, nullptr, true); };
    sweepMaking(2, make);
    sweepChange(2, make, string_map_size,
                [](string_map_tp* m) { string_map_define(m, "k", nullptr, true); });
    const Owned<string_map_tp> map(make());
    string_map_define(map.get(), "k", nullptr, true);
    char** keys = nullptr;
    EXPECT_EQ(kit::sweepAllocations([&] { keys = string_map_domain_table(map.get()); },
                                    [&] { EXPECT_EQ(keys, nullptr); }),
              1);
    EXPECT_STREQ(keys[0], "k");
    string_map_domain_table_free(&keys);
    for (long n = 1; n <= 2; ++n) { // these give null instead
        FailAllocation failure(n);
        EXPECT_EQ(bitvec_new(100), nullptr);
        EXPECT_TRUE(failure.hit());
    }
}

TEST(UtilMemory, Trees) {
    const Owned<generic_tree> small(makeTree());
    sweepMaking(1, [] { return make_tree_node(nullptr); });
    sweepMaking(7, [&] { return copy_tree(small.get()); });
    sweepMaking(7, [&] { return copy_tree_deep(small.get(), [](void* value) { return value; }); });
    // Deep enough that the way down needs memory of its own.
    const auto makeChain = [] {
        generic_tree* root = nullptr;
        for (int i = 2000; i > 0; --i) {
            generic_tree* node = make_tree_node(element(i));
            node->left = root;
            node->weight += root != nullptr ? root->weight : 0;
            root = node;
        }
        return root;
    };
    for (const auto mode : {FailAllocation::once, FailAllocation::onward}) {
        generic_tree* chain = makeChain();
        generic_tree* node = make_tree_node(element(5000));
        bool done = false;
        const auto unchanged = [&] { EXPECT_EQ(chain->weight, 2000); };
        const auto remove = [&] {
            chain = delete_tree_node(chain, element(1999), compare_integers, nullptr, done);
        };
        EXPECT_GT(kit::sweepAllocations(remove, unchanged, mode), 0);
        EXPECT_EQ(chain->weight, 1999);
        const auto insert = [&] { chain = add_tree_node(chain, node, compare_integers, done); };
        EXPECT_GT(kit::sweepAllocations(
                      insert, [&] { EXPECT_EQ(chain->weight, 1999); }, mode),
                  0);
        EXPECT_EQ(chain->weight, 2000);
        delete_tree(chain, nullptr);
    }
}

} // namespace
