// SPDX-License-Identifier: Apache-2.0
// Every call of the system that the file functions make, failing once.
#include "files/manager.h"
#include "files/tree.h"
#include "kit/posix/call_sweep.h"
#include "testkit/temp_tree.h"
#include "tools/config/KazFilePath.h"
#include "tools/files/KazTreeCursor.h"
#include "tools/files/kazpath.h"
#include "tools/files/process.h"
#include "tools/files/tifiles.h"
#include "tools/files/tistatus.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace manager_test;

class Calls : public FileManager, protected kit::CallSweep {};

TEST_F(Calls, ACopyIsWholeOrInTheListAndSourcesStay) {
    tree.write("src/small", "text");
    tree.write("src/sub/large", std::string(100000, 'x'));
    tree.write("src/old", "new");
    fs::permissions(tree.path("src/old"), static_cast<fs::perms>(0600));
    fs::create_symlink("small", tree.path("src/link"));
    const tree::Snapshot source = tree::snapshot(tree.path("src"));
    tree::Snapshot complete = source;
    complete["link"] = source.at("small");
    const std::string before = tree::describe(tree.write("before", "as it was"));
    KazFileManager manager(tree.native("src").c_str());
    const KazString dst = tree.native("dst").c_str();
    bool copied = false;
    sweep(
        [&] {
            fs::remove_all(tree.path("dst"));
            tree.write("dst/src/old", "as it was");
            makeOld(tree.path("dst/src/old"));
        },
        [&] { copied = manager.copy(dst, true); },
        [&](bool harmless) {
            const tree::Snapshot result = tree::snapshot(tree.path("dst/src"));
            for (const auto& [path, what] : result)
                EXPECT_TRUE((path == "old" && what == before) ||
                            (complete.count(path) > 0 && what == complete.at(path)))
                    << path;
            EXPECT_EQ(result.count("old"), 1u);
            EXPECT_EQ(copied, manager.getErrors().isEmpty());
            EXPECT_TRUE(copied || !harmless);
            EXPECT_TRUE(!copied || result == complete);
            EXPECT_EQ(tree::snapshot(tree.path("src")), source);
        });
}

/// Not when it cannot be told how old it is, either.
TEST_F(Calls, ATargetOfThisVeryCopyIsNeverReplaced) {
    tree.write("src/f", "new");
    KazFileManager manager(tree.native("src").c_str());
    const KazString dst = tree.native("dst").c_str();
    sweep(
        [&] {
            tree.write("dst/src/f", "as it was");
            setAge(tree.path("dst/src/f"), std::chrono::hours(1));
        },
        [&] { manager.copy(dst, true); },
        [&](bool) {
            const bool saysMissing = error_ == ENOENT;
            EXPECT_EQ(tree.read("dst/src/f"),
                      saysMissing && manager.getErrors().isEmpty() ? "new" : "as it was");
            EXPECT_TRUE(saysMissing || !manager.getErrors().isEmpty());
        });
}

TEST_F(Calls, ADeletionIsCompleteOrInTheList) {
    KazFileManager manager(tree.native("src").c_str());
    bool removed = false;
    sweep(
        [&] {
            tree.write("src/a", "x");
            tree.write("src/sub/b", "x");
            fs::remove(tree.path("src/link"));
            fs::create_directory_symlink("sub", tree.path("src/link"));
            tree.write("src/sub/empty/c", "x");
        },
        [&] { removed = manager.destroy(true); },
        [&](bool harmless) {
            const Names errors = errorsOf(manager);
            EXPECT_EQ(errors.empty(), !tree.exists("src"));
            EXPECT_TRUE(errors.empty() || !harmless);
            EXPECT_TRUE(!removed || errors.empty() || errors == Names{tree.native("src")});
        });
}

/// By the public handles: what a walk does not reach is a failure, what it was to remove
/// is gone or named, and nothing outside is touched.
TEST_F(Calls, ATreeIsWalkedAndRemovedOrTheReasonIsTold) {
    const std::string deep = "top/1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/18/19";
    std::size_t seen = 0;
    int walked = 0, removed = 0, reason = 0;
    KazString failed;
    sweep(
        [&] {
            tree.write(deep + "/f", "x");
            tree.write("top/sub/g", "x");
            tree.write("outside/h", "x");
            fs::remove(tree.path("top/link"));
            fs::create_directory_symlink("../outside", tree.path("top/link"));
        },
        [&] {
            seen = 0;
            failed = "";
            KazTreeCursor cursor(KazDirectory(tree.native("top").c_str()));
            walked = cursor.walk([&](const KazDirectoryEntry&) { return ++seen > 0; });
            EXPECT_EQ(cursor.getDepth(), 0);
            removed = TI_rmtree(tree.native("top").c_str(), &failed);
            reason = errno;
        },
        [&](bool harmless) {
            EXPECT_TRUE(walked == 0 ? seen == 23 : !harmless && seen <= 23) << seen;
            EXPECT_EQ(removed == 0, !tree.exists("top"));
            EXPECT_EQ(removed == 0, failed.isEmpty());
            EXPECT_TRUE(removed == 0 || !harmless);
            // The first one: that the directory above is not empty then is no news.
            EXPECT_TRUE(removed == 0 || std::strcmp(call_, "unlinkat") != 0 || reason == error_);
            EXPECT_EQ(tree.read("outside/h"), "x");
        });
}

/// One step each; what failed has changed nothing.
TEST_F(Calls, ADirectoryDoesAStepOrNothing) {
    const KazDirectory top(tree.native().c_str());
    const KazDirectoryEntry file{"f", KazFileKind::File, true};
    tree.mkdir("to");
    tree::Snapshot before;
    const auto sweepStep = [&](const std::function<bool(const KazDirectory&)>& step,
                               std::size_t more) {
        bool isDone = false;
        sweep(
            [&] {
                for (const char* name : {"f", "d", "new", "to/f"})
                    fs::remove_all(tree.path(name));
                tree.write("f", "text");
                tree.mkdir("d");
                before = tree::snapshot(tree.path());
            },
            [&] {
                const KazDirectory to = top.openDirectory("to");
                isDone = to.isOpen() && step(to);
            },
            [&](bool harmless) {
                EXPECT_TRUE(isDone || !harmless);
                EXPECT_EQ(tree::snapshot(tree.path()) == before, !isDone);
                EXPECT_EQ(tree::snapshot(tree.path()).size(), before.size() + (isDone ? more : 0));
            });
    };
    sweepStep([&](const KazDirectory& to) { return top.copyFile(file, to) == 0; }, 1);
    sweepStep([&](const KazDirectory& to) { return top.rename("f", to, "f", false) == 0; }, 0);
    sweepStep([&](const KazDirectory&) { return top.makeDirectory("new", 0700) == 0; }, 1);
    sweepStep([&](const KazDirectory&) { return top.removeFile("f") == 0; }, std::size_t(-1));
    sweepStep([&](const KazDirectory&) { return top.removeDirectory("d") == 0; }, std::size_t(-1));
    sweepStep([&](const KazDirectory&) { return top.setMode("f", 0600) == 0; }, 0);
}

TEST_F(Calls, AFileIsCopiedOrTheReasonIsTold) {
    const moxkit::TempTree disk; // often another file system
    const std::string source = disk.path("f");
    const std::string target = tree.path("t");
    struct Case {
        std::size_t size;
        bool exists;
        bool keeps;
    };
    for (const Case& each :
         {Case{100, false, false}, Case{200000, false, false}, Case{200000, true, false},
          Case{200000, true, true}, Case{100, true, true}}) {
        const std::string text(each.size, 'f');
        disk.write("f", text);
        const std::string before = each.exists ? "before" : "";
        int result = 0;
        int reason = 0;
        sweep(
            [&] {
                fs::remove(target);
                if (each.exists)
                    tree.write("t", before);
            },
            [&] {
                errno = 0;
                result = copy_file(source.c_str(), target.c_str(), each.keeps);
                reason = errno;
            },
            [&](bool harmless) {
                EXPECT_TRUE(result == 0 ? !each.keeps : reason != 0 && (each.keeps || !harmless));
                EXPECT_EQ(tree.read("t"), result == 0 ? text : before);
                EXPECT_EQ(tree.exists("t"), result == 0 || each.exists);
                EXPECT_EQ(tree::snapshot(tree.path()).size(), tree.exists("t") ? 1u : 0u);
            });
    }
}

/// Reports and product information files are written in the same way.
TEST_F(Calls, AFileIsWrittenWholeOrAsItWas) {
    for (const std::string kind : {"nothing", "file", "link"}) {
        SCOPED_TRACE(kind);
        const std::string before = kind == "nothing" ? "" : "before";
        const std::string text(5000, 'w');
        int result = 0, reason = 0;
        const auto write = [&] {
            errno = 0;
            result = TI_writefile(tree.path("t").c_str(), text.data(), text.size());
            reason = errno;
        };
        const auto expectOnly = [&](const std::string& expected) {
            EXPECT_EQ(tree.read("t"), expected);
            EXPECT_EQ(fs::is_symlink(tree.path("t")), kind == "link");
            EXPECT_EQ(tree::snapshot(tree.path()).size(),
                      (expected.empty() ? 0u : 1u) + (kind == "link" ? 1u : 0u));
        };
        sweep(
            [&] {
                for (const char* name : {"t", "behind"})
                    fs::remove(tree.path(name));
                if (kind == "link")
                    fs::create_symlink("behind", tree.path("t"));
                if (!before.empty())
                    tree.write("t", before);
            },
            write,
            [&](bool harmless) {
                EXPECT_TRUE(result == 0 || (!harmless && reason == error_)) << reason;
                expectOnly(result == 0 ? text : before);
                write(); // nothing is in the way of the next one
                EXPECT_EQ(result, 0);
                expectOnly(text);
            });
    }
}

TEST_F(Calls, OtherFileFunctionsSucceedOrLeaveNothing) {
    const auto clean = [&] {
        fs::remove_all(tree.path("work"));
        tree.write("work/in/f", "x");
        tree.write("work/in/g", "x");
    };
    const std::string work = tree.native("work");
    const auto entries = [&] { return tree::snapshot(tree.path("work")).size(); };
    KazString text;
    int number = 0;
    // Runs one function, which tells whether it did its work, and how many entries
    // there may be when it did not, and are when it did.
    const auto sweepOne = [&](const std::function<bool()>& function, std::size_t left,
                              std::size_t done) {
        bool isDone = false;
        sweep(
            clean, [&] { isDone = function(); },
            [&](bool harmless) {
                EXPECT_TRUE(isDone || !harmless);
                EXPECT_LE(entries(), std::max(left, done));
                EXPECT_GE(entries(), isDone ? done : 3);
            });
    };
    sweepOne([&] { return TI_makedir((work + "\\a\\b").c_str()) == 0; }, 4, 5);
    sweepOne([&] { return !TI_tmpname(work.c_str(), "t").isEmpty(); }, 3, 4);
    sweepOne([&] { return !TI_tmpdir(work.c_str(), "t").isEmpty(); }, 3, 4);
    sweepOne(
        [&] {
            KazStringColl found;
            number = read_a_dir((work + "\\in\\?").c_str(), found);
            EXPECT_EQ(number, found.getSize());
            EXPECT_TRUE(number == 3 || number == 0) << "a part of them";
            return number == 3;
        },
        3, 3);
    sweepOne(
        [&] {
            return KazFilePath((work + ";" + work + "\\in").c_str()).find("f") ==
                   (work + "\\in\\f").c_str();
        },
        3, 3);
    sweepOne([&] { return kazFullPath("x").getLength() > 1; }, 3, 3);
    sweepOne([&] { return shell_cmd_output("printf out", text) == 0 && text == "out"; }, 3, 3);
    // A probe that cannot be removed stays.
    sweepOne([&] { return kazSamePathName(work.c_str(), tree.path("work").c_str()) == 1; }, 4, 3);
}

TEST_F(Calls, ACommandThatCannotBeStartedIsReported) {
    int status = 0;
    sweep(
        [&] {
            director.errors.clear();
            director.messages.clear();
        },
        [&] { status = shell_cmd("printf out"); },
        [&](bool harmless) {
            const std::string call = call_;
            const bool started = harmless || (call != "pipe2" && call.find("spawn") == call.npos);
            EXPECT_EQ(director.errors,
                      started ? Messages{}
                              : Messages{std::string("printf out: ") + std::strerror(error_)});
            EXPECT_TRUE(started || status == -1);
            EXPECT_TRUE(!harmless || status == 0);
            EXPECT_TRUE(!harmless || director.messages == Messages{"out"});
        });
}

} // namespace
