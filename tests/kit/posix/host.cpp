// SPDX-License-Identifier: Apache-2.0
#include "kit/host.h"

#include "testkit/process.h"

#include <filesystem>

namespace kit {

const bool hasDrives = false;

std::string currentDrive(char) {
    return {};
}

bool isFileName(const std::string& name) {
    return !name.empty() && name.find('/') == std::string::npos;
}

std::string localeOfC() {
    return "C";
}

bool refusesWideFields() {
    return true;
}

std::string fullDevice() {
    return "/dev/full";
}

std::string placeProgram(const std::string& name, const std::string& directory) {
    for (const std::string& file : {std::string(KIT_LIBRARY), name})
        std::filesystem::copy_file(moxkit::binDirectory() + "/" + file, directory + "/" + file);
    return directory + "/" + name;
}

} // namespace kit
