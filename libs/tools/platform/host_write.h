// SPDX-License-Identifier: Apache-2.0
/// @file
/// Files that are written as a whole. A part of host.h, whose conventions hold.
#pragma once

#include <cstddef>

namespace kaz::host {

/// Makes @p size bytes the contents of the file @p path: whole or as before, also when
/// the process is killed. It is written beside its place, readable by the user alone until
/// it is complete, and then renamed; all that a killed process can leave behind is that
/// file, "<name>.new<number>", which hinders no later call.
///
/// A file that is replaced hands on its owner and group, where the system lets it, and its
/// nine permission bits (never set-id bits); where the group cannot be kept it gets no more
/// than what others may. A new one is readable and writable as far as the mask allows.
/// A link at the end of @p path is followed, also to a file that does not exist yet. What
/// cannot be replaced, a device or a pipe, is written to as it stands. A size limit of the
/// process (SIGXFSZ on POSIX) ends in EFBIG, not in a signal. Fails with EISDIR for a
/// directory.
int writeFile(const char* path, const void* data, std::size_t size);

} // namespace kaz::host
