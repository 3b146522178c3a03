#include "tools/files/detail/tree_level.h"

#include "tools/files/detail/text.h"
#include "tools/files/kazpath.h"

#include <algorithm>
#include <string_view>

namespace kaz::detail {

TreeLevel::TreeLevel(const KazString& path)
    : directory_(path.isEmpty() ? "." : path.getValue()), path_(path) {
    identify();
}

TreeLevel::TreeLevel(const TreeLevel& above, const std::string& name)
    : directory_(above.directory_, name), path_(above.pathOf(name)), above_(&above) {
    identify();
}

TreeLevel::TreeLevel(const TreeLevel& instead, const KazString& path) : TreeLevel(path) {
    above_ = instead.above_;
}

/// A directory that cannot be told from others could be walked for ever.
void TreeLevel::identify() {
    if (directory_.status(identity_) != 0)
        directory_ = host::Directory();
}

KazString TreeLevel::pathOf(const std::string& name) const {
    return joinPath(path_.getValue(), name);
}

bool TreeLevel::isSame(const TreeLevel& other) const {
    return isOpen() && other.isOpen() && identity_.device == other.identity_.device &&
           identity_.serial == other.identity_.serial;
}

bool TreeLevel::isAgain() const {
    const TreeLevel* level = above_;
    while (level != nullptr && !isSame(*level))
        level = level->above_;
    return level != nullptr;
}

std::size_t wildcardStart(const char* pattern) {
    const std::size_t last = std::string_view(pattern).find_last_of("\\/");
    if (last != std::string_view::npos)
        return last + 1;
    return kazIsAbsolutePath(pattern) ? static_cast<std::size_t>(kazRootPartLength(pattern)) : 0;
}

bool listEntries(const TreeLevel& level, const char* pattern, std::vector<host::Entry>& entries) {
    const bool complete = level.directory().list(pattern, entries) == 0;
    const auto isDots = [](const host::Entry& entry) {
        return entry.name == "." || entry.name == "..";
    };
    entries.erase(std::remove_if(entries.begin(), entries.end(), isDots), entries.end());
    return complete;
}

} // namespace kaz::detail
