// SPDX-License-Identifier: Apache-2.0
// What is the same wherever settings are kept.
#include "tools/platform/host_settings.h"
#include "tools/platform/utf8.h"

#include <algorithm>

namespace kaz::host {

namespace {

/// ASCII only, whatever the locale: files are kept in this order, and another locale must find
/// their entries in the same place.
int lowered(char c) {
    const int byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte;
}

} // namespace

int compareSettingsNames(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i)
        if (a[i] != b[i] && lowered(a[i]) != lowered(b[i]))
            return lowered(a[i]) - lowered(b[i]);
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

bool isSettingsName(std::string_view name) {
    // Below the 255 characters of a key of the Windows registry, in bytes, so that any name can go
    // there.
    constexpr std::size_t longest = 200;
    return !name.empty() && name.size() <= longest && name.find_first_of("\\/") == name.npos &&
           isUtf8(name) && !hasControl(name);
}

/// A separator at the beginning, at the end or twice makes a name that is empty, which is none.
bool isSettingsPath(std::string_view path) {
    constexpr int mostNames = 16;
    if (path.empty())
        return true;
    for (int names = 1; names <= mostNames; ++names) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (!isSettingsName(path.substr(0, end)))
            return false;
        if (end == path.size())
            return true;
        path.remove_prefix(end + 1);
    }
    return false;
}

/// The values are in the order of their names, each of them once, before and after. A new value
/// keeps the spelling of the name that is there, unless the entry was removed in between and so
/// takes the new one.
void applySettingsChange(std::vector<SettingsEntry>& values, SettingsChange change) {
    auto place = std::lower_bound(values.begin(), values.end(), change.name,
                                  [](const SettingsEntry& entry, const std::string& name) {
                                      return compareSettingsNames(entry.name, name) < 0;
                                  });
    const bool isThere =
        place != values.end() && compareSettingsNames(place->name, change.name) == 0;
    if (isThere && change.value && !change.removes)
        place->value = std::move(*change.value);
    else if (isThere && change.value)
        *place = {std::move(change.name), std::move(*change.value)};
    else if (isThere && change.removes)
        values.erase(place);
    else if (change.value)
        values.insert(place, {std::move(change.name), std::move(*change.value)});
}

} // namespace kaz::host
