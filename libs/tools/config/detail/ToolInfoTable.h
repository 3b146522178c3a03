// SPDX-License-Identifier: Apache-2.0
/// @file
/// The table of variables that the ToolInfo files define.
#pragma once

#include "tools/strings/KazString.h"
#include "tools/util/detail/TextIndex.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::detail {

/// One `name=value` in file syntax; the texts belong to whoever read them.
struct ToolInfoLine {
    std::string_view name;
    std::string_view value;
};

/// The first line of @p text without its end, cut at the limit of a line and at a NUL
/// byte; it is taken off the text.
std::string_view takeToolInfoLine(std::string_view& text);

/// Splits one line of file syntax. False when it defines nothing. The views lie
/// in @p line.
bool parseToolInfoLine(std::string_view line, ToolInfoLine& result);

/// Variable names with their values, and for each the file that gave it.
class ToolInfoTable {
public:
    /// Does nothing when @p name has a definition and @p replace is false.
    void define(std::string_view name, std::string_view value, bool replace);
    void remove(std::string_view name);
    bool defines(std::string_view name) const { return find(name) != nullptr; }

    /// The value, good until it is replaced; null when @p name is not defined.
    const char* find(std::string_view name) const;

    /// Defines what the lines of a file say, as if one after the other: the last
    /// definition of a name counts when @p replace is true, else the first one
    /// ever. When it throws, the table is as before.
    void defineAll(std::string text, const KazString& file, bool replace);

    /// The file that defines @p name; empty when that was no file.
    KazString fileOf(std::string_view name) const;

    /// Appends all names, in no order.
    void appendNames(std::vector<KazString>& names) const;

private:
    /// Where definitions lie: the text of a file, in which names and values are
    /// terminated in place, or a text made for one of them. Loading 100000
    /// variables takes 11 ms so; with a string for each name and value in a
    /// sorted table it took 63.
    struct Source {
        std::string text;
        KazString file;
    };
    struct Definition {
        std::string_view name;
        const char* value; ///< null when it was removed
        std::shared_ptr<const Source> source;
    };
    static Definition copyOf(const ToolInfoLine& line, const KazString& file);
    const Definition* definitionOf(std::string_view name) const;
    void makeRoom(std::size_t more);
    void put(Definition&& definition, bool replace);

    std::vector<Definition> definitions_; ///< in the order in which they came
    TextIndex<std::uint32_t> index_{0};   ///< their places there
};

} // namespace kaz::detail
