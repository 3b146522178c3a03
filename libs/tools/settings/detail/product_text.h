// SPDX-License-Identifier: Apache-2.0
/// @file
/// The text of a product information file.
#pragma once

#include "tools/settings/KazProductInfo.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace kaz::detail {

constexpr std::size_t mostOfProductFile = std::size_t{4} << 20;

/// @name What a file can hold
/// @{
/// 1 to 40 letters, digits, "_" and "-", in lower case; one that has no meaning of its own.
bool isFreeProductKey(std::string_view key);
/// 1 to 1000 bytes of UTF-8 without control characters, no blank at either end.
bool isProductValue(std::string_view value);
/// An existing day, "2026-11-21".
bool isProductDate(std::string_view date);
/// "" or a word, which is not the "-" that stands for "".
bool isPartVersion(std::string_view version);
/// Below the root, with "/" and without ".", "..", empty names, ":" and backslashes: a file has
/// one such path.
bool isPartPath(std::string_view path);
/// @}

/// The value of a part's line.
std::string partValue(const KazProductInfo::Part& part);

/// Takes a text apart.
class ProductText {
public:
    /// Nothing of @p text is kept.
    explicit ProductText(std::string_view text);

    KazProductInfo::State state = KazProductInfo::Malformed;
    int errorLine = 0; ///< see KazProductInfo::getErrorLine()
    KazString name, version, date;
    int build = 0;
    std::vector<std::pair<KazString, KazString>> values;
    std::vector<KazProductInfo::Part> parts;

private:
    bool takeLine(std::string_view line);
    bool takeValue(std::string_view key, std::string_view value);
    bool takePart(std::string_view value);
    void addToSum(std::string_view line);

    std::set<std::string_view> paths_; ///< of the parts
    std::set<std::string_view> keys_;
    bool hasChecksum_ = false;
    std::uint32_t checksum_ = 0;
    std::uint32_t sum_ = 0; ///< of the lines before the checksum's
};

} // namespace kaz::detail
