/// @file
/// Element functions that change the container that is calling them.
#pragma once

#include "kit/counted.h"
#include "kit/random.h"

#include <functional>

/// Counted's element functions; a third of their calls also run `action`, which
/// may use the container and so bring about further calls, to a limited depth.
struct Meddler {
    static inline std::function<void()> action;
    static inline kit::Random* random = nullptr;

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
