// SPDX-License-Identifier: Apache-2.0
// All settings of a user are one text file. Readers take no lock, as the file is only ever
// exchanged as a whole; writers hold the lock of a file beside it from reading to replacing, so
// that no change of another process is lost. A change is carried out on what the file holds then,
// not on what was once read. Nothing is written where nothing would change.
#include "tools/platform/deadline.h"
#include "tools/platform/host.h"
#include "tools/platform/posix/open_regular.h"
#include "tools/platform/posix/replacement.h"
#include "tools/platform/posix/settings_text.h"

#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>

namespace kaz::host {

namespace {

/// More than anybody's settings; what is larger is no file of settings.
constexpr std::size_t mostOfFile = std::size_t{64} << 20;

/// Where programs keep a user's configuration, in the host's spelling; "" without a home.
std::string configDirectory() {
    const char* base = environment("XDG_CONFIG_HOME");
    // A relative path would mean another file in each directory.
    if (base != nullptr && *base == '/')
        return base;
    const char* home = environment("HOME");
    const std::string place =
        home != nullptr && *home == '/' ? home : hostPath(homeDirectory().c_str());
    return place.empty() ? place : place + "/.config";
}

std::string settingsFile() {
    const std::string directory = configDirectory();
    return directory.empty() ? directory : directory + "/Tarvo/Mox/settings";
}

/// The whole file. A missing one is empty; @p exists then says so.
int readWhole(const std::string& file, std::string& text, bool& exists) {
    text.clear();
    struct stat info;
    const Descriptor from = openRegular(AT_FDCWD, file.c_str(), false, info);
    exists = from.isOpen();
    if (!exists)
        return errno == ENOENT ? 0 : -1;
    if (info.st_size > static_cast<off_t>(mostOfFile))
        return failWith(EFBIG);
    std::size_t done = 0;
    text.resize(static_cast<std::size_t>(info.st_size) + 1); // so that the end shows
    for (;;) {
        const ssize_t got =
            retry([&] { return ::read(from.get(), text.data() + done, text.size() - done); });
        if (got < 0)
            return -1;
        // The size was a hint; the file of a program that writes in place may grow meanwhile.
        done += static_cast<std::size_t>(got);
        if (got == 0)
            break;
        if (done > mostOfFile)
            return failWith(EFBIG);
        text.resize(std::max(text.size(), done + 1));
    }
    text.resize(done);
    return 0;
}

/// The folders that lead to a file, for the user alone where they are missing.
int makeFolders(const std::string& file) {
    for (std::size_t end = file.find('/', 1); end != file.npos; end = file.find('/', end + 1)) {
        const std::string folder = file.substr(0, end);
        if (retry([&] { return ::mkdir(folder.c_str(), 0700); }) == 0 || errno == EEXIST)
            continue;
        // What is there need not be writable to be gone through.
        const int reason = errno;
        struct stat info;
        if (look(AT_FDCWD, folder.c_str(), 0, info) != 0 || !S_ISDIR(info.st_mode))
            return failWith(reason);
    }
    return 0;
}

void pause(long nanoseconds) {
    const timespec time = {0, nanoseconds};
    ::nanosleep(&time, nullptr); // a signal makes it shorter
}

int lock(const Descriptor& file) {
    // The lock of a process that was killed goes with it: who waits longer waits for one that
    // hangs.
    constexpr long longestPause = 20'000'000; // nanoseconds
    const Deadline patience(5000);
    for (long wait = 250'000;; wait = std::min(2 * wait, longestPause)) {
        // Not the call that waits: it has no time limit.
        if (retry([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) == 0)
            return 0;
        if (errno != EWOULDBLOCK || patience.isOver())
            return -1;
        pause(wait);
    }
}

Descriptor openLock(const std::string& name) {
    return Descriptor(retry(
        [&] { return ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600); }));
}

/// Held until its end. Not open on failure.
Descriptor lockBeside(const std::string& file) {
    // A file of its own that is never removed: the one with the settings is exchanged, and a lock
    // on the old one would hold nobody up.
    const std::string name = file + ".lock";
    Descriptor held = openLock(name);
    // The folders are there but for the first time, so nobody looks for them before.
    if (!held.isOpen() && errno == ENOENT && makeFolders(file) == 0)
        held = openLock(name);
    if (held.isOpen() && lock(held) != 0)
        return Descriptor();
    return held;
}

/// Under the lock, so that what has the name is what a killed process left.
int replace(const std::string& file, const std::string& text) {
    const std::string target = behindLinks(file);
    if (target.empty())
        return -1;
    const std::string name = target + ".new";
    retry([&] { return ::unlink(name.c_str()); });
    Replacement next(name);
    if (!next.isOpen() || writeAll(next.get(), text.data(), text.size()) != 0)
        return -1;
    struct stat old;
    if (look(AT_FDCWD, target.c_str(), AT_SYMLINK_NOFOLLOW, old) == 0)
        // As far as that may be done: an administrator who changes a user's settings leaves them
        // the user's.
        next.takeOwner(old);
    // On the disk before it takes the name: after a loss of power the name would otherwise lead to
    // an empty file on some file systems.
    if (next.setMode(0600) != 0 || next.sync() != 0)
        return -1;
    return next.become(target);
}

} // namespace

std::string SettingsStore::place() const {
    return nativePath(settingsFile().c_str());
}

int SettingsStore::load(SettingsSection& result) const {
    result = {};
    std::string text;
    bool exists = false;
    const std::string file = settingsFile();
    if (file.empty())
        return failWith(ENOENT);
    if (readWhole(file, text, exists) != 0)
        return -1;
    readSettings(text, section_, result);
    return 0;
}

int SettingsStore::commit(SettingsChanges& changes) const {
    const std::string file = settingsFile();
    if (file.empty())
        return failWith(ENOENT);
    const Descriptor held = lockBeside(file);
    std::string before;
    bool exists = false;
    if (!held.isOpen() || readWhole(file, before, exists) != 0)
        return -1;
    const std::string after = changedSettings(before, section_, changes);
    if (exists && after == before)
        return 0;
    if (after.size() > mostOfFile)
        return failWith(EFBIG);
    return replace(file, after);
}

} // namespace kaz::host
