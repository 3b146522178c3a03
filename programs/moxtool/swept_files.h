// SPDX-License-Identifier: Apache-2.0
/// @file
/// Files that a command works on again and again.
#pragma once

#include <filesystem>
#include <string>

/// The files below a directory: as they are at first, as a good run leaves them, and as some
/// other run has left them. Copies of the first two lie among the host's temporary files until
/// the end. Regular files, links and directories count.
/// What goes wrong with any file is a std::filesystem::filesystem_error.
class SweptFiles {
public:
    /// Copies what is there; @p directory may be empty, and then nothing is watched.
    explicit SweptFiles(const std::filesystem::path& directory);
    /// The copies go, unless the last restore() failed.
    ~SweptFiles();
    SweptFiles(const SweptFiles&) = delete;
    SweptFiles& operator=(const SweptFiles&) = delete;

    /// What is there now is how a good run leaves it.
    void keepGood();
    /// The first file that is neither as at first nor as a good run leaves it, from the
    /// directory on; "" when there is none. One that is gone is not looked for.
    std::string spoilt() const;
    /// All is as at first. Where that cannot be, it is said where the copies are.
    void restore();

private:
    void removeCopies() const;

    std::filesystem::path root_;
    std::filesystem::path kept_;
    std::filesystem::path before_;
    std::filesystem::path good_;
    bool isRestored_ = true;
};
