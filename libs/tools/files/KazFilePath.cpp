#include "tools/files/KazFilePath.h"

#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"
#include "tools/files/detail/text.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace host = kaz::host;
using kaz::detail::textOf;
using kaz::detail::toText;

namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
};

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
}

std::vector<KazString> split(const char* list) {
    std::vector<KazString> dirs;
    std::string_view rest = textOf(list);
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

KazString expanded(const KazString& dir) {
    char* text = nullptr;
    vstring_sub(dir.getValue(), &text);
    const std::unique_ptr<char, Free> owned(text);
    return withHome(text);
}

bool isThere(const KazString& path, bool directory) {
    host::FileStatus info;
    return host::status(path.getValue(), info) == 0 &&
           (info.kind == host::Kind::directory) == directory;
}

bool contains(const KazStringColl& found, int from, const KazString& path) {
    for (int i = from; i < found.getSize(); ++i) {
        if (found[i] == path)
            return true;
    }
    return false;
}

/// Calls @p visit with each path that @p name can mean until it returns true.
template <typename Visit>
void eachCandidate(const KazFilePath& path, const char* name, Visit visit) {
    if (*textOf(name) == '\0')
        return;
    if (kazIsExplicitPath(name)) {
        visit(withHome(name));
        return;
    }
    for (int i = 0; i < path.getSize(); ++i) {
        // Nothing but an unknown variable does not mean the current directory.
        const KazString dir = path.getExpandedDir(i);
        if (!dir.isEmpty() && visit(kazComposePath(dir.getValue(), name)))
            return;
    }
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
    const KazString wanted = textOf(dir);
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
    return index >= 0 && index < getSize() ? expanded(dirs_[static_cast<std::size_t>(index)])
                                           : KazString();
}

bool KazFilePath::contains(const char* dir) const {
    return std::any_of(dirs_.begin(), dirs_.end(), [&](const KazString& entry) {
        return kazFilenameCompare(entry.getValue(), dir) == 0;
    });
}

KazString KazFilePath::getText() const {
    KazString text;
    for (const KazString& dir : dirs_) {
        if (!text.isEmpty())
            text.append(';');
        text.append(dir);
    }
    return text;
}

KazString KazFilePath::find(const char* name) const {
    return firstCandidate(*this, name, false);
}

KazString KazFilePath::findDirectory(const char* name) const {
    return firstCandidate(*this, name, true);
}

int KazFilePath::findAll(const char* name, KazStringColl& found) const {
    const int before = found.getSize();
    eachCandidate(*this, name, [&](const KazString& candidate) {
        if (isThere(candidate, false) && !::contains(found, before, candidate))
            found.add(candidate);
        return false;
    });
    return found.getSize() - before;
}

int KazFilePath::findMatching(const char* pattern, KazStringColl& found) const {
    const int before = found.getSize();
    KazStringColl names;
    eachCandidate(*this, pattern, [&](const KazString& candidate) {
        KazStringColl entries;
        read_a_dir(candidate.getValue(), entries);
        for (int i = 0; i < entries.getSize(); ++i) {
            const KazString name = entries[i].subStringFrom(entries[i].findLast('\\') + 1);
            if (::contains(names, 0, name) || !isThere(entries[i], false))
                continue;
            names.add(name);
            found.add(entries[i]);
        }
        return false;
    });
    return found.getSize() - before;
}
