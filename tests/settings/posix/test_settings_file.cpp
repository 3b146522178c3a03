// SPDX-License-Identifier: Apache-2.0
// The file that holds a user's settings: its text, its permissions, and what is left of it
// when things go wrong.
#include "files/posix/plain_user.h"
#include "kit/posix/call_sweep.h"
#include "kit/random.h"
#include "kit/valgrind.h"
#include "settings/place.h"
#include "testkit/alloc_failure.h"
#include "testkit/director.h"
#include "tools/app/failures/KazFileException.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sched.h>
#include <set>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace {

namespace fs = std::filesystem;
using namespace settings_test;

class SettingsFile : public testing::Test, protected kit::CallSweep {
protected:
    /// Why a commit of one more value fails; -1 when it does not.
    static int failureOfCommit() {
        KazSettings settings("New");
        settings.setInteger("n", 1);
        try {
            settings.commit();
        } catch (const KazFileException& failure) {
            EXPECT_TRUE(settings.hasChanges());
            return failure.getCause();
        }
        return -1;
    }

    unsigned modeOf(const std::string& name) const {
        return static_cast<unsigned>(fs::status(place.tree.path(name)).permissions());
    }
    std::string text() const { return place.tree.read(place.file()); }
    void write(const std::string& text) const { place.tree.write(place.file(), text); }
    std::size_t entries() const {
        const fs::directory_iterator all(place.tree.path("Tarvo/Mox"));
        return static_cast<std::size_t>(std::distance(all, fs::directory_iterator()));
    }

    Place place;
};

TEST_F(SettingsFile, IsWrittenAsDescribed) {
    KazStringColl list;
    for (const char* each : {"a", "b|c", ""})
        list.add(each);
    {
        KazSettings window("Editor\\Window"), top;
        window.setText("title", "one\ntwo\\\t\x01\x7F");
        window.setInteger("width", 640);
        window.setReal("Factor", 0.25);
        window.setBool("on", true);
        window.setList("files", list);
        window.setText("a=[#]", "=[#]|");
        top.setInteger("n", -1);
    }
    KazSettings("editor\\window\\Below").setBool("b", false);
    EXPECT_EQ(text(), "# Mox settings 1\n\n[]\nn=i:-1\n\n[Editor/Window]\n"
                      "a\\x3D\\x5B\\x23\\x5D=s:=[#]|\nFactor=r:0.25\nfiles=l:a|b\\x7Cc||\non=b:1\n"
                      "title=s:one\\ntwo\\\\\\t\\x01\\x7F\nwidth=i:640\n\n"
                      "[Editor/Window/Below]\nb=b:0\n");
    EXPECT_EQ(KazSettings().getPlace(), place.tree.native(place.file()).c_str());
}

TEST_F(SettingsFile, WhatIsNotUnderstoodStays) {
    write(
        "# Mox settings "
        "7\r\nfront\n[b]\r\nwidth=i:1\nnew=z:1\nWIDTH=i:640\r\nx=i:\nlate=s:\\xe4\\xE9"
        "\n# gone\n\n[]\nt=s:\\q\nno\n[bad\\name]\nn=i:1\n[B]\nn=r:inf\nm=l:a\nk=b:2\no=s:\\x00\n");
    KazSettings b("b");
    EXPECT_EQ(b.getInteger("width"), 640);
    EXPECT_EQ(b.getText("late"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_FALSE(b.isSet("new") || b.isSet("x") || b.isSet("n") || b.isSet("m") || b.isSet("k"));
    b.setBool("new", false);
    b.remove("late");
    b.commit();
    const std::string expected =
        "# Mox settings 7\nfront\n\n[]\nt=s:\\q\nno\n\n[b]\nnew=b:0\nWIDTH=i:640\nnew=z:1\nx=i:\n"
        "n=r:inf\nm=l:a\nk=b:2\no=s:\\x00\n\n[bad\\name]\nn=i:1\n";
    EXPECT_EQ(text(), expected);
    b.setBool("NEW", false); // which changes nothing
    b.commit();
    EXPECT_EQ(text(), expected);
    KazSettings all;
    all.removeAll();
    all.commit();
    EXPECT_EQ(text(), "# Mox settings 7\nfront\n\n[]\nt=s:\\q\nno\n\n[b]\nnew=z:1\nx=i:\nn=r:inf\n"
                      "m=l:a\nk=b:2\no=s:\\x00\n\n[bad\\name]\nn=i:1\n");
}

TEST_F(SettingsFile, BelongsToTheUserAlone) {
    for (const mode_t mask : {0, 0777}) {
        fs::remove_all(place.tree.path("Tarvo"));
        const mode_t before = ::umask(mask);
        // Folders that nobody may enter are no place for a file.
        if (mask != 0)
            fs::create_directories(place.tree.path("Tarvo/Mox"));
        ::umask(mask);
        if (mask != 0)
            for (const char* folder : {"Tarvo", "Tarvo/Mox"})
                fs::permissions(place.tree.path(folder), fs::perms::owner_all);
        const int failure = failureOfCommit();
        ::umask(before);
        EXPECT_EQ(failure, -1);
        for (const char* folder : {"Tarvo", "Tarvo/Mox"})
            EXPECT_EQ(modeOf(folder), 0700u) << folder;
        EXPECT_EQ(modeOf(place.file()), 0600u);
    }
    fs::permissions(place.tree.path(place.file()), static_cast<fs::perms>(0644));
    fs::rename(place.tree.path(place.file()), place.tree.path("elsewhere"));
    fs::create_symlink("../../elsewhere", place.tree.path(place.file()));
    KazSettings("New").setInteger("n", 5);
    EXPECT_TRUE(fs::is_symlink(place.tree.path(place.file())));
    EXPECT_EQ(place.tree.read("elsewhere"), "# Mox settings 1\n\n[New]\nn=i:5\n");
    EXPECT_EQ(modeOf("elsewhere"), 0600u);
}

TEST_F(SettingsFile, AnothersFileIsNeverReplacedByAnEmptyOne) {
    const std::string before = "[New]\nn=i:7\n";
    write(before);
    for (const char* folder : {"", "Tarvo", "Tarvo/Mox"})
        fs::permissions(place.tree.path(folder), static_cast<fs::perms>(0777));
    fs::permissions(place.tree.path(place.file()),
                    static_cast<fs::perms>(::geteuid() == 0 ? 0600 : 0));
    {
        const tree::PlainUser user;
        EXPECT_EQ(KazSettings("New").getInteger("n", -1), -1);
        EXPECT_EQ(failureOfCommit(), KazFileException::accessDenied);
    }
    fs::permissions(place.tree.path(place.file()), static_cast<fs::perms>(0600));
    EXPECT_EQ(text(), before);
    // Who may do everything leaves the file to whom it belongs.
    if (::geteuid() == 0 && ::chown(place.tree.path(place.file()).c_str(), 65534, 65534) == 0) {
        KazSettings("New").setInteger("n", 8);
        struct stat info = {};
        ::stat(place.tree.path(place.file()).c_str(), &info);
        EXPECT_EQ(info.st_uid, 65534u);
        EXPECT_EQ(info.st_mode & 0777, 0600u);
    }
    fs::remove(place.tree.path(place.file()));
    fs::create_directory(place.tree.path(place.file()));
    EXPECT_NE(failureOfCommit(), -1);
    fs::remove(place.tree.path(place.file()));
    fs::create_symlink("/dev/full", place.tree.path(place.file()));
    EXPECT_NE(failureOfCommit(), -1);
    fs::remove(place.tree.path(place.file()));
}

TEST_F(SettingsFile, ItsPlaceIsThatOfTheEnvironmentOrTheHomeDirectory) {
    const std::string home = place.tree.path("home");
    const moxkit::ScopedEnv homeVariable("HOME", home.c_str());
    for (const char* config : {static_cast<const char*>(nullptr), "relative", ""}) {
        const moxkit::ScopedEnv variable("XDG_CONFIG_HOME", config);
        EXPECT_EQ(KazSettings("A").getPlace(),
                  place.tree.native("home/.config/Tarvo/Mox/settings").c_str());
        EXPECT_EQ(failureOfCommit(), -1);
    }
    EXPECT_EQ(modeOf("home/.config"), 0700u);
    EXPECT_EQ(place.tree.read("home/.config/Tarvo/Mox/settings"),
              "# Mox settings 1\n\n[New]\nn=i:1\n");
}

TEST_F(SettingsFile, WaitsForTheLockForFiveSeconds) {
    EXPECT_EQ(failureOfCommit(), -1);
    const int other = ::open(place.tree.path(place.file() + ".lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        ::flock(other, LOCK_UN);
    });
    KazSettings("New").setInteger("n", 2);
    release.join();
    EXPECT_NE(text().find("n=i:2"), std::string::npos);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(failureOfCommit(), KazFileException::lockViolation);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::seconds(5));
    EXPECT_LT(waited, std::chrono::seconds(8));
    ::close(other);
}

TEST_F(SettingsFile, AFullDiskLeavesItAsItWas) {
    kit::leaveOutUnderValgrind("mount takes null");
    EXPECT_EQ(failureOfCommit(), -1);
    const std::string before = text();
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit none = {8, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &none);
    KazSettings settings("New");
    settings.setInteger("n", 2);
    EXPECT_THROW(settings.commit(), KazFileException); // and not the end by a signal
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(text(), before);
    EXPECT_EQ(entries(), 2u); // it and its lock
    settings.commit();
    EXPECT_NE(text(), before);

    const pid_t child = ::fork();
    if (child == 0) { // with a file system of its own, where that is allowed
        const std::string folder = place.tree.mkdir("small");
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("small", folder.c_str(), "tmpfs", 0, "size=64k") != 0)
            ::_exit(0);
        const moxkit::ScopedEnv variable("XDG_CONFIG_HOME", folder.c_str());
        bool good = failureOfCommit() == -1;
        const std::string small = place.tree.read("small/Tarvo/Mox/settings");
        place.tree.write("small/rest", std::string(100000, 'x'));
        KazSettings more("More");
        more.setText("n", std::string(9000, 'n').c_str());
        try {
            more.commit();
            good = false;
        } catch (const KazFileException& failure) {
            good = good && failure.getCause() == KazFileException::diskFull;
        }
        good = good && place.tree.read("small/Tarvo/Mox/settings") == small;
        more.discard();
        ::_exit(good ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(SettingsFile, AKilledCommitLeavesTheOldOrTheNewOne) {
    kit::Random random;
    constexpr int kills = 25;
    std::int64_t last = -1;
    for (int kill = 0; kill < kills; ++kill) {
        int committed[2];
        ASSERT_EQ(::pipe(committed), 0);
        const pid_t child = ::fork();
        if (child == 0)
            for (std::int64_t n = last + 1;; ++n) {
                KazSettings settings("Killed");
                settings.setInteger("first", n);
                settings.setText("middle", std::string(20000, 'm').c_str());
                settings.setInteger("second", n);
                settings.commit();
                if (n == 0 && ::write(committed[1], "", 1) != 1)
                    ::_exit(1);
            }
        char first_commit;
        ::close(committed[1]);
        if (last < 0) { // a file that was there before the kill; slow machines need their time
            EXPECT_EQ(::read(committed[0], &first_commit, 1), 1);
        }
        ::close(committed[0]);
        ::usleep(static_cast<useconds_t>(random.between(200, 6000)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const KazSettings settings("Killed");
        const std::int64_t first = settings.getInteger("first", -1);
        EXPECT_EQ(first, settings.getInteger("second", -1));
        EXPECT_GE(first, last);
        last = first;
    }
    EXPECT_GE(last, 0);
    EXPECT_EQ(failureOfCommit(), -1); // and nothing is in the way of the next one
    EXPECT_EQ(entries(), 2u);
}

TEST_F(SettingsFile, EachCallOfACommitThatFailsLeavesTheOldOrTheNewOne) {
    const std::string old = "# Mox settings 1\n\n[New]\nn=i:0\n",
                      text1 = "# Mox settings 1\n\n[New]\nn=i:1\n";
    std::set<std::string> calls;
    for (const bool exists : {false, true}) {
        bool failed = false;
        sweep(
            [&] {
                fs::remove_all(place.tree.path("Tarvo"));
                if (exists)
                    write(old);
            },
            [&] {
                KazSettings settings("New");
                settings.setInteger("n", 1);
                failed = false;
                try {
                    settings.commit();
                } catch (const KazFileException&) {
                    failed = true;
                }
                EXPECT_EQ(settings.hasChanges(), failed);
            },
            [&](bool harmless) {
                EXPECT_EQ(text(), failed ? (exists ? old : "") : text1);
                EXPECT_TRUE(!failed || !harmless);
                EXPECT_FALSE(place.tree.exists(place.file() + ".new"));
                EXPECT_EQ(failureOfCommit(), -1);
                calls.insert(call_);
            });
    }
    EXPECT_TRUE(calls.contains("fsync")) << "it is on the disk before it has its name";
}

TEST_F(SettingsFile, EachAllocationOfACommitThatFailsLeavesTheOldOrTheNewOne) {
    const std::string old = "# Mox settings 1\n\n[New]\nn=i:0\nother=s:kept\n";
    const std::string next =
        "# Mox settings 1\n\n[New]\nn=i:0\nother=s:kept\ntext=s:longer than a short text is\n";
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        write(old);
        const moxkit::RecordingDirector director;
        bool done = false;
        const long before = kit::openFiles();
        const long failures = moxkit::sweepAllocations(
            [&] {
                done = false;
                KazSettings settings("New");
                settings.setText("text", "longer than a short text is");
                settings.commit();
                done = true;
            },
            [&] {
                // What failed before the commit had begun is written by the destructor.
                EXPECT_TRUE(text() == next || (!done && text() == old)) << text();
                EXPECT_EQ(kit::openFiles(), before);
                write(old);
            },
            mode);
        EXPECT_GT(failures, 10);
        EXPECT_EQ(text(), next);
    }
}

} // namespace
