// SPDX-License-Identifier: Apache-2.0
// The plan is made before anything is written, by one walk in the order of names, so that two
// runs over the same files do the same. It is a list of directories with their depths: a
// directory's children follow it, which is all that the copy needs to walk again. In a copy of
// chosen diagrams a directory that leads to no wanted file is taken out of the plan when the walk
// leaves it.
#include "plan.h"

#include "names.h"
#include "offers.h"
#include "owner.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {

/// The diagrams that are wanted, all when none was named.
class Selection {
public:
    explicit Selection(const std::vector<Diagram>& diagrams) : diagrams_(diagrams) {
        for (const Diagram& diagram : diagrams)
            wanted_.insert({diagram.fileName, diagram.given});
    }

    bool isAll() const { return diagrams_.empty(); }

    /// A file belongs to a diagram by its name under the naming rules, or as the
    /// user spells it, alone or with a revision or suffix behind a point.
    /// All stems are tried, also behind a hit: each diagram that the file may belong to counts as
    /// found.
    bool contains(const KazString& file) {
        bool result = isAll();
        // Asked for only where a diagram may be missing: the near names are looked for among these.
        if (!isAll())
            met_.insert(diagramOf(file));
        for (int end = file.find('.', 1); end > 0; end = file.find('.', end + 1))
            result = containsStem(file.subStringBefore(end)) || result;
        return containsStem(file) || result;
    }

    /// The diagrams of all files that were met.
    KazStringColl met() const {
        KazStringColl names;
        for (const KazString& diagram : met_)
            names.add(diagram);
        return names;
    }

    /// The diagrams of which no file was met, as the user spells them.
    std::vector<KazString> missing() const {
        std::vector<KazString> result;
        for (const Diagram& diagram : diagrams_)
            if (!found_.contains(diagram.fileName) && !found_.contains(diagram.given))
                result.push_back(diagram.given);
        return result;
    }

private:
    bool containsStem(const KazString& stem) {
        return wanted_.contains(stem) && (found_.insert(stem), true);
    }

    const std::vector<Diagram>& diagrams_;
    std::set<KazString> wanted_;
    std::set<KazString> found_;
    std::set<KazString> met_;
};

bool precedes(const KazDirectoryEntry& a, const KazDirectoryEntry& b) {
    return a.name < b.name;
}

/// One walk without recursion. The levels above are the directories in which it is
/// under way.
class Lister {
public:
    Lister(const CopyOptions& options, KazDirectory source)
        : options_(options), selection_(options.diagrams), cursor_(std::move(source)) {}

    Plan list() {
        listDirectory("");
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next < level.directories.size())
                enter(level.directories[level.next++]);
            else
                leave();
        }
        noteMissing();
        return std::move(plan_);
    }

private:
    struct Level {
        std::vector<KazString> directories; ///< names
        std::size_t next = 0;
        std::size_t planned = 0; ///< its place in the plan
    };

    void noteMissing() {
        const std::vector<KazString> missing = selection_.missing();
        const KazStringColl met = missing.empty() ? KazStringColl() : selection_.met();
        for (const KazString& diagram : missing)
            plan_.failures.add(kazPrintable(diagram),
                               localText(texts::noDiagram) + kazDidYouMean(diagram, met));
    }

    KazString path() const { return joined(options_.source, cursor_.getPath()); }

    void enter(const KazString& name) {
        if (cursor_.enter(name) != 0)
            plan_.failures.add(shownEntry(path(), name), localText(texts::unreadable));
        // Entered and not listed: no level stands for it, so the cursor goes back here.
        else if (!listDirectory(name))
            cursor_.leave();
    }

    /// A directory that neither holds a wanted file nor leads to one is no part of a
    /// restricted copy.
    void leave() {
        const PlannedDirectory& last = plan_.directories.back();
        if (options_.isRestricted() && last.files.empty() &&
            levels_.back().planned + 1 == plan_.directories.size())
            plan_.directories.pop_back();
        levels_.pop_back();
        cursor_.leave();
    }

    bool listDirectory(const KazString& name) {
        std::vector<KazDirectoryEntry> entries;
        if (cursor_.directory().list("*", entries) != 0) {
            plan_.failures.add(shown(path()), localText(texts::unreadable));
            return false;
        }
        std::sort(entries.begin(), entries.end(), precedes);
        Level level;
        level.planned = plan_.directories.size();
        PlannedDirectory planned{name, cursor_.getDepth(), cursor_.getStatus().mode, {}};
        for (const KazDirectoryEntry& entry : entries)
            sortIn(entry, level, planned);
        plan_.fileCount += planned.files.size();
        if (!planned.files.empty() || !options_.isRestricted())
            ++plan_.directoryCount;
        plan_.directories.push_back(std::move(planned));
        levels_.push_back(std::move(level));
        return true;
    }

    /// A name that native text cannot spell must not be forgotten in silence.
    void sortIn(const KazDirectoryEntry& entry, Level& level, PlannedDirectory& planned) {
        const bool isDirectory = entry.kind == KazFileKind::Directory;
        if (!entry.isNative) {
            if (selection_.isAll())
                plan_.failures.add(shownEntry(path(), entry.name), localText(texts::backslash));
        } else if (isDirectory && !isStaging(cursor_.directory(), entry))
            level.directories.push_back(entry.name);
        else if (!isDirectory && isFiltered(entry.name) && selection_.contains(entry.name))
            planned.files.push_back(entry);
    }

    bool isFiltered(const KazString& name) const {
        return options_.filter.isEmpty() || KazDirectory::matches(options_.filter, name);
    }

    const CopyOptions& options_;
    Selection selection_;
    KazTreeCursor cursor_;
    std::vector<Level> levels_;
    Plan plan_;
};

} // namespace

Plan makePlan(const CopyOptions& options, KazDirectory source) {
    return Lister(options, std::move(source)).list();
}
