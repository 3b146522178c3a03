// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringTree.h"

KazStringTree::KazStringTree(bool caseSensitive)
    : KazTree(caseSensitive ? KazString::compareDisguised : KazString::compareNoCaseDisguised) {
    setCheckIn(KazString::checkIn);
    setCheckOut(KazString::checkOut);
}

void KazStringTree::add(const KazString& text) {
    KazTree::add(text.disguise());
}

bool KazStringTree::contains(const KazString& text) const {
    return KazTree::contains(text.disguise());
}

KazString KazStringTree::find(const KazString& text) const {
    return KazString::undisguise(KazTree::find(text.disguise()));
}

bool KazStringTree::replace(const KazString& text) {
    return KazTree::replace(text.disguise());
}

bool KazStringTree::remove(const KazString& text) {
    return KazTree::remove(text.disguise());
}

KazString KazStringTree::smallest() const {
    return KazString::undisguise(KazTree::smallest());
}

KazString KazStringTree::largest() const {
    return KazString::undisguise(KazTree::largest());
}

KazString KazStringTree::valueAt(int rank) const {
    return KazString::undisguise(KazTree::valueAt(rank));
}
