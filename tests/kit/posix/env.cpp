// SPDX-License-Identifier: Apache-2.0
#include "kit/env.h"

#include <cstdlib>

namespace kit {

void setVariable(const char* name, const char* value) {
    if (value)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

} // namespace kit
