// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazStringColl.h"

#include <cstddef>
#include <cstring>

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

namespace {

/// Whether @p stored equals the first @p length characters of @p text, which are all and
/// at least one. What is longer does so when it has a NUL there. Names often begin alike:
/// the last character decides most of them without a call.
bool isText(const KazString& stored, const char* text, std::size_t length) {
    if (static_cast<std::size_t>(stored.getLength()) < length)
        return false;
    const char* characters = stored.getValue();
    return characters[length - 1] == text[length - 1] && characters[length] == '\0' &&
           std::memcmp(characters, text, length) == 0;
}

} // namespace

int KazStringColl::find(const char* text) const {
    const std::size_t length = text != nullptr ? std::strlen(text) : 0;
    for (int i = size - 1; i >= 0; --i) {
        const KazString& stored = getAt(i);
        if (length > 0 ? isText(stored, text, length) : stored.isEmpty())
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
