// SPDX-License-Identifier: Apache-2.0
#include "kit/await.h"

#include <chrono>
#include <thread>

namespace kit {

std::string awaitText(const moxkit::TempTree& tree, const std::string& name) {
    for (int i = 0; i < 500; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(20)))
        if (const std::string text = tree.readText(name); !text.empty())
            return text;
    return "";
}

} // namespace kit
