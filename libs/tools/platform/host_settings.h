// SPDX-License-Identifier: Apache-2.0
/// @file
/// Where a user's settings are kept: the system's registry, or a private file where there
/// is none. Its conventions are those of host.h, which leaves it out: one class needs it.
/// Texts and names are UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kaz::host {

/// A type of its own: a variant of nothing but types that libstdc++ knows to move without
/// failing destroys what was never made when a copy runs out of memory (seen up to g++ 12).
struct SettingsList : std::vector<std::string> {};
using SettingsValue = std::variant<std::string, std::int64_t, double, bool, SettingsList>;

struct SettingsEntry {
    std::string name;
    SettingsValue value;
};

/// What a section holds, each name once and in the order of compareSettingsNames().
struct SettingsSection {
    std::vector<SettingsEntry> values;
    std::vector<std::string> sections; ///< those directly below
};

/// What shall become of one name: first it is taken away, then it gets a value. A name that
/// is there already keeps its spelling.
struct SettingsChange {
    std::string name;
    bool removes = false;
    std::optional<SettingsValue> value;
};

/// Changes of one section, the first of them first.
struct SettingsChanges {
    bool removesAll = false;             ///< its values, and all sections below it
    std::vector<SettingsChange> changes; ///< each name once, in their order

    bool isEmpty() const { return !removesAll && changes.empty(); }
};

/// Longest text of a value, in bytes, and most values of a list.
constexpr std::size_t mostOfSettingsText = 65535;
constexpr std::size_t mostOfSettingsList = 4096;

/// The order of names: bytes, ASCII letters in lower case. Below 0, 0, above 0.
int compareSettingsNames(std::string_view a, std::string_view b);

/// 1 to 200 bytes of UTF-8 without control characters, backslash and "/".
bool isSettingsName(std::string_view name);

/// Up to 16 such names with "/" between them; "" is the topmost section.
bool isSettingsPath(std::string_view path);

/// Carries out a change on what a section holds. Throws nothing but for lack of memory,
/// with the section unchanged.
void applySettingsChange(std::vector<SettingsEntry>& values, SettingsChange change);

/// One section, wherever it is kept. Nothing is open between the calls.
class SettingsStore {
public:
    /// @p section: see isSettingsPath().
    explicit SettingsStore(std::string section) : section_(std::move(section)) {}

    /// The section's registry key, or the native path of the file; empty where the user has
    /// no place for it.
    std::string place() const;

    /// Replaces @p result; by nothing where there is nothing, and when it fails. What is not
    /// understood, or of another type, is not there.
    int load(SettingsSection& result) const;

    /// Carries out the changes, which must be some. In a file all of them or none, under a
    /// lock for which it waits at most 5 seconds (then EWOULDBLOCK); in the registry one
    /// after the other, and on a failure @p changes are those that are left.
    int commit(SettingsChanges& changes) const;

private:
    std::string section_;
};

} // namespace kaz::host
