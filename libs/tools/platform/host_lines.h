// SPDX-License-Identifier: Apache-2.0
/// @file
/// Files and pipes that take one line after the other. Beside host.h, whose conventions
/// hold.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

namespace kaz::host {

/// Something open for writing that is not handed on to child processes. It is not
/// buffered: a killed process leaves whole lines.
class LineWriter {
public:
    /// Not open.
    constexpr LineWriter() = default;
    /// Opens by native or host path, following links: empty from here on, or with
    /// @p appends behind what is there, whoever else writes. A new file may be read and
    /// written as far as the mask allows. Never waits: a pipe that nobody reads fails.
    /// Check isOpen(); errno tells why not.
    LineWriter(const char* path, bool appends);
    /// The pipe that the parent process has handed on by the number that the text
    /// @p number spells; it is closed on exec from here on. Not open for a text that is no
    /// number above 2, and for what is no pipe that can be written to.
    static LineWriter handedOn(const char* number);

    LineWriter(LineWriter&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
    LineWriter& operator=(LineWriter&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;
    ~LineWriter();

    bool isOpen() const { return handle_ != -1; }
    /// Writes @p line, its end included: by one system call where the host takes it
    /// whole. A pipe that nobody reads and a limit of file sizes fail (EPIPE, EFBIG) and
    /// raise no signal.
    int write(std::string_view line) const;

private:
    std::intptr_t handle_ = -1;
};

} // namespace kaz::host
