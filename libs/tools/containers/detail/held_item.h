// SPDX-License-Identifier: Apache-2.0
/// @file
/// An element on its way into a container.
#pragma once

namespace kaz::detail {

/// Checks @p item in when made. Unless the container takes it over with
/// surrender(), what was checked in is checked out again in the end; without a
/// check-in function the item is still the caller's. Either function may be null.
class HeldItem {
public:
    HeldItem(void* (*checkIn)(void*), void (*checkOut)(void*), void* item)
        : checkOut_(checkIn != nullptr ? checkOut : nullptr),
          item_(checkIn != nullptr ? checkIn(item) : item) {}
    HeldItem(const HeldItem&) = delete;
    HeldItem& operator=(const HeldItem&) = delete;
    ~HeldItem() {
        if (held_ && checkOut_ != nullptr)
            checkOut_(item_);
    }

    void* get() const { return item_; }

    void* surrender() {
        held_ = false;
        return item_;
    }

private:
    void (*checkOut_)(void*);
    void* item_;
    bool held_ = true;
};

} // namespace kaz::detail
