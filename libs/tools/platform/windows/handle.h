// SPDX-License-Identifier: Apache-2.0
/// @file
/// Ownership of a system handle.
#pragma once

#include <utility>
#include <windows.h>

namespace kaz::host {

/// Closes a handle at the end. Closing keeps the last error, so that a failure's
/// reason survives the way out.
class Handle {
public:
    explicit Handle(HANDLE value = INVALID_HANDLE_VALUE) : value_(value) {}
    Handle(Handle&& other) noexcept : value_(other.release()) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { close(); }

    /// Different calls report failure by different values.
    bool isOpen() const { return value_ != INVALID_HANDLE_VALUE && value_ != nullptr; }
    HANDLE get() const { return value_; }
    HANDLE release() { return std::exchange(value_, INVALID_HANDLE_VALUE); }

    void close() {
        if (!isOpen())
            return;
        const DWORD saved = GetLastError();
        CloseHandle(release());
        SetLastError(saved);
    }

private:
    HANDLE value_;
};

} // namespace kaz::host
