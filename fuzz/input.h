// SPDX-License-Identifier: Apache-2.0
/// @file
/// Reads the bytes of a fuzzer's input as the values that a harness needs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>

namespace fuzz {

/// Takes values from the front of the input. At the end everything is zero, so
/// that a harness never has to ask: a loop goes on `while (!input.empty())`.
/// Small changes of the bytes stay small changes of what they mean.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : bytes_(reinterpret_cast<const char*>(data), size) {}

    bool empty() const { return bytes_.empty(); }
    std::size_t remaining() const { return bytes_.size(); }

    /// One byte from the end, for what goes along with everything that the bytes in
    /// front of it mean.
    std::uint8_t last() {
        if (bytes_.empty())
            return 0;
        const auto value = static_cast<std::uint8_t>(bytes_.back());
        bytes_.remove_suffix(1);
        return value;
    }

    /// The bits of any plain type: a number, a double.
    template <class T>
    T raw() {
        static_assert(std::is_trivially_copyable_v<T>);
        T value{};
        const std::string_view taken = take(sizeof value);
        if (!taken.empty())
            std::memcpy(&value, taken.data(), taken.size());
        return value;
    }

    std::uint8_t byte() { return raw<std::uint8_t>(); }
    bool flag() { return (byte() & 1) != 0; }

    /// A whole number from low to high, both included; low at the end. Takes as
    /// many bytes as the range needs.
    template <class T>
    T between(T low, T high) {
        const auto range = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
        std::uint64_t value = 0;
        for (std::uint64_t rest = range; rest != 0; rest >>= 8)
            value = value << 8 | byte();
        if (range != UINT64_MAX)
            value %= range + 1;
        return static_cast<T>(static_cast<std::uint64_t>(low) + value);
    }

    /// One of the elements of an array or container that is not empty.
    template <class Choices>
    auto pick(const Choices& choices) {
        return std::begin(choices)[between<std::ptrdiff_t>(0, std::ssize(choices) - 1)];
    }

    /// Text of at most @p most bytes, any bytes in it. Its length comes first.
    std::string text(std::size_t most) { return std::string(take(between<std::size_t>(0, most))); }

    /// Text without NUL, for functions that take `const char*`.
    std::string cText(std::size_t most) {
        std::string result = text(most);
        std::erase(result, '\0');
        return result;
    }

    /// Text of at most @p most characters of @p alphabet.
    std::string textOf(std::string_view alphabet, std::size_t most) {
        std::string result = text(most);
        for (char& c : result)
            c = alphabet[static_cast<unsigned char>(c) % alphabet.size()];
        return result;
    }

    /// Everything that is left.
    std::string rest() { return std::string(take(bytes_.size())); }

private:
    std::string_view take(std::size_t count) {
        const std::string_view taken = bytes_.substr(0, count);
        bytes_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view bytes_;
};

} // namespace fuzz
