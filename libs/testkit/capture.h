// SPDX-License-Identifier: Apache-2.0
/// @file
/// The process's standard streams in the hands of a test.
#pragma once

#include <string>

namespace moxkit {

/// Redirects standard output and standard error into files, from construction
/// to destruction, at the level of file descriptors: what stdio, iostreams and
/// child processes write is all caught. A host without room for the files ends the
/// process. One inside another catches for itself alone.
class Capture {
public:
    Capture();  ///< flushes both streams, then redirects
    ~Capture(); ///< flushes both streams, then gives them back
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    std::string out(); ///< all of standard output so far; both streams are flushed first
    std::string err(); ///< all of standard error so far; both streams are flushed first

private:
    int saved_[2];
    int file_[2];
};

/// Feeds standard input with a text, from construction to destruction. The
/// end of the text is the end of input. What stdio had read ahead before is lost.
class ScopedInput {
public:
    explicit ScopedInput(const std::string& text); ///< @p text is read as it is
    ~ScopedInput(); ///< what was not read is dropped; the earlier input is back
    ScopedInput(const ScopedInput&) = delete;
    ScopedInput& operator=(const ScopedInput&) = delete;

private:
    int saved_;
};

} // namespace moxkit
