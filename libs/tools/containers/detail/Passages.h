// SPDX-License-Identifier: Apache-2.0
/// @file
/// Elements on their way into a collection or out of it, while element functions may
/// do anything to it.
#pragma once

#include "tools/util/detail/heap_ptr.h"

namespace kaz::detail {

/// Something that a member of a collection has under way. The collection tells it,
/// and those that share its slots tell it, what becomes of the slots meanwhile.
class Passage {
public:
    Passage() = default;
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

    /// Puts this in front of a collection's @p list, and takes it out again.
    void enter(Passage*& list);
    void leave(Passage*& list) const;

    virtual void inserted(int index, int count) = 0;
    virtual void removed(int index, int count) = 0;
    /// The slots are no longer the collection's.
    virtual void abandoned() = 0;
    /// An element is about to be checked out.
    virtual void elementLeaves() {}
    /// Whether the slot holds what was never checked in.
    virtual bool knows(int /*index*/) const { return false; }
    /// The same; who asks has it then.
    virtual bool yields(int /*index*/) { return false; }

    /// The next outer one of the same collection.
    Passage* outer = nullptr;

protected:
    ~Passage() = default;
};

/// The slots from begin to end, which are to go. One side of `next` has been checked
/// out and is null, unless an element function has put something there: then that stays.
class Removal : public Passage {
public:
    /// Upwards or, from the last slot on, downwards.
    enum Direction { up, down };

    Removal(int from, int to, Direction way)
        : begin(from), next(way == up ? from : to), end(to), direction_(way) {}

    bool isEmpty() const { return begin == end; }

    void inserted(int index, int count) override;
    void removed(int index, int count) override;
    void abandoned() override { begin = next = end = 0; }

    int begin;
    int next;
    int end;

private:
    Direction direction_;
};

/// Items that stand in their slots and are checked in there one by one.
class Arrival : public Passage {
public:
    /// Of @p count items, which have no places yet; the memory that following them takes.
    explicit Arrival(int count);

    /// They stand in the slots from @p index on.
    void begin(int index, void** const& slots);

    int size() const { return total_; }
    /// How many have been checked in; the next one is that number.
    int arrived() const { return next_; }
    void advance() { ++next_; }
    /// Where an item stands; -1 when it was removed.
    int placeOf(int number) const { return places_.get()[number]; }

    void inserted(int index, int count) override;
    void removed(int index, int count) override;
    void abandoned() override;
    bool knows(int index) const override;
    bool yields(int index) override;

private:
    HeapPtr<int> places_;
    int total_;
    int next_ = 0;
    void** const* data_ = nullptr;
};

/// Whether a collection still has all of the elements that another one takes over.
class SourceWatch : public Passage {
public:
    bool isComplete() const { return complete_; }

    void inserted(int, int) override {}
    void removed(int, int) override {}
    void abandoned() override { complete_ = false; }
    void elementLeaves() override { complete_ = false; }

private:
    bool complete_ = true;
};

} // namespace kaz::detail
