// SPDX-License-Identifier: Apache-2.0
// Preloaded into a program, makes one of its allocations or one of its calls that deal in
// files fail, as MOX_FAULT says:
//
//     allocation:N      the N-th allocation (the first is 1)
//     allocation:N+     that one and all that follow
//     file:N:ERROR      the N-th call, with ERROR one of ENOSPC, EIO and EACCES
//
// Each process counts for itself. Calls on the standard streams do not count. The name of what
// has failed is written to the file that MOX_FAULT_MARK names, where there is such a variable.
// Nothing here allocates, and nothing needs the C++ runtime, which may not be there yet.

#include "testkit/detail/alloc_hooks.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constinit bool isStarting = false;
constinit std::atomic<long> allocationCount{0};
constinit std::atomic<long> callCount{0};

/// What MOX_FAULT says behind "KIND:"; null when it speaks of another kind. Asked each time: the
/// program allocates before anything could be set up.
const char* faultOf(const char* kind) {
    const char* const fault = isStarting ? nullptr : std::getenv("MOX_FAULT");
    const std::size_t length = std::strlen(kind);
    return fault != nullptr && std::strncmp(fault, kind, length) == 0 && fault[length] == ':'
               ? fault + length + 1
               : nullptr;
}

/// By system calls of its own, as the C library's may be those that fail.
void mark(const char* name) {
    const char* const path = std::getenv("MOX_FAULT_MARK");
    if (path == nullptr)
        return;
    const long file = ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::syscall(SYS_write, file, name, std::strlen(name));
    ::syscall(SYS_close, file);
}

/// 0 for a name that is none of them.
int errorOf(const char* name) {
    if (std::strcmp(name, "ENOSPC") == 0)
        return ENOSPC;
    if (std::strcmp(name, "EIO") == 0)
        return EIO;
    return std::strcmp(name, "EACCES") == 0 ? EACCES : 0;
}

bool fails(const char* call, int file) {
    const char* const fault = file >= 0 && file <= STDERR_FILENO ? nullptr : faultOf("file");
    if (fault == nullptr)
        return false;
    char* end = nullptr;
    const long chosen = std::strtol(fault, &end, 10);
    const int error = *end == ':' ? errorOf(end + 1) : 0;
    if (error == 0 || ++callCount != chosen)
        return false;
    mark(call);
    errno = error;
    return true;
}

std::size_t allowed(const char*, std::size_t size) {
    return size;
}

bool neverInterrupted() {
    return false;
}

void listed(dirent*) {}

bool holdsStreams() {
    return faultOf("file") != nullptr;
}

/// With one thread the library takes blocks of strings that are freed for new ones,
/// and asks for no memory. A process that has had a second thread asks.
[[gnu::constructor]] void haveTwoThreads() {
    if (std::getenv("MOX_FAULT") == nullptr)
        return;
    isStarting = true; // what this takes is not the program's
    pthread_t second;
    const auto nothing = [](void*) -> void* { return nullptr; };
    if (pthread_create(&second, nullptr, nothing, nullptr) == 0)
        pthread_join(second, nullptr);
    isStarting = false;
}

} // namespace

bool moxkit::detail::shallFail() {
    const char* const fault = faultOf("allocation");
    if (fault == nullptr)
        return false;
    char* end = nullptr;
    const long chosen = std::strtol(fault, &end, 10);
    const long number = ++allocationCount;
    if (number < chosen || (number > chosen && *end != '+'))
        return false;
    if (number == chosen)
        mark("allocation");
    errno = ENOMEM;
    return true;
}

#include "testkit/posix/call_hooks.inc"

// What the library does not call, and other programs do.
KIT_CALL(int, open64, (const char* path, int flags, mode_t mode), (path, flags, mode), -1, -1)
KIT_CALL(int, openat64, (int dir, const char* path, int flags, mode_t mode),
         (dir, path, flags, mode), -1, -1)
KIT_CALL(int, creat, (const char* path, mode_t mode), (path, mode), -1, -1)
KIT_CALL(int, creat64, (const char* path, mode_t mode), (path, mode), -1, -1)
KIT_CALL(DIR*, opendir, (const char* path), (path), -1, nullptr)
KIT_CALL(dirent64*, readdir64, (DIR * listing), (listing), -1, nullptr)
KIT_CALL(int, stat, (const char* path, struct stat* info), (path, info), -1, -1)
KIT_CALL(int, lstat, (const char* path, struct stat* info), (path, info), -1, -1)
KIT_CALL(int, stat64, (const char* path, struct stat64* info), (path, info), -1, -1)
KIT_CALL(int, lstat64, (const char* path, struct stat64* info), (path, info), -1, -1)
KIT_CALL(int, fstat64, (int file, struct stat64* info), (file, info), file, -1)
KIT_CALL(int, fstatat64, (int dir, const char* path, struct stat64* info, int flags),
         (dir, path, info, flags), -1, -1)
KIT_CALL(int, faccessat, (int dir, const char* path, int mode, int flags), (dir, path, mode, flags),
         -1, -1)
KIT_CALL(int, mkstemp, (char* name), (name), -1, -1)
KIT_CALL(int, mkstemp64, (char* name), (name), -1, -1)
KIT_CALL(int, remove, (const char* path), (path), -1, -1)
KIT_CALL(int, link, (const char* from, const char* to), (from, to), -1, -1)
KIT_CALL(int, symlink, (const char* text, const char* path), (text, path), -1, -1)
KIT_CALL(int, symlinkat, (const char* text, int dir, const char* path), (text, dir, path), -1, -1)
KIT_CALL(ssize_t, readlinkat, (int dir, const char* path, char* to, std::size_t size),
         (dir, path, to, size), -1, -1)
KIT_CALL(int, chdir, (const char* path), (path), -1, -1)
KIT_CALL(int, chmod, (const char* path, mode_t mode), (path, mode), -1, -1)
KIT_CALL(int, chown, (const char* path, uid_t user, gid_t group), (path, user, group), -1, -1)
KIT_CALL(int, truncate, (const char* path, off_t size), (path, size), -1, -1)
KIT_CALL(int, ftruncate, (int file, off_t size), (file, size), file, -1)
KIT_CALL(int, ftruncate64, (int file, off64_t size), (file, size), file, -1)
KIT_CALL(int, fallocate, (int file, int mode, off_t offset, off_t size), (file, mode, offset, size),
         file, -1)
KIT_CALL(int, fdatasync, (int file), (file), file, -1)
KIT_CALL(int, utimensat, (int dir, const char* path, const timespec* times, int flags),
         (dir, path, times, flags), -1, -1)
KIT_CALL(int, futimens, (int file, const timespec* times), (file, times), file, -1)
KIT_CALL(ssize_t, pwrite, (int file, const void* bytes, std::size_t size, off_t offset),
         (file, bytes, size, offset), file, -1)
KIT_CALL(ssize_t, pwrite64, (int file, const void* bytes, std::size_t size, off64_t offset),
         (file, bytes, size, offset), file, -1)
KIT_CALL(ssize_t, pread64, (int file, void* bytes, std::size_t size, off64_t offset),
         (file, bytes, size, offset), file, -1)
KIT_CALL(ssize_t, readv, (int file, const iovec* parts, int count), (file, parts, count), file, -1)
KIT_CALL(ssize_t, writev, (int file, const iovec* parts, int count), (file, parts, count), file, -1)
KIT_CALL(off64_t, lseek64, (int file, off64_t offset, int whence), (file, offset, whence), file, -1)
KIT_CALL(ssize_t, sendfile, (int to, int from, off_t* offset, std::size_t size),
         (to, from, offset, size), to, -1)

KIT_DEFINITION(FILE*, fopen64, (const char* path, const char* mode)) {
    KIT_NEXT(FILE*, fopen64, (const char*, const char*));
    return fails("fopen64", -1) ? nullptr : holding(next(path, mode), mode);
}
