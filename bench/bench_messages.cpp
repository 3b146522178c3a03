// SPDX-License-Identifier: Apache-2.0
// Messages: texts of the catalog beside gettext's, a formatted line through the
// director beside vsnprintf and write, a step of a progress beside a table of
// objects.
#include "tools/app/KazConsoleApp.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/KazProgressHandle.h"
#include "tools/messages/catalog/textcatalog.h"
#include "tools/messages/messages.h"

#include <benchmark/benchmark.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>
#ifdef MOX_PEER_GETTEXT
#include <clocale>
#include <libintl.h>
#endif

namespace {

namespace fs = std::filesystem;

constexpr int messageCount = 10000;
constexpr int cachedCount = 20;

std::string textOf(int number) {
    return "Text of message number " + std::to_string(number) + " for the user of the tool";
}

/// A directory that goes at the end.
struct Scratch {
    fs::path path = fs::temp_directory_path() / ("bench_messages_" + std::to_string(getpid()));
    Scratch() { fs::create_directories(path); }
    ~Scratch() { fs::remove_all(path); }
};

/// Little-endian words at multiples of 16: directory, index tables, texts.
void writeCatalog(const fs::path& file) {
    constexpr std::size_t blocks = messageCount / 256 + 1;
    std::string bytes(128 + 512 * blocks, '\0');
    bytes.replace(0, 4, "MZAK");
    const auto put = [&bytes](std::size_t at, std::size_t offset) {
        bytes[at] = static_cast<char>(offset / 16 & 0xFF);
        bytes[at + 1] = static_cast<char>(offset / 16 >> 8);
    };
    for (std::size_t block = 0; block < blocks; ++block)
        put(4 + 2 * block, 128 + 512 * block);
    for (int number = 0; number < messageCount; ++number) {
        put(128 + 2 * static_cast<std::size_t>(number), bytes.size());
        bytes += textOf(number);
        bytes.resize((bytes.size() + 16) / 16 * 16);
    }
    bytes.resize(bytes.size() + 128);
    std::ofstream(file, std::ios::binary) << bytes;
}

/// The numbers 1 to @p count in an order that no reader ahead can guess, but the
/// same for all.
std::vector<int> numbersUpTo(int count) {
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(i * 7919 % count + 1);
    return numbers;
}

/// Each round asks for one text, in a circle; what is read only once is read
/// before.
template <typename Key, typename Find>
void lookUp(benchmark::State& state, const std::vector<Key>& keys, Find find) {
    for (const Key& key : keys)
        find(key);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(find(keys[next]));
        next = next + 1 < keys.size() ? next + 1 : 0;
    }
    if (find(keys[0]) != textOf(1))
        state.SkipWithError("not the text");
}

void lookUpNumber(benchmark::State& state) {
    lookUp(state, numbersUpTo(static_cast<int>(state.range(0))), TextLook);
}

#ifdef MOX_PEER_GETTEXT
/// Translates the numbers of the catalog into its texts.
bool makeTranslations(const fs::path& directory) {
    const fs::path folder = directory / "xx" / "LC_MESSAGES";
    fs::create_directories(folder);
    std::ofstream source(directory / "bench.po");
    source << "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n";
    for (int number = 1; number < messageCount; ++number)
        source << "msgid \"" << number << "\"\nmsgstr \"" << textOf(number) << "\"\n";
    source.close();
    const std::string command = "msgfmt -o '" + (folder / "bench.mo").string() + "' '" +
                                (directory / "bench.po").string() + "'";
    return std::system(command.c_str()) == 0 && std::setlocale(LC_ALL, "C.UTF-8") != nullptr &&
           setenv("LANGUAGE", "xx", 1) == 0 && bindtextdomain("bench", directory.c_str()) &&
           textdomain("bench");
}

void translate(benchmark::State& state) {
    std::vector<std::string> names;
    for (const int number : numbersUpTo(static_cast<int>(state.range(0))))
        names.push_back(std::to_string(number));
    std::vector<const char*> keys;
    for (const std::string& name : names)
        keys.push_back(name.c_str());
    lookUp(state, keys, [](const char* name) { return gettext(name); });
}
#endif

/// Standard output goes nowhere during the lifetime.
class Silence {
public:
    Silence() : saved(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~Silence() {
        std::fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        close(saved);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int saved;
};

void printThroughDirector(benchmark::State& state) {
    const Silence silence;
    int line = 0;
    for (auto _ : state)
        print_msg("%s:%d: the diagram \"%s\" is checked out", "model/system", ++line, "overview");
}

KAZ_PRINTF(1, 2)
void printPlainly(const char* format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    int length = std::vsnprintf(text, sizeof text - 1, format, args);
    va_end(args);
    text[length++] = '\n';
    benchmark::DoNotOptimize(write(STDOUT_FILENO, text, static_cast<std::size_t>(length)));
}

void printWithStd(benchmark::State& state) {
    const Silence silence;
    int line = 0;
    for (auto _ : state)
        printPlainly("%s:%d: the diagram \"%s\" is checked out", "model/system", ++line,
                     "overview");
}

constexpr double step = 0.0001;

void stepHandle(benchmark::State& state) {
    const Silence silence;
    KazProgressHandle progress("bench", 0);
    for (auto _ : state)
        progress.increment(step, false);
}

void registerLookUps(const char* implementation, void (*function)(benchmark::State&)) {
    const auto add = [&](const char* work, int count) {
        const std::string name = std::string(work) + "/" + implementation;
        benchmark::RegisterBenchmark(name.c_str(), function)->Arg(count);
    };
    add("catalog hit", 1);
    add("catalog hit", cachedCount);
    add("catalog miss", 100);
    add("catalog miss", 1000);
    add("catalog miss", messageCount - 1);
}

class BenchTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        benchmark::Initialize(&argc, argv);
        const Scratch scratch;
        writeCatalog(scratch.path / "msg_file");
        std::ofstream(scratch.path / "ToolInfo")
            << "msg_file=" << (scratch.path / "msg_file").string();
        setenv("ToolInfo", (scratch.path / "ToolInfo").c_str(), 1);
        registerLookUps("moxtools", lookUpNumber);
#ifdef MOX_PEER_GETTEXT
        if (makeTranslations(scratch.path))
            registerLookUps("gettext", translate);
#endif
        benchmark::RegisterBenchmark("print a formatted line/moxtools", printThroughDirector);
        benchmark::RegisterBenchmark("print a formatted line/std", printWithStd);
        benchmark::RegisterBenchmark("progress step/moxtools", stepHandle);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
};

BenchTool bench;

} // namespace
