/// @file
/// Elements of the containers under test.
#pragma once

#include "kit/counted.h"

/// The value of a Counted in a slot; 0 for none.
inline int valueOf(const void* element) {
    return element ? static_cast<const kit::Counted*>(element)->value() : 0;
}
