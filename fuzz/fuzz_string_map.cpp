// SPDX-License-Identifier: Apache-2.0
// The plain string map against a model of its chains.
#include "fuzz/harness.h"
#include "tools/util/string_map.h"
#include "tools/util/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <list>
#include <map>
#include <vector>

namespace {

using fuzz::Input;

int alive = 0;

void* newValue(int number) {
    ++alive;
    return new int(number);
}

void releaseValue(void* value) {
    --alive;
    delete static_cast<int*>(value);
}

/// A rule that is often out of range, so that the map's own must step in. It sees
/// lowered keys when the map ignores case.
bool seesLowered = false;

unsigned int roughHash(const char* key, int bucketCount) {
    for (const char* c = key; seesLowered && *c != 0; ++c)
        FUZZ_CHECK(std::tolower(static_cast<unsigned char>(*c)) == static_cast<unsigned char>(*c));
    const auto first = static_cast<unsigned char>(key[0]);
    return first % 3 == 0 ? first % static_cast<unsigned>(bucketCount) : 0x80000000U + first;
}

struct Entry {
    std::string key;
    int number;
};

/// Chains by bucket, the latest entry first.
class Model {
public:
    Model(bool rough, int buckets, bool respectsCase)
        : rough_(rough), buckets_(buckets), caseSensitive_(respectsCase) {}

    Entry* find(const std::string& key) {
        if (key.size() > 255)
            return nullptr;
        for (Entry& entry : chains_[placeOf(key)])
            if (form(entry.key) == form(key))
                return &entry;
        return nullptr;
    }

    bool define(const std::string& key, int number, bool replace) {
        if (Entry* entry = find(key)) {
            entry->number = replace ? number : entry->number;
            return replace;
        }
        if (key.size() > 255)
            return false;
        chains_[placeOf(key)].push_front({key, number});
        return true;
    }

    void undefine(const std::string& key) {
        chains_[placeOf(key)].remove_if(
            [&](const Entry& entry) { return form(entry.key) == form(key); });
    }

    std::vector<Entry> inOrder() const {
        std::vector<Entry> result;
        for (const auto& [place, chain] : chains_)
            result.insert(result.end(), chain.begin(), chain.end());
        return result;
    }

    bool precedes(const std::string& a, const std::string& b) const {
        return caseSensitive_ ? a < b : kaz_fast_stricmp(a.c_str(), b.c_str()) < 0;
    }

private:
    std::string form(const std::string& key) const {
        return caseSensitive_ ? key : fuzz::lowered(key);
    }

    /// Buckets come in the order from 0 upward and then from -1 downward.
    int placeOf(const std::string& key) const {
        const std::string hashed = form(key);
        if (rough_) {
            const unsigned bucket = roughHash(hashed.c_str(), buckets_);
            if (bucket < static_cast<unsigned>(buckets_))
                return static_cast<int>(bucket);
        }
        int sum = 0;
        for (const char c : hashed)
            sum += static_cast<signed char>(c);
        const int bucket = sum % buckets_;
        return bucket < 0 ? buckets_ - bucket : bucket;
    }

    bool rough_;
    int buckets_;
    bool caseSensitive_;
    std::map<int, std::list<Entry>> chains_;
};

void compare(fuzz::Failures& failures, string_map_tp* map, const Model& model) {
    const std::vector<Entry> entries = model.inOrder();
    FUZZ_CHECK(string_map_size(map) == static_cast<int>(entries.size()));
    auto i = string_map_init(map);
    std::vector<std::string> keys;
    for (const Entry& entry : entries) {
        FUZZ_CHECK(!string_map_done(i) && string_map_domain(i) == entry.key);
        FUZZ_CHECK(*static_cast<int*>(string_map_range(i)) == entry.number);
        string_map_next(&i);
        keys.push_back(entry.key);
    }
    FUZZ_CHECK(string_map_done(i) && !string_map_domain(i) && !string_map_range(i));
    std::sort(keys.begin(), keys.end(),
              [&](const std::string& a, const std::string& b) { return model.precedes(a, b); });
    char** table = failures.ask([&] { return string_map_domain_table(map); });
    for (std::size_t k = 0; k < keys.size(); ++k)
        FUZZ_CHECK(table[k] == keys[k]);
    FUZZ_CHECK(table[keys.size()] == nullptr);
    string_map_domain_table_free(&table);
    FUZZ_CHECK(table == nullptr && alive == static_cast<int>(entries.size()));
}

/// Null has no entries, and a null key no place.
void nullHasNoPlace(string_map_tp* map) {
    const int before = string_map_size(map);
    FUZZ_CHECK(!string_map_define(map, nullptr, map, true) && !string_map_find(map, nullptr));
    FUZZ_CHECK(!string_map_undefine(map, nullptr, true) && string_map_size(map) == before);
    FUZZ_CHECK(!string_map_define(nullptr, "k", nullptr, true) && !string_map_find(nullptr, "k"));
    FUZZ_CHECK(!string_map_undefine(nullptr, "k", true) && string_map_size(nullptr) == 0);
    char** keys = string_map_domain_table(nullptr);
    FUZZ_CHECK(keys[0] == nullptr);
    string_map_domain_table_free(&keys);
    string_map_destroy(nullptr);
    string_map_domain_table_free(nullptr);
}

} // namespace

void fuzz::harness(Input& input) {
    fuzz::Failures failures(input);
    const bool rough = input.flag();
    const bool caseSensitive = input.flag();
    const int buckets = input.pick(std::array{0, 1, -5, 2, 7, 127, 1000});
    seesLowered = rough && !caseSensitive;
    string_map_tp* map = failures.ask([&] {
        return string_map_create(rough ? roughHash : nullptr, buckets, releaseValue, caseSensitive);
    });
    FUZZ_CHECK(map->bucketCount == (buckets > 0 ? buckets : 127));
    Model model(rough, buckets > 0 ? buckets : 127, caseSensitive);
    for (int work = 0; !input.empty() && work < 20000; ++work) {
        std::string key = input.textOf("aAbBz\xE9\xC9\xFF\x80", 3);
        if (input.byte() == 0)
            key.insert(0, 253, 'k'); // around the longest that there may be
        const bool flag = input.flag();
        const Entry* entry = model.find(key);
        auto* found = static_cast<int*>(string_map_find(map, key.c_str()));
        FUZZ_CHECK(entry ? found && *found == entry->number : !found);
        const int operation = input.between(0, 3);
        if (operation < 2) {
            void* value = newValue(work);
            const bool defined = model.define(key, work, flag);
            bool didDefine = false;
            failures.step([&] { didDefine = string_map_define(map, key.c_str(), value, flag); },
                          [&] { FUZZ_CHECK(string_map_find(map, key.c_str()) == found); });
            FUZZ_CHECK(didDefine == defined);
            if (!defined)
                releaseValue(value);
        } else if (operation == 2) {
            failures.hold([&] {
                FUZZ_CHECK(string_map_undefine(map, key.c_str(), flag) == (entry != nullptr));
            });
            if (entry && !flag)
                releaseValue(found);
            if (entry)
                model.undefine(key);
        } else {
            compare(failures, map, model);
            work += 50;
        }
    }
    compare(failures, map, model);
    nullHasNoPlace(map);
    string_map_destroy(&map);
    string_map_destroy(&map); // null by now
    FUZZ_CHECK(map == nullptr && alive == 0);
}
