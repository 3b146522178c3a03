// SPDX-License-Identifier: Apache-2.0
// The bytes are the system's, fit for identifiers that nobody is to guess. Whatever keeps some of
// them for later has to notice that the process was forked, or two processes would give out the
// same ones: the generation counts forks.
#include "tools/platform/host.h"
#include "tools/platform/posix/descriptor.h"

#include <pthread.h>
#include <sha1.h>
#include <sys/random.h>

namespace kaz::host {

namespace {

constinit unsigned generation = 0;

/// Runs in the forked child, where only what a signal handler may do is allowed.
void countFork() {
    ++generation;
}

} // namespace

int randomBytes(void* to, std::size_t size) {
    auto* out = static_cast<unsigned char*>(to);
    while (size > 0) {
        // Only requests above 256 bytes may come back short; early in the start of the system the
        // call waits until there is something to give.
        const ssize_t got = retry([&] { return ::getrandom(out, size, 0); });
        if (got < 0)
            return -1;
        out += got;
        size -= static_cast<std::size_t>(got);
    }
    return 0;
}

unsigned processGeneration() {
    // Asking for the process id is a system call, which takes longer than the rest of
    // making an identifier.
    [[maybe_unused]] static const int watched = ::pthread_atfork(nullptr, nullptr, countFork);
    return generation;
}

int sha1(const void* first, std::size_t firstSize, const void* second, std::size_t secondSize,
         Sha1Digest& digest) {
    SHA1_CTX state;
    ::SHA1Init(&state);
    ::SHA1Update(&state, static_cast<const std::uint8_t*>(first), firstSize);
    ::SHA1Update(&state, static_cast<const std::uint8_t*>(second), secondSize);
    ::SHA1Final(digest, &state);
    return 0;
}

} // namespace kaz::host
