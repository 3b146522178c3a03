/// @file
/// Paths between the library and the standard file library.
#pragma once

#include "tools/files/tifiles.h"
#include "tools/strings/KazString.h"

#include <filesystem>

/// A native path for std::filesystem, which wants the host's spelling.
inline std::filesystem::path hostPath(const KazString& native) {
    return std::filesystem::path(kazHostPath(native).getValue());
}

/// A path as the user knows it: in the host's spelling where it has one.
inline KazString shown(const KazString& native) {
    const KazString host = kazHostPath(native);
    return host.isEmpty() ? native : host;
}

/// Joins two parts plainly: a file called "~" or "c:x" stays in its directory,
/// where kazComposePath would take the name for a path of its own.
inline KazString joined(const KazString& directory, const KazString& name) {
    if (directory.isEmpty() || name.isEmpty())
        return directory + name;
    return directory + '\\' + name;
}
