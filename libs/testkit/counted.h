// SPDX-License-Identifier: Apache-2.0
/// @file
/// Elements that count their coming and going.
#pragma once

namespace moxkit {

/// A heap value with the element functions of the containers: checkIn makes a
/// copy, checkOut destroys it. live() tells how many there are, so that a test sees
/// what a container has forgotten or freed twice. One thread.
class Counted {
public:
    explicit Counted(int value);                  ///< one more is alive
    Counted(const Counted& other);                ///< one more is alive
    ~Counted();                                   ///< one less is alive
    Counted& operator=(const Counted&) = default; ///< as many as before

    int value() const { return value_; } ///< what it was made with

    /// Gives a copy that the container owns; null for null.
    static void* checkIn(void* element);
    /// Destroys what checkIn() gave; nothing for null.
    static void checkOut(void* element);
    /// Orders by value; null comes first. Below 0, 0 or above 0.
    static int compare(const void* a, const void* b);
    /// Equal for equal values; 0 for null.
    static unsigned hash(const void* element);

    static int live() { return live_; } ///< how many exist now in the process

private:
    int value_;
    static int live_;
};

} // namespace moxkit
