/// @file
/// The table of variables that the ToolInfo files define.
#pragma once

#include "tools/containers/KazStringToStringMap.h"
#include "tools/strings/KazString.h"

#include <memory>
#include <string_view>
#include <vector>

namespace kaz::detail {

/// One `name=value` of a file; the texts belong to whoever read them.
struct ToolInfoLine {
    std::string_view name;
    std::string_view value;
};

/// Splits one line of file syntax. False when it defines nothing. The views lie
/// in @p line.
bool parseToolInfoLine(std::string_view line, ToolInfoLine& result);

/// The definitions of a whole file's text, in its order.
std::vector<ToolInfoLine> parseToolInfoText(std::string_view text);

/// A string of characters that need not be terminated.
KazString makeString(std::string_view text);

/// Variable names with their values, and for each the file that gave it.
class ToolInfoTable {
public:
    /// The table of the process. It is never destroyed, because static objects
    /// of a tool look variables up in their destructors.
    static ToolInfoTable& instance();

    /// False, and nothing happens, when @p name has a definition and @p replace
    /// is false.
    bool define(const KazString& name, const KazString& value, bool replace);
    void remove(const KazString& name);
    bool find(const KazString& name, KazString& value) const;
    bool defines(const KazString& name) const;

    /// Defines all of @p lines as if one after the other, in time n log n
    /// whatever their order. When it throws, the table is as before.
    void defineAll(std::vector<ToolInfoLine> lines, const KazString& file, bool replace);

    /// The file that defines @p name; empty when that was no file.
    KazString fileOf(const KazString& name) const;

    /// Appends all names, in byte order.
    void appendNames(std::vector<KazString>& names) const;

private:
    struct Origin {
        KazString name;
        KazString file;
    };
    using Origins = std::vector<Origin>;

    ToolInfoTable();
    static Origins::const_iterator position(const Origins& origins, const KazString& name);
    const Origin* originOf(const KazString& name) const;

    // One bucket: the entries stand in byte order of their names, so that a file
    // merges in by walking both in step. `origins` has the same names in the
    // same order.
    std::unique_ptr<KazStringToStringMap> values;
    Origins origins;
};

} // namespace kaz::detail
