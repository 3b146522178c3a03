// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/threads.h"

#include <windows.h>

namespace kaz::host {

// Thread-local data would do, but this compiler allocates it at its first use.
std::uintptr_t thisThread() {
    return std::uintptr_t{GetCurrentThreadId()} << 1;
}

void waitWhile(std::atomic<std::uintptr_t>& word, std::uintptr_t value) {
    WaitOnAddress(&word, &value, sizeof value, INFINITE);
}

void wakeOne(std::atomic<std::uintptr_t>& word) {
    WakeByAddressSingle(&word);
}

} // namespace kaz::host
