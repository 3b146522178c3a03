// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazIntTree.h"

#include "tools/util/detail/compared.h"

namespace {

/// Unlike a difference, right for values that are far apart, too.
int compareValues(const void* stored, const void* probe) {
    const auto a = reinterpret_cast<std::intptr_t>(stored);
    const auto b = reinterpret_cast<std::intptr_t>(probe);
    return kaz::detail::compared(a, b);
}

} // namespace

KazIntTree::KazIntTree() : KazTree(compareValues) {}
