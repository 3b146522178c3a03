// SPDX-License-Identifier: Apache-2.0
// The frame: a command line beside getopt_long_only, the start and end of a tool
// beside those of a program that does nothing.
#include "tools/app/KazArgDescription.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/app/KazParsedArgs.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <getopt.h>
#include <malloc.h>
#include <memory>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

constexpr int typeCount = arg_filter + 1;

/// 20 options, some abbreviated, 12 of them with a value.
const std::vector<std::string> commandLine = {
    "tool",         "-projdir",     "/home/user/projects/warehouse",
    "-system",      "order_entry",  "-Revision",
    "2.1",          "-batch",       "-noannot",
    "-nodiagram",   "-traditional", "-output",
    "report.txt",   "-pageheight",  "297",
    "-pagewidth",   "210",          "-print_set",
    "landscape",    "-prod",        "gantt",
    "-progress_ch", "3:40",         "-relaxed",
    "-source",      "messages.txt", "-trace_file",
    "trace.log",    "-verbose",     "-nooperationbodies",
    "-viewafter",   "-filter",      "name=*"};

/// A fresh argv of the same words, as each process has one.
struct Words {
    std::vector<std::string> words = commandLine;
    std::vector<char*> argv;
    Words() {
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
    }
    int argc() const { return static_cast<int>(words.size()); }
};

std::vector<arg_type_enum> allTypes() {
    std::vector<arg_type_enum> types;
    for (const KazArgDescription* row = KazArgDescription::table(); row->type != arg_end; ++row)
        types.push_back(row->type);
    types.push_back(arg_end);
    return types;
}

void parseIntoSet(benchmark::State& state) {
    const std::vector<arg_type_enum> types = allTypes();
    Words words;
    for (auto _ : state) {
        std::vector<char*> argv = words.argv;
        KazParsedArgs set;
        if (!set.parse(words.argc(), argv.data(), nullptr, types.data(), 0))
            state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(set.getArgText(arg_filter, 0, nullptr));
    }
}

/// The same table for getopt: switches with their digits are words of their own.
std::vector<option> longOptions() {
    std::vector<option> result;
    static const std::vector<std::string>& digits = *[] {
        auto* texts = new std::vector<std::string>;
        for (const KazArgDescription* row = KazArgDescription::table(); row->type != arg_end; ++row)
            texts->push_back(row->text + 1);
        return texts;
    }();
    const KazArgDescription* row = KazArgDescription::table();
    for (const std::string& text : digits) {
        const int values = row->valueCount > 0 ? required_argument : no_argument;
        result.push_back({text.c_str(), values, nullptr, row->type});
        ++row;
    }
    result.push_back({nullptr, 0, nullptr, 0});
    return result;
}

using Values = std::array<std::vector<std::string>, typeCount>;

bool parseWithGetopt(int argc, char** argv, const option* options, Values& values) {
    optind = 0;
    for (int type; (type = getopt_long_only(argc, argv, "", options, nullptr)) != -1;) {
        if (type == '?')
            return false;
        values[static_cast<std::size_t>(type)].emplace_back(optarg != nullptr ? optarg : "1");
    }
    return true;
}

void parseWithGetopt(benchmark::State& state) {
    const std::vector<option> options = longOptions();
    Words words;
    for (auto _ : state) {
        std::vector<char*> argv = words.argv;
        Values values;
        if (!parseWithGetopt(words.argc(), argv.data(), options.data(), values))
            state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(values[arg_filter].front().data());
    }
}

/// Heap bytes for one set of parsed arguments, bookkeeping included.
template <typename Make>
void measureSet(benchmark::State& state, Make make) {
    constexpr std::size_t count = 1000;
    for (auto _ : state) {
        std::vector<std::shared_ptr<void>> sets;
        sets.reserve(count);
        const std::size_t before = mallinfo2().uordblks;
        for (std::size_t i = 0; i < count; ++i)
            sets.push_back(make());
        state.counters["bytes"] = static_cast<double>(mallinfo2().uordblks - before) / count;
    }
}

void measureParsedArgs(benchmark::State& state) {
    const std::vector<arg_type_enum> types = allTypes();
    Words words;
    measureSet(state, [&] {
        auto set = std::make_shared<KazParsedArgs>();
        set->parse(words.argc(), words.argv.data(), nullptr, types.data(), 0);
        return set;
    });
}

void measureGetopt(benchmark::State& state) {
    const std::vector<option> options = longOptions();
    Words words;
    measureSet(state, [&] {
        auto set = std::make_shared<Values>();
        std::vector<char*> argv = words.argv;
        parseWithGetopt(words.argc(), argv.data(), options.data(), *set);
        return set;
    });
}

std::string programBeside(const std::string& name) {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

void startAndEnd(benchmark::State& state, const char* name) {
    std::string program = programBeside(name);
    char* const argv[] = {program.data(), nullptr};
    for (auto _ : state) {
        pid_t child = 0;
        int status = -1;
        if (posix_spawn(&child, program.c_str(), nullptr, nullptr, argv, environ) != 0 ||
            waitpid(child, &status, 0) != child || status != 0) {
            state.SkipWithError("not run");
            break;
        }
    }
}

class BenchTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        benchmark::Initialize(&argc, argv);
        const auto add = [](const char* name, void (*function)(benchmark::State&)) {
            benchmark::RegisterBenchmark(name, function);
        };
        add("parse 20 options/moxtools", parseIntoSet);
        add("parse 20 options/getopt", parseWithGetopt);
        add("memory: 20 parsed options/moxtools", measureParsedArgs);
        add("memory: 20 parsed options/getopt", measureGetopt);
        // A tool found out whether it is the outermost one: let it be.
        unsetenv("KAZCOREROOT");
        const std::string work = "start and end of a process/";
        benchmark::RegisterBenchmark((work + "moxtools").c_str(), startAndEnd, "bench_empty_tool")
            ->UseRealTime();
        benchmark::RegisterBenchmark((work + "std").c_str(), startAndEnd, "bench_empty_program")
            ->UseRealTime();
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
};

BenchTool bench;

} // namespace
