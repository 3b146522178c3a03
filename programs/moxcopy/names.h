// SPDX-License-Identifier: Apache-2.0
/// @file
/// Names and paths as they are joined and as they are shown.
#pragma once

#include "tools/files/tifiles.h"
#include "tools/formats/encode.h"
#include "tools/strings/KazString.h"

/// A path as the user knows it: in the host's spelling where it has one, and without
/// anything that a terminal would take for more than text.
inline KazString shown(const KazString& native) {
    const KazString host = kazHostPath(native);
    return kazPrintable(host.isEmpty() ? native : host);
}

/// The same of an entry of a directory. Its name is the host's, in which a backslash
/// may be a character like others.
inline KazString shownEntry(const KazString& directory, const KazString& name) {
    const KazString separator = kazHostPath("\\");
    return shown(directory) + separator + kazPrintable(name);
}

/// Joins two parts plainly: a file called "~" or "c:x" stays in its directory,
/// where kazComposePath would take the name for a path of its own.
inline KazString joined(const KazString& directory, const KazString& name) {
    if (directory.isEmpty() || name.isEmpty())
        return directory + name;
    return directory + '\\' + name;
}
