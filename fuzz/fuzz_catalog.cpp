// SPDX-License-Identifier: Apache-2.0
// Lookups of numbered texts in any file, against the rules as a page of prose; and
// in a file that moxmsg would write, against the texts that went into it.
#include "fuzz/directory.h"
#include "fuzz/harness.h"
#include "programs/moxmsg/message_file.h"
#include "testkit/director.h"
#include "tools/messages/catalog/detail/MessageCatalog.h"

#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

using fuzz::directory;

/// A new file each time: some file systems write an old one that is cut to disk at
/// once, which takes milliseconds.
void writeFile(const std::string& bytes) {
    std::remove(directory().path("file").c_str());
    directory().write("file", bytes);
}

kaz::host::ReadableFile openFile(KazString& name) {
    name = "the file";
    return kaz::host::ReadableFile(directory().path("file").c_str());
}

/// What the catalog is to do, on the bytes of a file in memory.
class Model {
public:
    Model(std::string bytes, std::uint32_t firstStamp)
        : file(std::move(bytes)), header(file.substr(0, 128)), clock(firstStamp) {
        header.resize(128);
    }

    std::vector<std::string> errors;
    std::map<int, std::string> runtime;
    bool runtimeUsed = false;

    std::string look(int number) {
        ++calls;
        if (!opened) {
            opened = true;
            if (file.size() < 128 || file.compare(0, 4, "MZAK") != 0) {
                errors.push_back("Warning: Magic number mismatch msg file the file");
                errors.push_back("Could not initialize text from file");
                return "";
            }
        }
        Entry* victim = nullptr;
        for (Entry& entry : cache) {
            if (entry.number == number) {
                ++hits;
                entry.stamp = clock++;
                return entry.text.c_str();
            }
            if (entry.stamp < (victim ? victim->stamp : clock))
                victim = &entry;
        }
        if (!victim) { // the clock has just begun anew
            ++failed;
            return "";
        }
        const int block = number >= 0 ? number / 256 : -1;
        const auto registered = runtime.find(number);
        if (registered != runtime.end() && (runtimeUsed || block < 0 || block > 62))
            return fill(*victim, number, registered->second.substr(0, 128));
        if (block < 0 || block > 61)
            return "";
        const auto [table, isNew] = tables.try_emplace(block);
        if (isNew && !load(block, table->second))
            return "";
        const std::size_t at = 16 * table->second[static_cast<std::size_t>(number % 256)];
        if (at == 0)
            return "";
        const std::string record = at < file.size() ? file.substr(at, 128) : "";
        if (record.size() < 128) {
            ++failed;
            victim->text.replace(0, record.size(), record);
            return "";
        }
        ++misses;
        return fill(*victim, number, record);
    }

    std::string statistics() const {
        if (calls == 0)
            return "Text tables not initialized\n";
        std::string out = "\nBucket tables " + std::to_string(tables.size()) + " entries used\n";
        for (const auto& [block, table] : tables)
            out += format("%2d ", block);
        out += tables.empty() ? "" : "\n";
        out += "\nCurrent LRU " + std::to_string(clock) + "\nCalls " + std::to_string(calls) + "\n";
        out += share("Hit  ", hits) + share("Miss ", misses) + share("Err  ", failed) + "\n";
        for (std::size_t i = 0; i < cache.size(); ++i) {
            const Entry& entry = cache[i];
            out += format("Entry %2d, Tno %5d, Lru %5d, Text ", static_cast<int>(i), entry.number,
                          static_cast<int>(entry.stamp));
            out += entry.number == 0 ? "UNUSED\n" : beginning(entry.text.c_str()) + "\n";
        }
        return out + "\n";
    }

private:
    struct Entry {
        std::uint32_t stamp = 0;
        int number = 0;
        std::string text = std::string(128, '\0');
    };
    using Table = std::array<std::size_t, 256>;

    template <class... Values>
    static std::string format(const char* text, Values... values) {
        char buffer[100];
        std::snprintf(buffer, sizeof buffer, text, values...);
        return buffer;
    }
    std::string share(const char* name, int count) const {
        return format("\tText %s%6d(%6.2f%%)\n", name, count, 100.0 * count / calls);
    }
    static std::string beginning(const std::string& text) {
        std::string shown;
        for (const char c : text.substr(0, 20)) {
            const bool printable = c != '\t' && std::isprint(static_cast<unsigned char>(c)) != 0;
            shown +=
                printable ? std::string(1, c) : "^" + std::string(1, static_cast<char>(c + 64));
        }
        return shown;
    }
    std::string fill(Entry& entry, int number, std::string text) {
        text.resize(128);
        entry.number = number;
        entry.stamp = clock++;
        entry.text = text;
        return entry.text.c_str();
    }
    static std::size_t word(const std::string& bytes, std::size_t at) {
        return static_cast<unsigned char>(bytes[at]) +
               256U * static_cast<unsigned char>(bytes[at + 1]);
    }
    bool load(int block, Table& table) const {
        const std::size_t at = 16 * word(header, 4 + 2 * static_cast<std::size_t>(block));
        if (at == 0)
            return false;
        std::string bytes = at < file.size() ? file.substr(at, 512) : "";
        const bool whole = bytes.size() == 512;
        bytes.resize(512);
        for (std::size_t i = 0; i < table.size(); ++i)
            table[i] = word(bytes, 2 * i);
        return whole;
    }

    std::string file;
    std::string header;
    bool opened = false;
    std::map<int, Table> tables;
    std::array<Entry, 20> cache;
    std::uint32_t clock;
    int calls = 0, hits = 0, misses = 0, failed = 0;
};

/// Through one file that is written over and over.
std::string statisticsOf(const kaz::detail::MessageCatalog& catalog) {
    static std::FILE* const out = std::fopen(directory().path("statistics").c_str(), "w+b");
    FUZZ_CHECK(out != nullptr);
    std::rewind(out);
    catalog.printStatistics(out);
    std::string text(static_cast<std::size_t>(std::ftell(out)), '\0');
    std::rewind(out);
    FUZZ_CHECK(std::fread(text.data(), 1, text.size(), out) == text.size());
    return text;
}

int someNumber(fuzz::Input& input) {
    const int kind = input.between(0, 6);
    if (kind == 1)
        return input.raw<int>();
    return kind == 0   ? input.between(15868, 15880)
           : kind == 2 ? input.between(0, 70 * 256)
                       : input.between(0, 40);
}

/// Something to ask or to tell the catalog.
struct Step {
    enum { look, put, putNumbered } what = look;
    int number;
    std::string text;
};

std::vector<Step> someSteps(fuzz::Input& input) {
    std::vector<Step> steps;
    for (int n = input.between(0, 255); n > 0; --n) {
        Step step{Step::look, someNumber(input), {}};
        if (const int kind = input.between(0, 15); kind > 13) {
            step.what = kind == 14 ? Step::put : Step::putNumbered;
            step.text = input.flag() ? std::string(200, 'x') : input.cText(4);
        }
        steps.push_back(step);
    }
    return steps;
}

/// What a file is made of, and which stamps its catalog starts with.
struct Scenario {
    std::string bytes;
    std::map<int, Message> texts; ///< where all of them are in the file
    std::uint32_t firstStamp;
};

void run(const Scenario& scenario, const std::vector<Step>& steps) {
    writeFile(scenario.bytes);
    const moxkit::RecordingDirector director;
    kaz::detail::MessageCatalog catalog(openFile, scenario.firstStamp);
    Model model(scenario.bytes, scenario.firstStamp);
    int next = 15873;
    for (const Step& step : steps) {
        if (step.what == Step::look) {
            FUZZ_CHECK(catalog.look(step.number) == model.look(step.number));
        } else if (step.what == Step::put) {
            FUZZ_CHECK(catalog.put(step.text.c_str()) == next);
            model.runtime[next++] = step.text;
            model.runtimeUsed = true;
        } else {
            FUZZ_CHECK(catalog.put(step.text.c_str(), step.number) == step.number);
            model.runtime[step.number] = step.text;
        }
    }
    FUZZ_CHECK(director.errors == model.errors);
    FUZZ_CHECK(statisticsOf(catalog) == model.statistics());
    // 0 is the number of unused entries.
    if (scenario.firstStamp == 1 && model.runtime.empty())
        for (const auto& [number, message] : scenario.texts)
            FUZZ_CHECK(number == 0 || catalog.look(number) == message.text);
}

/// A file with texts from the rest of the input.
Scenario wholeFile(fuzz::Input& input) {
    Messages messages;
    while (!input.empty()) {
        const int number = input.flag() ? input.between(0, 15871) : input.between(1, 300);
        messages.texts.try_emplace(number, Message{input.cText(127), 0});
    }
    const std::string bytes = encodeMessageFile(messages);
    if (!messages.problems.empty())
        messages.texts.clear(); // too much for one file
    return {bytes, messages.texts, 1};
}

} // namespace

void fuzz::harness(Input& input) {
    // Near its end the clock begins anew.
    const int start = input.between(0, 255);
    const int kind = start % 4;
    const std::uint32_t firstStamp = start < 192 ? 1 : -static_cast<std::uint32_t>(start % 64);
    const int cut = input.between(0, 0xFFFF);
    const std::vector<Step> steps = someSteps(input);
    Scenario scenario = kind < 2 ? wholeFile(input) : Scenario{input.rest(), {}, 1};
    scenario.firstStamp = firstStamp;
    if (kind == 1) {
        scenario.texts.clear();
        scenario.bytes.resize(static_cast<std::size_t>(cut) % (scenario.bytes.size() + 1));
    }
    if (kind == 2)
        scenario.bytes.insert(0, "MZAK");
    run(scenario, steps);
}
