// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/detail/HeldTable.h"

void KazHashTable::Guard::acquire(Lock& lock, std::uintptr_t self) {
    std::uintptr_t seen = 0;
    if (lock.holder.compare_exchange_strong(seen, self))
        return;
    // One who has waited cannot know whether others still do, and takes the lock
    // with the mark on it.
    for (;;) {
        seen = 0;
        if (lock.holder.compare_exchange_strong(seen, self | waitedFor))
            return;
        if ((seen & waitedFor) != 0 || lock.holder.compare_exchange_strong(seen, seen | waitedFor))
            kaz::host::waitWhile(lock.holder, seen | waitedFor);
    }
}

void KazHashTable::Guard::release(Lock& lock) {
    if ((lock.holder.exchange(0) & waitedFor) != 0)
        kaz::host::wakeOne(lock.holder);
}
