// The catalog keeps its state for the life of the process, so every scenario
// runs in a child process of its own and sends home what it saw.

#include "tools/messages/textcatalog.h"

#include "kit/capture.h"
#include "kit/director.h"
#include "kit/random.h"
#include "kit/temp_tree.h"
#include "tools/config/toolinfo.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Runs @p scenario in a child process, with @p toolInfo as configuration, and
/// returns what it returned.
std::string inChild(const std::string& toolInfo, const std::function<std::string()>& scenario) {
    static const kit::TempTree tree;
    const std::string file = tree.write("ToolInfo", toolInfo);
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        setenv("ToolInfo", file.c_str(), 1);
        const std::string result = scenario();
        const bool sent =
            write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size());
        std::fflush(nullptr);
        _exit(sent ? 0 : 3);
    }
    close(ends[1]);
    std::string result;
    char part[4096];
    for (ssize_t got; (got = read(ends[0], part, sizeof part)) > 0;)
        result.append(part, static_cast<std::size_t>(got));
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
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

    std::vector<std::string> errors;
    std::map<int, std::string> runtime;
    bool runtimeUsed = false;

    std::string look(int number, const std::string& name) {
        ++calls;
        if (!opened) {
            opened = true;
            if (file.size() < 128 || file.compare(0, 4, "MZAK") != 0) {
                errors.push_back("Warning: Magic number mismatch msg file " + name);
                errors.push_back("Could not initialize text from file");
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
        std::string out =
            format("\nBucket tables %d entries used\n", static_cast<int>(tables.size()));
        for (const auto& [block, table] : tables)
            out += format("%2d ", block);
        out += tables.empty() ? "" : "\n";
        out += format("\nCurrent LRU %d\n", clock) + format("Calls %d\n", calls);
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
                const bool printable = c >= ' ' && c < 127;
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
    const std::string difference = inChild(
        "msg_file=" + tree.native("file") + "\nTextStats=" + tree.native("stats") + "\n", [&] {
            Model model(bytes);
            kit::RecordingDirector director;
            for (std::size_t i = 0; i < numbers.size(); ++i) {
                if (withRuntime && i == numbers.size() / 3) {
                    TI_TextPutNo("early", numbers[0]);
                    model.runtime[numbers[0]] = "early";
                    TI_TextPutNo("negative", -7);
                    model.runtime[-7] = "negative";
                }
                if (withRuntime && i == numbers.size() / 2) {
                    const std::string longText(200, 'x');
                    const int number = TI_TextPut(longText.c_str());
                    model.runtime[number] = longText;
                    model.runtimeUsed = true;
                }
                const std::string expected = model.look(numbers[i], tree.native("file"));
                const std::string found = TextLook(numbers[i]);
                if (found != expected)
                    return std::to_string(numbers[i]) + " gives " + found + ", not " + expected;
            }
            TextStats();
            if (director.errors != model.errors)
                return "errors: " + testing::PrintToString(director.errors);
            const std::string written = tree.read("stats");
            return written == model.statistics() ? "" : written + " is not " + model.statistics();
        });
    ASSERT_EQ(difference, "");
}

std::vector<int> someNumbers(kit::Random& random, int count) {
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i) {
        switch (random.below(8)) {
        case 0:
            numbers.push_back(random.between(15800, 16200));
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
    for (int round = 0; round < 30; ++round)
        compareOn(messageFile(someTexts(random, 40)), someNumbers(random, 400), round % 2 == 0);
}

TEST(TextCatalog, FilesCutAtAnyLength) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    const std::string whole = messageFile({{1, "one"}, {2, std::string(127, 'z')}});
    for (std::size_t length = 0; length <= whole.size(); ++length)
        compareOn(whole.substr(0, length), {1, 2, 3, 1, 2, 300, 5000}, false);
}

TEST(TextCatalog, AnyBytesAtAll) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 60; ++round) {
        std::string bytes(static_cast<std::size_t>(random.below(4000)), '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random.oneIn(2) ? random.below(256) : random.below(3));
        if (random.oneIn(2) && bytes.size() > 4)
            bytes.replace(0, 4, "MZAK");
        compareOn(bytes, someNumbers(random, 200), true);
    }
}

TEST(TextCatalog, ACleanStart) {
    EXPECT_EQ(inChild("msg_file=/no/such/file\nTextStats=ye\n",
                      [] {
                          kit::Capture capture;
                          kit::RecordingDirector director;
                          TextStats();
                          TextLook(1);
                          TextLook(0);
                          return capture.err() + testing::PrintToString(director.errors);
                      }),
              "Text tables not initialized\n"
              "{ \"Could not initialize text from file\", "
              "\"Could not initialize text from file\" }");
    EXPECT_EQ(inChild("TextStats=n\n",
                      [] {
                          kit::RecordingDirector director;
                          kit::Capture capture;
                          TextLook(1);
                          TextStats();
                          return capture.err() + testing::PrintToString(director.errors);
                      }),
              "{ \"Could not initialize text from file\" }");
}

TEST(TextCatalog, RegisteredTexts) {
    const kit::TempTree tree;
    tree.write("file", messageFile({{300, "from the file"}, {2, "No"}}));
    EXPECT_EQ(inChild("msg_file=" + tree.native("file") + "\n",
                      [] {
                          std::string seen;
                          TI_TextPutNo("y", 300);
                          seen += TextLook(300);
                          seen += "," + std::to_string(TI_TextPut("x"));
                          seen += "," + std::to_string(TI_TextPut(static_cast<char*>(nullptr)));
                          seen += std::string(",") + TextLook(15873) + TextLook(15874);
                          // Not refreshed while it is in the cache.
                          TI_TextPutNo("z", 15873);
                          seen += TextLook(15873);
                          for (int i = 1; i <= 20; ++i)
                              TextLook(TI_TextPut("filler"));
                          seen += TextLook(15873);
                          seen += TextLook(300);
                          char* copy = CTextLook(2);
                          TextLook(15874);
                          errno = ENOENT;
                          kit::Capture capture;
                          Textperror(2);
                          seen += "," + capture.err() + copy;
                          std::free(copy);
                          return seen;
                      }),
              "from the file,15873,15874,xxzy,No: No such file or directory\nNo");
}

} // namespace
