// SPDX-License-Identifier: Apache-2.0
/// @file
/// The registry of the state that the suite's libraries keep in one process.
#pragma once

#include "tools/app/KazContext.h"
#include "tools/export.h"

/// Seventeen slots for contexts, all empty at first. The last one holds the
/// KazToolsContext; the others are for further libraries of the suite, which
/// fill them with setSlot.
///
/// A master context owns what was put into it and deletes it, slot 0 first.
/// Copies share the pointers without owning them, so they must not be used
/// after the original is gone; what is later put into a copy is the copy's.
/// A master context may outlive the application object.
class KAZ_API KazMasterContext {
public:
    static constexpr int slotCount = 17;            ///< how many contexts there is room for
    static constexpr int toolsSlot = slotCount - 1; ///< the slot of the KazToolsContext

    /// Makes this object the application's active context.
    KazMasterContext();

    /// Copies the pointers only; does not become the active context.
    KazMasterContext(const KazMasterContext& other);

    /// Copies the pointers. What this object owned and no longer holds is
    /// deleted.
    KazMasterContext& operator=(const KazMasterContext& other);

    /// Deletes the contexts in slot order. When this object is the active
    /// context, the application has none afterwards: the one that was active
    /// before does not come back by itself.
    virtual ~KazMasterContext();

    /// False: tells the contexts of documents, which derived classes add, from
    /// the context of the process.
    virtual bool isDoc() const;

    /// The application's active context, asked for in the application's own
    /// way: a console application creates it on first use. Null without an
    /// application object.
    static KazMasterContext* getInstance();

    /// The context in @p slot (0 to 16), or null when the slot is empty or
    /// there is no such slot.
    KazContext* getSlot(int slot) const;

    /// Puts @p context into @p slot (0 to 16) and takes it over; deletes what
    /// was owned there before. A slot number out of range is refused: false,
    /// and @p context stays the caller's.
    bool setSlot(int slot, KazContext* context);

private:
    bool owns(int slot) const { return (owned_ >> slot & 1u) != 0; }
    void release(int slot);

    KazContext* slots_[slotCount] = {};
    unsigned owned_ = 0; ///< Bit i: slot i is this object's to delete.
};
