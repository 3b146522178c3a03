#include "tools/files/KazFileManager.h"

#include "tools/files/detail/text.h"
#include "tools/files/detail/tree_level.h"
#include "tools/files/kazpath.h"
#include "tools/messages/KazIODirector.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::detail {

namespace {

/// The directory that a pattern with a directory part names from @p level.
TreeLevel elsewhere(const TreeLevel& level, const char* pattern) {
    const KazString composed = kazComposePath(level.path().getValue(), pattern);
    const std::string_view dir(composed.getValue(), wildcardStart(composed.getValue()));
    return TreeLevel(level, kazDirForDisplay(toText(dir).getValue()));
}

} // namespace

/// One copy: the walk, and the decision on every entry. Recursive, one source
/// and one target handle a level; where the handles run out the entry fails.
class TreeCopy {
public:
    TreeCopy(KazFileManager& manager, const char* pattern, bool recursive)
        : manager_(manager),
          pattern_(pattern),
          names_(pattern + wildcardStart(pattern)),
          recursive_(recursive) {}

    bool run(const TreeLevel& source, const TreeLevel& target) {
        top_ = &target;
        return copyDirectory(source, target);
    }

private:
    bool copyDirectory(const TreeLevel& source, const TreeLevel& target) {
        if (manager_.verbose)
            KazIODirector::printMsg("Starting copy from '%s' to '%s'.", source.path().getValue(),
                                    target.path().getValue());
        const std::time_t outer = std::exchange(manager_.startTime, std::time(nullptr));
        bool copied = false;
        if (!source.isOpen())
            failedDirectory(source);
        else if (names_ == pattern_)
            copied = copyEntries(source, target);
        else
            copied = copyFrom(elsewhere(source, pattern_), target);
        manager_.startTime = outer;
        return copied;
    }

    /// A directory that the pattern names need not be there; one that leads back
    /// to where the walk came from would never end.
    bool copyFrom(const TreeLevel& source, const TreeLevel& target) {
        if (!source.isOpen())
            return true;
        if (source.isAgain())
            return failedDirectory(source);
        return copyEntries(source, target);
    }

    bool copyEntries(const TreeLevel& source, const TreeLevel& target) {
        std::vector<host::Entry> entries;
        bool complete = listEntries(source, names_, entries);
        if (!complete)
            failedDirectory(source);
        for (const host::Entry& entry : entries)
            complete = copyEntry(source, entry, target) && complete;
        return complete;
    }

    bool copyEntry(const TreeLevel& source, const host::Entry& entry, const TreeLevel& target) {
        const char* name = entry.name.c_str();
        if (manager_.isExcluded(name)) {
            if (manager_.verbose)
                KazIODirector::printMsg("Skipping '%s'.", name);
            return true;
        }
        const bool isDirectory = entry.kind == host::Kind::directory;
        if (isDirectory && !recursive_)
            return true;
        if (!entry.expressible)
            return failed(source.pathOf(entry.name), name);
        if (isDirectory)
            return copySubdirectory(source, entry.name, target);
        if (!copyFile(source, entry, target))
            return failed(source.pathOf(entry.name), name);
        if (manager_.verbose)
            KazIODirector::printMsg("Copied '%s'.", name);
        return true;
    }

    bool copySubdirectory(const TreeLevel& source, const std::string& name,
                          const TreeLevel& target) {
        const TreeLevel from(source, name);
        // Below the destination the copy would feed on itself.
        if (from.isSame(*top_) || from.isAgain())
            return failed(from.path(), name.c_str());
        target.directory().makeDirectory(name, 0777);
        return copyDirectory(from, TreeLevel(target, name));
    }

    /// Tried as a new file first: most are, and need no look at the target then.
    bool copyFile(const TreeLevel& source, const host::Entry& entry, const TreeLevel& target) {
        if (source.directory().copyFile(entry, target.directory(), false) == 0)
            return true;
        const bool taken = errno == EEXIST;
        host::FileStatus existing; // missing also behind a dangling link
        const bool known = target.directory().status(entry.name, existing) == 0 || errno == ENOENT;
        if (existing.kind != host::Kind::missing && existing.modified >= manager_.startTime) {
            if (manager_.verbose)
                KazIODirector::printMsg("Filesystem naming clash on '%s'.", entry.name.c_str());
            return false;
        }
        return taken && known && source.directory().copyFile(entry, target.directory(), true) == 0;
    }

    bool failedDirectory(const TreeLevel& level) {
        const KazString path = kazDirForDisplay(level.path().getValue());
        return failed(path, kazLastFileComponent(path.getValue()).getValue());
    }

    /// Always false, for use as a result.
    bool failed(const KazString& path, const char* name) {
        manager_.addError(path);
        KazIODirector::printMsg("Failed to copy '%s'.", name);
        return false;
    }

    KazFileManager& manager_;
    const char* pattern_;
    const char* names_;
    bool recursive_;
    const TreeLevel* top_ = nullptr;
};

/// One deletion.
class TreeRemoval {
public:
    TreeRemoval(KazFileManager& manager, const char* pattern, bool recursive)
        : manager_(manager),
          pattern_(pattern),
          names_(pattern + wildcardStart(pattern)),
          recursive_(recursive) {}

    /// What cannot be listed has no entries here; its own removal tells.
    bool run(const TreeLevel& level) {
        if (names_ == pattern_)
            return removeEntries(level);
        const TreeLevel other = elsewhere(level, pattern_);
        return other.isAgain() || removeEntries(other);
    }

private:
    bool removeEntries(const TreeLevel& level) {
        std::vector<host::Entry> entries;
        listEntries(level, names_, entries);
        bool complete = true;
        for (const host::Entry& entry : entries)
            complete = removeEntry(level, entry) && complete;
        return complete;
    }

    bool removeEntry(const TreeLevel& level, const host::Entry& entry) {
        if (manager_.isExcluded(entry.name.c_str()))
            return true;
        const KazString path = level.pathOf(entry.name);
        if (entry.kind == host::Kind::directory)
            return !recursive_ || removeSubdirectory(level, entry, path);
        const bool removed = entry.expressible && level.directory().removeFile(entry.name) == 0;
        return report(removed, "Deleted '%s'.", "Failed to delete '%s'.", path);
    }

    bool removeSubdirectory(const TreeLevel& level, const host::Entry& entry,
                            const KazString& path) {
        const bool emptied = entry.expressible && run(TreeLevel(level, entry.name));
        const bool removed =
            entry.expressible && level.directory().removeDirectory(entry.name) == 0;
        return report(removed, "Deleted directory '%s'.", "Failed to delete directory '%s'.",
                      path) &&
               emptied;
    }

    bool report(bool removed, const char* success, const char* failure, const KazString& path) {
        if (!removed)
            manager_.addError(path);
        if (manager_.verbose)
            KazIODirector::printMsg(removed ? success : failure, path.getValue());
        return removed;
    }

    KazFileManager& manager_;
    const char* pattern_;
    const char* names_;
    bool recursive_;
};

} // namespace kaz::detail

using kaz::detail::TreeCopy;
using kaz::detail::TreeLevel;
using kaz::detail::TreeRemoval;

namespace {

/// Names that a copy of the tree can be given; "." and ".." would lead out.
bool isName(const KazString& last) {
    return !last.isEmpty() && last != "." && last != "..";
}

} // namespace

KazFileManager::KazFileManager(KazString root) : root(root) {}

void KazFileManager::setVerbose(bool verbose) {
    this->verbose = verbose;
}

void KazFileManager::setExclusion(KazString name) {
    exclusions.append('\n');
    exclusions.append(name);
    exclusions.append('\n');
}

void KazFileManager::clearExclusions() {
    exclusions.clear();
}

bool KazFileManager::copy(KazString dest, bool recursive) {
    return copyTree(dest, "*", recursive, true);
}

bool KazFileManager::copy(KazString dest, KazString pattern, bool recursive) {
    return copyTree(dest, pattern.getValue(), recursive, false);
}

bool KazFileManager::destroy(bool recursive) {
    if (!destroy("*", recursive))
        return false;
    if (kaz::host::removeDirectory(root.getValue()) != 0) {
        addError(root);
        if (verbose)
            KazIODirector::printMsg("Failed to delete directory '%s'.", root.getValue());
    }
    return true;
}

bool KazFileManager::destroy(KazString pattern, bool recursive) {
    errors.clear();
    return TreeRemoval(*this, pattern.getValue(), recursive).run(TreeLevel(root));
}

const KazString& KazFileManager::getErrors() const {
    return errors;
}

bool KazFileManager::copyTree(const KazString& dest, const char* pattern, bool recursive,
                              bool makeTop) {
    errors.clear();
    TreeCopy copy(*this, pattern, recursive);
    const KazString name = kazLastFileComponent(root.getValue());
    if (!makeTop || !isName(name)) {
        if (makeTop)
            kaz::host::makeDirectory(dest.getValue(), 0777);
        return copy.run(TreeLevel(root), TreeLevel(makeTop ? kazComposePath(dest, "") : dest));
    }
    const TreeLevel parent(dest);
    const std::string hostName = name.getValue();
    parent.directory().makeDirectory(hostName, 0777);
    return copy.run(TreeLevel(root), TreeLevel(parent, hostName));
}

bool KazFileManager::isExcluded(const char* name) const {
    if (exclusions.isEmpty())
        return false;
    const std::string line = std::string("\n") + name + '\n';
    return std::strstr(exclusions.getValue(), line.c_str()) != nullptr;
}

void KazFileManager::addError(const KazString& path) {
    if (!errors.isEmpty())
        errors.append('\n');
    errors.append(path);
}
