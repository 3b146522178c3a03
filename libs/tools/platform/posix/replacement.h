// SPDX-License-Identifier: Apache-2.0
/// @file
/// A file that takes another one's place when it is complete.
#pragma once

#include "tools/platform/posix/descriptor.h"

#include <cstddef>
#include <string>
#include <sys/stat.h>

namespace kaz::host {

/// Where the links at the end of a host path lead, also where nothing is there yet. Empty
/// with errno set when that cannot be told.
std::string behindLinks(std::string path);

/// Writes all of it. A limit of the size of files ends in EFBIG instead of a signal.
int writeAll(int file, const void* data, std::size_t size);

/// A new file for the user alone. Removed again unless it took its target's place.
class Replacement {
public:
    /// Under the name of which nothing may exist; errno tells why it is not open.
    explicit Replacement(std::string name);
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement();

    bool isOpen() const { return file_.isOpen(); }
    int get() const { return file_.get(); }

    /// The owner and the group of @p old as far as the system lets it. False when it
    /// belongs to another group after all.
    bool takeOwner(const struct stat& old) const;
    /// The same with the nine permission bits. Where the group cannot be kept, its members
    /// are strangers.
    int takeOver(const struct stat& old) const;
    /// The nine permission bits; file systems without any refuse, which is no failure.
    int setMode(mode_t mode) const;
    /// On the disk, and not only on its way.
    int sync() const;
    /// Closes, and takes the place of @p target in one step.
    int become(const std::string& target);

private:
    std::string name_;
    Descriptor file_;
    bool exists_;
};

} // namespace kaz::host
