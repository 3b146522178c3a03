#include "tools/containers/KazColl.h"
#include "tools/containers/KazIntColl.h"
#include "tools/containers/KazStringColl.h"

#include "elements.h"
#include "kit/alloc_failure.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace {

using kit::Counted;

/// A collection that owns Counted elements.
struct OwningColl : KazColl {
    OwningColl() {
        setCheckIn(Counted::checkIn);
        setCheckOut(Counted::checkOut);
    }
};

std::vector<int> values(const KazColl& coll) {
    std::vector<int> result;
    for (int i = 0; i < coll.getSize(); ++i)
        result.push_back(valueOf(coll[i]));
    return result;
}

/// An iterator and where it should stand; -2 is done.
struct Tracked {
    KazCollIterator real;
    int position;
};

/// What a collection and its iterators are to do, told in the plainest way.
struct Model {
    std::vector<int> values;
    std::list<Tracked> iterators;
    int gaps = 0; // elements that nobody has checked in

    int size() const { return static_cast<int>(values.size()); }
    void insert(int at, const std::vector<int>& items) {
        gaps += std::max(at - size(), 0);
        if (at > size())
            values.resize(static_cast<std::size_t>(at));
        values.insert(values.begin() + at, items.begin(), items.end());
        for (Tracked& i : iterators)
            i.position += i.position >= at ? static_cast<int>(items.size()) : 0;
    }
    void remove(int at, int count) {
        values.erase(values.begin() + at, values.begin() + at + count);
        for (auto& [real, position] : iterators)
            position = position >= at ? std::max(position - count, at - 1) : position;
    }
    void clear() {
        values.clear();
        for (Tracked& i : iterators)
            i.position = -2;
    }
    int item(int i) const { return i >= 0 ? values[static_cast<std::size_t>(i)] : 0; }
};

TEST(CollectionTest, BehavesLikeAVectorWithLiveIterators) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    Counted::resetCounts();
    Model model;
    {
        OwningColl coll;
        const auto atStart = [&] {
            return Tracked{KazCollIterator(coll), model.size() > 0 ? 0 : -2};
        };
        for (int i = 0; i < 6; ++i)
            model.iterators.push_front(atStart());
        for (int step = 0; step < 20000; ++step) {
            const int at = random.below(model.size() + 2);
            Counted one(random.between(1, 99));
            switch (random.below(12)) {
            case 0:
            case 1:
                EXPECT_EQ(coll.add(&one), model.size());
                model.values.push_back(one.value());
                break;
            case 2:
            case 3: {
                Counted two(7);
                void* items[] = {&one, &two};
                const int count = random.between(1, 2);
                coll.insertAt(at, items, count);
                model.insert(at,
                             count == 1 ? std::vector{one.value()} : std::vector{one.value(), 7});
                break;
            }
            case 4:
                if (model.size() > 0 && model.size() < 40) {
                    coll.insertAt(at, coll);
                    model.insert(at, std::vector<int>(model.values));
                }
                break;
            case 5:
                if (model.size() > 0) {
                    coll.setAt(at % model.size(), &one);
                    model.values[static_cast<std::size_t>(at % model.size())] = one.value();
                }
                break;
            case 6:
            case 7:
                if (model.size() > 0) {
                    const int from = random.below(model.size());
                    const int count = random.between(1, model.size() - from);
                    coll.removeAt(from, count);
                    model.remove(from, count);
                }
                break;
            case 8:
                if (random.oneIn(10)) {
                    coll.removeAll();
                    model.clear();
                } else {
                    coll.freeExtra();
                }
                break;
            case 9:
                model.iterators.erase(std::next(model.iterators.begin(), random.below(6)));
                model.iterators.push_front(random.oneIn(2) ? atStart() : model.iterators.back());
                break;
            default:
                for (auto& [real, position] : model.iterators) {
                    if (position != -2 && ++position == model.size())
                        position = -2;
                    EXPECT_EQ(real.next(), position != -2);
                }
            }
            ASSERT_EQ(values(coll), model.values) << "step " << step;
            for (const auto& [real, position] : model.iterators) {
                ASSERT_EQ(real.isDone(), position == -2) << "step " << step;
                ASSERT_EQ(valueOf(real.item()), model.item(position)) << "step " << step;
            }
        }
        OwningColl kept;
        kept.copy(coll);
        EXPECT_EQ(values(kept), model.values);
    }
    EXPECT_EQ(Counted::live(), 0);
    EXPECT_EQ(Counted::checkIns() + model.gaps, Counted::checkOuts());
}

TEST(CollectionTest, IteratorsOutliveTheirCollection) {
    auto coll = std::make_unique<KazIntColl>();
    coll->add(1);
    KazIntCollIterator first(*coll), second(first);
    KazIntColl other;
    other.add(5);
    other.add(6);
    KazIntCollIterator elsewhere(other);
    elsewhere.next();
    first = elsewhere; // the position, not the collection
    EXPECT_EQ(first.item(), 0);
    EXPECT_EQ(second.item(), 1);
    coll.reset();
    EXPECT_TRUE(first.isDone());
    EXPECT_FALSE(second.next());
    first = elsewhere;
    EXPECT_EQ(first.item(), 0);
    EXPECT_FALSE(first.next());
    first.reset();
    EXPECT_TRUE(first.isDone());
    EXPECT_TRUE(KazCollIterator(nullptr).isDone());
}

std::vector<std::pair<char, int>> elementLog;

TEST(CollectionTest, ElementFunctionsAreCalledInOrder) {
    const auto in = [](void* element) {
        elementLog.emplace_back('i', valueOf(element));
        return Counted::checkIn(element);
    };
    const auto out = [](void* element) {
        elementLog.emplace_back('o', valueOf(element));
        Counted::checkOut(element);
    };
    using Log = std::vector<std::pair<char, int>>;
    const auto logged = [] { return std::exchange(elementLog, {}); };
    KazColl source;
    Counted one(1), two(2), three(3);
    for (Counted* element : {&one, &two, &three})
        source.add(element);
    KazColl coll;
    EXPECT_EQ(coll.setCheckIn(in), nullptr);
    EXPECT_EQ(coll.setCheckOut(out), nullptr);
    coll.append(source);
    EXPECT_EQ(logged(), (Log{{'i', 1}, {'i', 2}, {'i', 3}}));
    coll.setAt(1, &one);
    EXPECT_EQ(logged(), (Log{{'o', 2}, {'i', 1}}));
    coll.copy(source);
    EXPECT_EQ(logged(), (Log{{'o', 3}, {'o', 1}, {'o', 1}, {'i', 1}, {'i', 2}, {'i', 3}}));
    coll.copy(coll);
    EXPECT_EQ(logged(), Log{});
    coll.removeAt(0, 2);
    EXPECT_EQ(logged(), (Log{{'o', 1}, {'o', 2}}));
    coll.insertAt(0, source);
    logged();
    coll.removeAll();
    EXPECT_EQ(logged(), (Log{{'o', 3}, {'o', 3}, {'o', 2}, {'o', 1}}));
    EXPECT_EQ(coll.setCheckOut(nullptr), static_cast<KazColl::CheckOut>(out));
}

TEST(CollectionTest, FailureLeavesEverythingAsItWas) {
    KazColl plain;
    for (int i = 1; i <= 4; ++i)
        plain.add(new Counted(i));
    plain.setCheckOut(Counted::checkOut); // what is not checked in stays the caller's
    EXPECT_EQ(kit::sweepAllocations([&] { plain.insertAt(0, plain[0]); }, [] {}), 1);
    plain.setCheckOut(nullptr);
    plain.removeAt(0, 1);
    const std::function<void(KazColl&)> actions[] = {
        [&](KazColl& c) { c.add(plain[0]); },
        [&](KazColl& c) { c.insertAt(1, plain[0]); },
        [&](KazColl& c) { c.insertAt(9, plain); },
        [&](KazColl& c) { c.append(plain); },
    };
    for (const auto& action : actions) {
        OwningColl coll;
        coll.append(plain);
        KazCollIterator iterator(coll);
        const long failures = kit::sweepAllocations([&] { action(coll); },
                                                    [&] {
                                                        EXPECT_EQ(values(coll), values(plain));
                                                        EXPECT_EQ(Counted::live(), 8);
                                                        EXPECT_EQ(iterator.item(), coll[0]);
                                                    });
        EXPECT_GE(failures, 2); // a check-in and the growth
    }
    plain.setCheckOut(Counted::checkOut);
    plain.removeAll();

    // A large removal needs no memory.
    OwningColl coll;
    for (int i = 0; i < 200; ++i) {
        Counted element(i);
        coll.add(&element);
    }
    kit::FailAllocation failure(1, kit::FailAllocation::onward);
    coll.removeAt(1, 190);
    EXPECT_TRUE(failure.hit());
    EXPECT_EQ(valueOf(coll[1]), 191);
    EXPECT_EQ(Counted::live(), 10);
}

TEST(IntCollTest, KeepsIntegers) {
    constexpr int least = std::numeric_limits<int>::min();
    KazIntColl coll;
    const int numbers[] = {-1, 0, -1 - least, least, 0};
    coll.insertAt(0, numbers, 5);
    coll.insertAt(1, 7);
    coll.setAt(0, -5);
    EXPECT_EQ(coll.find(0), 5);
    EXPECT_EQ(coll.find(least), 4);
    EXPECT_EQ(coll.find(1), -1);
    KazIntColl other;
    other.copy(coll);
    other.insertAt(1, coll);
    std::vector<int> walked;
    for (KazIntCollIterator i(other); !i.isDone(); i.next())
        walked.push_back(i.item());
    EXPECT_EQ(walked,
              (std::vector<int>{-5, -5, 7, 0, -1 - least, least, 0, 7, 0, -1 - least, least, 0}));
}

TEST(StringCollTest, HoldsOneReferenceForEachElement) {
    KazString a("a"), b("b");
    const auto references = [](const KazString& text) {
        return static_cast<const std::int32_t*>(text.disguise())[-1];
    };
    {
        KazStringColl coll;
        coll.add(a);
        coll.add(b);
        coll.add(a);
        EXPECT_EQ(references(a), 3);
        EXPECT_EQ(coll.find("a"), 2);
        EXPECT_EQ(coll.find("c"), -1);
        EXPECT_EQ(coll.findNoCase("B"), 1);
        coll.add("");
        EXPECT_EQ(coll.find(nullptr), 3);

        coll.getAt(2) = "other"; // the slot is the string
        EXPECT_EQ(references(a), 2);
        coll.setAt(2, coll[2]); // its only reference
        EXPECT_STREQ(coll[2].getValue(), "other");

        KazStringColl copied;
        copied.copy(coll);
        const KazString array[] = {a, b};
        copied.insertAt(1, array, 2);
        EXPECT_EQ(references(b), 5); // b, array, coll, copied twice
        KazStringCollIterator i(copied);
        EXPECT_EQ(references(i.item()), 6);
        coll.removeAt(0, 1);
        EXPECT_EQ(references(a), 4);
        EXPECT_TRUE(KazStringCollIterator(nullptr).item().isEmpty());
    }
    EXPECT_EQ(references(a), 1);
    EXPECT_EQ(references(b), 1);
}

} // namespace
