// SPDX-License-Identifier: Apache-2.0
// Runs a harness without a fuzzer, as a test: every file of its corpus, then
// random inputs and random changes of the files, the same ones each time. In
// the build with the fuzzer, whose own main wins, only the application object
// of this file counts.
#include "fuzz/failures.h"
#include "fuzz/topic.h"
#include "testkit/random.h"
#include "tools/app/KazConsoleApp.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#if defined __has_feature
#if __has_feature(address_sanitizer)
#define FUZZ_ADDRESS_SANITIZER
#endif
#elif defined __SANITIZE_ADDRESS__
#define FUZZ_ADDRESS_SANITIZER
#endif
#ifdef FUZZ_ADDRESS_SANITIZER
#include <sanitizer/common_interface_defs.h>
#include <sanitizer/lsan_interface.h>

/// What the undefined behaviour sanitizer finds ends in a signal too.
extern "C" __attribute__((visibility("default"))) const char* __ubsan_default_options() {
    return "abort_on_error=1";
}
#endif

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::string;

/// The input that is being run, for the report of a failure.
Bytes current;
std::string currentName;

/// Says which input failed and keeps it, for a run of this input alone.
void report() {
    const std::string file = std::string("fuzz-") + fuzz::topic.name + "-failed-input";
    std::fprintf(stderr, "fuzz_%s: failed with %s (%zu bytes, kept in %s; %s)\n", fuzz::topic.name,
                 currentName.c_str(), current.size(), file.c_str(), moxkit::seedText().c_str());
    if (std::FILE* out = std::fopen(file.c_str(), "wb")) {
        std::fwrite(current.data(), 1, current.size(), out);
        std::fclose(out);
    }
}

void onSignal(int signal) {
    std::signal(signal, SIG_DFL);
    report();
    std::raise(signal);
}

void watchForFailures() {
    std::signal(SIGABRT, onSignal);
#ifdef FUZZ_ADDRESS_SANITIZER
    __sanitizer_set_death_callback(report);
#else
    std::signal(SIGSEGV, onSignal);
    std::signal(SIGFPE, onSignal);
#endif
}

void run(const std::string& name, const Bytes& input) {
    currentName = name;
    current = input;
    try {
        // A block of just this size: reading behind its end is noticed.
        const std::vector<std::uint8_t> bytes(current.begin(), current.end());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    } catch (...) {
        report();
        throw;
    }
}

Bytes readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "fuzz_%s: cannot read %s\n", fuzz::topic.name, path.string().c_str());
        std::exit(1);
    }
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

/// The files of the corpus in the order of their names.
std::vector<std::filesystem::path> corpusFiles() {
    std::vector<std::filesystem::path> files;
    if (std::filesystem::is_directory(fuzz::topic.corpus))
        for (const auto& entry : std::filesystem::directory_iterator(fuzz::topic.corpus))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// Makes inputs of nothing, or of those that are there.
class Mutator {
public:
    Mutator(std::uint64_t seed, std::vector<Bytes> corpus)
        : rng_(seed), corpus_(std::move(corpus)) {}

    Bytes input() {
        if (corpus_.empty() || rng_.oneIn(4))
            return random(rng_.oneIn(8) ? 4096 : 128);
        Bytes result = any();
        for (int n = rng_.between(1, 6); n > 0; --n)
            change(result);
        return result;
    }

    /// One of @p size bytes, which parts of the corpus or, without @p copies,
    /// random bytes fill.
    Bytes large(std::size_t size, bool copies) {
        Bytes result;
        while (result.size() < size)
            result += copies && !corpus_.empty() ? any() + random(4) : random(4096);
        return result;
    }

private:
    char byte() { return static_cast<char>(rng_.bits()); }
    const Bytes& any() { return corpus_[index(corpus_.size())]; }
    std::size_t index(std::size_t limit) {
        return static_cast<std::size_t>(rng_.below(static_cast<int>(limit)));
    }

    Bytes random(int most) {
        Bytes result(index(static_cast<std::size_t>(most) + 1), '\0');
        std::generate(result.begin(), result.end(), [this] { return byte(); });
        return result;
    }

    Bytes part(const Bytes& bytes) {
        const std::size_t start = index(bytes.size() + 1);
        return bytes.substr(start, index(bytes.size() - start + 1));
    }

    void change(Bytes& bytes) {
        const std::size_t at = index(bytes.size() + 1);
        switch (rng_.below(7)) {
        case 0:
            bytes.erase(at, index(16));
            break;
        case 1:
            bytes.resize(at);
            break;
        case 2:
            bytes.insert(at, random(16));
            break;
        case 3:
            bytes.insert(at, part(bytes));
            break;
        case 4:
            bytes.insert(at, part(any()));
            break;
        case 5:
            if (at < bytes.size())
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << index(8)));
            break;
        default:
            if (at < bytes.size())
                bytes[at] = rng_.oneIn(2) ? byte() : "\0\1\x7F\x80\xFF\n\"\\"[index(8)];
        }
    }

    moxkit::Random rng_;
    std::vector<Bytes> corpus_;
};

class ReplayTool : public KazConsoleApp {
    /// Without arguments all inputs are run, otherwise the files that they name.
    int runTool(int argc, char** argv) override {
        watchForFailures();
        if (argc > 1) {
            for (const bool fails : modes())
                for (int i = 1; i < argc; ++i) {
                    fuzz::Failures::areOn = fails;
                    run(argv[i], readFile(argv[i]));
                }
        } else {
            runAll();
        }
#ifdef FUZZ_ADDRESS_SANITIZER
        // Here the report can still be seen; at the end the streams are closed.
        currentName = "a leak in one of the inputs, the last is";
        __lsan_do_leak_check();
#endif
        return 0;
    }

    /// First with the memory that there is, then with allocations that fail.
    static std::vector<bool> modes() {
        return fuzz::topic.fails ? std::vector<bool>{false, true} : std::vector<bool>{false};
    }

    static void runAll() {
        std::vector<Bytes> corpus;
        for (const auto& path : corpusFiles())
            corpus.push_back(readFile(path));
        const std::vector<std::filesystem::path> names = corpusFiles();
        const std::size_t files = corpus.size();
        const std::vector<Bytes> inputs = corpus;
        Mutator mutator(moxkit::seed(), std::move(corpus));
        const char* text = std::getenv("FUZZ_RUNS");
        const int runs = std::min(text != nullptr ? std::atoi(text) : 2048, 1 << 20);
        const std::vector<bool> rounds = modes();
        // One round after the other: once memory has failed, the library keeps no freed
        // blocks of strings any more.
        for (const bool fails : rounds) {
            fuzz::Failures::areOn = fails;
            for (std::size_t i = 0; i < files; ++i)
                run(names[i].filename().string(), inputs[i]);
            for (int i = 0; i < runs / static_cast<int>(rounds.size()); ++i)
                run("random input " + std::to_string(i), mutator.input());
        }
        // 1 MiB, unless fewer runs say that this build or its tool is slow.
        const auto size = static_cast<std::size_t>(std::clamp(runs * 512, 1, 1 << 20));
        run("a large random input", mutator.large(size, false));
        run("a large input made of the corpus", mutator.large(size, true));
        std::printf("fuzz_%s: %zu files and %d random inputs, %ld allocations failed\n",
                    fuzz::topic.name, files, runs + 2, fuzz::Failures::failed);
        if (rounds.back() && fuzz::Failures::failed == 0 && !std::getenv("FUZZ_MEMORY_HOLDS")) {
            std::fprintf(stderr, "fuzz_%s: no allocation could be made to fail\n",
                         fuzz::topic.name);
            std::exit(1);
        }
    }
};

ReplayTool theTool;

} // namespace
