// SPDX-License-Identifier: Apache-2.0
// The inventory is taken in one walk, before anything of the report is written, because its front
// tells the sums. What cannot be read is noted with its place, and what could be read of it
// counts: a report of a damaged project is what its owner needs. Everything is sorted by name, so
// that the same project gives the same report.
#include "inventory.h"

#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

/// A longer path can be given to no program, nor be shown to anybody.
constexpr int longestPath = 4096;

std::string_view viewOf(const KazString& text) {
    return {text.getValue(), static_cast<std::size_t>(text.getLength())};
}

KazString joined(const KazString& directory, const KazString& name) {
    if (directory.isEmpty() || name.isEmpty())
        return directory + name;
    return directory + '/' + name;
}

std::string reasonOf(int error) {
    // No failure of the place: the same would be met at all that follow.
    if (error == ENOMEM)
        throw KazMemoryException();
    return std::generic_category().message(error != 0 ? error : EIO);
}

/// Does revision @p a come before @p b? Numbers do by their value, and before other texts.
/// Leading zeros are no part of the value, and the length tells the larger of two long numbers:
/// revisions need not fit an integer.
bool isOlder(const KazString& a, const KazString& b) {
    const bool areNumbers = text_is_integer(a);
    // Different kinds never mix, so the order is one and the newest does not depend on the listing.
    if (areNumbers != text_is_integer(b))
        return areNumbers;
    std::string_view first = viewOf(a), second = viewOf(b);
    if (areNumbers) {
        first.remove_prefix(std::min(first.find_first_not_of('0'), first.size()));
        second.remove_prefix(std::min(second.find_first_not_of('0'), second.size()));
        if (first.size() != second.size())
            return first.size() < second.size();
    }
    return first < second;
}

/// Finds out of what files a system's diagrams consist.
class DiagramCount {
public:
    /// @p name of a file in @p folder of the system.
    void add(const KazString& folder, const KazString& name, const KazFileStatus& status) {
        const bool isRevision = folder == "filestore";
        const auto point = viewOf(name).rfind('.');
        // A name that begins with its only point has no diagram's name in front of it.
        if (status.kind != KazFileKind::File || point == 0 || !(isRevision || folder.isEmpty()))
            return;
        if (!isRevision && (point == viewOf(name).npos || viewOf(name).substr(point) != ".dgm"))
            return;
        if (point == viewOf(name).npos)
            return find(name).totals.add(status);
        Diagram& diagram = find(name.subStringBefore(static_cast<int>(point)));
        diagram.totals.add(status);
        if (isRevision)
            addRevision(diagram, name.subStringFrom(static_cast<int>(point) + 1));
    }

    std::vector<Diagram> take() {
        std::vector<Diagram> result;
        for (auto& [name, diagram] : diagrams_)
            result.push_back(std::move(diagram));
        return result;
    }

private:
    Diagram& find(const KazString& name) {
        Diagram& diagram = diagrams_[name];
        diagram.name = name;
        return diagram;
    }

    static void addRevision(Diagram& diagram, const KazString& revision) {
        if (diagram.revisions++ == 0 || isOlder(diagram.newest, revision))
            diagram.newest = revision;
    }

    std::map<KazString, Diagram> diagrams_;
};

/// One walk through a system, without recursion. The levels are the directories in which it
/// is under way.
class SystemReader {
public:
    SystemReader(const ReportOptions& options, Failures& failures)
        : options_(options), failures_(failures) {}

    System read(const KazString& name, KazDirectory top, KazProgressHandle& progress,
                double share) {
        system_.name = name;
        KazTreeCursor cursor(std::move(top));
        listDirectory(cursor, "");
        // The top's directories tell how far the walk is; one step more is for its own files.
        const double step = share / static_cast<double>(levels_.back().directories.size() + 1);
        while (!levels_.empty()) {
            Level& level = levels_.back();
            // One step for each directory of the top, and the last one when it is left.
            if (levels_.size() == 1)
                progress.increment(step, false);
            if (level.next < level.directories.size()) {
                enter(cursor, level.directories[level.next++]);
            } else {
                levels_.pop_back();
                cursor.leave();
            }
        }
        system_.diagrams = diagrams_.take();
        return std::move(system_);
    }

private:
    struct Level {
        std::vector<KazString> directories; ///< names
        std::size_t next = 0;
        KazString path;
    };

    void fail(const KazString& path, const std::string& reason) {
        failures_.add(kazPrintable(joined(system_.name, path)), reason.c_str());
    }

    void enter(KazTreeCursor& cursor, const KazString& name) {
        const KazString path = joined(levels_.back().path, name);
        // Before entering: trees may be deeper than any report could show.
        if (path.getLength() > longestPath)
            fail(path.subStringBefore(100) + "...", reasonOf(ENAMETOOLONG));
        else if (cursor.enter(name) != 0)
            fail(path, reasonOf(errno));
        else
            listDirectory(cursor, path);
    }

    /// What was read before a failure counts.
    void listDirectory(const KazTreeCursor& cursor, const KazString& path) {
        std::vector<KazDirectoryEntry> entries;
        if (cursor.directory().list("*", entries) != 0)
            fail(path, reasonOf(errno));
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
        Level level{{}, 0, path};
        Folder folder{path, {}};
        for (const KazDirectoryEntry& entry : entries)
            if (entry.kind == KazFileKind::Directory)
                level.directories.push_back(entry.name);
            else if (isWanted(entry.name))
                addFile(cursor.directory(), entry.name, folder);
        levels_.push_back(std::move(level));
        if (!folder.files.empty())
            system_.folders.push_back(std::move(folder));
    }

    bool isWanted(const KazString& name) const {
        return options_.filter.isEmpty() || KazDirectory::matches(options_.filter, name);
    }

    /// A file that is gone by now is no failure.
    void addFile(const KazDirectory& directory, const KazString& name, Folder& folder) {
        ReportedFile file{name, {}};
        if (directory.getStatus(name, file.status) != 0) {
            if (errno != ENOENT)
                fail(joined(folder.path, name), reasonOf(errno));
            return;
        }
        system_.totals.add(file.status);
        diagrams_.add(folder.path, name, file.status);
        folder.files.push_back(std::move(file));
    }

    const ReportOptions& options_;
    Failures& failures_;
    System system_;
    DiagramCount diagrams_;
    std::vector<Level> levels_;
};

class ProjectReader {
public:
    ProjectReader(const ReportOptions& options, const KazDirectory& top)
        : options_(options), top_(top) {}

    Inventory read(KazProgressHandle& progress, double share) {
        const std::vector<KazString> systems = listSystems();
        for (const KazString& name : systems)
            readSystem(name, progress, share / static_cast<double>(systems.size()));
        return std::move(inventory_);
    }

private:
    // A system that was asked for is not looked for: when it is opened it is there or a failure.
    std::vector<KazString> listSystems() {
        if (!options_.system.isEmpty())
            return {options_.system};
        std::vector<KazDirectoryEntry> entries;
        if (top_.list("*", entries) != 0)
            inventory_.failures.add(".", reasonOf(errno).c_str());
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
        std::vector<KazString> systems;
        for (const KazDirectoryEntry& entry : entries)
            if (entry.kind != KazFileKind::Directory)
                addFile(entry.name);
            // Hidden directories are those of version control and editors.
            else if (entry.name[0] != '.')
                systems.push_back(entry.name);
        return systems;
    }

    void addFile(const KazString& name) {
        ReportedFile file{name, {}};
        if (!options_.filter.isEmpty() && !KazDirectory::matches(options_.filter, name))
            return;
        if (top_.getStatus(name, file.status) == 0)
            inventory_.files.push_back(std::move(file));
        else if (errno != ENOENT)
            inventory_.failures.add(kazPrintable(name), reasonOf(errno).c_str());
    }

    void readSystem(const KazString& name, KazProgressHandle& progress, double share) {
        KazDirectory directory = top_.openDirectory(name);
        if (!directory.isOpen()) {
            inventory_.failures.add(kazPrintable(name), reasonOf(errno).c_str());
            // Its share is done, too, or the bar would never fill.
            progress.increment(share, false);
            return;
        }
        System system = SystemReader(options_, inventory_.failures)
                            .read(name, std::move(directory), progress, share);
        inventory_.totals.add(system.totals);
        inventory_.systems.push_back(std::move(system));
    }

    const ReportOptions& options_;
    const KazDirectory& top_;
    Inventory inventory_;
};

} // namespace

void Totals::add(const KazFileStatus& status) {
    const bool hasSize = status.kind == KazFileKind::File;
    add(Totals{1, hasSize ? status.size : 0, status.modified});
}

void Totals::add(const Totals& other) {
    // The date of no files is none; it may lie after the dates of old files.
    if (other.files > 0)
        modified = files > 0 ? std::max(modified, other.modified) : other.modified;
    files += other.files;
    bytes += other.bytes;
}

Inventory takeInventory(const ReportOptions& options, const KazDirectory& top,
                        KazProgressHandle& progress, double share) {
    return ProjectReader(options, top).read(progress, share);
}
