/// @file
/// Elements of the containers under test, and functions for them that change
/// the container which is calling.
#pragma once

#include "kit/counted.h"
#include "kit/random.h"

#include <functional>

/// The value of a Counted in a slot; 0 for none.
inline int valueOf(const void* element) {
    return element ? static_cast<const kit::Counted*>(element)->value() : 0;
}

/// Counted's element functions; a third of their calls also run `action`, which
/// may use the container and so bring about further calls, to a limited depth.
struct Meddler {
    static inline std::function<void()> action;
    static inline kit::Random* random = nullptr;

    static bool isAtWork() { return depth > 0; }

    static void* in(void* element) {
        void* copy = kit::Counted::checkIn(element);
        meddle(); // only now: the element may be among what it removes
        return copy;
    }
    static void out(void* element) {
        kit::Counted::checkOut(element);
        meddle();
    }

private:
    static inline int depth = 0;

    static void meddle() {
        if (!action || depth > 2 || !random->oneIn(3))
            return;
        ++depth;
        action();
        --depth;
    }
};
