// SPDX-License-Identifier: Apache-2.0
#include "tools/messages/KazConsoleProgress.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace {

constexpr unsigned int percentPerDot = 5;

/// In blocks, because the count of a value that went down is about 2^32; and not
/// beyond the first failure, for then nobody sees them anyway.
void writeDots(unsigned int count) {
    char dots[4096];
    std::memset(dots, '.', std::min<std::size_t>(count, sizeof dots));
    while (count > 0) {
        const std::size_t block = std::min<std::size_t>(count, sizeof dots);
        if (std::fwrite(dots, 1, block, stdout) != block)
            return;
        count -= static_cast<unsigned int>(block);
    }
    // There is no newline that would bring them to the terminal.
    std::fflush(stdout);
}

} // namespace

KazConsoleProgress::KazConsoleProgress() = default;
KazConsoleProgress::~KazConsoleProgress() = default;

unsigned int KazConsoleProgress::setProgress(unsigned int value) {
    const unsigned int old = progress_;
    progress_ = value;
    if (value / percentPerDot != old / percentPerDot)
        writeDots(value / percentPerDot - old / percentPerDot);
    return old;
}

unsigned int KazConsoleProgress::getProgress() const {
    return progress_;
}
