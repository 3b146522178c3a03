// SPDX-License-Identifier: Apache-2.0
#include "testkit/counted.h"

namespace moxkit {

int Counted::live_ = 0;

Counted::Counted(int value) : value_(value) {
    ++live_;
}

Counted::Counted(const Counted& other) : value_(other.value_) {
    ++live_;
}

Counted::~Counted() {
    --live_;
}

void* Counted::checkIn(void* element) {
    return element != nullptr ? new Counted(*static_cast<Counted*>(element)) : nullptr;
}

void Counted::checkOut(void* element) {
    delete static_cast<Counted*>(element);
}

/// Null is an element like any other, and comes first.
int Counted::compare(const void* a, const void* b) {
    if (a == nullptr || b == nullptr)
        return a != nullptr ? 1 : b != nullptr ? -1 : 0;
    const int left = static_cast<const Counted*>(a)->value_;
    const int right = static_cast<const Counted*>(b)->value_;
    return left < right ? -1 : left > right ? 1 : 0;
}

unsigned Counted::hash(const void* element) {
    return element != nullptr ? static_cast<unsigned>(static_cast<const Counted*>(element)->value_)
                              : 0;
}

} // namespace moxkit
