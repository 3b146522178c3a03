// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a child process writes, on its way to who wants it.
#pragma once

#include "tools/platform/host_process.h"
#include "tools/platform/windows/handle.h"

#include <array>
#include <cstddef>
#include <optional>

namespace kaz::host {

/// Programs write text with two characters at the end of a line. It arrives with
/// one, as the runtime library would read it.
class TextSink {
public:
    explicit TextSink(OutputSink& sink) : sink_(sink) {}
    void write(const char* data, std::size_t size);
    void finish();

private:
    OutputSink& sink_;
    bool heldBack_ = false; // a return whose successor is not known yet
};

/// This process's end of a pipe that a child writes to, and who gets what arrives.
class Outlet {
public:
    /// Makes the pipe for a sink. False with errno set on failure.
    bool open(OutputSink& sink, bool isText);

    bool isOpen() const { return reading_.isOpen(); }
    HANDLE writing() const { return writing_.get(); }
    void closeWriting() { writing_.close(); }

    /// Hands on what is there now, and no more: somebody may go on writing. False when
    /// there is nothing.
    bool take();
    void finish();

private:
    void write(const char* data, std::size_t size);

    Handle reading_;
    Handle writing_;
    OutputSink* sink_ = nullptr;
    std::optional<TextSink> text_;
};

/// Standard output, standard error, reports.
using Outlets = std::array<Outlet, 3>;

} // namespace kaz::host
