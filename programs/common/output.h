// SPDX-License-Identifier: Apache-2.0
/// @file
/// Where results go.
#pragma once

#include <string>

/// Does @p name stand for standard input or standard output? A file of this name is "./-".
inline bool isStandardStream(const std::string& name) {
    return name == "-";
}

/// Writes @p bytes to @p file, or to standard output when it is empty or "-", whose lines
/// are made printable where it is a terminal. A file is written beside its place and then
/// renamed, so that it appears whole or stays as it was. False when that failed, which has then
/// been said.
bool writeOutput(const std::string& file, const std::string& bytes);

/// The same for bytes that are no text: standard output passes them as they are, and a
/// terminal, which could do nothing good with them, is refused.
bool writeBytes(const std::string& file, const std::string& bytes);

/// Has all that was printed arrived on standard output? Asked behind the last message, which
/// knows the reason. False when not, which has then been said.
bool hasOutputArrived();

/// A result of lines: messages as they come, or a file. What can be read back stays as it
/// is, except where it would drive the terminal.
class LineOutput {
public:
    /// An empty @p name, and "-", is the message channel.
    explicit LineOutput(std::string name);

    void line(const std::string& text);
    /// False, with the reason reported, when not all of it arrived.
    bool finish();

private:
    std::string file_;
    bool isOnTerminal_;
    std::string bytes_; ///< a file is written at last, so that it is whole or as before
    int reason_ = 0;    ///< why a message did not arrive, an errno value
};

/// Whether two names are those of one existing file.
bool isSameFile(const std::string& a, const std::string& b);
