// SPDX-License-Identifier: Apache-2.0
/// @file
/// The process's standard streams in the hands of a test.
#pragma once

#include <string>

namespace kit {

/// Redirects standard output and standard error into files, from construction
/// to destruction, at the level of file descriptors: what stdio, iostreams and
/// child processes write is all caught.
class Capture {
public:
    Capture();
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// All that was written so far; both streams are flushed first.
    std::string out();
    std::string err();

private:
    int saved_[2];
    int file_[2];
};

/// Feeds standard input with a text, from construction to destruction. The
/// end of the text is the end of input.
class ScopedInput {
public:
    explicit ScopedInput(const std::string& text);
    ~ScopedInput();
    ScopedInput(const ScopedInput&) = delete;
    ScopedInput& operator=(const ScopedInput&) = delete;

private:
    int saved_;
};

} // namespace kit
