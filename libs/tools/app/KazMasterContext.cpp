// SPDX-License-Identifier: Apache-2.0
// A master context owns what was put into its slots, and copies of it do not: a copy refers to
// the contexts of the original, which has to live longer. Each slot has one bit that says whose
// it is.
#include "tools/app/KazMasterContext.h"

#include "tools/app/KazApp.h"

KazMasterContext::KazMasterContext() {
    if (KazApp* app = KazApp::getInstance())
        app->setActiveContext(this);
}

KazMasterContext::KazMasterContext(const KazMasterContext& other) {
    *this = other;
}

KazMasterContext& KazMasterContext::operator=(const KazMasterContext& other) {
    for (int i = 0; i < slotCount; ++i) {
        if (slots_[i] == other.slots_[i])
            continue;
        release(i);
        slots_[i] = other.slots_[i];
    }
    return *this;
}

KazMasterContext::~KazMasterContext() {
    for (int i = 0; i < slotCount; ++i)
        release(i);
    // The field, not the virtual operation: that one would make a new context.
    KazApp* app = KazApp::getInstance();
    if (app != nullptr && app->KazApp::getActiveContext() == this)
        app->setActiveContext(nullptr);
}

bool KazMasterContext::isDoc() const {
    return false;
}

KazMasterContext* KazMasterContext::getInstance() {
    KazApp* app = KazApp::getInstance();
    return app != nullptr ? app->getActiveContext() : nullptr;
}

KazContext* KazMasterContext::getSlot(int slot) const {
    return slot >= 0 && slot < slotCount ? slots_[slot] : nullptr;
}

bool KazMasterContext::setSlot(int slot, KazContext* context) {
    if (slot < 0 || slot >= slotCount)
        return false;
    if (slots_[slot] != context)
        release(slot);
    slots_[slot] = context;
    owned_ |= 1u << slot;
    return true;
}

/// Empties a slot and deletes what this object owned there. The slot stays
/// readable while its context is being destroyed.
void KazMasterContext::release(int slot) {
    if (owns(slot))
        delete slots_[slot];
    slots_[slot] = nullptr;
    owned_ &= ~(1u << slot);
}
