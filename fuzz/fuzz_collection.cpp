// SPDX-License-Identifier: Apache-2.0
// Arrays and collections against std::vector, with iterators that stay while
// elements come and go, and with storage that several of them share.
#include "fuzz/harness.h"
#include "fuzz/meddling.h"
#include "testkit/counted.h"
#include "tools/containers/KazCollIterator.h"
#include "tools/containers/KazStringColl.h"
#include "tools/containers/KazStringCollIterator.h"
#include "tools/containers/detail/soundness.h"

#include <algorithm>
#include <array>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace {

using fuzz::Input;
using fuzz::Meddling;
using moxkit::Counted;

int valueOf(const void* element) {
    return element ? static_cast<const Counted*>(element)->value() : 0;
}

// ---- Arrays, which share their slots until one of them needs more

struct Array : KazArrayPtr {
    std::vector<void*> contents() const { return std::vector<void*>(data, data + size); }
    int room() const { return capacity; }
};

/// The capacity that growing for @p count slots gives at the usual rate.
int grownCapacity(int present, int count) {
    const int fitting = (count + 3) / 4 * 4;
    const auto more = static_cast<int>((1.3F - 1.0F) * static_cast<float>(present));
    return present == 0 ? fitting : std::max(fitting, (present + more + 4) / 4 * 4);
}

/// An array, and the slots that it should have, of which it counts the first ones.
struct Sharer {
    Array array;
    std::shared_ptr<std::vector<void*>> slots;
    int size = 0;

    int room() const { return slots ? static_cast<int>(slots->size()) : 0; }
    std::vector<void*> contents() const {
        return slots ? std::vector<void*>(slots->begin(), slots->begin() + size)
                     : std::vector<void*>();
    }
    void check() const { FUZZ_CHECK(array.contents() == contents() && array.room() == room()); }
    void put(int at, void* value) { (*slots)[static_cast<std::size_t>(at)] = value; }
    /// What is new is null, also for whoever counts these slots already.
    void resize(int count) {
        if (count > room()) {
            const int wider = grownCapacity(room(), count);
            slots = std::make_shared<std::vector<void*>>(contents());
            slots->resize(static_cast<std::size_t>(wider));
        }
        if (count > size)
            std::fill(slots->begin() + size, slots->begin() + count, nullptr);
        size = count;
    }
    /// By setSize() and copy(), which let go of all slots when none is wanted.
    void setSize(int count) {
        resize(count);
        if (count == 0)
            slots.reset();
    }
    void insert(int at, const std::vector<void*>& items) {
        std::vector<void*> behind = contents();
        behind.erase(behind.begin(), behind.begin() + std::min(at, size));
        resize(std::max(at, size) + static_cast<int>(items.size()));
        if (!items.empty())
            std::copy(behind.begin(), behind.end(),
                      std::copy(items.begin(), items.end(), slots->begin() + at));
    }
    void remove(int at, int count) {
        const int gone = std::min(count, size - at);
        if (gone > 0)
            std::copy(slots->begin() + at + gone, slots->begin() + size, slots->begin() + at);
        size -= gone;
    }
    void freeExtra() {
        if (slots.use_count() == 1)
            size > 0 ? slots->resize(static_cast<std::size_t>(size)) : slots.reset();
    }
};

void arraysShareUntilTheyGrow(Input& input) {
    fuzz::Failures failures(input);
    std::array<Sharer, 3> all;
    const auto check = [&all] {
        for (const Sharer& each : all)
            each.check();
    };
    for (int work = 0; !input.empty() && work < 300000;) {
        work += all[0].size + all[1].size + all[2].size + 1;
        Sharer& one = all[input.between<std::size_t>(0, 2)];
        const Sharer& other = all[input.between<std::size_t>(0, 2)];
        Array& array = one.array;
        void* value = reinterpret_cast<void*>(static_cast<std::intptr_t>(input.between(1, 99)));
        const int at = input.between(0, one.size + 2), count = input.between(0, 3);
        const int operation = input.between(0, 12);
        if (operation == 0) {
            failures.step([&] { FUZZ_CHECK(array.add(value) == one.size); }, check);
            one.insert(one.size, {value});
        } else if (operation == 1) {
            if (at < one.size) {
                array.setAt(at, value);
                one.put(at, value);
            }
        } else if (operation < 4) {
            one = Sharer(other);
        } else if (operation == 4) {
            if (other.size < 100) {
                const int from = input.between(0, std::max(other.size - 1, 0));
                Array lent = other.array; // which shares them, too
                failures.step(
                    [&] {
                        from == 0 ? array.insertAt(at, other.array)
                                  : array.insertAt(at, lent.getData() + from, other.size - from);
                    },
                    check);
                std::vector<void*> inserted = other.contents();
                inserted.erase(inserted.begin(), inserted.begin() + from);
                if (!inserted.empty())
                    one.insert(at, inserted);
            }
        } else if (operation == 5) {
            if (at < one.size) {
                failures.hold([&] { array.removeAt(at, count); });
                one.remove(at, count);
            }
        } else if (operation == 6) {
            failures.step([&] { array.setSize(at); }, check);
            one.setSize(at);
        } else if (operation == 7) {
            if (failures.hold([&] { array.freeExtra(); })) // or the block cannot shrink
                one.freeExtra();
        } else if (operation == 8) {
            failures.step([&] { array.setAtGrow(at, value); }, check);
            one.resize(std::max(at + 1, one.size));
            one.put(at, value);
        } else if (operation == 9) {
            array.remove();
            one.remove(std::max(one.size - 1, 0), 1);
        } else if (operation == 10) {
            std::vector<void*> inserted(input.between<std::size_t>(0, 80), value);
            const int inputs = static_cast<int>(inserted.size());
            failures.step([&] { array.insertAt(at, inserted.data(), inputs); }, check);
            one.insert(at, inserted);
        } else if (operation == 11) {
            if (other.size < 100) {
                failures.step([&] { FUZZ_CHECK(array.append(other.array) == one.size); }, check);
                if (other.size > 0)
                    one.insert(one.size, other.contents());
            }
        } else {
            failures.step([&] { array.copy(other.array); }, check);
            if (one.slots == other.slots) {
                one.size = other.size;
            } else {
                const std::vector<void*> copied = other.contents();
                one.setSize(other.size);
                for (std::size_t i = 0; i < copied.size(); ++i)
                    (*one.slots)[i] = copied[i];
            }
        }
        check();
        const std::vector<void*> now = one.contents();
        FUZZ_CHECK(array.findPtr(value) ==
                   now.rend() - std::find(now.rbegin(), now.rend(), value) - 1);
    }
}

// ---- The collection and its iterators

/// A call of an element function, and what it sees in the collection; 0 for null.
struct Call {
    char what;
    int value;
    std::vector<int> seen;
    bool operator==(const Call&) const = default;
};
std::vector<Call> calls;
const KazColl* watched = nullptr;

void noteCall(char what, int value) {
    const fuzz::MemoryHolds holds;
    calls.push_back({what, value, {}});
    for (int i = 0; watched && i < watched->getSize(); ++i)
        calls.back().seen.push_back(valueOf((*watched)[i]));
}

void* notedCheckIn(void* element) {
    noteCall('i', valueOf(element));
    return Counted::checkIn(element);
}

void notedCheckOut(void* element) {
    const int value = valueOf(element);
    Counted::checkOut(element); // whatever the collection shows now is not this one
    noteCall('o', value);
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
    std::vector<Call> calls;

    int size() const { return static_cast<int>(values.size()); }
    void note(char what, int value) { calls.push_back({what, value, values}); }
    /// One item is checked in first, several when they are in their places.
    void insertOne(int at, int item) {
        note('i', item);
        put(at, {item});
    }
    void insert(int at, const std::vector<int>& items) {
        put(at, items);
        for (int item : items)
            note('i', item);
    }
    void leave(int at) {
        const int left = std::exchange(values[static_cast<std::size_t>(at)], 0);
        note('o', left);
    }
    void put(int at, const std::vector<int>& items) {
        if (at > size())
            values.resize(static_cast<std::size_t>(at));
        values.insert(values.begin() + at, items.begin(), items.end());
        for (Tracked& i : iterators)
            i.position += i.position >= at ? static_cast<int>(items.size()) : 0;
    }
    void remove(int at, int count) {
        for (int i = at; i < at + count; ++i)
            leave(i);
        values.erase(values.begin() + at, values.begin() + at + count);
        for (auto& [real, position] : iterators)
            position = position >= at ? std::max(position - count, at - 1) : position;
    }
    void clear() {
        for (int i = size() - 1; i >= 0; --i)
            leave(i);
        values.clear();
        for (Tracked& i : iterators)
            i.position = -2;
    }
    int item(int i) const { return i >= 0 ? values[static_cast<std::size_t>(i)] : 0; }
};

class Walked {
public:
    Walked(KazColl& walked, fuzz::Failures& source) : coll(walked), failures(source) {
        for (int i = 0; i < 6; ++i)
            model.iterators.push_front(atStart());
    }

    void change(Input& input) {
        const int size = model.size();
        const int at = input.between(0, size + 1);
        Counted one(input.between(1, 99)), two(7);
        const int operation = input.between(0, 9);
        if (operation == 0) {
            retry([&] { FUZZ_CHECK(coll.add(&one) == size); });
            model.insertOne(size, one.value());
        } else if (operation == 1) {
            void* items[] = {&one, &two};
            if (input.flag()) {
                retry([&] { coll.insertAt(at, items, 2); });
                model.insert(at, {one.value(), 7});
            } else {
                retry([&] { coll.insertAt(at, &one); });
                model.insertOne(at, one.value());
            }
        } else if (operation == 2) {
            if (size > 0 && size < 200) {
                if (input.flag()) {
                    retry([&] { coll.insertAt(at, coll); });
                    model.insert(at, std::vector<int>(model.values));
                } else {
                    retry([&] { FUZZ_CHECK(coll.append(coll) == size); });
                    model.insert(size, std::vector<int>(model.values));
                }
            }
        } else if (operation == 3) {
            if (size > 0) {
                // What it replaces is gone before the new one comes in.
                failures.step([&] { coll.setAt(at % size, &one); },
                              [&] {
                                  model.leave(at % size);
                                  model.note('i', one.value());
                                  check();
                              });
                model.leave(at % size);
                model.note('i', one.value());
                model.values[static_cast<std::size_t>(at % size)] = one.value();
            }
        } else if (operation < 6) {
            if (size > 0) {
                const int from = at % size;
                const int count = input.between(1, size - from);
                failures.hold([&] { coll.removeAt(from, count); });
                model.remove(from, count);
            }
        } else if (operation == 6) {
            if (const int what = input.between(0, 9); what == 0)
                clear();
            else if (what == 1)
                copyOthers(input);
            else
                coll.freeExtra();
        } else if (operation == 7) {
            const bool fresh = input.flag();
            model.iterators.pop_back();
            model.iterators.push_front(fresh ? atStart() : model.iterators.back());
        } else {
            for (auto& [real, position] : model.iterators) {
                if (position != -2 && ++position == size)
                    position = -2;
                FUZZ_CHECK(real.next() == (position != -2));
            }
        }
        check();
    }

    int size() const { return model.size(); }

private:
    Tracked atStart() { return {KazCollIterator(coll), model.size() > 0 ? 0 : -2}; }

    void clear() {
        failures.hold([&] { coll.removeAll(); });
        model.clear();
    }

    /// What it held is gone before the first one comes in. Without memory in between it may
    /// be empty.
    void copyOthers(Input& input) {
        const Counted others[] = {Counted(input.between(1, 99)), Counted(8), Counted(9)};
        KazColl lent;
        std::vector<int> values;
        for (int n = input.between(0, 3); n > 0; --n) {
            values.push_back(others[n - 1].value());
            lent.add(const_cast<Counted*>(&others[n - 1]));
        }
        failures.step([&] { coll.copy(lent); },
                      [&] {
                          if (coll.getSize() == 0)
                              model.clear();
                          calls.clear();
                          model.calls.clear();
                      });
        model.clear();
        if (!values.empty())
            model.insert(0, values);
        coll.copy(coll);
    }

    /// What ran out of memory has checked out again whatever it had checked in.
    template <typename Act>
    void retry(Act act) {
        failures.step(act, [this] {
            calls.clear();
            check();
        });
    }

    void check() {
        FUZZ_CHECK(Counted::live() == present(model.values) + 2);
        FUZZ_CHECK(std::exchange(calls, {}) == std::exchange(model.calls, {}));
        FUZZ_CHECK(kaz::detail::Soundness::holds(coll));
        FUZZ_CHECK(coll.getSize() == model.size());
        for (int i = 0; i < model.size(); ++i)
            FUZZ_CHECK(valueOf(coll[i]) == model.item(i));
        for (const auto& [real, position] : model.iterators) {
            FUZZ_CHECK(real.isDone() == (position == -2));
            FUZZ_CHECK(valueOf(real.item()) == model.item(position));
        }
    }

    static int present(const std::vector<int>& values) {
        return static_cast<int>(values.size() - std::count(values.begin(), values.end(), 0));
    }

    KazColl& coll;
    Model model;
    fuzz::Failures& failures;
};

void iteratorsKeepTheirElements(Input& input) {
    fuzz::Failures failures(input);
    {
        KazColl coll;
        FUZZ_CHECK(coll.setCheckIn(notedCheckIn) == nullptr);
        FUZZ_CHECK(coll.setCheckOut(nullptr) == nullptr);
        FUZZ_CHECK(coll.setCheckOut(notedCheckOut) == nullptr);
        watched = &coll;
        calls.clear();
        Walked walked(coll, failures);
        for (int work = 0; !input.empty() && work < 300000; work += walked.size() + 1)
            walked.change(input);
        watched = nullptr;
        KazColl copied(coll);
        copied.append(coll);
        const int before = Counted::live();
        KazColl emptied;
        emptied.setCheckIn(Counted::checkIn);
        emptied.setCheckOut(Counted::checkOut);
        failures.step([&] { emptied.copy(coll); },
                      [&] { FUZZ_CHECK(emptied.getSize() == 0 && Counted::live() == before); });
    }
    FUZZ_CHECK(Counted::live() == 0);
}

// ---- Strings, own elements among the arguments

/// Each element holds one reference to its block.
void holdsOneReferenceEach(const KazStringColl& coll, const KazString& text) {
    KazStringColl copied;
    copied.copy(coll);
    int holders = 1;
    for (int i = 0; i < coll.getSize(); ++i)
        holders += (coll[i].disguise() == text.disguise() ? 1 : 0) +
                   (copied[i].disguise() == text.disguise() ? 1 : 0);
    FUZZ_CHECK(text.isEmpty() || KazStringRep::of(text.disguise())->referenceCount == holders);
    FUZZ_CHECK(KazStringCollIterator(nullptr).item().isEmpty());
}

void stringsBehaveLikeAVector(Input& input) {
    fuzz::Failures failures(input);
    KazStringColl coll;
    std::vector<std::string> model;
    const auto unchanged = [&] {
        FUZZ_CHECK(coll.getSize() == static_cast<int>(model.size()));
        for (int i = 0; i < coll.getSize(); ++i)
            FUZZ_CHECK(coll[i] == model[static_cast<std::size_t>(i)].c_str());
    };
    for (int work = 0; !input.empty() && work < 100000; work += coll.getSize() + 1) {
        const int size = coll.getSize();
        const int at = input.between(0, size);
        const int from = input.between(0, std::max(size - 1, 0));
        const std::string wanted = input.textOf("aAb", 2);
        const KazString fresh = wanted.c_str();
        const bool isOwn = size > 0 && input.flag();
        const KazString& text = isOwn ? coll[from] : fresh;
        const std::string value = text.getValue();
        const auto here = model.begin() + at;
        const int operation = input.between(0, 6);
        if (operation == 0) {
            failures.step([&] { FUZZ_CHECK(coll.add(text) == size); }, unchanged);
            model.push_back(value);
        } else if (operation == 1) {
            failures.step([&] { coll.insertAt(at, text); }, unchanged);
            model.insert(here, value);
        } else if (operation == 2) {
            const KazString both[] = {text, fresh};
            failures.step([&] { coll.insertAt(at, both, 2); }, unchanged);
            model.insert(here, {value, wanted});
        } else if (operation == 3) {
            if (size < 100) {
                coll.insertAt(at, coll);
                const std::vector<std::string> inserted(model);
                model.insert(here, inserted.begin(), inserted.end());
            }
        } else if (operation == 4) {
            coll.removeAt(from, 1);
            if (size > 0)
                model.erase(model.begin() + from);
        } else {
            if (at < size) {
                input.flag() ? coll.setAt(at, text) : void(coll[at] = text);
                *here = value;
            }
        }
        FUZZ_CHECK(coll.getSize() == static_cast<int>(model.size()));
        holdsOneReferenceEach(coll, fresh);
        auto expected = model.begin();
        for (KazStringCollIterator i(coll); !i.isDone(); i.next())
            FUZZ_CHECK(i.item() == (expected++)->c_str());
        const auto last = [&](auto isWanted) {
            return model.rend() - std::find_if(model.rbegin(), model.rend(), isWanted) - 1;
        };
        const char* const searched = wanted.empty() ? nullptr : wanted.c_str();
        FUZZ_CHECK(coll.find(searched) == last([&](const auto& each) { return each == wanted; }));
        FUZZ_CHECK(coll.findNoCase(searched) == last([&](const auto& each) {
                       return fuzz::lowered(each) == fuzz::lowered(wanted);
                   }));
    }
}

// ---- Collections that share storage and part again

void* meddlingCheckIn(void* element) {
    void* copy = Counted::checkIn(element);
    Meddling::now(); // only now: the element may be among what it removes
    return copy;
}

void meddlingCheckOut(void* element) {
    Counted::checkOut(element);
    Meddling::now();
}

/// Any operations in any order. Those collections that check in do so with
/// functions that may do one operation more.
class Crowd {
public:
    Crowd(Input& source, bool checksElementsIn) : input(source), checksIn(checksElementsIn) {}

    void act() {
        auto& coll = colls[input.between<std::size_t>(0, 3)];
        const auto& other = colls[input.between<std::size_t>(0, 3)];
        if (!coll)
            coll = fresh();
        const int size = coll->getSize();
        const int operation = input.between(0, 9);
        if (operation == 0)
            withItem([&](void* item) { coll->insertAt(input.between(0, size + 1), item); });
        else if (operation == 1 && size > 0)
            withItem([&](void* item) { coll->setAt(input.between(0, size - 1), item); });
        else if (operation < 4)
            withItem([&](void* item) { coll->add(item); });
        else if (operation == 4 && size > 0)
            coll->removeAt(input.between(0, size - 1), input.between(1, 3));
        else if (operation == 5 && other)
            *coll = *other;
        else if (operation == 6 && !Meddling::isInside() && input.flag())
            coll.reset();
        else if (operation == 7)
            input.flag() ? coll->removeAll() : coll->freeExtra();
        else if (operation == 8 && !Meddling::isInside())
            iterators[input.between<std::size_t>(0, 5)] = std::make_unique<KazCollIterator>(*coll);
        else if (operation == 9 && checksIn && other && size < 30)
            takeOver(*coll, *other);
    }

    /// Whatever can be reached is alive: the sanitizer sees to the rest.
    void check() {
        for (const auto& coll : colls) {
            FUZZ_CHECK(!coll || kaz::detail::Soundness::holds(*coll));
            for (int i = 0; coll && i < coll->getSize(); ++i)
                FUZZ_CHECK(valueOf((*coll)[i]) >= 0);
        }
        for (const auto& each : iterators) {
            FUZZ_CHECK(!each || valueOf(each->item()) >= 0);
            if (each)
                each->next();
        }
    }

private:
    void takeOver(KazColl& coll, const KazColl& other) {
        Counted items[] = {Counted(1), Counted(2), Counted(3)};
        void* given[] = {&items[0], &items[1], &items[2]};
        const int at = input.between(0, coll.getSize() + 1);
        const int how = input.between(0, 3);
        if (how == 0)
            coll.copy(other);
        else if (how == 1)
            coll.insertAt(at, other);
        else if (how == 2)
            coll.append(other);
        else
            coll.insertAt(at, given, 3);
    }

    /// What is not checked in is the collection's from then on.
    template <typename Action>
    void withItem(Action action) {
        std::unique_ptr<Counted> element(new Counted(1));
        action(checksIn ? element.get() : element.release());
    }

    std::unique_ptr<KazColl> fresh() const {
        auto result = std::make_unique<KazColl>();
        result->setCheckOut(checksIn ? meddlingCheckOut : Counted::checkOut);
        result->setCheckIn(checksIn ? meddlingCheckIn : nullptr);
        return result;
    }

    Input& input;
    bool checksIn;
    std::array<std::unique_ptr<KazColl>, 4> colls;
    std::array<std::unique_ptr<KazCollIterator>, 6> iterators;
    Meddling meddling{input, [this] { act(); }};
};

void sharersLetGoOnce(Input& input) {
    {
        Crowd crowd(input, input.flag());
        while (!input.empty()) {
            crowd.act();
            crowd.check();
        }
    }
    FUZZ_CHECK(Counted::live() == 0);
}

} // namespace

void fuzz::harness(Input& input) {
    static constexpr void (*parts[])(Input&) = {arraysShareUntilTheyGrow,
                                                iteratorsKeepTheirElements,
                                                stringsBehaveLikeAVector, sharersLetGoOnce};
    input.pick(parts)(input);
}
