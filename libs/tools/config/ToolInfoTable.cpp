// SPDX-License-Identifier: Apache-2.0
// A file is read into one block, its Source, and a definition points into that: name and value
// are terminated in place, which costs no allocation for each line. A definition keeps its Source
// alive, so the pointers that callers were given stay good until that very name is defined again.
//
// Names are never taken out of the index. A removed definition has a null value, and the place is
// used again when the name comes back. put() cannot fail: makeRoom() has been called for it.
#include "tools/config/detail/ToolInfoTable.h"

#include "tools/app/exceptions/KazMemoryException.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kaz::detail {

namespace {

// Bytes without the newline. Files may rely on it: what is cut is read as a line of its own.
constexpr std::size_t lineLimit = 5120;

std::string_view trimmedBack(std::string_view text, std::string_view set) {
    return text.substr(0, text.find_last_not_of(set) + 1);
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

} // namespace

/// A line that is longer than the limit is cut, and what is left of it counts as the next line. A
/// NUL ends a line's text, as for everybody who reads terminated texts.
std::string_view takeToolInfoLine(std::string_view& text) {
    // A line of exactly the limit leaves its newline behind, which then reads as an empty line.
    std::string_view line = text.substr(0, lineLimit);
    line = line.substr(0, line.find('\n'));
    text.remove_prefix(std::min(line.size() + (line.size() < lineLimit ? 1 : 0), text.size()));
    return line.substr(0, line.find('\0'));
}

/// The parts point into @p line. The name is set also where the line has no name before its "=",
/// so that a check of the file can tell this from a line without "=".
bool parseToolInfoLine(std::string_view line, ToolInfoLine& result) {
    if (line.empty() || line.front() == '%' || line.front() == '.')
        return false;
    const std::size_t equals = line.find('=');
    if (equals == line.npos)
        return false;
    result.name = trimmed(line.substr(0, equals));
    result.value = trimmed(trimmedBack(line.substr(equals + 1), "\n\r \t"));
    return !result.name.empty();
}

const char* ToolInfoTable::find(std::string_view name) const {
    const Definition* definition = definitionOf(name);
    return definition != nullptr ? definition->value : nullptr;
}

const ToolInfoTable::Definition* ToolInfoTable::definitionOf(std::string_view name) const {
    const auto* slot = index_.find(TextProbe(name));
    return slot != nullptr ? &definitions_[slot->value] : nullptr;
}

/// After this, as many calls of put() cannot fail.
void ToolInfoTable::makeRoom(std::size_t more) {
    const std::size_t needed = definitions_.size() + more;
    // The index counts in 32 bits; a quarter leaves room for its slots.
    if (needed > std::numeric_limits<std::uint32_t>::max() / 4)
        throw KazMemoryException();
    if (needed > definitions_.capacity())
        // Doubled, because single definitions come in loops and would move the whole table each
        // time.
        definitions_.reserve(std::max(needed, 2 * definitions_.size()));
    index_.reserve(more);
}

void ToolInfoTable::put(Definition&& definition, bool replace) {
    const TextProbe probe(definition.name);
    const std::uint32_t hash = index_.hashOf(probe);
    auto* slot = index_.find(probe, hash);
    if (slot == nullptr) {
        const auto number = static_cast<std::uint32_t>(definitions_.size());
        // The index keeps the pointer into the source and no copy of the name.
        index_.add(definition.name.data(), number, probe.length(), hash);
        definitions_.push_back(std::move(definition));
        return;
    }
    Definition& old = definitions_[slot->value];
    if (!replace && old.value != nullptr)
        return;
    slot->key = definition.name.data(); // the old one may go with its source
    old = std::move(definition);
}

/// A definition with a text of its own.
ToolInfoTable::Definition ToolInfoTable::copyOf(const ToolInfoLine& line, const KazString& file) {
    auto source = std::make_shared<Source>();
    source->file = file;
    // The text is whole before anything points into it.
    source->text.reserve(line.name.size() + 1 + line.value.size());
    source->text.append(line.name).append(1, '\0').append(line.value);
    const char* text = source->text.c_str();
    return {{text, line.name.size()}, text + line.name.size() + 1, std::move(source)};
}

void ToolInfoTable::define(std::string_view name, std::string_view value, bool replace) {
    Definition definition = copyOf({name, value}, KazString());
    makeRoom(1);
    put(std::move(definition), replace);
}

void ToolInfoTable::remove(std::string_view name) {
    if (const auto* slot = index_.find(TextProbe(name)))
        // The source stays: callers may hold the pointer that they were given.
        definitions_[slot->value].value = nullptr;
}

void ToolInfoTable::defineAll(std::string text, const KazString& file, bool replace) {
    const auto source = std::make_shared<Source>(Source{std::move(text), file});
    char* const begin = source->text.data();
    std::vector<Definition> found;
    for (std::string_view rest = source->text; !rest.empty();) {
        ToolInfoLine line;
        if (!parseToolInfoLine(takeToolInfoLine(rest), line))
            continue;
        const char* const nameEnd = line.name.data() + line.name.size();
        const char* const valueEnd = line.value.data() + line.value.size();
        if (valueEnd == rest.data() && !rest.empty()) {
            // A line that was cut: behind it is the text of the next one.
            found.push_back(copyOf(line, file));
            continue;
        }
        // Both places belong to this line: the "=" or a blank in front of it, and the newline, a
        // blank, or the end of the text.
        begin[nameEnd - begin] = begin[valueEnd - begin] = '\0';
        found.push_back({line.name, line.value.data(), source});
    }
    // All are found before any is put: without memory the table stays as it was.
    makeRoom(found.size());
    for (Definition& definition : found)
        put(std::move(definition), replace);
}

KazString ToolInfoTable::fileOf(std::string_view name) const {
    const Definition* definition = definitionOf(name);
    return definition != nullptr ? definition->source->file : KazString();
}

void ToolInfoTable::appendNames(std::vector<KazString>& names) const {
    names.reserve(names.size() + definitions_.size());
    for (const Definition& definition : definitions_)
        if (definition.value != nullptr)
            names.emplace_back(definition.name.data());
}

} // namespace kaz::detail
