// SPDX-License-Identifier: Apache-2.0
/// @file
/// A directory of a test's own.
#pragma once

#include <string>

namespace moxkit {

/// A fresh directory that is removed with everything in it at the end. Names
/// given to the members are relative to it, with "/" between the parts. What cannot be made
/// is a std::filesystem::filesystem_error, as a test cannot go on without it.
class TempTree {
public:
    /// Made below @p parent, or below the system's directory for temporary files.
    explicit TempTree(const std::string& parent = {});
    ~TempTree(); ///< removes all below it, also where permissions were taken away
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    /// Absolute name, as the host spells it; the tree itself for "".
    std::string path(const std::string& name = {}) const;
    /// Absolute name in native text (backslashes).
    std::string native(const std::string& name = {}) const;

    /// Writes a file, parents included; returns its path().
    std::string write(const std::string& name, const std::string& text) const;
    /// Contents of a file; "" when it cannot be read.
    std::string read(const std::string& name) const;
    /// The same of a file that was written in text mode: lines end in "\n".
    std::string readText(const std::string& name) const;
    /// Makes a directory with its parents; returns its path().
    std::string mkdir(const std::string& name) const;
    /// Does the name exist, a dangling link included?
    bool exists(const std::string& name) const;

private:
    std::string root_;
};

} // namespace moxkit
