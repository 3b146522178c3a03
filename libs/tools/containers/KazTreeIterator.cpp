// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazTreeIterator.h"

KazTreeIterator::KazTreeIterator(KazTree* walked) {
    enlist(walked);
    toFirst();
}

KazTreeIterator::KazTreeIterator(const KazTree& walked) {
    enlist(&walked);
    toFirst();
}

KazTreeIterator::KazTreeIterator(const KazTreeIterator& other)
    : rank(other.rank), inGap(other.inGap) {
    enlist(other.tree);
}

KazTreeIterator::~KazTreeIterator() {
    resign();
}

KazTreeIterator& KazTreeIterator::operator=(const KazTreeIterator& other) {
    if (this == &other)
        return *this;
    resign();
    enlist(other.tree);
    rank = other.rank;
    inGap = other.inGap;
    return *this;
}

void KazTreeIterator::enlist(const KazTree* walked) {
    tree = walked;
    if (!tree)
        return;
    nextIterator = tree->iterators;
    tree->iterators = this;
}

void KazTreeIterator::resign() {
    if (!tree)
        return;
    KazTreeIterator** link = &tree->iterators;
    while (*link != this)
        link = &(*link)->nextIterator;
    *link = nextIterator;
}

bool KazTreeIterator::moveTo(int newRank) {
    inGap = false;
    rank = tree && newRank < tree->getSize() ? newRank : -1;
    return !isDone();
}

bool KazTreeIterator::next() {
    return moveTo(isDone() || inGap ? rank : rank + 1);
}

bool KazTreeIterator::previous() {
    return moveTo(isDone() ? rank : rank - 1);
}

void KazTreeIterator::toFirst() {
    moveTo(0);
}

void KazTreeIterator::toLast() {
    moveTo(tree ? tree->getSize() - 1 : -1);
}

bool KazTreeIterator::startAt(const void* key) {
    return moveTo(tree ? tree->rankOf(key) : -1);
}
