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
    return function == nullptr || function == KazString::checkOut;
}

} // namespace kaz::detail

/// A passage of a collection while it is under way.
template <typename P>
class KAZ_LOCAL KazColl::Under : public P {
public:
    template <typename... Arguments>
    explicit Under(const KazColl& coll, Arguments... arguments) : P(arguments...), owner_(coll) {
        this->enter(owner_.passages_);
    }
    Under(const Under&) = delete;
    Under& operator=(const Under&) = delete;
    ~Under() { this->leave(owner_.passages_); }

private:
    const KazColl& owner_;
};

/// Items on their way in. Those that have been checked in and did not get
/// there are checked out again; without a check-in they are still the caller's.
class KAZ_LOCAL KazColl::Incoming {
public:
    /// Place for up to @p most items.
    Incoming(const KazColl& owner, int most)
        : checkOutFunction_(owner.checkInFunction_ != nullptr ? owner.checkOutFunction_ : nullptr),
          limit_(most) {
        if (most > 1)
            items_ = static_cast<void**>(
                kaz::detail::allocate(static_cast<std::size_t>(most) * sizeof(void*)));
    }
    Incoming(const Incoming&) = delete;
    Incoming& operator=(const Incoming&) = delete;
    ~Incoming() {
        while (checkOutFunction_ != nullptr && count_ > 0)
            checkOutFunction_(items_[--count_]);
        if (items_ != &single_)
            std::free(items_);
    }

    void checkIn(CheckIn function, void* const* from) {
        // Aside first: the items may be slots that a check-in moves.
        moveSlots(items_, from, limit_);
        while (count_ < limit_)
            append(function, items_[count_]);
    }

    /// The elements of @p source, read one by one: a check-in that removes
    /// some has ended their life.
    void checkIn(CheckIn function, const KazColl& source) {
        while (count_ < limit_ && count_ < source.size)
            append(function, source.checkedInAt(count_));
    }

    int size() const { return count_; }

    /// The items, which now belong to the caller.
    void** surrender() {
        count_ = 0;
        return items_;
    }

private:
    void append(CheckIn function, void* item) {
        items_[count_] = function != nullptr ? function(item) : item;
        ++count_;
    }

    CheckOut checkOutFunction_;
    int limit_;
    int count_ = 0;
    void* single_ = nullptr;
    void** items_ = &single_;
};

template <typename Visit>
void KazColl::forEachSharer(Visit visit) const {
    KazColl* sharer = nextSharer_;
    for (; sharer != this; sharer = sharer->nextSharer_)
        visit(*sharer);
    visit(*sharer);
}
