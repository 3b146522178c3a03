// SPDX-License-Identifier: Apache-2.0
#include "testkit/env.h"

#include <cstdlib>

namespace moxkit {

void setVariable(const char* name, const char* value) {
    ::_putenv((std::string(name) + '=' + (value ? value : "")).c_str());
}

} // namespace moxkit
