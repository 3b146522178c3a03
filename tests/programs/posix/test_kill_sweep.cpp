// SPDX-License-Identifier: Apache-2.0
// Programs and copies that are killed at any moment.
#include "kit/random.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"
#include "tools/files/KazFileManager.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Kill : public testing::Test {
protected:
    /// Runs @p work in a process of its own, which is killed after a while, or
    /// never. True when it ended well.
    static bool run(const std::function<int()>& work, std::chrono::microseconds killed = {}) {
        const pid_t child = ::fork();
        if (child == 0) {
            const int nothing = ::open("/dev/null", O_RDWR);
            for (int standard = 0; standard <= 2; ++standard)
                ::dup2(nothing, standard);
            ::_exit(work());
        }
        std::this_thread::sleep_for(killed);
        if (killed.count() > 0)
            ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    /// Kills @p work so often, each time somewhere within the time that it takes.
    /// After each, @p check(round, false) holds, and the work succeeds when it is
    /// let; then @p check(round, true) does.
    static void sweep(int kills, const std::function<void(int)>& prepare,
                      const std::function<int()>& work,
                      const std::function<void(int, bool)>& check) {
        kit::Random random;
        std::chrono::microseconds longest(5000);
        for (int round = 0, killed = 0; killed < kills && !HasFailure(); ++round) {
            ASSERT_LT(round, 10 * kills);
            prepare(round);
            const auto start = std::chrono::steady_clock::now();
            const int until = random.between(1, static_cast<int>(longest.count()));
            if (run(work, std::chrono::microseconds(until))) {
                const auto taken = std::chrono::steady_clock::now() - start;
                longest = std::min(longest, std::chrono::round<std::chrono::microseconds>(taken));
            } else {
                ++killed;
                check(round, false);
                ASSERT_TRUE(run(work)) << round;
            }
            check(round, true);
        }
    }

    /// A copy of a tree of which each round has other files: each of them is that
    /// of the round, or as the round before left it.
    void sweepCopy(int kills, const std::string& source, const std::string& target,
                   const std::function<int()>& work) {
        const auto text = [](int round, int file) {
            return std::string(static_cast<std::size_t>(1000 + file * 3000),
                               static_cast<char>('a' + (round + file) % 26));
        };
        const auto name = [](int file) {
            return "/d" + std::to_string(file % 3) + "/" + std::to_string(file);
        };
        constexpr int files = 25;
        sweep(
            kills,
            [&](int round) {
                for (int file = 0; file < files; ++file)
                    tree.write(source + name(file), text(round, file));
                if (round % 2 == 0)
                    fs::remove_all(tree.path(target));
                tree.mkdir(fs::path(target).parent_path().string());
            },
            work,
            [&](int round, bool complete) {
                for (int file = 0; file < files; ++file) {
                    const bool isThere = tree.exists(target + name(file));
                    const std::string found = tree.read(target + name(file));
                    EXPECT_TRUE(
                        found == text(round, file) ||
                        (!complete && (isThere ? found == text(round - 1, file) : round % 2 == 0)))
                        << name(file) << " of " << found.size() << " bytes in round " << round;
                }
            });
    }

    std::function<int()> program(std::vector<std::string> words) {
        words[0] = moxkit::binDirectory() + "/" + words[0];
        return [this, words] {
            std::vector<char*> argv;
            for (const std::string& word : words)
                argv.push_back(const_cast<char*>(word.c_str()));
            argv.push_back(nullptr);
            return ::chdir(tree.path().c_str()) == 0 ? ::execv(argv[0], argv.data()) : 1;
        };
    }

    /// In memory: a disk that is forced to write each file out takes its time.
    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
};

TEST_F(Kill, ACopiedTreeHasWholeFilesOnly) {
    const KazString source = tree.native("src").c_str();
    const KazString target = tree.native("dst").c_str();
    sweepCopy(40, "src", "dst/src", [&] {
        // What is there must not count as written by this copy.
        for (const auto& entry : fs::recursive_directory_iterator(tree.path("dst")))
            if (entry.is_regular_file())
                fs::last_write_time(entry,
                                    fs::file_time_type::clock::now() - std::chrono::hours(1));
        return KazFileManager(source).copy(target, true) ? 0 : 1;
    });
}

TEST_F(Kill, ACopiedSystemHasWholeFilesOnly) {
    sweepCopy(100, "plant/brewery", "copies/brewery",
              program({"moxcopy", "-p", "plant", "-s", "brewery", "-target", "copies", "-Force"}));
    // What the killed runs have left is cleared away by those after them.
    for (const auto& entry : fs::directory_iterator(tree.path("copies")))
        EXPECT_EQ(entry.path().filename(), "brewery");
}

TEST_F(Kill, AMessageFileIsWhole) {
    const auto compile = program({"moxmsg", "-source", "source", "-output", "file"});
    const auto write = [&](int version) {
        std::string source;
        for (int i = 1; i < 3000; ++i)
            source += std::to_string(i) + " text " + std::to_string(version) + "\n";
        tree.write("source", source);
    };
    std::vector<std::string> compiled;
    for (int version = 0; version < 2; ++version) {
        write(version);
        ASSERT_TRUE(run(compile));
        compiled.push_back(tree.read("file"));
    }
    ASSERT_NE(compiled[0], compiled[1]);
    sweep(
        100,
        [&](int round) {
            write(round % 2);
            if (round % 5 == 0)
                fs::remove(tree.path("file"));
        },
        compile,
        [&](int round, bool complete) {
            const std::string found = tree.read("file");
            EXPECT_TRUE(found == compiled[round % 2 == 0 ? 0 : 1] ||
                        (!complete && (round % 5 == 0 ? !tree.exists("file")
                                                      : found == compiled[round % 2 == 0 ? 1 : 0])))
                << round;
        });
}

} // namespace
