// SPDX-License-Identifier: Apache-2.0
// A passage keeps numbers of slots, never pointers: slots move whenever somebody inserts. Each
// insertion and removal is told to all passages of all sharers, the inner ones too, and each of
// them corrects its own numbers by the same two rules: what lies behind an insertion moves back,
// and what lies in a removed stretch is gone.
#include "tools/containers/detail/Passages.h"

#include "tools/util/detail/allocate.h"

#include <algorithm>
#include <cstddef>

namespace kaz::detail {

namespace {

/// Where a place is after a removal; the first one behind it when it is gone.
int placeAfter(int place, int index, int count) {
    return place <= index ? place : std::max(index, place - count);
}

} // namespace

void Passage::enter(Passage*& list) {
    outer = list;
    list = this;
}

void Passage::leave(Passage*& list) const {
    list = outer;
}

/// What is inserted inside the stretch belongs to it. On the side that is done it stays, as only
/// slots that are null are taken out; on the other side it goes with the rest.
void Removal::inserted(int index, int count) {
    if (index > begin && index >= end)
        return;
    // What comes to stand where the next one is taken is not taken with it.
    const bool isBeforeNext = direction_ == up ? index <= next : index < next;
    next += index <= begin || isBeforeNext ? count : 0;
    begin += index <= begin ? count : 0;
    end += count;
}

void Removal::removed(int index, int count) {
    begin = placeAfter(begin, index, count);
    next = placeAfter(next, index, count);
    end = placeAfter(end, index, count);
}

Arrival::Arrival(int count)
    : places_(static_cast<int*>(allocate(static_cast<std::size_t>(count) * sizeof(int)))),
      total_(count) {
    std::fill_n(places_.get(), total_, -1);
}

void Arrival::begin(int index, void** const& slots) {
    data_ = &slots;
    for (int i = 0; i < total_; ++i)
        places_.get()[i] = index + i;
}

void Arrival::inserted(int index, int count) {
    for (int i = 0; i < total_; ++i)
        places_.get()[i] += places_.get()[i] >= index ? count : 0;
}

void Arrival::removed(int index, int count) {
    for (int i = 0; i < total_; ++i) {
        int& place = places_.get()[i];
        if (place >= index)
            place = place < index + count ? -1 : place - count;
    }
}

/// Items that were never checked in are still the caller's. Their slots read as null from now on,
/// so that whoever has the slots checks none of them out.
void Arrival::abandoned() {
    for (int i = 0; i < total_; ++i) {
        if (i >= next_ && places_.get()[i] >= 0)
            (*data_)[places_.get()[i]] = nullptr;
        places_.get()[i] = -1;
    }
}

bool Arrival::knows(int index) const {
    const int* const all = places_.get();
    return std::find(all + next_, all + total_, index) != all + total_;
}

bool Arrival::yields(int index) {
    int* const end = places_.get() + total_;
    int* const found = std::find(places_.get() + next_, end, index);
    if (found == end)
        return false;
    *found = -1;
    return true;
}

} // namespace kaz::detail
