// SPDX-License-Identifier: Apache-2.0
/// @file
/// Command lines for tests and harnesses.
#pragma once

#include <string>
#include <utility>
#include <vector>

/// argv as main gets it; argv[0] is "tool".
class Words {
public:
    Words(std::vector<std::string> words) : words_(std::move(words)) {
        words_.insert(words_.begin(), "tool");
        for (std::string& word : words_)
            pointers_.push_back(word.data());
        pointers_.push_back(nullptr);
    }
    int argc() const { return static_cast<int>(words_.size()); }
    char** argv() { return pointers_.data(); }

private:
    std::vector<std::string> words_;
    std::vector<char*> pointers_;
};
