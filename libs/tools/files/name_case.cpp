// SPDX-License-Identifier: Apache-2.0
// Whether a directory tells names apart by case is a matter of its file system, of its
// mount and sometimes of itself, and no call tells for all of them. So a name that is there
// is asked for in the other case, ASCII letters changed: that leads to the same file, or
// to none. Only a directory without such a name needs what the host knows of it.
#include "tools/files/KazDirectory.h"
#include "tools/files/detail/text.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <cwctype>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using kaz::detail::orEmpty;

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char inOtherCase(char c) {
    return isLetter(c) ? static_cast<char>(c ^ 0x20) : c;
}

char inLowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? inOtherCase(c) : c;
}

/// What NTFS has in its topmost directory and does not list; it is found by its name.
constexpr char unlisted[] = "$Volume";

/// What the entries tell; nothing when no name among them holds a letter.
std::optional<bool> toldByEntries(const KazDirectory& directory) {
    std::vector<KazDirectoryEntry> entries;
    directory.list("*", entries);
    entries.emplace_back().name = unlisted;
    for (const KazDirectoryEntry& entry : entries) {
        std::string other = entry.name.getValue();
        std::transform(other.begin(), other.end(), other.begin(), inOtherCase);
        KazFileStatus status, otherStatus;
        if (other == entry.name.getValue() || directory.getStatus(entry.name, status) != 0)
            // Without letters, or gone meanwhile: the next name may tell.
            continue;
        // Two entries may be two names of one file.
        const bool isEntry = std::any_of(entries.begin(), entries.end(), [&other](const auto& e) {
            return e.name == other.c_str();
        });
        return !isEntry && directory.getStatus(other.c_str(), otherStatus) == 0 &&
               status.isSameFile(otherStatus);
    }
    return {};
}

} // namespace

bool KazDirectory::ignoresCase() const {
    KazFileStatus own, around;
    if (getStatus(own) != 0)
        return false;
    KazDirectory directory = openSelf();
    while (directory.getStatus(around) == 0 && around.device == own.device) {
        if (const std::optional<bool> told = toldByEntries(directory))
            return *told;
        if (const std::optional<bool> known = directory.directory_->ignoresCase())
            return *known;
        KazDirectory parent = directory.openParent();
        // A parent that is the directory itself is the root, and one on another device has rules of
        // its own, which the condition of the loop looks at.
        KazFileStatus above;
        if (parent.getStatus(above) != 0 || above.isSameFile(around))
            break; // the topmost
        directory = std::move(parent);
    }
    // Nothing has told: as the host compares names in patterns.
    return matches("A", "a");
}

KazString KazDirectory::withoutCase(const char* name) {
    std::string text = orEmpty(name);
    // No text has more characters than bytes.
    std::vector<wchar_t> wide(text.size() + 1);
    const char* from = text.c_str();
    std::mbstate_t state{};
    const std::size_t length = std::mbsrtowcs(wide.data(), &from, wide.size(), &state);
    if (length == static_cast<std::size_t>(-1)) {
        std::transform(text.begin(), text.end(), text.begin(), inLowerCase);
        return text.c_str();
    }
    for (std::size_t i = 0; i < length; ++i)
        wide[i] = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(wide[i])));
    std::vector<char> upper(4 * length + 1); // no encoding in use takes more
    const wchar_t* back = wide.data();
    state = {};
    const std::size_t size = std::wcsrtombs(upper.data(), &back, upper.size() - 1, &state);
    if (size != static_cast<std::size_t>(-1) && back == nullptr)
        return upper.data();
    std::transform(text.begin(), text.end(), text.begin(), inLowerCase);
    return text.c_str();
}
