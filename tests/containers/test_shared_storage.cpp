// Assignment is shallow: what two objects share must be freed once, checked
// out once, and never be touched after that.

#include "tools/containers/KazColl.h"
#include "tools/containers/KazStringColl.h"

#include "kit/alloc_failure.h"
#include "kit/counted.h"
#include "kit/random.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using kit::Counted;

struct OwningColl : KazColl {
    OwningColl() {
        setCheckIn(Counted::checkIn);
        setCheckOut(Counted::checkOut);
    }
    int room() const { return capacity; }
    void fill(int from, int to) {
        for (int i = from; i <= to; ++i) {
            Counted element(i);
            add(&element);
        }
    }
};

int valueAt(const KazColl& coll, int index) {
    const void* element = coll[index];
    return element ? static_cast<const Counted*>(element)->value() : 0;
}

TEST(SharedStorageTest, ArraysShareUntilOneGrows) {
    int things[8] = {};
    KazArrayPtr first;
    for (int i = 0; i < 3; ++i)
        first.add(&things[i]);
    KazArrayPtr second;
    second.add(&things[7]);
    second = first;
    EXPECT_EQ(second.getData(), first.getData());
    second.setAt(1, &things[5]);
    second.add(&things[6]);
    EXPECT_EQ(first[1], &things[5]);
    EXPECT_EQ(first.getSize(), 3);
    EXPECT_EQ(second.getSize(), 4);
    second.freeExtra();
    second.add(&things[7]);
    EXPECT_NE(second.getData(), first.getData());
    second[0] = nullptr;
    EXPECT_EQ(first[0], &things[0]);
    {
        const KazArrayPtr third(first);
        EXPECT_EQ(third[2], &things[2]);
    }
    second = first;
    first.setSize(0);
    EXPECT_EQ(second[2], &things[2]);
    second = *&second;
    EXPECT_EQ(second.getSize(), 3);
}

TEST(SharedStorageTest, ElementsAreCheckedOutByTheLastToLetGo) {
    Counted::resetCounts();
    auto first = std::make_unique<OwningColl>();
    first->fill(1, 3);
    OwningColl second;
    second.fill(10, 14);
    KazCollIterator onSecond(second);
    KazCollIterator late(second);
    for (int i = 0; i < 4; ++i)
        late.next();
    second = *first;
    EXPECT_EQ(Counted::checkOuts(), 5); // what it held before
    EXPECT_EQ(Counted::live(), 3);
    EXPECT_EQ(valueAt(second, 0), 1);
    EXPECT_EQ(onSecond.item(), second[0]);
    EXPECT_TRUE(late.isDone());

    Counted nine(9);
    second.setAt(1, &nine);
    EXPECT_EQ(valueAt(*first, 1), 9);
    KazCollIterator onFirst(*first);
    onFirst.next();
    onFirst.next();
    second.removeAt(0, 1);
    EXPECT_EQ(valueAt(*first, 1), 3);
    EXPECT_EQ(onFirst.item(), (*first)[1]);
    EXPECT_EQ((*first)[2], nullptr);
    first.reset();
    EXPECT_TRUE(onFirst.isDone());
    EXPECT_EQ(Counted::live(), 3); // nine, and two elements
    EXPECT_EQ(valueAt(second, 1), 3);

    OwningColl third(second);
    second.removeAll();
    EXPECT_EQ(valueAt(third, 0), 9);
    EXPECT_EQ(Counted::live(), 3);
    third = *&third;
    third.removeAll();
    EXPECT_EQ(Counted::live(), 1);
    EXPECT_EQ(Counted::checkIns(), Counted::checkOuts());
}

TEST(SharedStorageTest, GrowthSeparates) {
    Counted::resetCounts();
    {
        OwningColl first;
        first.fill(1, 4);
        OwningColl second;
        second = first;
        second.fill(5, 5);
        Counted nine(9);
        second.setAt(0, &nine);
        EXPECT_EQ(valueAt(first, 0), 1);
        EXPECT_EQ(valueAt(second, 4), 5);
        EXPECT_EQ(Counted::live(), 4 + 5 + 1);

        // Nothing changes when that fails.
        OwningColl third;
        third = first;
        const long failures = kit::sweepAllocations([&] { third.fill(5, 5); },
                                                    [&] {
                                                        EXPECT_EQ(third.getSize(), 4);
                                                        EXPECT_EQ(third.getData(), first.getData());
                                                    });
        EXPECT_GE(failures, 6);
        EXPECT_EQ(valueAt(third, 4), 5);
    }
    EXPECT_EQ(Counted::checkIns(), Counted::checkOuts());
    EXPECT_EQ(Counted::live(), 0);
}

TEST(SharedStorageTest, WithoutCheckInElementsAreNeverHeldTwice) {
    Counted::resetCounts();
    {
        KazColl first;
        first.setCheckOut(Counted::checkOut);
        for (int i = 1; i <= 4; ++i)
            first.add(new Counted(i));
        KazColl second;
        second = first;
        second.add(new Counted(5));
        EXPECT_EQ(valueAt(first, 3), 4);
        first.removeAt(0, 1);
        EXPECT_EQ(valueAt(second, 0), 2);
    }
    EXPECT_EQ(Counted::checkOuts(), 5);
    EXPECT_EQ(Counted::live(), 0);
}

TEST(SharedStorageTest, StringsSurviveEitherObject) {
    KazStringColl first;
    first.add("one");
    first.add("two");
    {
        KazStringColl second;
        second = first;
        second.getAt(0) = "changed";
        for (int i = 0; i < 10; ++i)
            second.add("more");
        second.getAt(1) = "apart";
    }
    EXPECT_STREQ(first[0].getValue(), "changed");
    EXPECT_STREQ(first[1].getValue(), "two");
}

/// Any order of operations on objects that share and part again.
void runAtRandom(bool checksIn) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    const int before = Counted::live();
    {
        std::vector<std::unique_ptr<KazColl>> colls(4);
        std::vector<std::unique_ptr<KazCollIterator>> iterators(6);
        const auto entering = [&](int value) { return new Counted(value); };
        for (int step = 0; step < 30000; ++step) {
            auto& coll = colls[static_cast<std::size_t>(random.below(4))];
            auto& other = colls[static_cast<std::size_t>(random.below(4))];
            if (!coll) {
                coll = std::make_unique<KazColl>();
                coll->setCheckOut(Counted::checkOut);
                if (checksIn)
                    coll->setCheckIn(Counted::checkIn);
            }
            std::unique_ptr<Counted> element(entering(step));
            void* item = checksIn ? element.get() : element.release();
            const auto unused = [&] { checksIn ? void() : Counted::checkOut(item); };
            const int size = coll->getSize();
            switch (random.below(10)) {
            case 0:
            case 1:
                coll->add(item);
                break;
            case 2:
                coll->insertAt(random.below(size + 2), item);
                break;
            case 3:
                size > 0 ? coll->setAt(random.below(size), item) : unused();
                break;
            case 4:
                unused();
                if (size > 0)
                    coll->removeAt(random.below(size), random.between(1, 3));
                break;
            case 5:
                unused();
                if (other)
                    *coll = *other;
                break;
            case 6:
                unused();
                if (random.oneIn(4))
                    coll.reset();
                break;
            case 7:
                unused();
                random.oneIn(4) ? coll->removeAll() : coll->freeExtra();
                break;
            case 8:
                unused();
                iterators[static_cast<std::size_t>(random.below(6))] =
                    std::make_unique<KazCollIterator>(*coll);
                break;
            default:
                unused();
                if (checksIn && other && size < 30)
                    random.oneIn(2) ? coll->copy(*other) : coll->insertAt(0, *other);
            }
            for (const auto& each : colls) {
                for (int i = 0; each && i < each->getSize(); ++i)
                    ASSERT_GE(valueAt(*each, i), 0);
            }
            for (const auto& each : iterators) {
                if (!each)
                    continue;
                const void* reached = each->item();
                ASSERT_GE(reached ? static_cast<const Counted*>(reached)->value() : 0, 0);
                each->next();
            }
        }
    }
    EXPECT_EQ(Counted::live(), before);
}

TEST(SharedStorageTest, RandomUseWithCheckIn) {
    runAtRandom(true);
}

TEST(SharedStorageTest, RandomUseWithoutCheckIn) {
    runAtRandom(false);
}

} // namespace
