// SPDX-License-Identifier: Apache-2.0
#include "kit/host.h"

#include "testkit/process.h"

#include <algorithm>
#include <cctype>
#include <clocale>
#include <filesystem>
#include <windows.h>

namespace kit {

namespace fs = std::filesystem;

const bool hasDrives = true;

std::string currentDrive(char separator) {
    char full[MAX_PATH] = "";
    GetFullPathNameA(std::string(1, separator).c_str(), sizeof full, full, nullptr);
    return std::string(full).substr(0, 2);
}

bool isFileName(const std::string& name) {
    const auto forbidden = [](char c) {
        return c < ' ' || c > '~' || std::string("<>:\"/\\|?*").find(c) != std::string::npos;
    };
    return !name.empty() && name.back() != '.' && name.back() != ' ' &&
           std::none_of(name.begin(), name.end(), forbidden);
}

std::string localeOfC() {
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    const std::string result = std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_CTYPE, before.c_str());
    return result;
}

bool refusesWideFields() {
    return false;
}

std::string fullDevice() {
    return {};
}

std::string placeProgram(const std::string& name, const std::string& directory) {
    for (const fs::directory_entry& entry : fs::directory_iterator(moxkit::binDirectory()))
        if (entry.path().extension() == ".dll")
            fs::copy_file(entry.path(), fs::path(directory) / entry.path().filename());
    fs::copy_file(moxkit::binDirectory() + "\\" + name + ".exe", directory + "\\" + name + ".exe");
    return directory + "\\" + name;
}

} // namespace kit
