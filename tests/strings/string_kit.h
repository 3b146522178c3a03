// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the tests of both string classes share: the same test text for either
/// width, and the invariants of the blocks.
#pragma once

#include "tools/strings/KazString.h"
#include "tools/strings/KazWString.h"
#include "tools/strings/detail/block_soundness.h"

#include <cstddef>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

template <class String>
using CharOf = std::remove_cvref_t<decltype(*std::declval<const String&>().getValue())>;

/// The letters x, y, z stand for characters beyond 255 in the wide class, so
/// that these go through every test.
template <class String>
CharOf<String> wideChar(char c) {
    const bool isHigh = sizeof(CharOf<String>) > 1 && c >= 'x' && c <= 'z';
    return static_cast<CharOf<String>>(isHigh ? 0x4E00 + c : static_cast<unsigned char>(c));
}

/// Terminated test text of the class's width.
template <class String>
class TestText {
public:
    TestText(const std::string& s) {
        for (const char c : s)
            units_.push_back(wideChar<String>(c));
        units_.push_back(0);
    }
    operator const CharOf<String>*() const { return units_.data(); }

private:
    std::vector<CharOf<String>> units_;
};

/// The text of @p s as test text.
template <class String>
std::string plain(const String& s) {
    std::string result;
    for (int i = 0; i < s.getLength(); ++i) {
        const auto c = s.getValue()[i];
        result += static_cast<char>(c >= 0x4E00 ? c - 0x4E00 : c);
    }
    return result;
}

template <class String>
const KazStringRep& blockOf(const String& s) {
    return *KazStringRep::of(s.disguise());
}

/// What is wrong with the blocks of @p strings, which hold the only references
/// to them; "" when nothing is.
template <class String>
std::string faultOf(const std::vector<String>& strings) {
    std::map<void*, int> holders;
    for (const String& s : strings)
        ++holders[s.disguise()];
    holders.erase(nullptr);
    for (const auto& [block, count] : holders) {
        const KazStringRep& rep = *KazStringRep::of(block);
        if (rep.referenceCount != count)
            return "count " + std::to_string(rep.referenceCount) + " of " + std::to_string(count);
        if (!kaz::detail::isSoundBlock(static_cast<const CharOf<String>*>(block)))
            return "length " + std::to_string(rep.stringLength) + " of " +
                   std::to_string(rep.bufferLength) + ", or no terminator";
    }
    return "";
}
