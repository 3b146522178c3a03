// SPDX-License-Identifier: Apache-2.0
#include "testkit/temp_tree.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

namespace moxkit {

TempTree::TempTree(const std::string& parent) {
    const fs::path base = parent.empty() ? fs::temp_directory_path() : fs::path(parent);
    // Always ten digits: what a test meets with long paths is then the same in each run.
    std::uniform_int_distribution<std::uint32_t> numbers(1'000'000'000);
    std::random_device device;
    do
        root_ = (base / ("moxtest" + std::to_string(numbers(device)))).string();
    // False for one that exists: tests run side by side, and each gets a tree that it has made.
    while (!fs::create_directory(root_));
}

TempTree::~TempTree() {
    std::error_code error;
    // A test may have taken permissions away; removal needs them back.
    for (fs::recursive_directory_iterator it(root_, error), end; !error && it != end;
         it.increment(error))
        // Links are left alone: what they lead to is not the tree's.
        if (it->is_directory(error) && !it->is_symlink(error))
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, error);
    fs::remove_all(root_, error);
}

std::string TempTree::path(const std::string& name) const {
    return name.empty() ? root_ : fs::path(root_ + "/" + name).make_preferred().string();
}

std::string TempTree::native(const std::string& name) const {
    std::string text = path(name);
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

std::string TempTree::write(const std::string& name, const std::string& text) const {
    const fs::path file(path(name));
    fs::create_directories(file.parent_path());
    // The bytes as given, without line ends of the host.
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
}

std::string TempTree::read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string TempTree::readText(const std::string& name) const {
    std::ifstream file(path(name));
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string TempTree::mkdir(const std::string& name) const {
    fs::create_directories(path(name));
    return path(name);
}

bool TempTree::exists(const std::string& name) const {
    std::error_code error;
    return fs::exists(fs::symlink_status(path(name), error));
}

} // namespace moxkit
