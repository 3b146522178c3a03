// SPDX-License-Identifier: Apache-2.0
/// @file
/// The only door to the operating system. Everything above this folder is
/// written against these declarations and includes no platform header; a port
/// implements this file in a folder of its own beside posix/.
///
/// Conventions that a porter must keep:
/// - Paths go in and come out as *native text*: the backslash separates, "/" is
///   accepted on input, results carry backslashes only. A function that deals
///   in the host's own spelling says so.
/// - Text that names nothing on this host (on POSIX: a drive letter or two
///   leading separators) fails with errno ENOENT and touches nothing.
/// - No path argument may be null. Results are values; pointers that are handed
///   out say how long they live.
/// - Functions that return int give 0, or -1 with errno set. Calls that a signal
///   interrupts are repeated, short transfers are completed.
/// - Running out of memory ends in the installed new-handler; only where the
///   system itself wants memory (an open stream, a listing) it is ENOMEM.
/// - Nothing here prints.
#pragma once

#include "tools/platform/host_directory.h"
#include "tools/platform/host_identity.h"
#include "tools/platform/host_machine.h"
#include "tools/platform/host_process.h"
#include "tools/platform/host_process_stamp.h"
#include "tools/platform/host_random.h"
#include "tools/platform/host_reading.h"
#include "tools/platform/host_socket.h"
#include "tools/platform/host_terminal.h"
#include "tools/platform/host_time.h"
#include "tools/platform/host_write.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::host {

// ---------------------------------------------------------------- environment

/// The value of an environment variable, null when it is unset. Lives until the
/// variable is changed; never freed by the caller.
const char* environment(const char* name);

/// Sets a variable for this process and its children; both texts are copied.
/// Fails with EINVAL for an empty name or one that holds "=".
int setEnvironment(const char* name, const char* value);

// ---------------------------------------------------------- spelling of paths

/// Whether native text can name a file here. False on POSIX for "C:x" and
/// "\\server\share"; "1:x" is an ordinary name there.
bool canName(const char* path);

/// Native text in the host's spelling ("\tmp\x" is "/tmp/x" on POSIX). Text for
/// which canName() is false comes back in a spelling that names nothing: "".
std::string hostPath(const char* native);

/// A host path as native text. On POSIX a host name that itself holds a
/// backslash cannot be expressed; see Entry::expressible.
std::string nativePath(const char* hostSpelling);

/// The longest path of this host in characters, terminator included.
std::size_t pathLimit();

/// The character between the entries of the host's search path ("PATH"):
/// ":" on POSIX, ";" on Windows.
char searchPathSeparator();

/// The absolute form by text alone: the current directory in front where the
/// path is relative, "." and ".." folded, runs of separators made one, no
/// trailing separator added or removed. Text that canName() refuses is folded
/// the same way but stays on its drive or share. Empty with errno ENOENT for "",
/// ENAMETOOLONG when the result exceeds pathLimit(), or the reason why there is
/// no current directory. Lives until the next call.
const std::string& absolutePath(const char* path);

/// The current directory; empty with errno set when it cannot be told.
std::string currentDirectory();

/// The file that holds this library's code: absolute, links resolved in its
/// directory part only, so that a versioned name stays as it was loaded. On POSIX
/// a file without a "bin" above it may be a link from a system's directory into a
/// suite: its name is then resolved as a whole. Empty when it cannot be told.
std::string moduleFileName();

/// The user's home directory from the system's user database; empty when the
/// user has none there. "HOME" is not looked at.
std::string homeDirectory();

/// Where this host keeps a user's settings of all programs (on Windows the value
/// "AppData" of the shell folders); empty where there is no such place.
std::string roamingDataDirectory();

/// The user's profile directory on a host that has profiles ("USERPROFILE" on
/// Windows); empty when it is unknown, and always on POSIX.
std::string profileDirectory();

/// Where temporary files go when nobody says otherwise: the first of "TMPDIR",
/// "TMP" and "TEMP" that names a directory, else the host's own place.
std::string temporaryDirectory();

// ------------------------------------------------------------ files, by name

/// Examines what @p path names; links are followed. On failure @p result is a
/// default FileStatus.
int status(const char* path, FileStatus& result);

bool isDirectory(const char* path); ///< links followed
/// A directory that is reached by its own name, not through a link.
bool isRealDirectory(const char* path);

/// May the real user use the file so? @p mode adds up 4 read, 2 write, 1 execute
/// or search; 0 asks for existence.
int access(const char* path, int mode);

/// Creates one directory; @p mode is cut by the file-creation mask.
int makeDirectory(const char* path, unsigned mode);
int removeDirectory(const char* path);
/// Removes a file or a link (never what the link points to).
int removeFile(const char* path);

/// The process's file-creation mask. On POSIX it can only be read by setting
/// it, so another thread that creates a file at that moment may see mask 0777.
unsigned fileMask();
/// Sets the mask and returns the previous one.
unsigned setFileMask(unsigned mask);

/// fopen for a path in native or host spelling; "x" in @p mode wants a new file.
/// Null with errno set.
std::FILE* openStream(const char* path, const char* mode);

/// Copies one regular file so that @p target is whole or as before, also when the
/// process is killed. An existing target is replaced in one step. All that a
/// killed process can leave behind is a file beside the target, where that was to
/// be replaced or the host has no files without a name; it hinders no later copy.
/// The nine permission bits are kept, the modification time is now. Links at
/// @p source are followed; a link at @p target is replaced, not followed.
/// Fails with EISDIR for a directory, EINVAL for any other special file
/// (neither is opened for reading) and for a file onto itself, EEXIST when the
/// target exists and @p mayReplace is false; else with the host's reason.
int copyFile(const char* source, const char* target, bool mayReplace);

/// Creates a new, empty file that did not exist before, readable and writable
/// by the user alone, and opens it for update ("w+b"). Its name is @p prefix
/// and some characters of the host's choice; it becomes @p path. Null with errno
/// set and @p path unchanged on failure.
std::FILE* createTemporary(const char* directory, const char* prefix, std::string& path);

/// The same for a directory of its own, for the user alone.
int createTemporaryDirectory(const char* parent, const char* prefix, std::string& path);

// ------------------------------------------------------------- files, by place

/// A regular file that is open for reading, wherever in it the caller likes. Not
/// handed on to child processes.
class ReadableFile {
public:
    /// Not open.
    constexpr ReadableFile() = default;
    /// Opens by native path, following links. Check isOpen(); errno tells why not:
    /// EISDIR for a directory, EINVAL for any other special file (neither is opened).
    explicit ReadableFile(const char* path);
    ReadableFile(ReadableFile&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
    ReadableFile& operator=(ReadableFile&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ReadableFile(const ReadableFile&) = delete;
    ReadableFile& operator=(const ReadableFile&) = delete;
    ~ReadableFile();

    bool isOpen() const { return handle_ != -1; }
    /// Reads the @p size bytes at @p offset as the file holds them now. Fewer at its
    /// end or after a failure, none where it is not open; the result is their number.
    /// A failure sets errno; the end does not touch it.
    /// One system call where nothing interrupts it.
    std::size_t read(std::uint64_t offset, void* to, std::size_t size) const;

private:
    std::intptr_t handle_ = -1;
};

// -------------------------------------------------------------------- streams

/// Puts the null device in place of each standard stream that the process was
/// started without. Otherwise the first file that a tool opens would be its
/// standard output, and its messages would end up among the user's data. Using
/// such a stream still fails, as it would have without this.
void holdStandardStreams();

/// Flushes every stdio stream of the process and puts the null device in place
/// of the standard ones: output that is written to them afterwards goes nowhere,
/// input is at its end, and no later file can be hit through a reused
/// descriptor. A terminal among them stays open to the end of the process, unused. The other
/// streams are closed where an open file cannot be deleted (Windows); elsewhere they stay open,
/// without a buffer.
void closeAllStreams();

/// Standard input's terminal stops echoing what is typed, until echoOn(). A
/// signal that ends or suspends the process meanwhile brings the echo back first.
/// False when standard input is no terminal: nothing is changed then.
bool echoOff();
/// The echo is on again, and signals go their usual ways; nothing without echoOff().
void echoOn();

// --------------------------------------------------------------------- errors

/// The host's text for an errno value; empty when it has none for it.
std::string errorText(int number);

/// From now on an exception that is caught, thrown anew and then caught by nobody
/// ends in std::terminate() on every host, as one does that is thrown first.
void terminateOnUncaughtRethrow();

} // namespace kaz::host
