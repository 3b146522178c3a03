// SPDX-License-Identifier: Apache-2.0
/// @file
/// The header of a string's block, shared by the narrow and the wide class.
#pragma once

#include "tools/export.h"

#include <cstdint>
#include <type_traits>

/// A string block is one piece of malloc memory: this header and, directly
/// behind it, the characters with their terminator. Strings (and containers
/// that hold representations) point at the first character, so that the same
/// pointer is an ordinary terminated text; the header lies at a fixed distance
/// in front of it.
///
/// Invariants: 0 <= stringLength <= bufferLength, the character at stringLength
/// is NUL, bufferLength is of the form 16k + 3. A block that several holders
/// share is never written, with the one exception that KazString documents.
/// The count is a plain integer: a block belongs to one thread at a time.
struct KAZ_API KazStringRep {
    std::int32_t stringLength;   ///< characters in use, terminator not counted
    std::int32_t bufferLength;   ///< characters that fit, terminator not counted
    std::int32_t referenceCount; ///< holders of the block

    /// The header of the block whose characters start at @p text (not null).
    static KazStringRep* of(void* text) { return static_cast<KazStringRep*>(text) - 1; }
    static const KazStringRep* of(const void* text) {
        return static_cast<const KazStringRep*>(text) - 1;
    }

    /// Adds a holder; null is ignored.
    static void retain(void* text) {
        if (text != nullptr)
            ++of(text)->referenceCount;
    }

    /// Drops a holder and frees the block with the last one; null is ignored.
    static void release(void* text) {
        if (text != nullptr && --of(text)->referenceCount == 0)
            destroy(text);
    }

private:
    static void destroy(void* text);
};

static_assert(sizeof(KazStringRep) == 12 && std::is_trivial_v<KazStringRep>,
              "the characters start 12 bytes into the block");
