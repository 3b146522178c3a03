// Copying trees, side by side with the system's own copying program. Both work
// in memory where the host offers it, so that the programs are measured and not
// a disk.
#include "tools/files/KazFileManager.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Workspace {
public:
    Workspace() {
        const fs::path parent =
            fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
        root_ = parent / ("bench_files." + std::to_string(::getpid()));
        fs::create_directories(root_);
    }
    ~Workspace() { fs::remove_all(root_); }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    fs::path source() const { return root_ / "src"; }
    /// A directory that is empty again.
    fs::path target() const {
        fs::remove_all(root_ / "dst");
        fs::create_directory(root_ / "dst");
        return root_ / "dst";
    }

    void write(const fs::path& name, std::size_t size) const {
        const fs::path path = source() / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    }

private:
    fs::path root_;
};

/// 10,000 files of up to 8 KiB in 100 directories.
void manySmall(const Workspace& space) {
    for (int i = 0; i < 10000; ++i) {
        const fs::path dir = std::to_string(i % 100);
        space.write(dir / std::to_string(i), static_cast<std::size_t>(i * 37 % 8192));
    }
}

void oneLarge(const Workspace& space) {
    space.write("large", std::size_t{256} << 20);
}

void withManager(const fs::path& source, const fs::path& target) {
    KazFileManager manager(source.c_str());
    if (!manager.copy(target.c_str(), true))
        std::abort();
}

void withProgram(const fs::path& source, const fs::path& target) {
    std::string command = "cp -r '";
    command.append(source.string()).append("' '").append(target.string()).append("'");
    if (std::system(command.c_str()) != 0)
        std::abort();
}

void copyTree(benchmark::State& state, void (*fill)(const Workspace&),
              void (*copy)(const fs::path&, const fs::path&)) {
    const Workspace space;
    fill(space);
    for (auto iteration : state) {
        static_cast<void>(iteration);
        state.PauseTiming();
        const fs::path target = space.target();
        state.ResumeTiming();
        copy(space.source(), target);
    }
}

void repeat(benchmark::internal::Benchmark* bench) {
    bench->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(11);
    bench->ReportAggregatesOnly();
}

BENCHMARK_CAPTURE(copyTree, small_10000_manager, manySmall, withManager)->Apply(repeat);
BENCHMARK_CAPTURE(copyTree, small_10000_cp, manySmall, withProgram)->Apply(repeat);
BENCHMARK_CAPTURE(copyTree, large_256MiB_manager, oneLarge, withManager)->Apply(repeat);
BENCHMARK_CAPTURE(copyTree, large_256MiB_cp, oneLarge, withProgram)->Apply(repeat);

} // namespace

BENCHMARK_MAIN();
