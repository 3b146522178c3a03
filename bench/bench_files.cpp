// SPDX-License-Identifier: Apache-2.0
// Paths taken apart and put together, side by side with what else there is for
// it, and trees copied and deleted, beside the system's own programs. Trees lie
// in memory where the host offers it, so that the programs are measured and not
// a disk.
#include "tools/config/KazFilePath.h"
#include "tools/files/KazFileManager.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"

#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif
#ifdef MOX_PEER_QT
#include <QDir>
#include <QFileInfo>
#endif

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <strings.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// The same rules by hand, as a careful user of std::string writes them.
namespace byhand {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bool isAbsolute(std::string_view path) {
    return !path.empty() &&
           (isSeparator(path[0]) ||
            (std::isalpha(static_cast<unsigned char>(path[0])) != 0 && path.substr(1, 1) == ":"));
}

bool isExplicit(std::string_view path) {
    const std::size_t dots = path.starts_with("..") ? 2 : path.starts_with('.') ? 1 : 0;
    const std::size_t length = path.starts_with('~') ? 1 : dots;
    return isAbsolute(path) || (length > 0 && (path.size() == length || isSeparator(path[length])));
}

void normalise(std::string& path) {
    std::replace(path.begin(), path.end(), '/', '\\');
}

std::string compose(std::string_view dir, std::string_view name) {
    if (isExplicit(name))
        dir = {};
    std::string result;
    result.reserve(dir.size() + 1 + name.size());
    result = dir;
    if (!dir.empty() && !name.empty() && !isSeparator(dir.back()))
        result += '\\';
    result += name;
    normalise(result);
    return result;
}

std::size_t rootLength(std::string_view path) {
    constexpr const char* separators = "\\/";
    if (path.empty())
        return 0;
    if (isSeparator(path[0])) {
        if (path.size() < 2 || !isSeparator(path[1]))
            return 1;
        const std::size_t share = path.find_first_of(separators, 2);
        const std::size_t end = path.find_first_of(separators, share + 1);
        return share == path.npos || end == path.npos ? path.size() : end + 1;
    }
    if (path.size() < 2 || path[1] != ':')
        return 0;
    return path.size() > 2 && isSeparator(path[2]) ? 3 : 2;
}

std::pair<std::string, std::string> split(std::string_view path) {
    const std::size_t last = path.find_last_of("\\/:");
    const std::size_t cut = last == path.npos || last + 1 < rootLength(path) ? 0 : last + 1;
    return {std::string(path.substr(0, cut)), std::string(path.substr(cut))};
}

std::string currentDirectory() {
    char buffer[4096];
    std::string result = ::getcwd(buffer, sizeof buffer) != nullptr ? buffer : "";
    normalise(result);
    return result;
}

std::string full(std::string_view path) {
    std::string result;
    if (!path.empty() && isSeparator(path[0]))
        result.reserve(path.size() + 1);
    else {
        result = currentDirectory();
        result.reserve(result.size() + 1 + path.size());
    }
    const bool trailing = !path.empty() && isSeparator(path.back());
    for (std::size_t i = 0; i < path.size();) {
        const std::size_t end = std::min(path.find_first_of("\\/", i), path.size());
        const std::string_view part = path.substr(i, end - i);
        i = end + 1;
        if (part == "..")
            result.resize(result.empty() ? 0 : result.rfind('\\'));
        else if (!part.empty() && part != ".")
            (result += '\\') += part;
    }
    if (trailing || result.empty())
        result += '\\';
    return result;
}

std::string relative(std::string base, std::string path) {
    normalise(base);
    normalise(path);
    const std::size_t root = rootLength(base);
    if (!isAbsolute(base) || !isAbsolute(path) || root != rootLength(path) ||
        base.compare(0, root, path, 0, root) != 0)
        return path;
    std::string_view from = std::string_view(base).substr(root);
    std::string_view to = std::string_view(path).substr(root);
    std::string_view rest = to;
    const auto next = [](std::string_view& text) {
        text.remove_prefix(std::min(text.find_first_not_of('\\'), text.size()));
        const std::string_view part = text.substr(0, text.find('\\'));
        text.remove_prefix(part.size());
        return part;
    };
    int up = -1;
    for (std::string_view part = next(from); !part.empty(); part = next(from)) {
        ++up;
        if (next(to) == part) {
            --up;
            const std::size_t cut = rest.find('\\');
            rest = cut == rest.npos ? std::string_view() : rest.substr(cut + 1);
        }
    }
    std::string result;
    result.reserve(rest.size() + static_cast<std::size_t>(std::max(up, 0)) * 3);
    for (; up > 0; --up)
        result += "..\\";
    return result += rest;
}

} // namespace byhand

/// A directory name of so many characters in components of ten.
std::string directory(std::size_t length, char separator) {
    std::string text;
    while (text.size() < length)
        (text += separator) += "component";
    return text.substr(0, length - 1) + 'e';
}

/// Equal names in other spelling.
void compareNames() {
    const std::string work = "compare file names";
    for (const std::size_t size : {20U, 60U, 300U}) {
        std::string lower = directory(size, '/'), upper = directory(size, '\\');
        for (char& c : upper)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        const auto add = [&, size](const char* impl, auto compare) {
            benchmark::RegisterBenchmark((work + "/" + impl + "/" + std::to_string(size)).c_str(),
                                         [=](benchmark::State& state) {
                                             for (auto iteration : state) {
                                                 static_cast<void>(iteration);
                                                 benchmark::DoNotOptimize(
                                                     compare(lower.c_str(), upper.c_str()));
                                             }
                                         });
        };
        add("moxtools", kazFilenameCompare);
        std::replace(upper.begin(), upper.end(), '\\', '/'); // the peer knows one separator
        add("strcasecmp", strcasecmp);
    }
}

/// The same with things to fold in between.
std::string untidy(std::size_t length, char separator) {
    const std::string part =
        std::string("component") + separator + '.' + separator + "more" + separator + "..";
    std::string text = "start";
    while (text.size() < length)
        (text += separator) += part;
    return text;
}

using Work = std::function<void(std::size_t size, benchmark::State& state)>;

/// One work on texts of several sizes.
void onPaths(const std::string& work, const std::string& impl, const Work& run) {
    for (const std::size_t size : {30U, 300U, 3000U})
        benchmark::RegisterBenchmark((work + "/" + impl + "/" + std::to_string(size)).c_str(),
                                     [run, size](benchmark::State& state) { run(size, state); });
}

template <typename Action>
void repeat(benchmark::State& state, Action action) {
    for (auto iteration : state) {
        static_cast<void>(iteration);
        benchmark::DoNotOptimize(action());
    }
}

void compose() {
    const std::string work = "compose a path";
    onPaths(work, "moxtools", [](std::size_t size, benchmark::State& state) {
        const std::string dir = directory(size, '\\');
        repeat(state, [&] { return kazComposePath(dir.c_str(), "file.txt"); });
    });
    onPaths(work, "std", [](std::size_t size, benchmark::State& state) {
        const std::string dir = directory(size, '\\');
        repeat(state, [&] { return byhand::compose(dir.c_str(), "file.txt"); });
    });
    onPaths(work, "filesystem", [](std::size_t size, benchmark::State& state) {
        const fs::path dir = directory(size, '/');
        repeat(state, [&] { return dir / "file.txt"; });
    });
#ifdef MOX_PEER_GLIB
    onPaths(work, "glib", [](std::size_t size, benchmark::State& state) {
        const std::string dir = directory(size, '/');
        repeat(state, [&] {
            char* path = g_build_filename(dir.c_str(), "file.txt", nullptr);
            benchmark::DoNotOptimize(path);
            g_free(path);
            return 0;
        });
    });
#endif
#ifdef MOX_PEER_QT
    onPaths(work, "qt", [](std::size_t size, benchmark::State& state) {
        const QString dir = QString::fromStdString(directory(size, '/'));
        const QString name = "file.txt";
        repeat(state, [&] { return QDir(dir).filePath(name); });
    });
#endif
}

void split() {
    const std::string work = "split a path";
    onPaths(work, "moxtools", [](std::size_t size, benchmark::State& state) {
        const std::string path = directory(size, '\\') + "\\file.txt";
        repeat(state, [&] {
            return std::pair(kazPathDirPart(path.c_str()), kazLastFileComponent(path.c_str()));
        });
    });
    onPaths(work, "std", [](std::size_t size, benchmark::State& state) {
        const std::string path = directory(size, '\\') + "\\file.txt";
        repeat(state, [&] { return byhand::split(path.c_str()); });
    });
    onPaths(work, "filesystem", [](std::size_t size, benchmark::State& state) {
        const fs::path path = directory(size, '/') + "/file.txt";
        repeat(state, [&] { return std::pair(path.parent_path(), path.filename()); });
    });
#ifdef MOX_PEER_GLIB
    onPaths(work, "glib", [](std::size_t size, benchmark::State& state) {
        const std::string path = directory(size, '/') + "/file.txt";
        repeat(state, [&] {
            char* dir = g_path_get_dirname(path.c_str());
            char* name = g_path_get_basename(path.c_str());
            benchmark::DoNotOptimize(dir);
            benchmark::DoNotOptimize(name);
            g_free(dir);
            g_free(name);
            return 0;
        });
    });
#endif
#ifdef MOX_PEER_QT
    onPaths(work, "qt", [](std::size_t size, benchmark::State& state) {
        const QString path = QString::fromStdString(directory(size, '/') + "/file.txt");
        repeat(state, [&] {
            const QFileInfo info(path);
            return std::pair(info.path(), info.fileName());
        });
    });
#endif
}

/// @p start goes in front: a separator for an absolute path, else nothing.
void full(const std::string& work, const std::string& start) {
    onPaths(work, "moxtools", [start](std::size_t size, benchmark::State& state) {
        const std::string path = start + untidy(size, '/');
        repeat(state, [&] { return kazFullPath(path.c_str()); });
    });
    onPaths(work, "std", [start](std::size_t size, benchmark::State& state) {
        const std::string path = start + untidy(size, '/');
        repeat(state, [&] { return byhand::full(path.c_str()); });
    });
    onPaths(work, "filesystem", [start](std::size_t size, benchmark::State& state) {
        const fs::path path = start + untidy(size, '/');
        repeat(state, [&] { return fs::absolute(path).lexically_normal(); });
    });
#ifdef MOX_PEER_GLIB
    onPaths(work, "glib", [start](std::size_t size, benchmark::State& state) {
        const std::string path = start + untidy(size, '/');
        repeat(state, [&] {
            char* result = g_canonicalize_filename(path.c_str(), nullptr);
            benchmark::DoNotOptimize(result);
            g_free(result);
            return 0;
        });
    });
#endif
#ifdef MOX_PEER_QT
    onPaths(work, "qt", [start](std::size_t size, benchmark::State& state) {
        const QString path = QString::fromStdString(start + untidy(size, '/'));
        repeat(state, [&] { return QDir::cleanPath(QFileInfo(path).absoluteFilePath()); });
    });
#endif
}

void relative() {
    const std::string work = "relative path";
    const auto apart = [](std::size_t size, char separator) {
        const std::string common = directory(size / 2, separator);
        const std::string rest = directory(size / 2, separator) + separator + "file.txt";
        return std::pair(common + separator + "from" + rest, common + separator + "to" + rest);
    };
    onPaths(work, "moxtools", [apart](std::size_t size, benchmark::State& state) {
        const auto [from, to] = apart(size, '\\');
        const KazString base = from.c_str();
        const KazString path = to.c_str();
        repeat(state, [&] { return kazRelativePath(base, path); });
    });
    onPaths(work, "std", [apart](std::size_t size, benchmark::State& state) {
        const auto [base, path] = apart(size, '\\');
        repeat(state, [&, &base = base, &path = path] { return byhand::relative(base, path); });
    });
    onPaths(work, "filesystem", [apart](std::size_t size, benchmark::State& state) {
        const auto [from, to] = apart(size, '/');
        const fs::path base = from;
        const fs::path path = to;
        repeat(state, [&] { return path.lexically_relative(base.parent_path()); });
    });
#ifdef MOX_PEER_QT
    onPaths(work, "qt", [apart](std::size_t size, benchmark::State& state) {
        const auto [from, to] = apart(size, '/');
        const QString base = QFileInfo(QString::fromStdString(from)).path();
        const QString path = QString::fromStdString(to);
        repeat(state, [&] { return QDir(base).relativeFilePath(path); });
    });
#endif
}

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

/// Files of up to 8 KiB, at most 100 in a directory.
void manySmall(const Workspace& space, int count) {
    for (int i = 0; i < count; ++i) {
        const fs::path dir = std::to_string(i / 100);
        space.write(dir / std::to_string(i), static_cast<std::size_t>(i * 37 % 8192));
    }
}

/// All files of one directory.
void findMatching(int count) {
    benchmark::RegisterBenchmark(("find matching files/moxtools/" + std::to_string(count)).c_str(),
                                 [count](benchmark::State& state) {
                                     const Workspace space;
                                     for (int i = 0; i < count; ++i)
                                         space.write(std::to_string(i), 0);
                                     const KazFilePath path(kazNativePath(space.source().c_str()));
                                     for (auto iteration : state) {
                                         static_cast<void>(iteration);
                                         KazStringColl found;
                                         benchmark::DoNotOptimize(path.findMatching("*", found));
                                     }
                                 });
}

void oneLarge(const Workspace& space, int megabytes) {
    space.write("large", static_cast<std::size_t>(megabytes) << 20);
}

/// So many directories one in the other, with a file in each.
void deepTree(const Workspace& space, int levels) {
    fs::path dir;
    for (int i = 0; i < levels; ++i)
        space.write((dir /= "d") / "f", 100);
}

void require(bool success) {
    if (!success)
        std::abort();
}

void runProgram(const std::string& command) {
    require(std::system(command.c_str()) == 0);
}

void copyByManager(const fs::path& source, const fs::path& target) {
    require(KazFileManager(source.c_str()).copy(target.c_str(), true));
}

void copyByProgram(const fs::path& source, const fs::path& target) {
    runProgram("cp -r '" + source.string() + "' '" + target.string() + "'");
}

/// The tree as a system of a project.
void copyByTool(const fs::path& source, const fs::path& target) {
    runProgram(std::string(MOXCOPY) + " -Quiet -projdir '" + source.parent_path().string() +
               "' -system '" + source.filename().string() + "' -target '" + target.string() + "'");
}

void removeByManager(const fs::path& tree) {
    require(KazFileManager(tree.c_str()).destroy(true) && !fs::exists(tree));
}

void removeByProgram(const fs::path& tree) {
    runProgram("rm -rf '" + tree.string() + "'");
}

using Fill = void (*)(const Workspace&, int);

/// Registers a work that needs to be set up anew each time.
void onTrees(const std::string& work, const std::string& impl, int size, Fill fill,
             const std::function<void(benchmark::State&, const Workspace&)>& turn) {
    benchmark::RegisterBenchmark((work + "/" + impl + "/" + std::to_string(size)).c_str(),
                                 [=](benchmark::State& state) {
                                     const Workspace space;
                                     fill(space, size);
                                     for (auto iteration : state) {
                                         static_cast<void>(iteration);
                                         turn(state, space);
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(3);
}

using Copy = void (*)(const fs::path&, const fs::path&);

void copying(const std::string& work, int size, Fill fill, Copy ours) {
    for (const auto& [impl, copy] :
         {std::pair("moxtools", ours), std::pair("cp", Copy(copyByProgram))})
        onTrees(work, impl, size, fill,
                [copy = copy](benchmark::State& state, const Workspace& space) {
                    state.PauseTiming();
                    const fs::path target = space.target();
                    state.ResumeTiming();
                    copy(space.source(), target);
                });
}

/// By the library, and by the program that works with it.
void copying(const std::string& what, int size, Fill fill) {
    copying("copy " + what, size, fill, copyByManager);
    copying("moxcopy " + what, size, fill, copyByTool);
}

void deleting(int size) {
    using Remove = void (*)(const fs::path&);
    const std::initializer_list<std::pair<const char*, Remove>> impls = {
        {"moxtools", removeByManager}, {"rm", removeByProgram}};
    for (const auto& [impl, remove] : impls)
        onTrees("delete small files", impl, size, manySmall,
                [remove = remove](benchmark::State& state, const Workspace& space) {
                    state.PauseTiming();
                    const fs::path target = space.target();
                    fs::copy(space.source(), target / "src", fs::copy_options::recursive);
                    state.ResumeTiming();
                    remove(target / "src");
                });
}

} // namespace

int main(int argc, char** argv) {
    compose();
    split();
    full("full path of an absolute one", "/");
    full("full path of a relative one", "");
    relative();
    compareNames();
    findMatching(1000);
    findMatching(20000);
    for (const int count : {100, 10000}) {
        copying("small files", count, manySmall);
        deleting(count);
    }
    copying("one file of so many MiB", 256, oneLarge);
    copying("a tree of so many levels", 1100, deepTree);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
