// SPDX-License-Identifier: Apache-2.0
// Each allocation of each member fails in turn, once or from then on: the object
// stays as it was, nothing leaks, and at last the same call succeeds.

#include "tools/containers/KazHashTableIterator.h"
#include "tools/containers/KazIntColl.h"
#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazStringColl.h"
#include "tools/containers/KazStringToStringMap.h"
#include "tools/containers/KazStringToStringMapIterator.h"
#include "tools/containers/KazStringTree.h"

#include "elements.h"
#include "kit/alloc_failure.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using kit::Counted;
using kit::FailAllocation;

// ---- What an object holds, as a text

std::string show(const void* element) {
    return element ? std::to_string(valueOf(element)) + " " : "- ";
}
std::string show(int value) {
    return std::to_string(value) + " ";
}
std::string show(const KazString& text) {
    return std::string(text.getValue()) + " ";
}
template <typename Sequence>
requires requires(const Sequence& sequence) {
    sequence[0];
}
std::string show(const Sequence& sequence) {
    std::string text;
    for (int i = 0; i < sequence.getSize(); ++i)
        text += show(sequence[i]);
    return text;
}
template <typename Iterator, typename Table>
std::string showPairs(const Table& table) {
    std::string text;
    for (Iterator i(table); !i.isDone(); i.next())
        text += show(i.getKey()) + "=" + show(i.getValue());
    return text + std::to_string(table.getSize());
}
std::string show(const KazHashTable& table) {
    return showPairs<KazHashTableIterator>(table);
}
std::string show(const KazStringToStringMap& map) {
    return showPairs<KazStringToStringMapIterator>(map);
}
template <typename Tree>
requires std::is_base_of_v<KazTree, Tree> std::string show(Tree& tree) {
    std::string text;
    for (int i = 0; i < tree.getSize(); ++i)
        text += show(tree.valueAt(i));
    return text;
}

// ---- Objects to begin with

struct Coll : OwningColl {
    Coll() { fill(1, 4); }
};

struct RoomyColl : Coll {
    RoomyColl() { inflate(64); }
};

struct Table : KazHashTable {
    Table() : KazHashTable(Counted::compare, Counted::hash, 7) {
        setKeyCheckIn(Counted::checkIn);
        setKeyCheckOut(Counted::checkOut);
        setValueCheckIn(Counted::checkIn);
        setValueCheckOut(Counted::checkOut);
        for (int i = 0; i < 6; ++i)
            put(i, 10 * i);
    }
    void put(int key, int value) {
        Counted keyElement(key), valueElement(value);
        bind(&keyElement, &valueElement, false);
    }
};

template <int size>
struct Map : KazStringToStringMap {
    Map() : KazStringToStringMap(true, size) {
        for (int i = 0; i < 11; ++i) // as many as the first index holds
            put(i);
    }
    void put(int i) { bind(std::to_string(i).c_str(), "value", false); }
};

struct Tree : OwningTree {
    Tree() {
        for (int i = 0; i < 9; ++i)
            put(5 * i % 9);
    }
};

/// Sweeps both forms; @p act gets a fresh object, whose state after a failure is
/// what @p expected makes of it.
template <typename Object, typename Act, typename Expected>
void sweep(long least, Act act, Expected expected) {
    for (const auto mode : {FailAllocation::once, FailAllocation::onward}) {
        const int live = Counted::live();
        {
            Object object;
            const std::string before = expected(show(object));
            const long points = kit::sweepAllocations(
                [&] { act(object); }, [&] { EXPECT_EQ(show(object), before); }, mode);
            EXPECT_GE(points, least);
            EXPECT_NE(show(object), before);
        }
        EXPECT_EQ(Counted::live(), live);
    }
}

template <typename Object, typename Act>
void sweep(long least, Act act) {
    sweep<Object>(least, act, [](const std::string& before) { return before; });
}

TEST(ContainerMemoryTest, ArraysAndCollections) {
    Counted one(7), two(8);
    void* pair[] = {&one, &two};
    static void* item;
    item = &one;
    struct Array : KazArrayPtr {
        Array() {
            for (int i = 0; i < 4; ++i)
                add(item);
        }
    };
    sweep<Array>(1, [](Array& a) { a.add(item); });
    sweep<Array>(1, [](Array& a) { a.setAtGrow(9, item); });
    sweep<Array>(1, [](Array& a) { a.setSize(5); });
    sweep<Array>(1, [&](Array& a) { a.insertAt(1, pair, 2); });
    sweep<Array>(2, [](Array& a) { a.insertAt(1, a); });
    sweep<Array>(2, [](Array& a) { a.append(a); });
    const KazArrayPtr larger = [] {
        KazArrayPtr result;
        result.setSize(7);
        return result;
    }();
    sweep<Array>(1, [&](Array& a) { a.copy(larger); });

    const Coll other;
    sweep<Coll>(2, [&](Coll& c) { c.add(&one); });
    sweep<Coll>(2, [&](Coll& c) { c.insertAt(1, &one); });
    sweep<Coll>(2, [&](Coll& c) { c.insertAt(9, pair, 2); });
    sweep<RoomyColl>(3, [&](Coll& c) { c.insertAt(9, pair, 2); });
    sweep<RoomyColl>(6, [&](Coll& c) { c.insertAt(1, c); });
    sweep<RoomyColl>(5, [&](Coll& c) { c.append(other); });
    // What these replace is gone before the new comes in.
    sweep<Coll>(
        1, [&](Coll& c) { c.setAt(1, &one); },
        [](const std::string&) { return std::string("1 - 3 4 "); });
    struct Shared : Coll { // growth separates
        Coll first;
        Shared() { static_cast<Coll&>(*this) = first; }
    };
    sweep<Shared>(6, [&](Shared& c) { c.add(&one); });

    const int numbers[] = {3, 4, 5};
    sweep<KazIntColl>(1, [](KazIntColl& c) { c.add(3); });
    sweep<KazIntColl>(1, [&](KazIntColl& c) { c.insertAt(0, numbers, 3); });
    const KazString text = "text", texts[] = {"a", "b"};
    sweep<KazStringColl>(1, [&](KazStringColl& c) { c.add(text); });
    sweep<KazStringColl>(1, [&](KazStringColl& c) { c.insertAt(2, texts, 2); });
}

TEST(ContainerMemoryTest, CopyEmptiesFirstAndRemovalNeedsNothing) {
    for (const auto mode : {FailAllocation::once, FailAllocation::onward}) {
        Coll other, coll;
        const std::string full = show(coll);
        const long points =
            kit::sweepAllocations([&] { coll.copy(other); },
                                  [&] {
                                      EXPECT_TRUE(show(coll).empty() || show(coll) == full);
                                      EXPECT_EQ(Counted::live(), 4 + coll.getSize());
                                  },
                                  mode);
        EXPECT_GE(points, 6);
        EXPECT_EQ(show(coll), full);
    }
    Coll coll;
    coll.fill(5, 200);
    KazArrayPtr array;
    array.setSize(5);
    Map<1> map;
    map.unbind("3");
    {
        FailAllocation failure(1, FailAllocation::onward);
        coll.removeAt(1, 190);
        array.freeExtra();
        map.freeExtra();
    }
    EXPECT_EQ(show(coll), "1 192 193 194 195 196 197 198 199 200 ");
    EXPECT_EQ(array.getSize(), 5);
    EXPECT_TRUE(map.isBound("7"));
}

TEST(ContainerMemoryTest, TablesAndMaps) {
    sweep<Table>(3, [](Table& t) { t.put(13, 3); }); // a bucket of its own
    Counted key(3), value(99);
    sweep<Table>(
        1, [&](Table& t) { t.rebind(&key, &value); },
        [](std::string before) { return before.replace(before.find("30 "), 3, "- "); });
    sweep<Map<1>>(2, [](Map<1>& m) { m.put(11); });
    sweep<Map<127>>(3, [](Map<127>& m) { m.put(11); });
    for (const auto mode : {FailAllocation::once, FailAllocation::onward}) {
        std::unique_ptr<KazHashTable> table;
        const long points =
            kit::sweepAllocations([&] { table = std::make_unique<KazStringToStringMap>(); },
                                  [&] { EXPECT_EQ(table, nullptr); }, mode);
        EXPECT_GE(points, 3); // the object, the buckets, the index
        EXPECT_EQ(table->getSize(), 0);
    }
}

TEST(ContainerMemoryTest, Trees) {
    const auto other = std::make_unique<Tree>();
    other->put(50);
    sweep<Tree>(2, [](Tree& t) { t.put(20); });
    sweep<Tree>(20, [&](Tree& t) { t = *other; });
    sweep<Tree>(20, [&](Tree& t) { t.copy(*other); });
    sweep<Tree>(10, [&](Tree& t) { t.copy(*other, nullptr), t.setCheckOut(nullptr); });
    sweep<KazIntTree>(1, [](KazIntTree& t) { t.add(5); });
    sweep<KazStringTree>(2, [](KazStringTree& t) { t.add("text"); });
    const Counted seven(7);
    std::unique_ptr<Tree> copied;
    kit::sweepAllocations([&] { copied = std::make_unique<Tree>(*other); },
                          [&] { EXPECT_EQ(Counted::live(), 11); });
    EXPECT_EQ(show(*copied), show(*other));
}

} // namespace
