// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringToStringMap.h"

#include "tools/containers/detail/HeldTable.h"

KazStringToStringMap::KazStringToStringMap(bool caseSensitive, int size)
    : KazHashTable(caseSensitive ? KazString::compareDisguised : KazString::compareNoCaseDisguised,
                   caseSensitive ? KazString::hashDisguised : KazString::hashNoCaseDisguised,
                   size) {
    setKeyCheckIn(KazString::checkIn);
    setKeyCheckOut(KazString::checkOut);
    setValueCheckIn(KazString::checkIn);
    setValueCheckOut(KazString::checkOut);
}

// The strings given may be the map's own, with the only reference to their
// block there: a copy keeps them through the exchange.

bool KazStringToStringMap::bind(const KazString& key, const KazString& value, bool replace) {
    const KazString keptKey = key;
    const KazString keptValue = value;
    return Held(*this).bind(keptKey.disguise(), keptKey.getLength(), keptValue.disguise(), replace);
}

bool KazStringToStringMap::rebind(const KazString& key, const KazString& value) {
    const KazString keptKey = key;
    const KazString keptValue = value;
    return KazHashTable::rebind(keptKey.disguise(), keptValue.disguise());
}

bool KazStringToStringMap::unbind(const KazString& key) {
    return KazHashTable::unbind(key.getValue());
}

bool KazStringToStringMap::isBound(const KazString& key) {
    return KazHashTable::isBound(key.getValue());
}

KazString KazStringToStringMap::valueOf(const KazString& key) {
    bool found = false;
    return valueOf(key, found);
}

KazString KazStringToStringMap::valueOf(const KazString& key, bool& found) {
    // Until the copy holds a reference of its own.
    Held held(*this);
    return KazString::undisguise(held.lookUp(key.getValue(), key.getLength(), found));
}

bool KazStringToStringMap::valueOf(const KazString& key, KazString& value) {
    bool found = false;
    KazString stored = valueOf(key, found);
    if (found)
        value = stored;
    return found;
}
