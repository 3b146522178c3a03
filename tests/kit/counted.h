// SPDX-License-Identifier: Apache-2.0
/// @file
/// Elements that count their coming and going.
#pragma once

namespace kit {

/// A heap value with the element functions of the containers: checkIn makes a
/// copy, checkOut destroys it. live() tells how many copies exist.
class Counted {
public:
    explicit Counted(int value);
    Counted(const Counted& other);
    ~Counted();
    Counted& operator=(const Counted&) = default;

    int value() const { return value_; }

    static void* checkIn(void* element);
    static void checkOut(void* element);
    /// Orders by value; null comes first.
    static int compare(const void* a, const void* b);
    static unsigned hash(const void* element);

    static int live() { return live_; }

private:
    int value_;
    static int live_;
};

} // namespace kit
