// SPDX-License-Identifier: Apache-2.0
#include "tools/formats/detail/TextBuilder.h"

#include "tools/app/exceptions/KazMemoryException.h"

#include <algorithm>

namespace kaz::detail {

namespace {

/// What fits a block with its header, whose size is rounded up.
constexpr std::size_t most = 0x7fffffff - 64;

} // namespace

/// A block that others share is readable and never written: with no room in it, the first
/// piece makes grow() take a block of the string's own.
void TextBuilder::look() {
    begin_ = static_cast<char*>(text_.disguise());
    at_ = begin_ + old_;
    limit_ = at_;
    if (begin_ != nullptr && KazStringRep::of(begin_)->referenceCount == 1)
        limit_ = begin_ + KazStringRep::of(begin_)->bufferLength;
}

/// An empty string has no block, so that "" and nothing stay the same.
void TextBuilder::end(int length) {
    if (length == 0)
        text_.clear();
    else
        text_.releaseBuffer(length);
}

/// Pieces of any size then cost time in proportion to the whole text.
void TextBuilder::growByHalf(std::size_t n) {
    grow(n, std::max(n, size() / 2));
}

void TextBuilder::grow(std::size_t n, std::size_t wanted) {
    // Subtracting on the side of the limit: the sum could pass the range of the type.
    const std::size_t length = size();
    if (n > most - std::min(length, most))
        throw KazMemoryException();
    const std::size_t capacity = std::min(length + std::min(wanted, most), most);
    // A block of its own is moved with the characters that the string knows of.
    if (length > static_cast<std::size_t>(old_))
        text_.releaseBuffer(static_cast<int>(length));
    begin_ = text_.getBuffer(static_cast<int>(capacity));
    at_ = begin_ + length;
    limit_ = begin_ + capacity;
}

} // namespace kaz::detail
