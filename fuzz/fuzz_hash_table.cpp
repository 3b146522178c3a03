// Hash tables against a plain model of them: contents, order, capacities, what is
// checked in and out and when, and how often the comparator and the hash are asked.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/meddling.h"
#include "tools/containers/KazHashTableIterator.h"
#include "tools/containers/KazStringToStringMap.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace {

using fuzz::Input;
using fuzz::Meddling;

/// Keys of all lengths, some of which differ in case only, or in the middle only.
std::string keyOf(int number) {
    static const char* const prefixes[] = {
        "", "k", "K", "variable_", "Variable_", "a_longer_name_than_most_", "\xC3\x84", "begin..."};
    if (number == 0)
        return "";
    const std::string key = prefixes[number % 8] + std::to_string(number / 8);
    return number % 8 == 7 ? key + "...the_end" : key;
}

// ---- Elements: heap copies of texts whose coming and going is written down.

std::vector<std::string> journal;
int alive = 0;
int comparisons = 0;
int hashes = 0;

void* checkIn(void* text) {
    const auto* from = static_cast<const char*>(text);
    char* copy = new char[std::strlen(from) + 1];
    ++alive;
    journal.push_back(std::string("in ") + from);
    return std::strcpy(copy, from);
}

void checkOut(void* text) {
    FUZZ_CHECK(text != nullptr);
    --alive;
    journal.push_back(std::string("out ") + static_cast<char*>(text));
    delete[] static_cast<char*>(text);
}

int countedCompare(const void* a, const void* b) {
    ++comparisons;
    return KazString::compareDisguised(a, b);
}

unsigned countedHash(const void* key) {
    ++hashes;
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

// ---- The model: sorted buckets, searched and grown as the table promises.

struct Entry {
    std::string key, value;
    bool operator==(const Entry&) const = default;
};

struct Bucket {
    std::vector<Entry> entries;
    int capacity = 0;
};

class Model {
public:
    Model(const Functions& functions, int size)
        : functions_(functions),
          size_(size),
          buckets_(static_cast<std::size_t>(std::max(size, 1))) {}

    bool bind(const std::string& key, const std::string& value, bool replace) {
        const Place place = find(key);
        if (place.found && !replace)
            return false;
        if (place.found)
            return exchange(place, value);
        Bucket& bucket = at(place);
        journal_.insert(journal_.end(), {"in " + key, "in " + value});
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
        journal_.insert(journal_.end(), {"out " + entry->value, "out " + entry->key});
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
            for (const Entry& entry : bucket.entries)
                journal_.insert(journal_.end(), {"out " + entry.key, "out " + entry.value});
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

    /// What has been checked in and out, forgotten by this.
    std::vector<std::string> takeJournal() { return std::exchange(journal_, {}); }
    int takeComparisons() { return std::exchange(comparisons_, 0); }
    int takeHashes() { return std::exchange(hashes_, 0); }

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

    Bucket& at(const Place& place) { return buckets_[place.bucket]; }
    Entry& entryAt(const Place& place) {
        return at(place).entries[static_cast<std::size_t>(place.index)];
    }

    int compare(const std::string& probe, const std::string& stored) {
        ++comparisons_;
        return functions_.counted ? KazString::compareDisguised(probe.c_str(), stored.c_str())
                                  : functions_.compare(probe.c_str(), stored.c_str());
    }

    Place find(const std::string& key) {
        if (cached_.index >= 0 && compare(key, entryAt(cached_).key) == 0)
            return cached_;
        Place place{0, 0, false};
        if (size_ > 1) {
            ++hashes_;
            const unsigned hash = functions_.counted ? KazString::hashDisguised(key.c_str())
                                                     : functions_.hash(key.c_str());
            place.bucket = hash % static_cast<unsigned>(size_);
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
        journal_.insert(journal_.end(), {"out " + entryAt(place).value, "in " + value});
        entryAt(place).value = value;
        return true;
    }

    Functions functions_;
    int size_;
    std::vector<Bucket> buckets_;
    Place cached_{0, -1, true};
    int count_ = 0;
    std::vector<std::string> journal_;
    int comparisons_ = 0;
    int hashes_ = 0;
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
    Pair(const Functions& functions, int size)
        : counted(functions.counted),
          table(functions.compare, functions.hash, size),
          model(functions, size) {
        table.setKeyCheckIn(checkIn);
        table.setKeyCheckOut(checkOut);
        table.setValueCheckIn(checkIn);
        table.setValueCheckOut(checkOut);
    }

    void bind(const std::string& key, const std::string& value, bool replace) {
        FUZZ_CHECK(table.bind(slot(key), slot(value), replace) == model.bind(key, value, replace));
    }

    void change(Input& input) {
        const std::string key = keyOf(input.between(0, 255));
        const std::string value = std::to_string(input.byte());
        switch (input.between(0, 9)) {
        case 0:
        case 1:
            return bind(key, value, input.flag());
        case 2:
            FUZZ_CHECK(table.rebind(slot(key), slot(value)) == model.rebind(key, value));
            return;
        case 3:
        case 4:
            FUZZ_CHECK(table.unbind(slot(key)) == model.unbind(key));
            return;
        case 5:
            return look(key);
        case 6:
            FUZZ_CHECK(table.isBound(slot(key)) == (model.valueOf(key) != nullptr));
            return;
        case 7:
            return compareBucket(input.between<std::size_t>(0, model.buckets().size() - 1));
        case 8:
            return bindMany(input);
        default:
            if (input.flag()) {
                table.freeExtra();
                model.freeExtra();
            } else if (input.between(0, 15) == 0) {
                table.clear();
                model.clear();
            }
            compareAll();
        }
    }

    /// After each step: what has been done to the elements, and at what cost.
    void compareEffects() {
        FUZZ_CHECK(table.getSize() == model.count());
        FUZZ_CHECK(std::exchange(journal, {}) == model.takeJournal());
        FUZZ_CHECK(alive == 2 * model.count());
        const int comparisonsExpected = model.takeComparisons();
        const int hashesExpected = model.takeHashes();
        FUZZ_CHECK(!counted || std::exchange(comparisons, 0) == comparisonsExpected);
        FUZZ_CHECK(!counted || std::exchange(hashes, 0) == hashesExpected);
    }

    void compareAll() {
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

    void compareBucket(std::size_t number) {
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
    }

    bool counted;
    KazHashTable table;
    Model model;
};

void behavesLikeTheModel(Input& input, const Functions& functions, int size) {
    journal.clear();
    comparisons = hashes = 0;
    {
        Pair both(functions, size);
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
void isSound(KazHashTable& table, const Functions& functions) {
    int count = 0;
    std::string before;
    for (KazHashTableIterator i(table); !i.isDone(); i.next(), ++count) {
        FUZZ_CHECK(table.valueOf(i.getKey()) == i.getValue());
        FUZZ_CHECK(count == 0 || functions.compare(before.c_str(), i.getKey()) < 0);
        before = textOf(i.getKey());
    }
    FUZZ_CHECK(table.getSize() == count);
    journal.clear();
}

void survivesItsElementFunctions(Input& input, const Functions& functions) {
    {
        KazHashTable table(functions.compare, functions.hash, 1);
        table.setKeyCheckIn(meddlingCheckIn);
        table.setKeyCheckOut(meddlingCheckOut);
        table.setValueCheckIn(meddlingCheckIn);
        table.setValueCheckOut(meddlingCheckOut);
        const auto change = [&] {
            const std::string key = keyOf(input.between(0, 30));
            const std::string value = "v";
            switch (input.between(0, 7)) {
            case 0:
            case 1:
            case 2:
                table.bind(slot(key), slot(value), input.flag());
                break;
            case 3:
                table.rebind(slot(key), slot(value));
                break;
            case 4:
            case 5:
                table.unbind(slot(key));
                break;
            case 6:
                table.getBucketData(0);
                break;
            default:
                input.between(0, 20) == 0 ? table.clear() : table.freeExtra();
            }
        };
        const Meddling meddling(input, change);
        // The whole table after each change; in a long input now and then.
        for (unsigned changes = 1; !input.empty() && changes < 50000; ++changes) {
            change();
            if (input.remaining() < 4096 || changes % 256 == 0)
                isSound(table, functions);
        }
    }
    FUZZ_CHECK(alive == 0);
}

// ---- The map of strings, whose blocks are counted

int holders(const KazString& text) {
    return KazStringRep::of(text.disguise())->referenceCount;
}

void mapHoldsItsBlocks(Input& input) {
    const KazString shared = "shared";
    {
        KazStringToStringMap map(input.flag(), input.pick(std::array{1, 7, 127}));
        for (int steps = 0; !input.empty() && steps < 50000; ++steps) {
            const KazString key = keyOf(input.between(0, 60)).c_str();
            const bool bound = map.isBound(key);
            const int before = holders(shared);
            KazString found = "none";
            FUZZ_CHECK(map.valueOf(key, found) == bound);
            FUZZ_CHECK(found == (bound ? "shared" : "none"));
            FUZZ_CHECK(holders(shared) == before + bound);
            found = "";
            switch (input.between(0, 3)) {
            case 0:
                FUZZ_CHECK(map.bind(key, shared, false) == !bound);
                FUZZ_CHECK(holders(shared) == before + !bound);
                break;
            case 1:
                FUZZ_CHECK(map.rebind(key, map.valueOf(key)) == bound);
                FUZZ_CHECK(holders(shared) == before);
                break;
            case 2:
                FUZZ_CHECK(map.unbind(key) == bound);
                FUZZ_CHECK(holders(shared) == before - bound);
                break;
            default:
                FUZZ_CHECK(map.valueOf(key).disguise() == (bound ? shared.disguise() : nullptr));
            }
        }
    }
    FUZZ_CHECK(holders(shared) == 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const Functions& functions = functionSets[input.between(0, 2)];
    const int buckets = input.pick(std::array{1, -3, 0, 2, 5, 127});
    switch (input.between(0, 3)) {
    case 0:
        survivesItsElementFunctions(input, functions);
        break;
    case 1:
        mapHoldsItsBlocks(input);
        break;
    default:
        behavesLikeTheModel(input, functions, buckets);
    }
    return 0;
}
