// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the sources of KazColl share: following the slots while element functions run,
/// and items on their way in.
#pragma once

#include "tools/containers/KazColl.h"
#include "tools/containers/detail/Passages.h"
#include "tools/strings/KazString.h"
#include "tools/util/detail/allocate.h"

#include <cstdlib>

namespace kaz::detail {

/// Whether nobody can tell when @p function is called. The library's own copy of an
/// inline function is known here; with a program's copy, everything goes the general way.
inline bool isUnobserved(KazColl::CheckOut function) {
    return !function || function == KazString::checkOut;
}

} // namespace kaz::detail

/// A passage of a collection while it is under way.
template <typename P>
class KAZ_LOCAL KazColl::Under : public P {
public:
    template <typename... Arguments>
    explicit Under(const KazColl& coll, Arguments... arguments) : P(arguments...), owner(coll) {
        this->enter(owner.passages);
    }
    Under(const Under&) = delete;
    Under& operator=(const Under&) = delete;
    ~Under() { this->leave(owner.passages); }

private:
    const KazColl& owner;
};

/// Items on their way in. Those that have been checked in and did not get
/// there are checked out again; without a check-in they are still the caller's.
class KAZ_LOCAL KazColl::Incoming {
public:
    /// Place for up to @p most items.
    Incoming(const KazColl& owner, int most)
        : checkOutFunction(owner.checkInFunction ? owner.checkOutFunction : nullptr), limit(most) {
        if (most > 1)
            items = static_cast<void**>(
                kaz::detail::allocate(static_cast<std::size_t>(most) * sizeof(void*)));
    }
    Incoming(const Incoming&) = delete;
    Incoming& operator=(const Incoming&) = delete;
    ~Incoming() {
        while (checkOutFunction && count > 0)
            checkOutFunction(items[--count]);
        if (items != &single)
            std::free(items);
    }

    void checkIn(CheckIn function, void* const* from) {
        // Aside first: the items may be slots that a check-in moves.
        moveSlots(items, from, limit);
        while (count < limit)
            append(function, items[count]);
    }

    /// The elements of @p source, read one by one: a check-in that removes
    /// some has ended their life.
    void checkIn(CheckIn function, const KazColl& source) {
        while (count < limit && count < source.size)
            append(function, source.checkedInAt(count));
    }

    int size() const { return count; }

    /// The items, which now belong to the caller.
    void** surrender() {
        count = 0;
        return items;
    }

private:
    void append(CheckIn function, void* item) {
        items[count] = function ? function(item) : item;
        ++count;
    }

    CheckOut checkOutFunction;
    int limit;
    int count = 0;
    void* single = nullptr;
    void** items = &single;
};

template <typename Visit>
void KazColl::forEachSharer(Visit visit) const {
    KazColl* sharer = nextSharer;
    for (; sharer != this; sharer = sharer->nextSharer)
        visit(*sharer);
    visit(*sharer);
}
