// SPDX-License-Identifier: Apache-2.0
#include "kit/env.h"

#include <cstdlib>

namespace kit {

void setVariable(const char* name, const char* value) {
    ::_putenv((std::string(name) + '=' + (value ? value : "")).c_str());
}

} // namespace kit
