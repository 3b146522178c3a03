// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host.h"
#include "tools/platform/host_identity.h"

namespace kaz::host {

/// Two missing files are not the same one, although all their other fields are equal.
bool sameFile(const FileStatus& a, const FileStatus& b) {
    return a.kind != Kind::missing && b.kind != Kind::missing && a.device == b.device &&
           a.serial == b.serial;
}

bool sameFile(const char* a, const char* b) {
    FileStatus one, two;
    return status(a, one) == 0 && status(b, two) == 0 && sameFile(one, two);
}

} // namespace kaz::host
