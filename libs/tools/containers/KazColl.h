// SPDX-License-Identifier: Apache-2.0
/// @file
/// An array that can own its elements.
#pragma once

#include "tools/containers/KazArrayPtr.h"

class KazCollIterator;

namespace kaz::detail {
class Arrival;
class Removal;
class Passage;
class SourceWatch;
struct Soundness;
} // namespace kaz::detail

/// A KazArrayPtr whose elements may belong to it, and whose iterators stay
/// with their elements while others come and go.
///
/// Two optional functions express ownership. Check-in is called on what enters
/// and what it returns is stored (a counted reference, say, or a copy);
/// check-out is called on what leaves. Without them the collection stores
/// plain pointers.
///
///     KazColl names;
///     names.setCheckIn(KazString::checkIn);
///     names.setCheckOut(KazString::checkOut);
///     names.add(name.disguise());
///     for (KazCollIterator i(names); !i.isDone(); i.next())
///         use(i.item());
///
/// Element functions may look at the collection and change it, and see it so:
/// - add, setAt and the insertion of one item check it in before it has a place. With
///   several items all stand in their slots, as they were given, before the first is
///   checked in, each where it stands.
/// - Elements that leave still count, and stay where they are, until all of them are
///   checked out. What is being checked out, or has been, reads as null in its slot.
/// - Iterators stand by their elements throughout.
/// - Items that a function takes out again before they are checked in are as they were
///   given. If it takes elements out of the collection that the items come from, those
///   not yet checked in do not come in any more.
/// Check-out must not throw. When check-in throws or growth
/// fails, the collection is unchanged, what was checked in is checked out again,
/// and without a check-in function the items are still the caller's; only setAt
/// and copy have by then checked out what they replace (setAt leaves a null
/// slot, copy an empty collection). Indexes and counts are not checked.
///
/// Copying and assigning are shallow, as for KazArrayPtr: the objects share
/// slots and elements, and each element is still checked out exactly once.
/// - Each object has its own size and iterators. An insertion or removal
///   through one moves the common slots, and the iterators of all; it discards
///   elements that only a longer one of them counts, and slots that a removal
///   leaves behind read as null there.
/// - Whoever must grow takes slots of its own and checks its elements in once
///   more. With only a check-out function nothing can be held twice: then all
///   move to the larger storage together.
/// - Several items are checked in aside before they come into common slots.
/// - Letting go (removeAll, assignment, destruction) checks out nothing while
///   another object still has the elements.
///
/// No locks: a collection and its iterators belong to one thread at a time.
class KAZ_API KazColl : public KazArrayPtr {
public:
    using CheckIn = void* (*)(void*); ///< called on what enters; what it returns is stored
    using CheckOut = void (*)(void*); ///< called on what leaves; must not throw

    /// Empty, without element functions.
    KazColl() = default;
    /// Shares @p other's elements, as assignment does.
    KazColl(const KazColl& other);
    /// Checks out every element from the last to the first. Iterators are done
    /// from then on and may outlive the collection.
    ~KazColl();

    /// Lets go of the present elements, then shares @p other's and takes over
    /// its growth rate and element functions (see above). Iterators of this
    /// object stay where they stand, or are done when there is no such
    /// position any more.
    KazColl& operator=(const KazColl& other);

    /// Installs @p function, null for none, for elements to come. Returns the
    /// one that was in force.
    CheckIn setCheckIn(CheckIn function);
    CheckOut setCheckOut(CheckOut function);

    /// The element at @p index, still the collection's.
    void* getAt(int index) const { return KazArrayPtr::getAt(index); }
    void* operator[](int index) const { return KazArrayPtr::getAt(index); }

    /// Checks @p item in and appends it. Returns its index.
    int add(void* item) {
        // Slots that are nobody else's, and nobody to ask: a call takes as long again.
        if (checkInFunction_ != nullptr || size >= capacity || storage().occupied >= 0)
            return addOne(item);
        slot(size) = item;
        return size++;
    }

    /// Checks out the element at @p index, then checks @p item in at its place.
    void setAt(int index, void* item);

    /// Checks @p item in and inserts it in front of the element at @p index;
    /// at or beyond the end it is appended after a gap of null elements.
    /// Iterators at or behind @p index keep their element.
    void insertAt(int index, void* item);
    /// The same for @p count items, checked in in order. @p items may be slots
    /// of this collection.
    void insertAt(int index, void** items, int count);
    /// The same with the elements of @p other, which may be this collection.
    void insertAt(int index, const KazColl& other);

    /// Appends the elements of @p other, each checked in, in order. Returns
    /// the index of the first one appended.
    int append(const KazColl& other);

    /// Replaces the contents by those of @p other: removeAll, then append.
    /// Nothing happens when @p other is this collection.
    void copy(const KazColl& other);

    /// Removes @p count elements from @p index on and checks them out in
    /// ascending order. An iterator on one of them moves to @p index - 1, so
    /// that its next() reaches what follows them.
    void removeAt(int index, int count);

    /// Removes every element, checked out from the last to the first, and
    /// gives the storage back. Iterators are done, but stay registered.
    void removeAll();

    /// As their namesakes of KazArrayPtr.
    void inflate(int count);
    void freeExtra();

protected:
    /// Makes place for @p count slots at @p index; gives the first one.
    void** openSlots(int index, int count);

    /// Reads an index of an iterator without trusting it: null outside.
    void* peek(int index) const { return index >= 0 && index < size ? slot(index) : nullptr; }

private:
    friend class KazCollIterator;
    friend struct kaz::detail::Soundness;
    class Incoming;
    template <typename P>
    class Under;

    /// Contents that no longer belong to a collection.
    struct Departing {
        void** slots;
        int count;
        CheckOut checkOut;
        bool hasGaps; ///< null is what was checked out before, not an element
    };

    // They would bypass the element functions.
    using KazArrayPtr::elementAt;
    using KazArrayPtr::remove;
    using KazArrayPtr::setAtGrow;
    using KazArrayPtr::setSize;

    void checkedOut(void* item) const {
        if (checkOutFunction_ != nullptr)
            checkOutFunction_(item);
    }

    bool isAlone() const { return nextSharer_ == this; }
    void joinSharersOf(const KazColl& other);
    void leaveSharers();
    template <typename Visit>
    void forEachSharer(Visit visit) const;

    Departing depart();
    static void dismiss(const Departing& contents);
    void letGo();

    bool isBusy() const;
    void* checkedInAt(int index) const;
    void checkOutAt(int index, bool isNested);
    void removeVacated(const kaz::detail::Removal& going);

    int addOne(void* item);
    bool holdsElement(int index) const;
    void* take(int index);
    void claimSlots();
    void noteSlots();
    void makeRoom(std::int64_t count);
    void separate(int newCapacity);
    void moveTogether(int newCapacity);
    void prepare(int index, int count);
    int insertAll(int index, void* const* items, int count, const KazColl* source);
    int insertAside(int index, void* const* items, int count, const KazColl* source);
    void insertInPlace(int index, void* const* items, int count, const KazColl* source);
    void checkInPlaced(kaz::detail::Arrival& arrival, const kaz::detail::SourceWatch& watch);
    void removeItems(const kaz::detail::Arrival& arrival, int from);
    void extract(int index, int count);
    void advanceIterators(int index, int count);
    void withdrawIterators(int index, int count);

    CheckOut checkOutFunction_ = nullptr;
    CheckIn checkInFunction_ = nullptr;
    KazCollIterator* iterators_ = nullptr;
    /// Ring of the collections that share the storage; this one when alone. What
    /// they share they own once: the last one to leave the ring checks it out.
    mutable KazColl* nextSharer_ = this;
    /// What this object has under way while element functions run, the innermost first.
    mutable kaz::detail::Passage* passages_ = nullptr;
};
