// SPDX-License-Identifier: Apache-2.0
/// @file
/// Whether a string block holds together; for tests, which include it, and not part of the
/// library.
#pragma once

#include "tools/strings/KazStringRep.h"

namespace kaz::detail {

/// The invariants of KazStringRep for the block whose characters of type Ch start at
/// @p text: held by somebody, within its bounds, of a capacity that blocks have, and
/// terminated where it says that it ends.
template <class Ch>
bool isSoundBlock(const Ch* text) {
    const KazStringRep& rep = *KazStringRep::of(text);
    return rep.referenceCount > 0 && rep.stringLength >= 0 &&
           rep.stringLength <= rep.bufferLength && rep.bufferLength % 16 == 3 &&
           text[rep.stringLength] == Ch{};
}

} // namespace kaz::detail
