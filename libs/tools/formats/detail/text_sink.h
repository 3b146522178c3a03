// SPDX-License-Identifier: Apache-2.0
/// @file
/// Where formatted text is put together.
#pragma once

#include "tools/strings/KazString.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace kaz::dates {

/// Collects text without NUL. What fits the buffer, as nearly every date does, takes
/// one allocation in the end.
class TextSink {
public:
    static constexpr std::size_t room = 512;

    TextSink() = default; // the buffer is left as it is

    void put(char c) {
        if (used_ == room)
            flush();
        buffer_[used_++] = c;
    }

    /// A number from 0 to 99.
    void putTwoDigits(int number) {
        if (room - used_ < 2)
            flush();
        buffer_[used_] = static_cast<char>('0' + number / 10);
        buffer_[used_ + 1] = static_cast<char>('0' + number % 10);
        used_ += 2;
    }

    /// At most `room` characters.
    void put(std::string_view text) {
        if (room - used_ < text.size())
            flush();
        std::memcpy(buffer_.data() + used_, text.data(), text.size());
        used_ += text.size();
    }

    /// At most `room` times.
    void fill(char c, int count) {
        if (count <= 0)
            return;
        if (room - used_ < static_cast<std::size_t>(count))
            flush();
        std::memset(buffer_.data() + used_, c, static_cast<std::size_t>(count));
        used_ += static_cast<std::size_t>(count);
    }

    /// What is in the buffer: everything, as long as that is not more than `room`.
    std::string_view view() const { return {buffer_.data(), used_}; }

    KazString take() {
        flush();
        return std::move(text_);
    }

private:
    void flush() {
        buffer_[used_] = '\0';
        if (text_.isEmpty())
            text_ = buffer_.data();
        else
            text_ += buffer_.data();
        used_ = 0;
    }

    std::array<char, room + 1> buffer_;
    std::size_t used_ = 0;
    KazString text_;
};

} // namespace kaz::dates
