// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a child process writes, on its way to who wants it.
#pragma once

#include "tools/platform/host_process.h"
#include "tools/platform/posix/descriptor.h"

#include <array>
#include <cstddef>

namespace kaz::host {

/// The same file under a number beyond the standard streams'. Without a standard stream a new
/// descriptor would get its number, and be replaced with it in the child.
Descriptor besideStandard(Descriptor descriptor);

/// This process's end of a pipe that a child writes to, and who gets what arrives.
class Outlet {
public:
    /// Makes the pipe for a sink. False with errno set on failure.
    bool open(OutputSink* sink);

    int reading() const { return reading_.get(); }
    int writing() const { return writing_.get(); }
    void closeWriting() { writing_.close(); }

    /// Hands on a piece of what poll() has found. At the end, and when reading fails for
    /// good, it is closed.
    void take(short found);

    /// Hands on what is there now, and no more: somebody may go on writing.
    void takeRest();

private:
    static constexpr std::size_t size_ = 64 * 1024; // as much as a pipe holds

    ssize_t read(std::size_t most);

    Descriptor reading_;
    Descriptor writing_;
    OutputSink* sink_ = nullptr;
    int failures_ = 0;
};

/// Standard output, standard error, reports.
using Outlets = std::array<Outlet, 3>;

} // namespace kaz::host
