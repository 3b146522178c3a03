// SPDX-License-Identifier: Apache-2.0
// Entries are kept as they were given. Variables and "~" are expanded by each search, since
// a tool may assign them after it has made the path; one variable may stand for a list of
// directories. A name that is explicit is looked for nowhere else.
#include "tools/config/KazFilePath.h"

#include "tools/config/vstring.h"
#include "tools/files/detail/text.h"
#include "tools/files/home.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/platform/host.h"
#include "tools/util/detail/heap_ptr.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace host = kaz::host;
using kaz::detail::orEmpty;
using kaz::detail::toText;

namespace {

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
}

std::vector<KazString> split(const char* list) {
    std::vector<KazString> dirs;
    std::string_view rest = orEmpty(list);
    // Empty parts give no entry: two semicolons in a row do not mean the current directory.
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(';'), rest.size());
        const std::string_view dir = withoutBlanks(rest.substr(0, end));
        if (!dir.empty())
            dirs.push_back(toText(dir));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return dirs;
}

KazString withHome(const char* path) {
    return kazNormalizedPath(_TI_hm(path));
}

/// The directories that an entry stands for: a variable in it may hold a list.
std::vector<KazString> expanded(const KazString& entry) {
    char* text = nullptr;
    // Variables before the list is split, since a value may be a list; "~" after it, since each
    // part may begin with one.
    vstring_sub(entry.getValue(), &text);
    const kaz::detail::HeapPtr<char> owned(text);
    std::vector<KazString> dirs = split(text);
    for (KazString& dir : dirs)
        dir = withHome(dir.getValue());
    return dirs;
}

KazString joined(const std::vector<KazString>& dirs) {
    KazString text;
    for (const KazString& dir : dirs) {
        if (!text.isEmpty())
            text.append(';');
        text.append(dir);
    }
    return text;
}

bool isThere(const KazString& path, bool directory) {
    host::FileStatus info;
    return host::status(path.getValue(), info) == 0 &&
           (info.kind == host::Kind::directory) == directory;
}

/// Texts that have been met.
class Seen {
public:
    bool isNew(const KazString& text) { return texts_.insert(text.getValue()).second; }

private:
    std::unordered_set<std::string> texts_;
};

/// Calls @p visit with each path that @p name can mean until it returns true.
template <typename Visit>
void eachCandidate(const KazFilePath& path, const char* name, Visit visit) {
    if (*orEmpty(name) == '\0')
        return;
    if (kazIsExplicitPath(name)) {
        // What the visit answers does not matter: there is no second candidate.
        visit(withHome(name));
        return;
    }
    // Nothing but an unknown variable does not mean the current directory: it gives
    // no entry.
    for (int i = 0; i < path.getSize(); ++i)
        for (const KazString& dir : expanded(path.getDir(i)))
            if (visit(kazComposePath(dir.getValue(), name)))
                return;
}

KazString firstCandidate(const KazFilePath& path, const char* name, bool directory) {
    KazString result;
    eachCandidate(path, name, [&](const KazString& candidate) {
        if (!isThere(candidate, directory))
            return false;
        result = candidate;
        return true;
    });
    return result;
}

} // namespace

KazFilePath::KazFilePath(const char* list) : dirs_(split(list)) {}

void KazFilePath::set(const char* list) {
    dirs_ = split(list);
}

void KazFilePath::append(const char* list) {
    const std::vector<KazString> more = split(list);
    dirs_.insert(dirs_.end(), more.begin(), more.end());
}

void KazFilePath::prepend(const char* list) {
    const std::vector<KazString> more = split(list);
    dirs_.insert(dirs_.begin(), more.begin(), more.end());
}

bool KazFilePath::remove(const char* dir) {
    const KazString wanted = orEmpty(dir);
    // As file names compare, so without case, and all that match: an entry may stand there twice.
    return std::erase_if(dirs_, [&](const KazString& entry) {
               return kazFilenameCompare(entry.getValue(), wanted.getValue()) == 0;
           }) > 0;
}

void KazFilePath::clear() {
    dirs_.clear();
}

int KazFilePath::getSize() const {
    return static_cast<int>(dirs_.size());
}

bool KazFilePath::isEmpty() const {
    return dirs_.empty();
}

KazString KazFilePath::getDir(int index) const {
    return index >= 0 && index < getSize() ? dirs_[static_cast<std::size_t>(index)] : KazString();
}

KazString KazFilePath::getExpandedDir(int index) const {
    return joined(expanded(getDir(index)));
}

bool KazFilePath::contains(const char* dir) const {
    return std::any_of(dirs_.begin(), dirs_.end(), [&](const KazString& entry) {
        return kazFilenameCompare(entry.getValue(), dir) == 0;
    });
}

KazString KazFilePath::getText() const {
    return joined(dirs_);
}

KazString KazFilePath::find(const char* name) const {
    return firstCandidate(*this, name, false);
}

KazString KazFilePath::findDirectory(const char* name) const {
    return firstCandidate(*this, name, true);
}

int KazFilePath::findAll(const char* name, KazStringColl& found) const {
    const int before = found.getSize();
    Seen paths;
    eachCandidate(*this, name, [&](const KazString& candidate) {
        if (isThere(candidate, false) && paths.isNew(candidate))
            found.add(candidate);
        return false;
    });
    return found.getSize() - before;
}

int KazFilePath::findMatching(const char* pattern, KazStringColl& found) const {
    const int before = found.getSize();
    Seen names;
    eachCandidate(*this, pattern, [&](const KazString& candidate) {
        KazStringColl entries;
        read_a_dir(candidate.getValue(), entries);
        for (int i = 0; i < entries.getSize(); ++i) {
            const KazString name = entries[i].subStringFrom(entries[i].findLast('\\') + 1);
            if (isThere(entries[i], false) && names.isNew(name))
                found.add(entries[i]);
        }
        return false;
    });
    return found.getSize() - before;
}
