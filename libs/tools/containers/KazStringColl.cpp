// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringColl.h"

// A slot and a string are both one pointer to the characters, so a slot can be
// handed out as the string that it is. The collection itself looks at slots
// only as kaz::detail::Slot, or bytewise, so the compiler takes either view of
// them into account.
static_assert(sizeof(KazString) == sizeof(void*));
static_assert(alignof(KazString) == alignof(void*));

KazStringColl::KazStringColl() {
    setCheckIn(KazString::checkIn);
    setCheckOut(KazString::checkOut);
}

int KazStringColl::add(const KazString& text) {
    return KazColl::add(text.disguise());
}

void KazStringColl::setAt(int index, const KazString& text) {
    // The slot may hold the only reference to its block.
    const KazString kept = text;
    KazColl::setAt(index, kept.disguise());
}

void KazStringColl::insertAt(int index, const KazString& text) {
    KazColl::insertAt(index, text.disguise());
}

void KazStringColl::insertAt(int index, const KazString* texts, int count) {
    KazColl::insertAt(index, reinterpret_cast<void**>(const_cast<KazString*>(texts)), count);
}

int KazStringColl::find(const char* text) const {
    for (int i = size - 1; i >= 0; --i) {
        if (getAt(i) == text)
            return i;
    }
    return -1;
}

int KazStringColl::findNoCase(const char* text) const {
    for (int i = size - 1; i >= 0; --i) {
        if (getAt(i).equalsNoCase(text))
            return i;
    }
    return -1;
}
