// SPDX-License-Identifier: Apache-2.0
// Hash tables against a plain model of them: contents, order, capacities, what is
// checked in and out and when, what the element functions then see of the table, and
// how often the comparator and the hash are asked.
#include "fuzz/harness.h"
#include "fuzz/meddling.h"
#include "kit/hash_seed.h"
#include "testkit/env.h"
#include "tools/containers/KazHashTableIterator.h"
#include "tools/containers/KazStringToStringMap.h"
#include "tools/containers/detail/soundness.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

using fuzz::Input;
using fuzz::Meddling;

/// Keys of all lengths, some of which differ in case only, by this or that rule, or in
/// the middle only.
std::string keyOf(int number) {
    static const char* const prefixes[] = {
        "", "k", "K", "variable_", "VARIABLE_", "a_longer_name_than_most_", "\xC3\x84", "begin..."};
    if (number == 0)
        return "";
    if (number % 16 == 14 || number % 16 == 6)
        return (number % 16 == 14 ? "\xE3\x84" : "\xC3\x84") + std::to_string(number / 16);
    return prefixes[number % 8] + std::to_string(number / 8) +
           (number % 8 == 7 ? "...the_end" : "");
}

// ---- Elements: heap copies of texts whose coming and going is written down.

/// Calls of the functions that a table was given.
struct Calls {
    std::vector<std::string> journal; ///< of those for elements
    int comparisons = 0, hashes = 0;  ///< where these are counted
    bool operator==(const Calls&) const = default;
};
Calls calls;
int alive = 0;
/// An exchange ran out of memory, and its repetition finds no value to check out.
bool awaitsNull = false;

/// The table that element functions look at, and the key that they ask it for. Where
/// questions are counted they only ask for the size.
struct Watch {
    KazHashTable* table = nullptr;
    std::string key;
    bool asks = false;
};
Watch watch;

/// What an element function sees: how many there are, and what the key is bound to.
std::string sight(int size, bool asks, bool found, const char* value) {
    const std::string counted = " of " + std::to_string(size);
    if (!asks)
        return counted;
    return counted + (found ? std::string(" bound to ") + (value ? value : "null") : " unbound");
}

std::string sight() {
    if (!watch.table)
        return "";
    bool found = false;
    const void* value = watch.asks ? watch.table->valueOf(watch.key.c_str(), found) : nullptr;
    return sight(watch.table->getSize(), watch.asks, found, static_cast<const char*>(value));
}

void* checkIn(void* text) {
    const auto* from = static_cast<const char*>(text);
    char* copy = new char[std::strlen(from) + 1];
    const fuzz::MemoryHolds holds;
    ++alive;
    calls.journal.push_back(std::string("in ") + from + sight());
    return std::strcpy(copy, from);
}

void checkOut(void* text) {
    if (text == nullptr && awaitsNull)
        return;
    FUZZ_CHECK(text != nullptr);
    const fuzz::MemoryHolds holds;
    --alive;
    const std::string left = static_cast<char*>(text);
    delete[] static_cast<char*>(text); // whatever the table looks at now is not this
    calls.journal.push_back("out " + left + sight());
}

void setFunctions(KazHashTable& table, KazHashTable::CheckIn in, KazHashTable::CheckOut out) {
    table.setKeyCheckIn(in);
    table.setKeyCheckOut(out);
    table.setValueCheckIn(in);
    table.setValueCheckOut(out);
}

int countedCompare(const void* a, const void* b) {
    ++calls.comparisons;
    return KazString::compareDisguised(a, b);
}

unsigned countedHash(const void* key) {
    ++calls.hashes;
    return KazString::hashDisguised(key);
}

struct Functions {
    KazHashTable::Compare compare;
    KazHashTable::Hash hash;
    bool counted;
};

constexpr Functions functionSets[] = {
    {KazString::compareDisguised, KazString::hashDisguised, false},
    {KazString::compareNoCaseDisguised, KazString::hashNoCaseDisguised, false},
    {countedCompare, countedHash, true},
};

/// The rules of case that the process has, and had before.
class Rules {
public:
    Rules() : before_(std::setlocale(LC_CTYPE, nullptr)) {}
    Rules(const Rules&) = delete;
    Rules& operator=(const Rules&) = delete;
    ~Rules() { std::setlocale(LC_CTYPE, before_.c_str()); }

    void exchange() {
        areOthers_ = !areOthers_;
        haveChanged_ = true;
#ifdef FUZZ_LOCALES
        const moxkit::ScopedEnv path("LOCPATH", FUZZ_LOCALES);
#endif
        std::setlocale(LC_CTYPE, areOthers_ ? "tr_TR.ISO-8859-9" : before_.c_str());
    }
    bool haveChanged() const {
        return haveChanged_;
    }

private:
    std::string before_;
    bool areOthers_ = false;
    bool haveChanged_ = false;
};

// ---- The model: sorted buckets, searched and grown as the table promises.

struct Entry {
    std::string key, value;
    bool hasValue = true; ///< otherwise null is there
    bool isLeaving = false;
};

struct Bucket {
    std::vector<Entry> entries;
    int capacity = 0;
};

class Model {
public:
    Model(const Functions& functions, int size)
        : functions_(functions.counted ? functionSets[0] : functions),
          size_(size),
          buckets_(static_cast<std::size_t>(std::max(size, 1))) {}

    bool bind(const std::string& key, const std::string& value, bool replace) {
        const Place place = find(key);
        if (place.found && !replace)
            return false;
        if (place.found)
            return exchange(place, value);
        Bucket& bucket = at(place);
        note("in " + key);
        note("in " + value);
        if (bucket.capacity == static_cast<int>(bucket.entries.size()))
            bucket.capacity = bucket.capacity == 0 ? 1 : grown(bucket.capacity);
        bucket.entries.insert(bucket.entries.begin() + place.index, {key, value});
        cached_ = {place.bucket, place.index, true};
        ++count_;
        return true;
    }

    bool rebind(const std::string& key, const std::string& value) {
        const Place place = find(key);
        return place.found && exchange(place, value);
    }

    bool unbind(const std::string& key) {
        const Place place = find(key);
        if (!place.found)
            return false;
        auto& entries = at(place).entries;
        const auto entry = entries.begin() + place.index;
        entry->hasValue = false;
        note("out " + entry->value);
        entry->isLeaving = true;
        note("out " + entry->key);
        entries.erase(entry);
        if (entries.empty())
            at(place).capacity = 0;
        cached_.index = -1;
        --count_;
        return true;
    }

    /// Null when the key is not bound.
    const std::string* valueOf(const std::string& key) {
        const Place place = find(key);
        if (!place.found)
            return nullptr;
        cached_ = place;
        return &entryAt(place).value;
    }

    void clear() {
        for (Bucket& bucket : buckets_) {
            for (Entry& entry : bucket.entries) {
                entry.isLeaving = true;
                note("out " + entry.key);
                note("out " + entry.value);
            }
            bucket = {};
        }
        cached_.index = -1;
        count_ = 0;
    }

    void freeExtra() {
        for (Bucket& bucket : buckets_) {
            const int used = static_cast<int>(bucket.entries.size());
            if (used > 0)
                bucket.capacity = std::min(bucket.capacity, (((used * 8 + 23) / 16 * 16) - 8) / 8);
        }
    }

    /// What is written into a bucket's array.
    void write(std::size_t bucket, std::size_t index, const std::string& value) {
        buckets_[bucket].entries[index].value = value;
    }

    Calls calls; ///< that a table should have made

    int count() const { return count_; }
    const std::vector<Bucket>& buckets() const { return buckets_; }

private:
    struct Place {
        std::size_t bucket;
        int index;
        bool found;
    };

    static int grown(int capacity) {
        const int more = static_cast<int>(static_cast<float>(capacity) * -0.29999995F);
        return ((((capacity - more) * 8 + 31) / 16 * 16) - 8) / 8;
    }

    /// Writes down a call of an element function, and what that sees.
    void note(const std::string& call) {
        const Entry* asked = nullptr;
        for (std::size_t i = 0; watch.asks && i < buckets_.size(); ++i)
            for (const Entry& entry : buckets_[i].entries)
                if (!entry.isLeaving && isSame(entry.key, watch.key))
                    asked = &entry;
        const char* value = asked && asked->hasValue ? asked->value.c_str() : nullptr;
        calls.journal.push_back(call + sight(count_, watch.asks, asked != nullptr, value));
    }

    bool isSame(const std::string& a, const std::string& b) const {
        return functions_.compare(a.c_str(), b.c_str()) == 0;
    }

    Bucket& at(const Place& place) { return buckets_[place.bucket]; }
    Entry& entryAt(const Place& place) {
        return at(place).entries[static_cast<std::size_t>(place.index)];
    }

    int compare(const std::string& probe, const std::string& stored) {
        ++calls.comparisons;
        return functions_.compare(probe.c_str(), stored.c_str());
    }

    Place find(const std::string& key) {
        if (cached_.index >= 0 && compare(key, entryAt(cached_).key) == 0)
            return cached_;
        Place place{0, 0, false};
        if (size_ > 1) {
            ++calls.hashes;
            place.bucket = functions_.hash(key.c_str()) % static_cast<unsigned>(size_);
        }
        const auto& entries = at(place).entries;
        int high = static_cast<int>(entries.size());
        while (place.index < high) {
            const int middle = (place.index + high) / 2;
            const int order = compare(key, entries[static_cast<std::size_t>(middle)].key);
            if (order == 0)
                return {place.bucket, middle, true};
            if (order < 0)
                high = middle;
            else
                place.index = middle + 1;
        }
        return place;
    }

    bool exchange(const Place& place, const std::string& value) {
        cached_ = place;
        Entry& entry = entryAt(place);
        entry.hasValue = false;
        note("out " + entry.value);
        note("in " + value);
        entry = {entry.key, value};
        return true;
    }

    Functions functions_;
    int size_;
    std::vector<Bucket> buckets_;
    Place cached_{0, -1, true};
    int count_ = 0;
};

// ---- Both side by side

void* slot(const std::string& text) {
    return const_cast<char*>(text.c_str());
}

std::string textOf(const void* item) {
    FUZZ_CHECK(item != nullptr);
    return static_cast<const char*>(item);
}

class Pair {
public:
    Pair(const Functions& functions, int size, bool asks, bool looksAtArrays,
         fuzz::Failures& source)
        : failures(source),
          counted(functions.counted),
          arrays(looksAtArrays),
          table(functions.compare, functions.hash, size),
          model(functions, size) {
        watch = {&table, "", asks && !counted};
        setFunctions(table, checkIn, checkOut);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
    ~Pair() { watch = {}; }

    void bind(const std::string& key, const std::string& value, bool replace) {
        const bool bound = failures.ask([&] { return table.bind(slot(key), slot(value), replace); },
                                        [&] { afterFailure(key); });
        FUZZ_CHECK(bound == model.bind(key, value, replace));
    }

    void rebind(const std::string& key, const std::string& value) {
        const bool bound = failures.ask([&] { return table.rebind(slot(key), slot(value)); },
                                        [&] { afterFailure(key); });
        FUZZ_CHECK(bound == model.rebind(key, value));
    }

    void change(Input& input) {
        const std::string key = keyOf(input.between(0, 255));
        const std::string value = std::to_string(input.byte());
        if (watch.asks)
            watch.key = input.flag() ? key : keyOf(input.between(0, 255));
        const int operation = input.between(0, 9);
        if (operation < 2) {
            bind(key, value, input.flag());
        } else if (operation == 2) {
            rebind(key, value);
        } else if (operation < 5) {
            bool unbound = false;
            failures.hold([&] { unbound = table.unbind(slot(key)); });
            FUZZ_CHECK(unbound == model.unbind(key));
        } else if (operation == 5) {
            look(key);
        } else if (operation == 6) {
            FUZZ_CHECK(table.isBound(slot(key)) == (model.valueOf(key) != nullptr));
        } else if (operation == 7 && arrays) {
            compareBucket(input.between<std::size_t>(0, model.buckets().size() - 1), value);
        } else if (operation == 7) {
            changeRules(input.between(0, 3));
        } else if (operation == 8) {
            bindMany(input);
        } else {
            if (input.flag()) {
                table.freeExtra();
                model.freeExtra();
            } else if (input.between(0, 15) == 0) {
                failures.hold([&] { table.clear(); });
                model.clear();
            }
            compareAll();
        }
    }

    /// After each step: what has been done to the elements, and at what cost.
    void compareEffects() {
        FUZZ_CHECK(table.getSize() == model.count());
        Calls expected = std::exchange(model.calls, {});
        if (!counted)
            expected.comparisons = expected.hashes = 0;
        // What was tried twice has asked and noted twice.
        const bool agree = std::exchange(calls, {}) == expected;
        FUZZ_CHECK(std::exchange(isRepeated, false) || agree);
        FUZZ_CHECK(alive == 2 * model.count());
        awaitsNull = false;
        FUZZ_CHECK(model.count() > 64 || isSound());
    }

    void compareAll() {
        FUZZ_CHECK(isSound());
        KazHashTableIterator i(table);
        for (const Bucket& bucket : model.buckets()) {
            for (const Entry& entry : bucket.entries) {
                FUZZ_CHECK(!i.isDone() && textOf(i.getKey()) == entry.key);
                FUZZ_CHECK(textOf(i.getValue()) == entry.value);
                i.next();
            }
        }
        for (KazHashTableIterator done : {i, KazHashTableIterator(nullptr)})
            FUZZ_CHECK(done.isDone() && !done.next() && !done.getKey() && !done.getValue());
        const int buckets = static_cast<int>(model.buckets().size());
        FUZZ_CHECK(!table.getBucketData(-1) && !table.getBucketData(buckets));
    }

    int count() const { return model.count(); }

private:
    /// Everything as it was, but for the value of @p exchanged, which was checked out
    /// before its successor was to come in.
    void afterFailure(const std::string& exchanged) {
        isRepeated = true;
        FUZZ_CHECK(table.getSize() == model.count() && isSound());
        awaitsNull = alive == 2 * model.count() - 1;
        FUZZ_CHECK(awaitsNull || alive == 2 * model.count());
        FUZZ_CHECK(!awaitsNull ||
                   (table.isBound(slot(exchanged)) && !table.valueOf(slot(exchanged))));
    }

    /// Its own questions are not among those that count.
    bool isSound() const {
        const int before = calls.comparisons;
        const bool sound = kaz::detail::Soundness::holds(table, !rules.haveChanged());
        calls.comparisons = before;
        return sound;
    }

    /// Some rules stay so long that the table goes by them.
    void changeRules(int duration) {
        if (watch.asks)
            return;
        // By an index nobody remembers what was found last, which by the new rules may
        // be equal to another key; now there is nothing to be remembered.
        bind("forgotten", "", false);
        FUZZ_CHECK(table.unbind("forgotten") && model.unbind("forgotten"));
        rules.exchange();
        for (int number = 40 * duration; number > 0; --number)
            look(keyOf(number));
    }

    void look(const std::string& key) {
        bool found = false;
        const void* value = table.valueOf(slot(key), found);
        const std::string* expected = model.valueOf(key);
        FUZZ_CHECK(found == (expected != nullptr));
        FUZZ_CHECK(found ? textOf(value) == *expected : value == nullptr);
    }

    /// Enough of them for merging by portions.
    void bindMany(Input& input) {
        const int first = input.between(0, 1000);
        const int step = input.between(1, 7) * (input.flag() ? 1 : -1);
        for (int n = input.between(0, 100), number = first + 700; n > 0; --n, number += step)
            bind(keyOf(number), "many", false);
    }

    /// Also exchanges the last value in the array itself.
    void compareBucket(std::size_t number, const std::string& fresh) {
        const Bucket& bucket = model.buckets()[number];
        void** data = table.getBucketData(static_cast<int>(number));
        FUZZ_CHECK((data == nullptr) == bucket.entries.empty());
        if (!data)
            return;
        std::int32_t head[2];
        std::memcpy(head, reinterpret_cast<char*>(data) - sizeof head, sizeof head);
        FUZZ_CHECK(head[0] == static_cast<int>(bucket.entries.size()));
        FUZZ_CHECK(head[1] == bucket.capacity);
        for (const Entry& entry : bucket.entries) {
            FUZZ_CHECK(textOf(data[0]) == entry.key && textOf(data[1]) == entry.value);
            data += 2;
        }
        delete[] static_cast<char*>(data[-1]);
        data[-1] = std::strcpy(new char[fresh.size() + 1], fresh.c_str());
        model.write(number, bucket.entries.size() - 1, fresh);
    }

    fuzz::Failures& failures;
    bool counted;
    bool arrays;
    bool isRepeated = false;
    Rules rules;
    KazHashTable table;
    Model model;
};

void behavesLikeTheModel(Input& input, const Functions& functions, int size) {
    fuzz::Failures failures(input);
    calls = {};
    {
        const bool asks = input.flag();
        Pair both(functions, size, asks, input.between(0, 3) == 0, failures);
        // The model copies what it moves: a bound on the work, not on the input.
        for (int work = 0; !input.empty() && work < 50000; work += both.count() + 1) {
            both.change(input);
            both.compareEffects();
        }
        both.compareAll();
    }
    FUZZ_CHECK(alive == 0);
}

// ---- Element functions that use the table which calls them

void* meddlingCheckIn(void* text) {
    void* copy = checkIn(text);
    Meddling::now();
    return copy;
}

void meddlingCheckOut(void* text) {
    // A value that is being replaced leaves null until the new one is in.
    if (text != nullptr)
        checkOut(text);
    Meddling::now();
}

/// What holds in any table: it is in order, and finds what it has.
void isSound(KazHashTable& table) {
    FUZZ_CHECK(kaz::detail::Soundness::holds(table));
    for (KazHashTableIterator i(table); !i.isDone(); i.next())
        FUZZ_CHECK(table.valueOf(i.getKey()) == i.getValue());
    calls = {};
}

void survivesItsElementFunctions(Input& input, const Functions& functions) {
    {
        const bool arrays = input.between(0, 3) == 0;
        KazHashTable table(functions.compare, functions.hash, input.flag() ? 1 : 3);
        watch = {&table, keyOf(1), !functions.counted};
        setFunctions(table, meddlingCheckIn, meddlingCheckOut);
        const auto change = [&] {
            const std::string key = keyOf(input.between(0, 30));
            const std::string value = "v";
            const int operation = input.between(0, 8);
            if (operation < 3)
                table.bind(slot(key), slot(value), input.flag());
            else if (operation == 3)
                table.rebind(slot(key), slot(value));
            else if (operation < 6)
                table.unbind(slot(key));
            else if (operation == 6)
                table.isBound(slot(key));
            else if (operation == 8)
                input.between(0, 20) == 0 ? table.clear() : table.freeExtra();
            else if (arrays)
                table.getBucketData(0);
        };
        const Meddling meddling(input, change);
        // The whole table after each change; in a long input now and then.
        for (unsigned changes = 1; !input.empty() && changes < 50000; ++changes) {
            change();
            if (input.remaining() < 4096 || changes % 256 == 0)
                isSound(table);
        }
    }
    watch = {};
    FUZZ_CHECK(alive == 0);
}

// ---- The map of strings, whose blocks are counted

int holders(const KazString& text) {
    return KazStringRep::of(text.disguise())->referenceCount;
}

void mapHoldsItsBlocks(Input& input) {
    fuzz::Failures failures(input);
    const KazString shared = "shared";
    {
        const bool caseCounts = input.flag();
        const int size = input.pick(std::array{1, 7, 127});
        const auto made =
            failures.ask([&] { return std::make_unique<KazStringToStringMap>(caseCounts, size); });
        KazStringToStringMap& map = *made;
        for (int steps = 0; !input.empty() && steps < 50000; ++steps) {
            const KazString key = keyOf(input.between(0, 60)).c_str();
            const bool bound = map.isBound(key);
            const int before = holders(shared);
            KazString found = "none";
            FUZZ_CHECK(map.valueOf(key, found) == bound);
            FUZZ_CHECK(found == (bound ? "shared" : "none"));
            FUZZ_CHECK(holders(shared) == before + bound);
            found = "";
            if (input.between(0, 3) == 0) { // a text that is no key of the map's
                KazString text = "elsewhere";
                const KazString holder = text;
                text.replaceAllInSet("e", 'E');
                FUZZ_CHECK(holder == "ElsEwhErE");
            }
            const int operation = input.between(0, 3);
            if (operation == 0) {
                failures.step([&] { FUZZ_CHECK(map.bind(key, shared, false) == !bound); },
                              [&] { FUZZ_CHECK(holders(shared) == before && !map.isBound(key)); });
                FUZZ_CHECK(holders(shared) == before + !bound);
            } else if (operation == 1) {
                FUZZ_CHECK(map.rebind(key, map.valueOf(key)) == bound);
                FUZZ_CHECK(holders(shared) == before);
            } else if (operation == 2) {
                failures.hold([&] {
                    FUZZ_CHECK(map.unbind(key) == bound);
                    map.freeExtra();
                });
                FUZZ_CHECK(holders(shared) == before - bound);
            } else {
                FUZZ_CHECK(map.valueOf(key).disguise() == (bound ? shared.disguise() : nullptr));
            }
        }
    }
    FUZZ_CHECK(holders(shared) == 1);
}

// ---- Names chosen by somebody who knows the hash, but not this process's seed

using kaz::detail::HashSeed;
using kaz::detail::TextProbe;

HashSeed seedOf(std::uint64_t number) {
    std::mt19937_64 random(number);
    return {random(), random()};
}

/// A name of this many words of eight bytes, the first of which leaves nothing of
/// the seed where one is known.
std::string cancelling(const HashSeed& known, std::size_t words, std::uint64_t number) {
    std::string name(8 * words, '\0');
    const std::uint64_t first = std::rotl(known.first, static_cast<int>(name.size()));
    std::memcpy(name.data(), &first, sizeof first);
    for (std::size_t word = 1; word < words; ++word)
        std::memcpy(name.data() + 8 * word, &number, sizeof number);
    return name;
}

/// The hashes of chosen names meet under the seed for which they were chosen, and
/// under any other no more often than those of other names.
void chosenNamesGainNothing(Input& input) {
    const auto number = input.raw<std::uint64_t>();
    const HashSeed known = seedOf(number);
    const HashSeed actual = seedOf(number + 1 + input.byte());
    std::set<std::string> names;
    for (std::uint64_t number = 0; names.size() < 64; ++number) {
        const std::string name = keyOf(static_cast<int>(number));
        if (TextProbe(std::string_view(name)).hash(known) % 256 == 0)
            names.insert(name);
    }
    for (std::uint64_t number = 1; number <= 64; ++number)
        names.insert(cancelling(known, 2 + number % 7, number));
    std::set<std::uint32_t> hashes, homes;
    for (const std::string& name : names) {
        const std::uint32_t hash = TextProbe(std::string_view(name)).hash(actual);
        hashes.insert(hash);
        homes.insert(hash % 256);
    }
    FUZZ_CHECK(hashes.size() == names.size());
    FUZZ_CHECK(homes.size() > 64); // of 128 names, about a hundred on average
}

} // namespace

void fuzz::harness(Input& input) {
    kit::fixHashSeed();
    const Functions& functions = functionSets[input.between(0, 2)];
    const int buckets = input.pick(std::array{1, -3, 0, 2, 5, 127});
    const int part = input.between(0, 7);
    if (part == 7)
        chosenNamesGainNothing(input);
    else if (part % 4 == 0)
        survivesItsElementFunctions(input, functions);
    else if (part % 4 == 1)
        mapHoldsItsBlocks(input);
    else
        behavesLikeTheModel(input, functions, buckets);
}
