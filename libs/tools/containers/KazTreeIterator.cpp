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
    : rank_(other.rank_), inGap_(other.inGap_) {
    enlist(other.tree_);
}

KazTreeIterator::~KazTreeIterator() {
    resign();
}

KazTreeIterator& KazTreeIterator::operator=(const KazTreeIterator& other) {
    if (this == &other)
        return *this;
    resign();
    enlist(other.tree_);
    rank_ = other.rank_;
    inGap_ = other.inGap_;
    return *this;
}

void KazTreeIterator::enlist(const KazTree* walked) {
    tree_ = walked;
    if (tree_ == nullptr)
        return;
    nextIterator_ = tree_->iterators_;
    tree_->iterators_ = this;
}

void KazTreeIterator::resign() {
    if (tree_ == nullptr)
        return;
    KazTreeIterator** link = &tree_->iterators_;
    while (*link != this)
        link = &(*link)->nextIterator_;
    *link = nextIterator_;
}

bool KazTreeIterator::moveTo(int newRank) {
    inGap_ = false;
    rank_ = tree_ != nullptr && newRank < tree_->getSize() ? newRank : -1;
    return !isDone();
}

bool KazTreeIterator::next() {
    return moveTo(isDone() || inGap_ ? rank_ : rank_ + 1);
}

bool KazTreeIterator::previous() {
    return moveTo(isDone() ? rank_ : rank_ - 1);
}

void KazTreeIterator::toFirst() {
    moveTo(0);
}

void KazTreeIterator::toLast() {
    moveTo(tree_ != nullptr ? tree_->getSize() - 1 : -1);
}

bool KazTreeIterator::startAt(const void* key) {
    return moveTo(tree_ != nullptr ? tree_->rankOf(key) : -1);
}
