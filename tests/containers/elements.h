// SPDX-License-Identifier: Apache-2.0
/// @file
/// Elements of the containers under test, and containers that own them.
#pragma once

#include "testkit/counted.h"
#include "tools/containers/KazColl.h"
#include "tools/containers/KazTree.h"
#include "tools/strings/KazString.h"

/// The value of a Counted in a slot; 0 for none.
inline int valueOf(const void* element) {
    return element ? static_cast<const moxkit::Counted*>(element)->value() : 0;
}

/// How many hold the block of @p text, which is not empty.
inline int references(const KazString& text) {
    return KazStringRep::of(text.disguise())->referenceCount;
}

struct OwningColl : KazColl {
    OwningColl() {
        setCheckIn(moxkit::Counted::checkIn);
        setCheckOut(moxkit::Counted::checkOut);
    }
    void fill(int from, int to) {
        for (int i = from; i <= to; ++i) {
            moxkit::Counted element(i);
            add(&element);
        }
    }
};

struct OwningTree : KazTree {
    OwningTree() : KazTree(moxkit::Counted::compare) {
        setCheckIn(moxkit::Counted::checkIn);
        setCheckOut(moxkit::Counted::checkOut);
    }
    void put(int value) {
        moxkit::Counted element(value);
        add(&element);
    }
};
