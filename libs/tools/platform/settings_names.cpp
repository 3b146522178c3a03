// SPDX-License-Identifier: Apache-2.0
// What is the same wherever settings are kept.
#include "tools/platform/host_settings.h"
#include "tools/platform/utf8.h"

#include <algorithm>

namespace kaz::host {

namespace {

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
    constexpr std::size_t longest = 200;
    return !name.empty() && name.size() <= longest && name.find_first_of("\\/") == name.npos &&
           isUtf8(name) && !hasControl(name);
}

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
