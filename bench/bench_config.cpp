// Configuration: loading files beside a plain reader into a std::map, expanding
// a long text beside a plain std::string loop.
#include "tools/app/KazConsoleApp.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

/// A file of @p count variables in shuffled order; removed at the end.
class VariableFile {
public:
    explicit VariableFile(int count)
        : path(std::filesystem::temp_directory_path() /
               ("bench_toolinfo_" + std::to_string(count))) {
        std::vector<int> numbers(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            numbers[static_cast<std::size_t>(i)] = i;
        std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
        std::ofstream out(path);
        for (const int number : numbers)
            out << "variable_" << number << " = some value of number " << number << '\n';
    }
    ~VariableFile() { std::filesystem::remove(path); }

    std::string name() const { return path.string(); }

private:
    std::filesystem::path path;
};

std::string blanksOff(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// Each round reads the file over the definitions of the round before, which
/// builds the table anew, as the other reader does its map.
void loadToolInfo(benchmark::State& state) {
    const VariableFile file(static_cast<int>(state.range(0)));
    for (auto _ : state)
        if (TI_V_user_file(file.name().c_str(), true) != 0)
            state.SkipWithError("cannot read the file");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void loadStdMap(benchmark::State& state) {
    const VariableFile file(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::map<std::string, std::string> variables;
        std::ifstream in(file.name());
        for (std::string line; std::getline(in, line);)
            if (const std::size_t equals = line.find('='); equals != line.npos)
                variables[blanksOff(line.substr(0, equals))] = blanksOff(line.substr(equals + 1));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Text, quotes and references, one reference to about 64 characters.
std::string longTemplate(std::size_t size) {
    std::string text;
    while (text.size() < size)
        text += "a piece of command line with \"a quoted ${part}\" and more text. ";
    return text;
}

const char* const partValue = "C:\\dir\\file";

void expandTemplate(benchmark::State& state) {
    const std::string text = longTemplate(static_cast<std::size_t>(state.range(0)));
    vstring_set_simple_var("part", partValue);
    for (auto _ : state) {
        char* result = nullptr;
        vstring_sub(text.c_str(), &result);
        benchmark::DoNotOptimize(result);
        std::free(result);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}

/// The same result for this text, without quote levels, by find and append.
void expandByFind(benchmark::State& state) {
    const std::string text = longTemplate(static_cast<std::size_t>(state.range(0)));
    const std::map<std::string, std::string> values = {{"part", "C:\\\\dir\\\\file"}};
    for (auto _ : state) {
        std::string result;
        std::size_t at = 0;
        for (std::size_t open = 0; (open = text.find("${", at)) != text.npos;) {
            const std::size_t close = text.find('}', open);
            result.append(text, at, open - at);
            result += values.at(text.substr(open + 2, close - open - 2));
            at = close + 1;
        }
        result.append(text, at);
        benchmark::DoNotOptimize(result.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}

BENCHMARK(loadToolInfo)->Arg(100)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(loadStdMap)->Arg(100)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(expandTemplate)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);
BENCHMARK(expandByFind)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);

class BenchTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
};

BenchTool bench;

} // namespace
