// Assignment is shallow: what two objects share must be freed once, checked
// out once, and never be touched after that.

#include "tools/containers/KazColl.h"
#include "tools/containers/KazStringColl.h"

#include "elements.h"
#include "kit/alloc_failure.h"

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
    void fill(int from, int to) {
        for (int i = from; i <= to; ++i) {
            Counted element(i);
            add(&element);
        }
    }
};

int valueAt(const KazColl& coll, int index) {
    return valueOf(coll[index]);
}

TEST(SharedStorageTest, ArraysShareUntilOneGrows) {
    int things[8] = {};
    KazArrayPtr first;
    for (int i = 0; i < 3; ++i)
        first.add(&things[i]);
    KazArrayPtr second;
    second.add(&things[7]);
    second = first;
    second.setAt(1, &things[5]);
    second.add(&things[6]);
    EXPECT_EQ(first[1], &things[5]);
    EXPECT_EQ(first.getSize(), 3);
    EXPECT_EQ(second.getSize(), 4);
    second.freeExtra();
    second.add(&things[7]);
    second[0] = nullptr;
    EXPECT_EQ(first[0], &things[0]);
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

    OwningColl third(second);
    second.removeAll();
    EXPECT_EQ(valueAt(third, 0), 9);
    third.removeAll();
    EXPECT_EQ(Counted::live(), 1);
    EXPECT_EQ(Counted::checkIns(), Counted::checkOuts());
}

TEST(SharedStorageTest, GrowthSeparates) {
    {
        OwningColl first;
        first.fill(1, 4);
        OwningColl second(first);
        const long failures = kit::sweepAllocations(
            [&] { second.fill(5, 5); }, [&] { EXPECT_EQ(second.getData(), first.getData()); });
        EXPECT_GE(failures, 6);
        Counted nine(9);
        second.setAt(0, &nine);
        EXPECT_EQ(valueAt(first, 0), 1);
        EXPECT_EQ(valueAt(second, 4), 5);
        EXPECT_EQ(Counted::live(), 4 + 5 + 1);
    }
    {
        KazColl first; // with nothing to check in, elements are never held twice
        first.setCheckOut(Counted::checkOut);
        for (int i = 1; i <= 4; ++i)
            first.add(new Counted(i));
        KazColl second(first);
        second.add(new Counted(5));
        first.removeAt(0, 1);
        EXPECT_EQ(valueAt(second, 0), 2);
    }
    EXPECT_EQ(Counted::live(), 0);
    KazStringColl first;
    first.add("one");
    {
        KazStringColl second(first);
        second.getAt(0) = "changed";
        for (int i = 0; i < 10; ++i)
            second.add("more");
        second.getAt(0) = "apart";
    }
    EXPECT_STREQ(first[0].getValue(), "changed");
}

/// Any operations in any order on collections that share and part again. Those
/// that check in do so with functions that may do one operation more.
class Crowd {
public:
    explicit Crowd(bool checksIn) : checksIn_(checksIn), colls_(4), iterators_(6) {
        Meddler::random = &random_;
        Meddler::action = [this] { act(); };
    }
    ~Crowd() { Meddler::action = nullptr; }

    void act() {
        auto& coll = colls_[static_cast<std::size_t>(random_.below(4))];
        const auto& other = colls_[static_cast<std::size_t>(random_.below(4))];
        if (!coll)
            coll = fresh();
        const int size = coll->getSize();
        const int operation = random_.below(10);
        std::unique_ptr<Counted> element(operation < 4 ? new Counted(1) : nullptr);
        // What is not checked in is the collection's from now on.
        void* item = checksIn_ ? element.get() : element.release();
        switch (operation) {
        case 0:
            coll->insertAt(random_.below(size + 2), item);
            break;
        case 1:
            if (size > 0) {
                coll->setAt(random_.below(size), item);
                break;
            }
            [[fallthrough]];
        case 2:
        case 3:
            coll->add(item);
            break;
        case 4:
            if (size > 0)
                coll->removeAt(random_.below(size), random_.between(1, 3));
            break;
        case 5:
            if (other)
                *coll = *other;
            break;
        case 6:
            if (!Meddler::isAtWork() && random_.oneIn(4))
                coll.reset();
            break;
        case 7:
            random_.oneIn(4) ? coll->removeAll() : coll->freeExtra();
            break;
        case 8:
            if (!Meddler::isAtWork())
                iterators_[static_cast<std::size_t>(random_.below(6))] =
                    std::make_unique<KazCollIterator>(*coll);
            break;
        default:
            if (checksIn_ && other && size < 30)
                random_.oneIn(2) ? coll->copy(*other) : coll->insertAt(0, *other);
        }
    }

    void check() {
        for (const auto& coll : colls_)
            for (int i = 0; coll && i < coll->getSize(); ++i)
                ASSERT_GE(valueAt(*coll, i), 0);
        for (const auto& each : iterators_) {
            ASSERT_GE(each ? valueOf(each->item()) : 0, 0);
            if (each)
                each->next();
        }
    }

private:
    std::unique_ptr<KazColl> fresh() const {
        auto result = std::make_unique<KazColl>();
        result->setCheckOut(checksIn_ ? Meddler::out : Counted::checkOut);
        result->setCheckIn(checksIn_ ? Meddler::in : nullptr);
        return result;
    }

    kit::Random random_{kit::seed()};
    bool checksIn_;
    std::vector<std::unique_ptr<KazColl>> colls_;
    std::vector<std::unique_ptr<KazCollIterator>> iterators_;
};

TEST(SharedStorageTest, RandomUse) {
    SCOPED_TRACE(kit::seedText());
    for (bool checksIn : {true, false}) {
        {
            Crowd crowd(checksIn);
            for (int step = 0; step < 30000 && !HasFailure(); ++step) {
                crowd.act();
                crowd.check();
            }
        }
        EXPECT_EQ(Counted::live(), 0);
    }
}

} // namespace
