// SPDX-License-Identifier: Apache-2.0
#include "tools/messages/KazProgressMap.h"

#include "tools/messages/KazProgress.h"
#include "tools/util/tree.h"

namespace {

constexpr int onlyBucket = 1; // a tool has few progresses under way at a time

void checkOutValue(void* value) {
    KazProgressMap::checkOut(static_cast<KazProgress*>(value));
}

} // namespace

KazProgressMap::KazProgressMap()
    : KazHashTable(compare_integers, KazHashTable::hashPointer, onlyBucket) {
    setValueCheckOut(checkOutValue);
}

KazProgressMap::~KazProgressMap() = default;

void KazProgressMap::checkOut(KazProgress* progress) {
    delete progress;
}
