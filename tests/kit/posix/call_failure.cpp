// SPDX-License-Identifier: Apache-2.0
// The test program's own definitions of the calls: they win over the shared ones
// for the library under test too. Each has a name of its own in C++, as the
// headers declare the real one.
#include "kit/posix/call_failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <dlfcn.h>
#include <poll.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

constinit bool active = false;
constinit long left = 0; // calls until the one that fails; 0 when it has
constinit int error = 0;
constinit const char* failed = nullptr;

/// Whether the call that is just being made is the one.
bool isDue(const char* name) {
    if (left == 0 || --left != 0)
        return false;
    failed = name;
    return true;
}

bool fails(const char* name) {
    if (error < 0 || !isDue(name))
        return false;
    errno = error;
    return true;
}

/// What a call gives that starts a process; 0 unless it fails. The C library lets no
/// signal through meanwhile.
int failureOf(const char* name) {
    return error != EINTR && fails(name) ? error : 0;
}

/// How much a transfer may move; fails() decides about errors.
std::size_t allowed(const char* name, std::size_t size) {
    return error == kit::FailCall::shortTransfer && isDue(name) ? std::min<std::size_t>(size, 1)
                                                                : size;
}

} // namespace

namespace kit {

FailCall::FailCall(long n, int number) {
    failed = nullptr;
    error = number;
    left = n;
    active = true;
}

FailCall::~FailCall() {
    left = 0;
    active = false;
}

bool FailCall::hit() const {
    return failed != nullptr;
}

const char* FailCall::name() const {
    return failed;
}

} // namespace kit

#define KIT_DEFINITION(Result, function, Parameters)                                               \
    extern "C" __attribute__((visibility("default")))                                              \
    Result kit_##function Parameters __asm__(#function);                                           \
    extern "C" Result kit_##function Parameters

#define KIT_NEXT(Result, function, Parameters)                                                     \
    static const auto next = reinterpret_cast<Result(*) Parameters>(::dlsym(RTLD_NEXT, #function))

/// A call that is not made when it is to fail.
#define KIT_CALL(Result, function, Parameters, Arguments, failure)                                 \
    KIT_DEFINITION(Result, function, Parameters) {                                                 \
        KIT_NEXT(Result, function, Parameters);                                                    \
        return fails(#function) ? (failure) : next Arguments;                                      \
    }

/// A call whose work is done although it fails.
#define KIT_CLOSING(function, Argument)                                                            \
    KIT_DEFINITION(int, function, (Argument closing)) {                                            \
        KIT_NEXT(int, function, (Argument));                                                       \
        const bool shallFail = fails(#function);                                                   \
        const int reason = errno;                                                                  \
        const int result = next(closing);                                                          \
        if (!shallFail)                                                                            \
            return result;                                                                         \
        errno = reason;                                                                            \
        return -1;                                                                                 \
    }

/// A call that can do a part of its work, of so many bytes as its argument "size" says.
#define KIT_TRANSFER(function, Parameters, Arguments)                                              \
    KIT_DEFINITION(ssize_t, function, Parameters) {                                                \
        KIT_NEXT(ssize_t, function, Parameters);                                                   \
        if (fails(#function))                                                                      \
            return -1;                                                                             \
        size = allowed(#function, size);                                                           \
        return next Arguments;                                                                     \
    }

KIT_CALL(int, open, (const char* path, int flags, mode_t mode), (path, flags, mode), -1)
KIT_CALL(int, openat, (int dir, const char* path, int flags, mode_t mode), (dir, path, flags, mode),
         -1)
KIT_CALL(FILE*, fdopen, (int file, const char* mode), (file, mode), nullptr)
KIT_CALL(DIR*, fdopendir, (int file), (file), nullptr)
KIT_CALL(int, fstat, (int file, struct stat* info), (file, info), -1)
KIT_CALL(int, fstatat, (int dir, const char* path, struct stat* info, int flags),
         (dir, path, info, flags), -1)
KIT_CALL(int, access, (const char* path, int mode), (path, mode), -1)
KIT_CALL(int, mkdir, (const char* path, mode_t mode), (path, mode), -1)
KIT_CALL(int, mkdirat, (int dir, const char* path, mode_t mode), (dir, path, mode), -1)
KIT_CALL(char*, mkdtemp, (char* name), (name), nullptr)
KIT_CALL(int, mkostemp, (char* name, int flags), (name, flags), -1)
KIT_CALL(int, fchmod, (int file, mode_t mode), (file, mode), -1)
KIT_CALL(int, fchown, (int file, uid_t user, gid_t group), (file, user, group), -1)
KIT_CALL(int, fsync, (int file), (file), -1)
KIT_CALL(int, flock, (int file, int operation), (file, operation), -1)
KIT_CALL(ssize_t, readlink, (const char* path, char* to, std::size_t size), (path, to, size), -1)
KIT_CALL(int, linkat, (int from, const char* path, int to, const char* name, int flags),
         (from, path, to, name, flags), -1)
KIT_CALL(int, rename, (const char* from, const char* to), (from, to), -1)
KIT_CALL(int, renameat, (int dir, const char* from, int to, const char* name),
         (dir, from, to, name), -1)
KIT_CALL(int, renameat2, (int dir, const char* from, int to, const char* name, unsigned flags),
         (dir, from, to, name, flags), -1)
KIT_CALL(int, unlink, (const char* path), (path), -1)
KIT_CALL(int, unlinkat, (int dir, const char* path, int flags), (dir, path, flags), -1)
KIT_CALL(int, rmdir, (const char* path), (path), -1)
KIT_CALL(char*, getcwd, (char* buffer, std::size_t size), (buffer, size), nullptr)
KIT_CALL(int, pipe2, (int* ends, int flags), (ends, flags), -1)
KIT_CALL(int, memfd_create, (const char* name, unsigned flags), (name, flags), -1)
KIT_CALL(int, poll, (pollfd * files, nfds_t count, int timeout), (files, count, timeout), -1)
KIT_CALL(char*, realpath, (const char* path, char* result), (path, result), nullptr)
KIT_CALL(int, dladdr, (const void* address, Dl_info* info), (address, info), 0)
KIT_CALL(pid_t, waitpid, (pid_t child, int* status, int options), (child, status, options), -1)
KIT_CLOSING(close, int)
KIT_CLOSING(closedir, DIR*)
KIT_CLOSING(fclose, FILE*)
KIT_TRANSFER(read, (int file, void* buffer, std::size_t size), (file, buffer, size))
KIT_TRANSFER(pread, (int file, void* buffer, std::size_t size, off_t offset),
             (file, buffer, size, offset))
KIT_TRANSFER(write, (int file, const void* buffer, std::size_t size), (file, buffer, size))
KIT_TRANSFER(copy_file_range,
             (int from, off_t* offset, int to, off_t* target, std::size_t size, unsigned flags),
             (from, offset, to, target, size, flags))

/// Nothing interrupts it.
KIT_DEFINITION(off_t, lseek, (int file, off_t offset, int whence)) {
    KIT_NEXT(off_t, lseek, (int, off_t, int));
    return error != EINTR && fails("lseek") ? -1 : next(file, offset, whence);
}

KIT_DEFINITION(dirent*, readdir, (DIR * listing)) {
    KIT_NEXT(dirent*, readdir, (DIR*));
    if (fails("readdir"))
        return nullptr;
    dirent* entry = next(listing);
    if (entry != nullptr && error == kit::FailCall::hiddenKind && isDue("readdir"))
        entry->d_type = DT_UNKNOWN;
    return entry;
}

KIT_DEFINITION(int, posix_spawnp,
               (pid_t * child, const char* file, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const* arguments,
                char* const* variables)) {
    KIT_NEXT(int, posix_spawnp,
             (pid_t*, const char*, const posix_spawn_file_actions_t*, const posix_spawnattr_t*,
              char* const*, char* const*));
    const int failure = failureOf("posix_spawnp");
    return failure != 0 ? failure : next(child, file, actions, attributes, arguments, variables);
}

KIT_DEFINITION(int, posix_spawn_file_actions_adddup2,
               (posix_spawn_file_actions_t * actions, int from, int to)) {
    KIT_NEXT(int, posix_spawn_file_actions_adddup2, (posix_spawn_file_actions_t*, int, int));
    const int failure = failureOf("posix_spawn_file_actions_adddup2");
    return failure != 0 ? failure : next(actions, from, to);
}

KIT_DEFINITION(int, posix_spawn_file_actions_addopen,
               (posix_spawn_file_actions_t * actions, int to, const char* path, int flags,
                mode_t mode)) {
    KIT_NEXT(int, posix_spawn_file_actions_addopen,
             (posix_spawn_file_actions_t*, int, const char*, int, mode_t));
    const int failure = failureOf("posix_spawn_file_actions_addopen");
    return failure != 0 ? failure : next(actions, to, path, flags, mode);
}

KIT_DEFINITION(int, posix_spawn_file_actions_addclosefrom_np,
               (posix_spawn_file_actions_t * actions, int from)) {
    KIT_NEXT(int, posix_spawn_file_actions_addclosefrom_np, (posix_spawn_file_actions_t*, int));
    const int failure = failureOf("posix_spawn_file_actions_addclosefrom_np");
    return failure != 0 ? failure : next(actions, from);
}

KIT_DEFINITION(int, posix_spawn_file_actions_addchdir_np,
               (posix_spawn_file_actions_t * actions, const char* path)) {
    KIT_NEXT(int, posix_spawn_file_actions_addchdir_np, (posix_spawn_file_actions_t*, const char*));
    const int failure = failureOf("posix_spawn_file_actions_addchdir_np");
    return failure != 0 ? failure : next(actions, path);
}

// The C library's streams call its own read and write. In a stream around another
// one's descriptor they can fail. It keeps its buffer, as it would read byte by byte
// without one.

static int descriptorOf(void* stream) {
    return ::fileno(static_cast<FILE*>(stream));
}

static ssize_t readStream(void* stream, char* to, std::size_t size) {
    return ::read(descriptorOf(stream), to, size);
}

/// What is left of a write is written, as the C library does.
static ssize_t writeStream(void* stream, const char* from, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::write(descriptorOf(stream), from + done, size - done);
        if (count < 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

static int seekStream(void* stream, off64_t* offset, int whence) {
    *offset = ::lseek(descriptorOf(stream), *offset, whence);
    return *offset < 0 ? -1 : 0;
}

static int closeStream(void* stream) {
    KIT_NEXT(int, fclose, (FILE*));
    return next(static_cast<FILE*>(stream));
}

KIT_DEFINITION(FILE*, fopen, (const char* path, const char* mode)) {
    KIT_NEXT(FILE*, fopen, (const char*, const char*));
    if (fails("fopen"))
        return nullptr;
    FILE* stream = next(path, mode);
    if (stream == nullptr || !active)
        return stream;
    return ::fopencookie(stream, mode, {readStream, writeStream, seekStream, closeStream});
}

KIT_DEFINITION(int, setvbuf, (FILE * stream, char* buffer, int mode, std::size_t size)) {
    KIT_NEXT(int, setvbuf, (FILE*, char*, int, std::size_t));
    return active ? 0 : next(stream, buffer, mode, size);
}
