// SPDX-License-Identifier: Apache-2.0
// What was made on the way to a target is known from the outside in, and is removed from the
// inside out, as long as it is empty. Where somebody else has made one of them in between, those
// above it are theirs to need and stay.
#include "made_directories.h"

#include "tools/moxtools.h"

#include <cerrno>
#include <utility>

namespace {

/// Takes the last component off a path; the path becomes that of its directory.
KazString takeLast(KazString& path) {
    const int root = kazRootPartLength(path);
    int end = path.getLength();
    while (end > root && path[end - 1] == '\\')
        --end;
    int start = end;
    while (start > root && path[start - 1] != '\\')
        --start;
    KazString name = path.subStringBefore(end).subStringFrom(start);
    path = path.subStringBefore(start);
    return name;
}

} // namespace

KazDirectory openNearest(KazString path, std::vector<KazString>& missing) {
    missing.clear();
    KazDirectory found(path);
    while (!found.isOpen() && errno == ENOENT) {
        missing.push_back(takeLast(path));
        if (missing.back().isEmpty()) {
            errno = ENOENT; // a root that does not exist
            break;
        }
        found = KazDirectory(path);
    }
    return found;
}

MadeDirectories::MadeDirectories() : cursor_(KazDirectory()) {}

int MadeDirectories::open(const KazString& path) {
    std::vector<KazString> missing;
    KazDirectory top = openNearest(path, missing);
    if (!top.isOpen())
        return -1;
    cursor_ = KazTreeCursor(std::move(top));
    for (; !missing.empty(); missing.pop_back()) {
        const KazString& name = missing.back();
        // Before the directory is made: noting it must not fail.
        made_.reserve(made_.size() + missing.size());
        if (cursor_.directory().makeDirectory(name, 0777) == 0)
            made_.push_back(name);
        else if (errno == EEXIST)
            made_.clear(); // Somebody else has been faster, and needs those above.
        else
            return -1;
        if (cursor_.enter(name) != 0)
            return -1;
    }
    return 0;
}

void MadeDirectories::keep() {
    made_.clear();
}

void MadeDirectories::remove() {
    for (; !made_.empty(); made_.pop_back()) {
        // The innermost may have been made and not entered.
        if (cursor_.directory().removeDirectory(made_.back()) == 0)
            continue;
        if (cursor_.leave() != 0 || cursor_.directory().removeDirectory(made_.back()) != 0)
            break; // Somebody else may use it by now.
    }
    made_.clear();
}
