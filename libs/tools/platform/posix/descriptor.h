// SPDX-License-Identifier: Apache-2.0
/// @file
/// Helpers of the POSIX implementation.
#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace kaz::host {

inline bool isFailure(ssize_t result) {
    return result == -1;
}

inline bool isFailure(const void* result) {
    return result == nullptr;
}

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto retry(Call call) {
    for (;;) {
        const auto result = call();
        if (!isFailure(result) || errno != EINTR)
            return result;
    }
}

/// Owns a file descriptor. Closing keeps errno, so that a failure's reason
/// survives the way out.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    bool isOpen() const { return number_ >= 0; }
    int get() const { return number_; }
    int release() { return std::exchange(number_, -1); }

    /// False when the host reports that written data was lost. After EINTR the
    /// descriptor is gone on Linux: trying again could close somebody else's.
    bool close() {
        if (!isOpen())
            return true;
        const int saved = errno;
        if (::close(release()) != 0 && errno != EINTR)
            return false;
        errno = saved;
        return true;
    }

private:
    int number_;
};

/// Fails with @p number.
inline int failWith(int number) {
    errno = number;
    return -1;
}

} // namespace kaz::host
