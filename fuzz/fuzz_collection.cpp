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
#include <cctype>
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

// ---- The array

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

void arrayBehavesLikeAVector(Input& input) {
    fuzz::Failures failures(input);
    Array array;
    std::vector<void*> model;
    int room = 0;
    const auto unchanged = [&] { FUZZ_CHECK(array.contents() == model && array.room() == room); };
    for (int work = 0; !input.empty() && work < 300000; work += array.getSize() + 1) {
        const int size = static_cast<int>(model.size());
        void* value = reinterpret_cast<void*>(static_cast<std::intptr_t>(input.between(1, 99)));
        const int at = input.between(0, size + 3);
        const auto fillTo = [&](int count) {
            if (count > size)
                model.resize(static_cast<std::size_t>(count));
        };
        bool fits = false;
        switch (input.between(0, 9)) {
        case 0:
            failures.step([&] { FUZZ_CHECK(array.add(value) == size); }, unchanged);
            model.push_back(value);
            break;
        case 1:
            failures.step([&] { array.setAtGrow(at, value); }, unchanged);
            fillTo(at + 1);
            model[static_cast<std::size_t>(at)] = value;
            break;
        case 2: {
            std::vector<void*> inserted(static_cast<std::size_t>(input.between(0, 80)), value);
            failures.step(
                [&] { array.insertAt(at, inserted.data(), static_cast<int>(inserted.size())); },
                unchanged);
            fillTo(at);
            model.insert(model.begin() + at, inserted.begin(), inserted.end());
            break;
        }
        case 3:
            if (size > 0 && size < 500) { // its own slots
                failures.step([&] { array.insertAt(at, array); }, unchanged);
                const std::vector<void*> inserted(model);
                fillTo(at);
                model.insert(model.begin() + at, inserted.begin(), inserted.end());
            }
            break;
        case 4:
            array.remove();
            model.resize(static_cast<std::size_t>(std::max(size - 1, 0)));
            break;
        case 5:
            fits = failures.hold([&] { array.freeExtra(); }); // or the block cannot shrink
            break;
        case 6:
            failures.step([&] { array.setSize(at); }, unchanged);
            model.resize(static_cast<std::size_t>(at));
            fits = at == 0;
            break;
        case 7: {
            KazArrayPtr other;
            failures.step([&] { other.copy(array); }, [&] { FUZZ_CHECK(other.getSize() == 0); });
            failures.step([&] { FUZZ_CHECK(other.append(array) == size); },
                          [&] { FUZZ_CHECK(other.getSize() == size); });
            FUZZ_CHECK(other.findPtr(size > 0 ? array[0] : value) >= size || size == 0);
            break;
        }
        default:
            if (size > 0) {
                const int from = input.between(0, size - 1);
                const int count = input.between(0, 9);
                failures.hold([&] { array.removeAt(from, count); });
                model.erase(model.begin() + from,
                            model.begin() + from + std::min(count, size - from));
            }
        }
        FUZZ_CHECK(array.contents() == model);
        FUZZ_CHECK(array.findPtr(value) ==
                   model.rend() - std::find(model.rbegin(), model.rend(), value) - 1);
        room = fits                      ? static_cast<int>(model.size())
               : array.getSize() <= room ? room
                                         : grownCapacity(room, array.getSize());
        FUZZ_CHECK(array.room() == room);
    }
}

// ---- Arrays that share their slots until one of them needs more

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
    /// What is new is null, also for whoever counts these slots already.
    void resize(int count) {
        if (count > room()) {
            const int wider = grownCapacity(room(), count);
            slots = std::make_shared<std::vector<void*>>(contents());
            slots->resize(static_cast<std::size_t>(wider));
        }
        if (count > size)
            std::fill(slots->begin() + size, slots->begin() + count, nullptr);
        if (count == 0)
            slots.reset();
        size = count;
    }
    void insert(int at, const std::vector<void*>& items) {
        if (items.empty())
            return;
        std::vector<void*> behind = contents();
        behind.erase(behind.begin(), behind.begin() + std::min(at, size));
        resize(std::max(at, size) + static_cast<int>(items.size()));
        std::copy(behind.begin(), behind.end(),
                  std::copy(items.begin(), items.end(), slots->begin() + at));
    }
};

void arraysShareUntilTheyGrow(Input input) {
    fuzz::Failures failures(input);
    std::array<Sharer, 3> all;
    const auto check = [&all] {
        for (const Sharer& each : all) {
            FUZZ_CHECK(each.array.contents() == each.contents());
            FUZZ_CHECK(each.array.room() == each.room());
        }
    };
    for (int work = 0; !input.empty() && work < 100000; work += all[0].size + 1) {
        Sharer& one = all[input.between<std::size_t>(0, 2)];
        const Sharer& other = all[input.between<std::size_t>(0, 2)];
        void* value = reinterpret_cast<void*>(static_cast<std::intptr_t>(input.between(1, 99)));
        const int at = input.between(0, one.size + 2), count = input.between(0, 3);
        switch (input.between(0, 8)) {
        case 0:
            failures.step([&] { one.array.add(value); }, check);
            one.insert(one.size, {value});
            break;
        case 1:
            if (at < one.size) {
                one.array.setAt(at, value);
                (*one.slots)[static_cast<std::size_t>(at)] = value;
            }
            break;
        case 2:
        case 3:
            one = Sharer(other);
            break;
        case 4:
            if (other.size < 100) {
                const int from = input.between(0, std::max(other.size - 1, 0));
                Array lent = other.array; // which shares them, too
                failures.step(
                    [&] {
                        from == 0
                            ? one.array.insertAt(at, other.array)
                            : one.array.insertAt(at, lent.getData() + from, other.size - from);
                    },
                    check);
                std::vector<void*> inserted = other.contents();
                inserted.erase(inserted.begin(), inserted.begin() + from);
                one.insert(at, inserted);
            }
            break;
        case 5:
            if (at < one.size) {
                const int gone = std::min(count, one.size - at);
                one.array.removeAt(at, count);
                std::copy(one.slots->begin() + at + gone, one.slots->begin() + one.size,
                          one.slots->begin() + at);
                one.size -= gone;
            }
            break;
        case 6:
            failures.step([&] { one.array.setSize(at); }, check);
            one.resize(at);
            break;
        case 7:
            one.array.freeExtra();
            if (one.slots.use_count() == 1)
                one.size > 0 ? one.slots->resize(static_cast<std::size_t>(one.size))
                             : one.resize(0);
            break;
        default:
            failures.step([&] { one.array.copy(other.array); }, check);
            if (one.slots == other.slots) {
                one.size = other.size;
            } else {
                one.resize(other.size);
                for (std::size_t i = 0; i < other.contents().size(); ++i)
                    (*one.slots)[i] = (*other.slots)[i];
            }
        }
        check();
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
        switch (input.between(0, 9)) {
        case 0:
            retry([&] { FUZZ_CHECK(coll.add(&one) == size); });
            model.insertOne(size, one.value());
            break;
        case 1: {
            void* items[] = {&one, &two};
            if (input.flag()) {
                retry([&] { coll.insertAt(at, items, 2); });
                model.insert(at, {one.value(), 7});
            } else {
                retry([&] { coll.insertAt(at, &one); });
                model.insertOne(at, one.value());
            }
            break;
        }
        case 2:
            if (size > 0 && size < 200) {
                if (input.flag()) {
                    retry([&] { coll.insertAt(at, coll); });
                    model.insert(at, std::vector<int>(model.values));
                } else {
                    retry([&] { FUZZ_CHECK(coll.append(coll) == size); });
                    model.insert(size, std::vector<int>(model.values));
                }
            }
            break;
        case 3:
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
            break;
        case 4:
        case 5:
            if (size > 0) {
                const int from = at % size;
                const int count = input.between(1, size - from);
                failures.hold([&] { coll.removeAt(from, count); });
                model.remove(from, count);
            }
            break;
        case 6:
            switch (input.between(0, 9)) {
            case 0:
                clear();
                break;
            case 1:
                copyOthers(input);
                break;
            default:
                coll.freeExtra();
            }
            break;
        case 7: {
            const bool fresh = input.flag();
            model.iterators.pop_back();
            model.iterators.push_front(fresh ? atStart() : model.iterators.back());
            break;
        }
        default:
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

bool isSameInAnyCase(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    });
}

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
        switch (input.between(0, 6)) {
        case 0:
            failures.step([&] { FUZZ_CHECK(coll.add(text) == size); }, unchanged);
            model.push_back(value);
            break;
        case 1:
            failures.step([&] { coll.insertAt(at, text); }, unchanged);
            model.insert(here, value);
            break;
        case 2: {
            const KazString both[] = {text, fresh};
            failures.step([&] { coll.insertAt(at, both, 2); }, unchanged);
            model.insert(here, {value, wanted});
            break;
        }
        case 3:
            if (size < 100) {
                coll.insertAt(at, coll);
                const std::vector<std::string> inserted(model);
                model.insert(here, inserted.begin(), inserted.end());
            }
            break;
        case 4:
            coll.removeAt(from, 1);
            if (size > 0)
                model.erase(model.begin() + from);
            break;
        default:
            if (at == size)
                break;
            input.flag() ? coll.setAt(at, text) : void(coll[at] = text);
            *here = value;
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
        FUZZ_CHECK(coll.findNoCase(searched) ==
                   last([&](const auto& each) { return isSameInAnyCase(each, wanted); }));
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
        switch (input.between(0, 9)) {
        case 0:
            return withItem([&](void* item) { coll->insertAt(input.between(0, size + 1), item); });
        case 1:
            return withItem([&](void* item) {
                size > 0 ? coll->setAt(input.between(0, size - 1), item) : void(coll->add(item));
            });
        case 2:
        case 3:
            return withItem([&](void* item) { coll->add(item); });
        case 4:
            if (size > 0)
                coll->removeAt(input.between(0, size - 1), input.between(1, 3));
            break;
        case 5:
            if (other)
                *coll = *other;
            break;
        case 6:
            if (!Meddling::isInside() && input.flag())
                coll.reset();
            break;
        case 7:
            input.flag() ? coll->removeAll() : coll->freeExtra();
            break;
        case 8:
            if (!Meddling::isInside())
                iterators[input.between<std::size_t>(0, 5)] =
                    std::make_unique<KazCollIterator>(*coll);
            break;
        default:
            if (checksIn && other && size < 30)
                takeOver(*coll, *other);
        }
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
        switch (input.between(0, 3)) {
        case 0:
            return coll.copy(other);
        case 1:
            return coll.insertAt(at, other);
        case 2:
            coll.append(other);
            return;
        default:
            coll.insertAt(at, given, 3);
        }
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
    switch (input.between(0, 3)) {
    case 0:
        arraysShareUntilTheyGrow(input);
        arrayBehavesLikeAVector(input);
        break;
    case 1:
        iteratorsKeepTheirElements(input);
        break;
    case 2:
        stringsBehaveLikeAVector(input);
        break;
    default:
        sharersLetGoOnce(input);
    }
}
