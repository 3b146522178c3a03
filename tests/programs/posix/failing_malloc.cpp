// Preloaded into a program, makes its n-th allocation fail (the first is 1):
// KIT_FAIL_ALLOCATION=n, with KIT_FAIL_ONWARD all from there on. When one has
// failed, the file that KIT_FAIL_MARK names is made.
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
}

namespace {

long count = 0;

bool shallFail() {
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

} // namespace

#pragma GCC visibility push(default)

extern "C" {

void* malloc(std::size_t size) {
    return shallFail() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) {
    return shallFail() ? nullptr : __libc_calloc(number, size);
}

void* realloc(void* block, std::size_t size) {
    return shallFail() ? nullptr : __libc_realloc(block, size);
}

} // extern "C"

#pragma GCC visibility pop
