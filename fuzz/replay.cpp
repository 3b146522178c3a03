// SPDX-License-Identifier: Apache-2.0
// Runs a harness without a fuzzer, as a test: every file of its corpus, then
// random inputs and random changes of the files, the same ones each time. In
// the build with the fuzzer, whose own main wins, only the application object
// of this file counts.
#include "fuzz/harness.h"
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
#include <map>
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
std::map<std::string, Bytes> readCorpus() {
    std::map<std::string, Bytes> files;
    if (std::filesystem::is_directory(fuzz::topic.corpus))
        for (const auto& entry : std::filesystem::directory_iterator(fuzz::topic.corpus))
            files[entry.path().filename().string()] = readFile(entry.path());
    return files;
}

/// Makes inputs of nothing, or of those that are there.
class Mutator {
public:
    explicit Mutator(const std::map<std::string, Bytes>& corpus) : rng_(moxkit::seed()) {
        for (const auto& [name, bytes] : corpus)
            corpus_.push_back(bytes);
    }

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
        const int kind = rng_.below(7);
        if (kind == 0)
            bytes.erase(at, index(16));
        else if (kind == 1)
            bytes.resize(at);
        else if (kind < 5)
            bytes.insert(at, kind == 2 ? random(16) : part(kind == 3 ? bytes : any()));
        else if (at < bytes.size() && kind == 5)
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << index(8)));
        else if (at < bytes.size())
            bytes[at] = rng_.oneIn(2) ? byte() : "\0\1\x7F\x80\xFF\n\"\\"[index(8)];
    }

    moxkit::Random rng_;
    std::vector<Bytes> corpus_;
};

class ReplayTool : public KazConsoleApp {
    /// Without arguments all inputs are run, otherwise the files that they name.
    int runTool(int argc, char** argv) override {
        watchForFailures();
        std::map<std::string, Bytes> files;
        for (int i = 1; i < argc; ++i)
            files[argv[i]] = readFile(argv[i]);
        if (argc == 1)
            files = readCorpus();
        Mutator mutator(files);
        const char* text = std::getenv("FUZZ_RUNS");
        const int all = std::min(text != nullptr ? std::atoi(text) : 2048, 1 << 20);
        // With the memory that there is, and with allocations that fail. One round after the
        // other: once memory has failed, the library keeps no freed blocks of strings any more.
        const int rounds = fuzz::topic.fails ? 2 : 1;
        for (int round = 0; round < rounds; ++round) {
            fuzz::Failures::areOn = round == 1;
            for (const auto& [name, bytes] : files)
                run(name, bytes);
            for (int i = 0; argc == 1 && i < all / rounds; ++i)
                run("random input " + std::to_string(i), mutator.input());
        }
        if (argc == 1)
            finish(mutator, all, files.size());
#ifdef FUZZ_ADDRESS_SANITIZER
        // Here the report can still be seen; at the end the streams are closed.
        currentName = "a leak in one of the inputs, the last is";
        __lsan_do_leak_check();
#endif
        return 0;
    }

    static void finish(Mutator& mutator, int runs, std::size_t files) {
        // 1 MiB, unless fewer runs say that this build or its tool is slow.
        const auto size = static_cast<std::size_t>(std::clamp(runs * 512, 1, 1 << 20));
        run("a large random input", mutator.large(size, false));
        run("a large input made of the corpus", mutator.large(size, true));
        std::printf("fuzz_%s: %zu files and %d random inputs, %ld allocations failed\n",
                    fuzz::topic.name, files, runs + 2, fuzz::Failures::failed);
        if (fuzz::topic.fails && fuzz::Failures::failed == 0 && !std::getenv("FUZZ_MEMORY_HOLDS")) {
            std::fprintf(stderr, "fuzz_%s: no allocation could be made to fail\n",
                         fuzz::topic.name);
            std::exit(1);
        }
    }
};

ReplayTool theTool;

} // namespace
