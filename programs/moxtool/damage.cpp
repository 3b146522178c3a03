// SPDX-License-Identifier: Apache-2.0
#include "moxtool/damage.h"

#include "commands.h"
#include "tools/settings/KazProductInfo.h"

#include <algorithm>
#include <filesystem>

namespace {

bool isProgram(const std::string& part) {
    const std::string name = std::filesystem::path(part).stem().string();
    return std::find(suitePrograms.begin(), suitePrograms.end(), name) != suitePrograms.end();
}

} // namespace

Damage::Damage() {
    const KazProductInfo& info = KazProductInfo::getInstance();
    for (int i = 0; i < info.getPartCount(); ++i)
        if (info.verifyPart(i) != KazProductInfo::PartGood)
            parts_.emplace_back(info.getPart(i).path.getValue());
}

std::string Damage::problem() const {
    const KazProductInfo& info = KazProductInfo::getInstance();
    return info.getState() == KazProductInfo::Missing ? "" : info.getProblem().getValue();
}

std::vector<std::string> Damage::parts(bool programs) const {
    std::vector<std::string> result;
    for (const std::string& part : parts_)
        if (isProgram(part) == programs)
            result.push_back(part);
    return result;
}
