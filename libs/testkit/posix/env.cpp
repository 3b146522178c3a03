// SPDX-License-Identifier: Apache-2.0
#include "testkit/env.h"

#include <cstdlib>

namespace moxkit {

void setVariable(const char* name, const char* value) {
    if (value != nullptr)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

} // namespace moxkit
