// SPDX-License-Identifier: Apache-2.0
// Which call fails, and the calls that the library makes besides those that deal in files.
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

bool fails(const char* name, int = -1) {
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

/// Nothing interrupts a seek.
bool neverInterrupted() {
    return error == EINTR;
}

void listed(dirent* entry) {
    if (entry != nullptr && error == kit::FailCall::hiddenKind && isDue("readdir"))
        entry->d_type = DT_UNKNOWN;
}

bool holdsStreams() {
    return active;
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

#include "testkit/posix/call_hooks.inc"

KIT_CALL(int, pipe2, (int* ends, int flags), (ends, flags), -1, -1)
KIT_CALL(int, memfd_create, (const char* name, unsigned flags), (name, flags), -1, -1)
KIT_CALL(int, poll, (pollfd * files, nfds_t count, int timeout), (files, count, timeout), -1, -1)
KIT_CALL(int, dladdr, (const void* address, Dl_info* info), (address, info), -1, 0)
KIT_CALL(pid_t, waitpid, (pid_t child, int* status, int options), (child, status, options), -1, -1)

/// A call that gives its error, and leaves errno alone.
#define KIT_SPAWN(function, Parameters, Arguments)                                                 \
    KIT_DEFINITION(int, function, Parameters) {                                                    \
        KIT_NEXT(int, function, Parameters);                                                       \
        const int failure = failureOf(#function);                                                  \
        return failure != 0 ? failure : next Arguments;                                            \
    }

KIT_SPAWN(posix_spawnp,
          (pid_t * child, const char* file, const posix_spawn_file_actions_t* actions,
           const posix_spawnattr_t* attributes, char* const* arguments, char* const* variables),
          (child, file, actions, attributes, arguments, variables))
KIT_SPAWN(posix_spawn_file_actions_adddup2,
          (posix_spawn_file_actions_t * actions, int from, int to), (actions, from, to))
KIT_SPAWN(posix_spawn_file_actions_addopen,
          (posix_spawn_file_actions_t * actions, int to, const char* path, int flags, mode_t mode),
          (actions, to, path, flags, mode))
KIT_SPAWN(posix_spawn_file_actions_addclosefrom_np,
          (posix_spawn_file_actions_t * actions, int from), (actions, from))
KIT_SPAWN(posix_spawn_file_actions_addchdir_np,
          (posix_spawn_file_actions_t * actions, const char* path), (actions, path))
