// SPDX-License-Identifier: Apache-2.0
// Preloaded into a program, makes its n-th allocation fail (the first is 1):
// KIT_FAIL_ALLOCATION=n, with KIT_FAIL_ONWARD all from there on. When one has
// failed, the file that KIT_FAIL_MARK names is made.
#include "testkit/detail/alloc_hooks.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

namespace {

constinit bool isStarting = false;

/// With one thread the library takes blocks of strings that are freed for new ones,
/// and asks for no memory. A process that has had a second thread asks.
[[gnu::constructor]] void haveTwoThreads() {
    isStarting = true; // what this takes is not the program's
    pthread_t second;
    const auto nothing = [](void*) -> void* { return nullptr; };
    if (pthread_create(&second, nullptr, nothing, nullptr) == 0)
        pthread_join(second, nullptr);
    isStarting = false;
}

} // namespace

bool moxkit::detail::shallFail() {
    static constinit long count = 0;
    if (isStarting)
        return false;
    // Asked each time: the program allocates before anything could be set up.
    const char* number = std::getenv("KIT_FAIL_ALLOCATION");
    if (number == nullptr)
        return false;
    const long chosen = std::atol(number);
    if (++count < chosen || (count > chosen && std::getenv("KIT_FAIL_ONWARD") == nullptr))
        return false;
    if (count == chosen)
        ::close(::open(std::getenv("KIT_FAIL_MARK"), O_WRONLY | O_CREAT, 0600));
    errno = ENOMEM;
    return true;
}
