// The catalog keeps its state for the life of the process, so every scenario
// runs in a process of its own (catalog_probe).

#include "catalog_word.h"

#include "kit/host.h"
#include "kit/process.h"
#include "kit/random.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

/// Runs the probe with @p toolInfo as configuration and @p script as commands.
kit::Result probe(const std::string& toolInfo, const std::string& script) {
    static const kit::TempTree tree;
    kit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", toolInfo);
    options.input = script;
    const kit::Result result = kit::run({"catalog_probe"}, options);
    EXPECT_EQ(result.status, 0) << result.err;
    return result;
}

void put16(std::string& bytes, std::size_t at, std::size_t value) {
    bytes[at] = static_cast<char>(value & 0xFF);
    bytes[at + 1] = static_cast<char>(value >> 8);
}

/// A message file with the given texts.
std::string messageFile(const std::map<int, std::string>& texts) {
    std::string bytes(128, '\0');
    bytes.replace(0, 4, "MZAK");
    std::map<int, std::size_t> tables;
    for (const auto& [number, text] : texts) {
        if (!tables.count(number >> 8)) {
            tables[number >> 8] = bytes.size();
            put16(bytes, 4 + 2 * static_cast<std::size_t>(number >> 8), bytes.size() / 16);
            bytes.resize(bytes.size() + 512);
        }
        put16(bytes, tables[number >> 8] + 2 * static_cast<std::size_t>(number & 255),
              bytes.size() / 16);
        bytes += text;
        bytes.resize((bytes.size() + 128 - text.size() + 15) / 16 * 16);
    }
    return bytes;
}

/// What the catalog is to do, on the bytes of a file in memory.
class Model {
public:
    explicit Model(std::string bytes) : file(std::move(bytes)) {
        for (std::size_t i = 0; i < header.size() && i < file.size(); ++i)
            header[i] = static_cast<unsigned char>(file[i]);
    }

    std::string errors;
    std::map<int, std::string> runtime;
    bool runtimeUsed = false;

    std::string look(int number, const std::string& name) {
        ++calls;
        if (!opened) {
            opened = true;
            if (file.size() < 128 || file.compare(0, 4, "MZAK") != 0) {
                errors += "Warning: Magic number mismatch msg file " + name +
                          "\nCould not initialize text from file\n";
                return "";
            }
        }
        Entry* victim = &cache[0];
        for (Entry& entry : cache) {
            if (entry.number == number) {
                ++hits;
                entry.stamp = clock++;
                return entry.text.c_str();
            }
            if (entry.stamp < victim->stamp)
                victim = &entry;
        }
        const int block = number >= 0 ? number / 256 : -1;
        const auto registered = runtime.find(number);
        if (registered != runtime.end() && (runtimeUsed || block < 0 || block > 62))
            return fill(*victim, number, registered->second.substr(0, 128));
        if (block < 0 || block > 61)
            return "";
        if (!tables.count(block))
            tables[block] = loadTable(block);
        else
            tables[block].ok = true;
        if (!tables[block].ok)
            return "";
        const std::size_t at = tables[block].values[static_cast<std::size_t>(number % 256)];
        if (at == 0)
            return "";
        const std::string record = at * 16 < file.size() ? file.substr(at * 16, 128) : "";
        if (record.size() < 128) {
            ++failed;
            victim->text.replace(0, record.size(), record);
            return "";
        }
        ++misses;
        return fill(*victim, number, record);
    }

    std::string statistics() const {
        std::string out = "\nBucket tables " + std::to_string(tables.size()) + " entries used\n";
        for (const auto& [block, table] : tables)
            out += format("%2d ", block);
        out += tables.empty() ? "" : "\n";
        out += "\nCurrent LRU " + std::to_string(clock) + "\nCalls " + std::to_string(calls) + "\n";
        out += share("Hit  ", hits) + share("Miss ", misses) + share("Err  ", failed) + "\n";
        for (std::size_t i = 0; i < cache.size(); ++i) {
            const Entry& entry = cache[i];
            out += format("Entry %2d, ", static_cast<int>(i)) + format("Tno %5d, ", entry.number) +
                   format("Lru %5d, Text ", entry.stamp);
            if (entry.number == 0) {
                out += "UNUSED\n";
                continue;
            }
            for (char c : std::string(entry.text.c_str()).substr(0, 20)) {
                const bool printable = kit::isPrintable(static_cast<unsigned char>(c));
                out +=
                    printable ? std::string(1, c) : "^" + std::string(1, static_cast<char>(c + 64));
            }
            out += "\n";
        }
        return out + "\n";
    }

private:
    struct Entry {
        int stamp = 0;
        int number = 0;
        std::string text = std::string(128, '\0');
    };
    struct Table {
        bool ok = false;
        std::vector<std::size_t> values = std::vector<std::size_t>(256);
    };

    static std::string format(const char* text, int value) {
        char buffer[100];
        std::snprintf(buffer, sizeof buffer, text, value);
        return buffer;
    }
    std::string share(const char* name, int count) const {
        char buffer[100];
        std::snprintf(buffer, sizeof buffer, "\tText %s%6d(%6.2f%%)\n", name, count,
                      100.0 * count / calls);
        return buffer;
    }
    std::string fill(Entry& entry, int number, std::string text) {
        text.resize(128);
        entry.number = number;
        entry.stamp = clock++;
        entry.text = text;
        return entry.text.c_str();
    }
    Table loadTable(int block) const {
        Table table;
        const auto k = static_cast<std::size_t>(block);
        const std::size_t at = 16 * (header[4 + 2 * k] + 256U * header[5 + 2 * k]);
        if (at == 0)
            return table;
        std::string bytes = at < file.size() ? file.substr(at, 512) : "";
        table.ok = bytes.size() == 512;
        bytes.resize(512);
        for (std::size_t i = 0; i < 256; ++i)
            table.values[i] = static_cast<unsigned char>(bytes[2 * i]) +
                              256U * static_cast<unsigned char>(bytes[2 * i + 1]);
        return table;
    }

    std::string file;
    std::array<unsigned char, 128> header{};
    bool opened = false;
    std::map<int, Table> tables;
    std::array<Entry, 20> cache;
    int clock = 1;
    int calls = 0;
    int hits = 0;
    int misses = 0;
    int failed = 0;
};

/// Compares catalog and model on one file: the answers, the errors, and in the
/// end the statistics.
void compareOn(const std::string& bytes, const std::vector<int>& numbers, bool withRuntime) {
    static const kit::TempTree tree;
    tree.write("file", bytes);
    tree.write("stats", "");
    Model model(bytes);
    std::string script, answers;
    const auto putNumbered = [&](const std::string& text, int number) {
        script += "putno " + std::to_string(number) + " " + text + "\n";
        answers += std::to_string(number) + "\n";
        model.runtime[number] = text;
    };
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (withRuntime && i == numbers.size() / 3) {
            putNumbered("early", numbers[0]);
            putNumbered("negative", -7);
            putNumbered("unseen", 15900);
        }
        if (withRuntime && i == numbers.size() / 2) {
            const std::string longText(200, 'x');
            script += "put 0 " + longText + "\n";
            answers += "15873\n";
            model.runtime[15873] = longText;
            model.runtimeUsed = true;
        }
        script += "look " + std::to_string(numbers[i]) + " -\n";
        answers += catalogWord(model.look(numbers[i], tree.native("file")));
    }
    const kit::Result result =
        probe("msg_file=" + tree.native("file") + "\nTextStats=" + tree.native("stats") + "\n",
              script + "stats 0 -\n");
    ASSERT_EQ(result.out, answers);
    ASSERT_EQ(result.err, model.errors);
    ASSERT_EQ(tree.readText("stats"), model.statistics());
}

std::vector<int> someNumbers(kit::Random& random, int count) {
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i) {
        switch (random.below(8)) {
        case 0:
            numbers.push_back(random.oneIn(2) ? random.between(15871, 15873) : 15900);
            break;
        case 1:
            numbers.push_back(-random.below(20));
            break;
        case 2:
            numbers.push_back(random.below(70 * 256));
            break;
        default:
            numbers.push_back(random.below(60));
        }
    }
    return numbers;
}

std::map<int, std::string> someTexts(kit::Random& random, int count) {
    std::map<int, std::string> texts;
    for (int i = 0; i < count; ++i)
        texts[random.oneIn(4) ? random.below(62 * 256) : random.below(60)] =
            random.text(127, "ab \t\x01\xE9");
    texts[15871] = "the last";
    return texts;
}

TEST(TextCatalog, AnswersAndCountsLikeTheModel) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 20; ++round)
        compareOn(messageFile(someTexts(random, 40)), someNumbers(random, 400), round % 2 == 0);
}

TEST(TextCatalog, FilesCutAtAnyLength) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    const std::string whole = messageFile({{1, "one"}, {2, std::string(127, 'z')}});
    ASSERT_EQ(whole.size(), 896U);
    // Around the ends of the magic number, the directory, the index table and
    // the two texts; in between one length is as good as another.
    std::vector<int> lengths{0,   3,   4,   5,   6,   127, 128, 129, 131, 132, 133,
                             134, 639, 640, 641, 643, 644, 767, 768, 769, 895, 896};
    for (int i = 0; i < 8; ++i)
        lengths.push_back(random.between(1, 895));
    for (const int length : lengths)
        compareOn(whole.substr(0, static_cast<std::size_t>(length)), {1, 0, 2, 3, 1, 2, 300, 5000},
                  false);
}

TEST(TextCatalog, AnyBytesAtAll) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 40; ++round) {
        std::string bytes(static_cast<std::size_t>(random.below(4000)), '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random.oneIn(2) ? random.below(256) : random.below(3));
        if (random.oneIn(2) && bytes.size() > 4)
            bytes.replace(0, 4, "MZAK");
        compareOn(bytes, someNumbers(random, 200), true);
    }
}

TEST(TextCatalog, WithoutAFile) {
    const std::string complaint = "Could not initialize text from file\n";
    const std::string script = "stats 0 -\nlook 1 -\nlook 0 -\n";
    for (const char* file : {"/no/such/file", "/", "/dev/null"}) {
        const kit::Result shown =
            probe("msg_file=" + std::string(file) + "\nTextStats=ye\n", script);
        EXPECT_EQ(shown.out, "\n\n");
        EXPECT_EQ(shown.err, "Text tables not initialized\n" + complaint + complaint) << file;
    }
    for (const char* silent : {"TextStats=n\n", "TextStats=\n", ""})
        EXPECT_EQ(probe(silent, script).err, complaint + complaint);
}

TEST(TextCatalog, RegisteredTexts) {
    const kit::TempTree tree;
    tree.write("file", messageFile({{300, "from the file"}, {2, "No"}}));
    std::string script = "putno 300 y\nlook 300 -\nput 0 x\nnull 0 -\n"
                         "look 15873 -\nlook 15874 -\n"
                         "putno 15873 z\nlook 15873 -\n"; // not refreshed in the cache
    for (int i = 0; i < 20; ++i)
        script += "put 0 filler\nlook " + std::to_string(15875 + i) + " -\n";
    script += "look 15873 -\nlook 300 -\ncopy 2 -\nperror " + std::to_string(ENOENT) + " 2\n";
    std::string answers = "300\nfrom%32the%32file\n15873\n15874\nx\n\n15873\nx\n";
    for (int i = 0; i < 20; ++i)
        answers += std::to_string(15875 + i) + "\nfiller\n";
    const kit::Result result = probe("msg_file=" + tree.native("file") + "\n", script);
    EXPECT_EQ(result.out, answers + "z\ny\nNo\n");
    EXPECT_EQ(result.err, "No: No such file or directory\n");
}

} // namespace
