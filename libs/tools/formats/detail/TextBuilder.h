// SPDX-License-Identifier: Apache-2.0
/// @file
/// Appends to a string without a look at its block for each piece.
#pragma once

#include "tools/strings/KazString.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace kaz::detail {

/// Extends a string that nobody else touches meanwhile. The string grows by half, so that
/// any number of pieces costs linear time. Until commit() it does not have the new text:
/// what is destroyed without one leaves it as it was, after a failure too.
class TextBuilder {
public:
    explicit TextBuilder(KazString& text) : text_(text), old_(text.getLength()) { look(); }
    ~TextBuilder() {
        if (at_ != begin_ + old_ || text_.getLength() != old_)
            end(old_);
    }
    TextBuilder(const TextBuilder&) = delete;
    TextBuilder& operator=(const TextBuilder&) = delete;

    /// Makes room for @p n characters more, in one step.
    void reserve(std::size_t n) {
        if (n > static_cast<std::size_t>(limit_ - at_))
            grow(n, n);
    }

    /// A place for @p n characters; those that are used are told by used().
    char* room(std::size_t n) {
        if (n > static_cast<std::size_t>(limit_ - at_))
            growByHalf(n);
        return at_;
    }
    void used(char* end) { at_ = end; }

    void append(std::string_view piece) { append(piece.data(), piece.size()); }
    void append(const char* piece, std::size_t n) {
        if (n == 0)
            return;
        std::memcpy(room(n), piece, n);
        at_ += n;
    }
    void append(char c) {
        *room(1) = c;
        ++at_;
    }

    /// Characters so far, those that stood there before included.
    std::size_t size() const { return static_cast<std::size_t>(at_ - begin_); }

    std::string_view view() const { return {begin_, size()}; }
    /// Keeps the first @p size characters, which are as many at most.
    void truncate(std::size_t size) { at_ = begin_ + size; }
    /// Puts @p before and @p behind around all of it, without a second block as large.
    void wrap(std::string_view before, std::string_view behind) {
        room(before.size() + behind.size());
        std::memmove(begin_ + before.size(), begin_, size());
        std::memcpy(begin_, before.data(), before.size());
        std::memcpy(at_ + before.size(), behind.data(), behind.size());
        at_ += before.size() + behind.size();
    }
    /// Puts @p piece in place of as many characters from @p from on.
    void overwrite(std::size_t from, std::string_view piece) {
        std::memcpy(begin_ + from, piece.data(), piece.size());
    }

    /// The string has all of it from now on, and can be extended further.
    void commit() {
        end(static_cast<int>(size()));
        old_ = text_.getLength();
        look();
    }

private:
    /// Where the string's characters are; a block that others share has no room.
    void look();
    /// Sets the length and what follows it.
    void end(int length);
    void growByHalf(std::size_t n);
    /// Room for @p wanted characters more, @p n of them for certain. Nothing has changed
    /// when it throws.
    void grow(std::size_t n, std::size_t wanted);

    KazString& text_;
    int old_; ///< its length while nothing is committed
    char* begin_ = nullptr;
    char* at_ = nullptr;
    char* limit_ = nullptr;
};

} // namespace kaz::detail
