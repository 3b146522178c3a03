// SPDX-License-Identifier: Apache-2.0
// Configuration: loading files of variables, looking variables up, expanding
// templates. Peers read the same file into the table that is their own, or into
// the fastest map of the standard library.
#include "tools/app/KazConsoleApp.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"

#include <benchmark/benchmark.h>

#ifdef MOX_PEER_ABSEIL
#include <absl/strings/str_replace.h>
#include <absl/strings/substitute.h>
#endif
#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif
#ifdef MOX_PEER_INIH
#include <ini.h>
#endif

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <numeric>
#include <random>
#include <string>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using Variables = std::unordered_map<std::string, std::string>;

constexpr int fewest = 100;
constexpr int most = 1000000;

std::vector<int> shuffled(int count) {
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    return numbers;
}

std::string nameOf(int number) {
    return "variable_" + std::to_string(number);
}

/// A file of variables in shuffled order, as every reader here takes it; removed
/// at the end.
class VariableFile {
public:
    explicit VariableFile(int count)
        : path(std::filesystem::temp_directory_path() /
               ("bench_variables_" + std::to_string(getpid()))) {
        std::ofstream out(path);
        out << "[variables]\n";
        for (const int number : shuffled(count))
            out << nameOf(number) << " = some value of number " << number << '\n';
    }
    ~VariableFile() { std::filesystem::remove(path); }
    VariableFile(const VariableFile&) = delete;
    VariableFile& operator=(const VariableFile&) = delete;

    const char* name() const { return path.c_str(); }

private:
    std::filesystem::path path;
};

// ------------------------------------------------------------------ the readers

/// Reads over the definitions of the round before, which makes them anew and
/// frees the old ones, as the others do with their maps.
void loadToolInfo(const char* file) {
    if (TI_V_user_file(file, true) != 0)
        std::abort();
}

std::string blanksOff(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

Variables* readByStream(const char* file) {
    auto* variables = new Variables;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        if (const std::size_t equals = line.find('='); equals != line.npos)
            (*variables)[blanksOff(line.substr(0, equals))] = blanksOff(line.substr(equals + 1));
    return variables;
}

#ifdef MOX_PEER_INIH
Variables* readByInih(const char* file) {
    auto* variables = new Variables;
    const auto keep = [](void* user, const char*, const char* name, const char* value) {
        (*static_cast<Variables*>(user))[name] = value;
        return 1;
    };
    if (ini_parse(file, keep, variables) != 0)
        std::abort();
    return variables;
}
#endif

#ifdef MOX_PEER_GLIB
GKeyFile* readByGlib(const char* file) {
    GKeyFile* variables = g_key_file_new();
    if (!g_key_file_load_from_file(variables, file, G_KEY_FILE_NONE, nullptr))
        std::abort();
    return variables;
}
#endif

void addLoading(const char* impl, void (*load)(const char*)) {
    benchmark::RegisterBenchmark(("load variables/" + std::string(impl)).c_str(),
                                 [load](benchmark::State& state) {
                                     const VariableFile file(static_cast<int>(state.range(0)));
                                     for (auto _ : state)
                                         load(file.name());
                                 })
        ->RangeMultiplier(10)
        ->Range(fewest, most)
        ->Unit(benchmark::kMicrosecond);
}

// The library never forgets a definition and the peers are not to meet a heap that
// it has filled: what a variable costs is measured in a process of its own.
using Load = void (*)(const char*);
constexpr const char* measureMemory = "--measure-memory";

const std::vector<std::pair<std::string, Load>> keepers = {
    {"moxtools", loadToolInfo},
    {"std", [](const char* file) { readByStream(file); }},
#ifdef MOX_PEER_GLIB
    {"glib", [](const char* file) { readByGlib(file); }},
#endif
};

/// The other process's part: bytes in use for each variable, on standard output.
void printBytesForEach(const std::string& impl, int count) {
    const VariableFile file(count);
    const auto inUse = [] {
        const struct mallinfo2 info = mallinfo2();
        return static_cast<double>(info.uordblks + info.hblkhd);
    };
    for (const auto& [name, load] : keepers) {
        if (name != impl)
            continue;
        const double before = inUse();
        load(file.name());
        std::printf("%f\n", (inUse() - before) / count);
    }
}

void measureBytesForEach(benchmark::State& state, const std::string& impl) {
    const std::string command = std::filesystem::read_symlink("/proc/self/exe").string() + " " +
                                measureMemory + " " + impl + " " + std::to_string(state.range(0));
    for (auto _ : state) {
        std::FILE* answer = popen(command.c_str(), "r");
        double bytes = 0;
        if (answer == nullptr || std::fscanf(answer, "%lf", &bytes) != 1)
            state.SkipWithError("no answer");
        if (answer != nullptr)
            pclose(answer);
        state.counters["bytes"] = bytes;
    }
}

void addReaders() {
    addLoading("moxtools", loadToolInfo);
    addLoading("std", [](const char* file) { delete readByStream(file); });
#ifdef MOX_PEER_INIH
    addLoading("inih", [](const char* file) { delete readByInih(file); });
#endif
#ifdef MOX_PEER_GLIB
    addLoading("glib", [](const char* file) { g_key_file_free(readByGlib(file)); });
#endif
    for (const auto& keeper : keepers)
        benchmark::RegisterBenchmark(("memory: variable/" + keeper.first).c_str(),
                                     measureBytesForEach, keeper.first)
            ->Arg(100)
            ->Arg(100000)
            ->Iterations(1);
}

// ------------------------------------------------------------------- one variable

/// The names to ask for, in an order that is not the file's.
std::vector<std::string> questions(int count, const char* suffix) {
    std::vector<std::string> names;
    for (const int number : shuffled(count))
        names.push_back(nameOf(number) + suffix);
    std::reverse(names.begin(), names.end());
    return names;
}

template <class Lookup>
void ask(benchmark::State& state, const char* suffix, Lookup lookup) {
    const std::vector<std::string> names = questions(static_cast<int>(state.range(0)), suffix);
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookup(names[at]));
        at = at + 1 < names.size() ? at + 1 : 0;
    }
}

void lookUpToolInfo(benchmark::State& state, const char* suffix) {
    const VariableFile file(static_cast<int>(state.range(0)));
    loadToolInfo(file.name());
    ask(state, suffix, [](const std::string& name) { return TI_Vcont(name.c_str()); });
}

void lookUpStd(benchmark::State& state, const char* suffix) {
    const VariableFile file(static_cast<int>(state.range(0)));
    const Variables* variables = readByStream(file.name());
    ask(state, suffix, [variables](const std::string& name) {
        const auto found = variables->find(name);
        return found != variables->end() ? found->second.c_str() : nullptr;
    });
    delete variables;
}

#ifdef MOX_PEER_GLIB
void lookUpGlib(benchmark::State& state, const char* suffix) {
    GHashTable* table = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    for (const int number : shuffled(static_cast<int>(state.range(0))))
        g_hash_table_insert(table, g_strdup(nameOf(number).c_str()),
                            g_strdup(("some value of number " + std::to_string(number)).c_str()));
    ask(state, suffix,
        [table](const std::string& name) { return g_hash_table_lookup(table, name.c_str()); });
    g_hash_table_destroy(table);
}
#endif

void addLookups() {
    const std::pair<const char*, const char*> works[] = {{"variable hit", ""},
                                                         {"variable miss", "?"}};
    for (const auto& [work, suffix] : works) {
        const auto add = [&](const char* impl, auto function) {
            benchmark::RegisterBenchmark((work + std::string("/") + impl).c_str(), function, suffix)
                ->Arg(100)
                ->Arg(10000)
                ->Arg(100000);
        };
        add("moxtools", lookUpToolInfo);
        add("std", lookUpStd);
#ifdef MOX_PEER_GLIB
        add("glib", lookUpGlib);
#endif
    }
}

// ---------------------------------------------------------------------- templates

struct Part {
    const char* name;
    const char* value;
};
constexpr std::array<Part, 4> parts = {{{"system", "order entry"},
                                        {"diagram", "context of the whole"},
                                        {"output", "/projects/orders/report.ps"},
                                        {"n", "7"}}};

/// How a kind of template refers to a part: by name or, where they differ, by number.
using Reference = std::string (*)(std::size_t part);

std::string byName(std::size_t part) {
    return std::string("${").append(parts[part].name).append("}");
}

/// A text with a reference each 64 bytes or so; references by name make it
/// @p size bytes long, others as many references. The first number is a text whose parts
/// come in turn, each other one a text whose parts come at random.
std::string makeTemplate(std::size_t size, Reference reference, unsigned number) {
    static const char* const texts[] = {
        "print the diagram of ", " with page numbers and a frame that goes round the whole of it, ",
        " in two columns; then go on with the next one, which is to be printed on the back of "};
    std::mt19937 random(number);
    std::string text;
    for (std::size_t i = 0, length = 0; length < size; ++i) {
        const std::size_t choice = number == 0 ? i : random();
        const std::size_t part = choice % parts.size();
        const char* before = texts[choice % std::size(texts)];
        text.append(before).append(reference(part));
        length += std::strlen(before) + byName(part).size();
    }
    return text;
}

/// Templates of which each has its turn. Of a thousand the processor foretells nothing, so
/// that each expansion is as good as the first.
using Templates = std::vector<std::string>;

Templates makeTemplates(const benchmark::State& state, unsigned count, Reference reference) {
    Templates all;
    for (unsigned number = 0; number < count; ++number)
        all.push_back(makeTemplate(static_cast<std::size_t>(state.range(0)), reference, number));
    return all;
}

template <class Expand>
void expand(benchmark::State& state, const Templates& texts, Expand expandOnce) {
    std::size_t length = 0, next = 0;
    for (auto _ : state) {
        length += expandOnce(texts[next]);
        next = next + 1 < texts.size() ? next + 1 : 0;
    }
    benchmark::DoNotOptimize(length);
    state.SetBytesProcessed(state.iterations() * static_cast<long>(texts[0].size()));
}

void expandByLibrary(benchmark::State& state, unsigned count) {
    for (const Part& part : parts)
        vstring_set_simple_var(part.name, part.value);
    expand(state, makeTemplates(state, count, byName), [](const std::string& text) {
        char* result = nullptr;
        vstring_sub(text.c_str(), &result);
        benchmark::DoNotOptimize(result);
        const auto first = static_cast<std::size_t>(result[0]);
        std::free(result);
        return first;
    });
}

/// The same result for these texts, which have no quotes, by find and append.
void expandByFind(benchmark::State& state, unsigned count) {
    Variables values;
    for (const Part& part : parts)
        values[part.name] = part.value;
    expand(state, makeTemplates(state, count, byName), [&values](const std::string& text) {
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
        return result.size();
    });
}

#ifdef MOX_PEER_ABSEIL
void expandByReplaceAll(benchmark::State& state, unsigned count) {
    std::vector<std::pair<std::string, std::string>> replacements;
    for (const Part& part : parts)
        replacements.emplace_back(std::string("${").append(part.name).append("}"), part.value);
    expand(state, makeTemplates(state, count, byName), [&replacements](const std::string& text) {
        const std::string result = absl::StrReplaceAll(text, replacements);
        benchmark::DoNotOptimize(result.data());
        return result.size();
    });
}

void expandBySubstitute(benchmark::State& state, unsigned count) {
    const auto byNumber = [](std::size_t part) {
        return std::string("$").append(std::to_string(part));
    };
    expand(state, makeTemplates(state, count, byNumber), [](const std::string& text) {
        const std::string result =
            absl::Substitute(text, parts[0].value, parts[1].value, parts[2].value, parts[3].value);
        benchmark::DoNotOptimize(result.data());
        return result.size();
    });
}
#endif

#ifdef MOX_PEER_GETTEXT
/// A process that reads the text and writes the result, as scripts use it.
void expandByProcess(benchmark::State& state, unsigned /*one*/) {
    for (const Part& part : parts)
        setenv(part.name, part.value, 1);
    const auto directory = std::filesystem::temp_directory_path();
    const std::string file = directory / ("bench_template_" + std::to_string(getpid()));
    const std::string command = "envsubst <" + file + " >" + file + ".out";
    std::ofstream(file) << makeTemplates(state, 1, byName)[0];
    expand(state, makeTemplates(state, 1, byName), [&command](const std::string&) {
        return static_cast<std::size_t>(std::system(command.c_str()));
    });
    std::filesystem::remove(file);
    std::filesystem::remove(file + ".out");
}
#endif

void addTemplates() {
    using Function = void (*)(benchmark::State&, unsigned);
    const auto add = [](const char* impl, Function function) {
        return benchmark::RegisterBenchmark(("expand a template/" + std::string(impl)).c_str(),
                                            function, 1)
            ->Arg(1 << 10)
            ->Arg(1 << 16)
            ->Arg(1 << 20)
            ->Unit(benchmark::kMicrosecond);
    };
    const auto addBoth = [add](const char* impl, Function function) {
        add(impl, function);
        benchmark::RegisterBenchmark(
            ("expand a template for the first time/" + std::string(impl)).c_str(), function, 1000)
            ->Arg(1 << 10)
            ->Unit(benchmark::kMicrosecond);
    };
    addBoth("moxtools", expandByLibrary);
    addBoth("std", expandByFind);
#ifdef MOX_PEER_ABSEIL
    addBoth("absl", expandByReplaceAll);
    addBoth("absl-substitute", expandBySubstitute);
#endif
#ifdef MOX_PEER_GETTEXT
    add("envsubst", expandByProcess)->UseRealTime();
#endif
}

class BenchTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        if (argc == 4 && std::string(argv[1]) == measureMemory) {
            printBytesForEach(argv[2], std::atoi(argv[3]));
            return 0;
        }
        // A tool cannot run without a file; this one defines nothing.
        const VariableFile none(0);
        setenv("ToolInfo", none.name(), 1);
        TI_Vinit();
        addReaders();
        addLookups();
        addTemplates();
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
};

BenchTool bench;

} // namespace
