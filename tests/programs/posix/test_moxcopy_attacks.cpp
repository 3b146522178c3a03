// SPDX-License-Identifier: Apache-2.0
// moxcopy where others change what it works on, and where it is ended.
#include "kit/posix/deep_tree.h"
#include "kit/posix/exchanger.h"
#include "programs/moxcopy.h"
#include "programs/posix/plain_user.h"
#include "tools/files/tistatus.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace moxcopy_test;

namespace {

/// In memory: a disk that is forced to write each file out takes its time.
class MoxCopyAttacked : public MoxCopy {
protected:
    MoxCopyAttacked() : MoxCopy(fs::is_directory("/dev/shm") ? "/dev/shm" : "") {
        tree.write("outside/secret", "untouched");
    }

    /// Runs while two names are exchanged. Nothing that such a run has copied is removed
    /// by the next one.
    void copyWhile(const std::string& one, const std::string& other) {
        {
            const kit::Exchanger exchanger(tree.path(one), tree.path(other));
            for (kit::Attempts attempts(40); attempts.next();) {
                const auto result = copy({"-Force", "-Quiet"});
                ASSERT_TRUE(result.status == 0 || !result.err.empty());
                ASSERT_EQ(contents(tree, "outside"),
                          (std::map<std::string, std::string>{{"secret", "untouched"}}))
                    << attempts.made() << result.err;
            }
        }
        EXPECT_FALSE(holdsSecret("copies"));
    }

    bool holdsSecret(const std::string& directory) {
        for (const auto& entry : fs::recursive_directory_iterator(tree.path(directory)))
            if (!entry.is_symlink() && entry.path().filename() == "secret")
                return true;
        return false;
    }

    std::size_t stagingIn(const std::string& directory) {
        std::size_t count = 0;
        if (tree.exists(directory))
            for (const auto& entry : fs::directory_iterator(tree.path(directory)))
                count += entry.path().filename().string().starts_with(".moxcopy-") ? 1 : 0;
        return count;
    }

    void linkTo(const std::string& target, const std::string& name) {
        fs::create_directory_symlink(tree.path(target), tree.path(name));
    }
};

TEST_F(MoxCopyAttacked, LinksInPlaceOfItsDirectoriesAreRefused) {
    makeSystem();
    tree.mkdir("copies");
    linkTo("outside", "copies/brewery");
    for (const bool force : {false, true}) {
        const auto result = force ? copy({"-Force"}) : copy({});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "'" + tree.path("copies/brewery") +
                                  "' is a link: name the directory that it leads to\n");
    }
    EXPECT_EQ(contents(tree, "outside").size(), 1u);
    EXPECT_EQ(stagingIn("copies"), 0u);
    fs::remove(tree.path("copies/brewery"));
    linkTo("outside", "plant/linked");
    const auto result = runTool({program, "-p", "plant", "-s", "linked"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "'" + tree.path("plant/linked") +
                              "' is a link: name the directory that it leads to\n");
    EXPECT_FALSE(holdsSecret("copies"));
}

TEST_F(MoxCopyAttacked, ExchangedDirectoriesLeadNowhere) {
    makeSystem();
    ASSERT_EQ(copy({}).status, 0);
    linkTo("outside", "plant/link");
    linkTo("outside", "copies/link");
    copyWhile("plant/brewery/deep", "plant/link");
    copyWhile("copies/brewery/deep", "copies/link");
    copyWhile("plant/brewery", "plant/link");
    copyWhile("copies/brewery", "copies/link");
    EXPECT_EQ(stagingIn("copies"), 0u);
}

/// The name of the staging directory is taken away from it while the run goes on.
TEST_F(MoxCopyAttacked, AnExchangedStagingDirectoryIsStillTheOnlyOneRemoved) {
    for (int i = 0; i < 200; ++i)
        tree.write("plant/brewery/f" + std::to_string(i), std::string(100'000, 'x'));
    linkTo("outside", "link");
    tree.mkdir("copies");
    for (kit::Attempts attempts(10); attempts.next();) {
        std::thread attack([&] {
            for (int tries = 0; tries < 100'000; ++tries)
                for (const auto& entry : fs::directory_iterator(tree.path("copies")))
                    if (entry.path().filename().string().starts_with(".moxcopy-") &&
                        ::renameat2(AT_FDCWD, entry.path().c_str(), AT_FDCWD,
                                    tree.path("link").c_str(), RENAME_EXCHANGE) == 0)
                        return;
        });
        const auto result = copy({"-Force", "-Quiet"});
        attack.join();
        EXPECT_EQ(contents(tree, "outside").size(), 1u) << result.err;
        EXPECT_FALSE(holdsSecret("copies"));
        fs::remove_all(tree.path("copies"));
        tree.mkdir("copies");
        fs::remove_all(tree.path("link"));
        linkTo("outside", "link");
    }
}

TEST_F(MoxCopyAttacked, AccessNeverWidens) {
    fs::permissions(tree.path(), fs::perms::all);
    const std::map<std::string, unsigned> modes = {
        {"brewery", 0700},          {"brewery/open", 0777},   {"brewery/closed", 0500},
        {"brewery/closed/f", 0400}, {"brewery/open/f", 0666}, {"brewery/open/x", 0711}};
    for (const char* file : {"closed/f", "open/f", "open/x"})
        tree.write(std::string("plant/brewery/") + file, "x");
    for (auto mode = modes.rbegin(); mode != modes.rend(); ++mode)
        fs::permissions(tree.path("plant/" + mode->first), fs::perms(mode->second));
    if (::geteuid() == 0) {
        for (const auto& entry : fs::recursive_directory_iterator(tree.path("plant")))
            EXPECT_EQ(::chown(entry.path().c_str(), 65534, 65534), 0);
    }
    tree.mkdir("copies/brewery");
    fs::permissions(tree.path("copies"), fs::perms::all);
    fs::permissions(tree.path("copies/brewery"), fs::perms::all);
    for (const char* target : {"new", "copies"}) {
        const auto result = runTool(asPlainUser(
            {"/bin/sh", "-c",
             "umask 027; exec " + program + " -p plant -s brewery -Force -target " + target}));
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(stagingIn(target), 0u);
        for (const auto& [name, mode] : modes) {
            const bool isEarlier = name == "brewery" && std::string(target) == "copies";
            EXPECT_EQ(static_cast<unsigned>(
                          fs::status(tree.path(std::string(target) + "/" + name)).permissions()),
                      isEarlier ? 0777u : mode & ~027u)
                << target << "/" << name;
        }
    }
}

TEST_F(MoxCopyAttacked, SignalsLeaveNothingAndEndIt) {
    for (int i = 0; i < 400; ++i)
        tree.write("plant/brewery/f" + std::to_string(1000 + i), std::string(200'000, 'x'));
    tree.write("copies/brewery/f1000", "old");
    const auto before = contents(tree, "copies");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGXFSZ, SIGPIPE}) {
        moxkit::RunOptions options;
        options.signal = signal;
        options.signalAfter = "Copied";
        for (const std::vector<std::string>& further :
             {std::vector<std::string>{"-Force"}, {"-target", "new/parents"}}) {
            std::vector<std::string> arguments = further;
            arguments.insert(arguments.begin(), "-verbose");
            const auto result = copy(arguments, options);
            EXPECT_EQ(result.signal, signal == SIGINT ? 0 : signal) << result.status;
            EXPECT_TRUE(result.status == 9 || signal != SIGINT) << result.status;
            EXPECT_EQ(result.err, "Cancelled, nothing was copied\n");
            EXPECT_EQ(contents(tree, "copies"), before);
            EXPECT_FALSE(tree.exists("new"));
        }
    }
    const std::string start = program + " -p plant -s brewery -Force -verbose";
    for (const std::string& script : {"(" + start + "; echo $? >status) | head -1",
                                      "ulimit -f 100; " + start + "; echo $? >status"}) {
        const auto result = runTool({"/bin/bash", "-c", script});
        EXPECT_GT(std::atoi(tree.read("status").c_str()), 128) << script << result.err;
        EXPECT_EQ(contents(tree, "copies"), before) << script;
    }
}

TEST_F(MoxCopyAttacked, WhatAKilledRunLeavesIsClearedAndNoData) {
    for (int i = 0; i < 400; ++i)
        tree.write("plant/brewery/f" + std::to_string(1000 + i), std::string(200'000, 'x'));
    moxkit::RunOptions options;
    options.signal = SIGKILL;
    options.signalAfter = "Copied";
    EXPECT_EQ(copy({"-verbose"}, options).signal, SIGKILL);
    ASSERT_EQ(stagingIn("copies"), 1u);
    // The place where it lies is no data of a system.
    fs::create_directories(tree.path("other"));
    const auto fromThere = runTool({program, "-p", ".", "-s", "copies", "-target", "other"});
    EXPECT_EQ(fromThere.status, 0) << fromThere.err;
    EXPECT_EQ(contents(tree, "other/copies").size(), 0u);
    // What only looks like one stays.
    tree.write("copies/.moxcopy-1-1-0/mine", "kept");
    tree.write("copies/.moxcopy-notes/mine", "kept");
    tree.mkdir("copies/.moxcopy-notes");
    // Ended before its record was written, and after that was removed.
    tree.write("copies/.moxcopy-999999999-1-0/owner", "");
    tree.mkdir("copies/.moxcopy-999999999-1-1");
    EXPECT_EQ(copy({}).status, 0);
    EXPECT_EQ(contents(tree, "copies/brewery"), contents(tree, "plant/brewery"));
    EXPECT_EQ(stagingIn("copies"), 2u);
    EXPECT_EQ(tree.read("copies/.moxcopy-1-1-0/mine"), "kept");

    // One that a running process has made is left alone.
    moxkit::RunOptions stopped;
    stopped.signal = SIGSTOP;
    stopped.signalAfter = "Copied";
    stopped.timeoutSeconds = 3;
    std::thread first([&] { copy({"-verbose", "-target", "both"}, stopped); });
    while (stagingIn("both") == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(copy({"-target", "both"}).status, 0);
    EXPECT_EQ(stagingIn("both"), 1u);
    first.join();
    EXPECT_EQ(copy({"-target", "both", "-Force"}).status, 0);
    EXPECT_EQ(stagingIn("both"), 0u);
}

TEST_F(MoxCopyAttacked, WhereEachNameOfItsOwnIsTakenNothingIsTouched) {
    makeSystem();
    // The shell becomes the program, so that both have the same number and time.
    const auto result =
        runTool({"/bin/bash", "-c",
                 "p=copies/.moxcopy-$$-$(cut -d' ' -f22 /proc/$$/stat)-; mkdir -p \"$p\"{0..999}; "
                 "echo mine | tee \"$p\"{0..999}/owner >/dev/null; exec " +
                     program + " -p plant -s brewery"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("-999'"), result.err.npos) << result.err;
    EXPECT_TRUE(result.err.ends_with("File exists\n")) << result.err;
    const auto left = contents(tree, "copies");
    EXPECT_EQ(left.size(), 2000u);
    EXPECT_EQ(std::count_if(left.begin(), left.end(),
                            [](const auto& each) { return each.second == "mine\n"; }),
              1000);
}

TEST_F(MoxCopyAttacked, DepthIsNoFailure) {
    kit::digTree(tree.mkdir("plant/brewery"), 5000);
    for (const char* limit : {"1024", "64"}) {
        const auto result = runTool({"/bin/bash", "-c",
                                     std::string("ulimit -n ") + limit + "; exec " + program +
                                         " -p plant -s brewery -target t -Force"});
        EXPECT_EQ(result.status, 0) << result.err.substr(0, 1000);
        EXPECT_EQ(kit::depthOfTree(tree.path("t/brewery")), 5000);
        EXPECT_EQ(stagingIn("t"), 0u);
    }
    EXPECT_EQ(TI_rmtree(tree.native("t").c_str()), 0);
    EXPECT_EQ(TI_rmtree(tree.native("plant").c_str()), 0);
}

TEST_F(MoxCopyAttacked, FailuresAreListedOnceAndNotWithoutEnd) {
    makeSystem();
    for (int i = 0; i < 150; ++i)
        fs::create_symlink("nowhere", tree.path("plant/brewery/deep/a/b/l" + std::to_string(i)));
    const auto result = copy({});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 102);
    EXPECT_TRUE(result.err.ends_with("\n... and 50 more\n150 failures\n")) << result.err;

    // A directory in the way is one failure, whatever would have gone into it.
    fs::remove_all(tree.path("copies/brewery/deep"));
    tree.write("copies/brewery/deep", "in the way");
    const auto second = copy({"-Force", "-filter", "c"});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.err, "Not copied: '" + tree.path("copies/brewery/deep") +
                              "' (Not a directory)\n1 failure\n");
    EXPECT_NE(second.out.find("\n0 files, 0 bytes copied"), std::string::npos) << second.out;
}

/// A file system is mounted where the earlier copy is, or within it.
TEST_F(MoxCopyAttacked, AnEarlierCopyMayLieOnAnotherDisk) {
    makeSystem();
    for (const char* disk : {"copies/brewery", "copies/brewery/filestore"}) {
        tree.mkdir(disk);
        if (::mount("tmpfs", tree.path(disk).c_str(), "tmpfs", 0, "size=1m") != 0)
            GTEST_SKIP() << "no file system can be mounted here";
        const auto result = copy({"-Force"});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(contents(tree, "copies/brewery"), contents(tree, "plant/brewery"));
        ::umount(tree.path(disk).c_str());
        fs::remove_all(tree.path("copies"));
    }
}

} // namespace
