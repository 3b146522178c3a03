#include "plan.h"

#include "names.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

/// The names of a directory that match, in byte order, without "." and "..".
/// False when the directory cannot be listed: then not even "." is found.
bool listNames(const KazString& directory, const KazString& pattern,
               std::vector<KazString>& names) {
    KazStringColl entries;
    const int count = read_a_dir(joined(directory, pattern), entries);
    for (int i = 0; i < count; ++i) {
        const KazString& path = entries.getAt(i);
        const KazString name = path.subStringFrom(path.findLast('\\') + 1);
        if (name != "." && name != "..")
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return count > 0;
}

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
    bool contains(const KazString& file) {
        bool result = isAll();
        for (int end = file.find('.', 1); end > 0; end = file.find('.', end + 1))
            result = containsStem(file.subStringBefore(end)) || result;
        return containsStem(file) || result;
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
};

class Lister {
public:
    explicit Lister(const CopyOptions& options) : options_(options), selection_(options.diagrams) {}

    Plan list() {
        pending_.push_back("");
        for (std::size_t i = 0; i < pending_.size(); ++i)
            listDirectory(KazString(pending_[i]));
        for (const KazString& diagram : selection_.missing())
            fail(diagram, localText(texts::noDiagram));
        return std::move(plan_);
    }

private:
    void fail(const KazString& path, const char* reason) {
        plan_.failures.push_back({path, reason});
    }

    void listDirectory(const KazString& relative) {
        const KazString directory = joined(options_.source, relative);
        std::vector<KazString> names;
        if (!listNames(directory, "*", names)) {
            fail(shown(directory), localText(texts::unreadable));
            return;
        }
        findUnspeakable(directory);
        PlannedDirectory planned{relative, {}};
        const std::set<KazString> matching = filtered(directory);
        for (const KazString& name : names) {
            if (TI_isRealDirectory(joined(directory, name)))
                pending_.push_back(joined(relative, name));
            else if ((options_.filter.isEmpty() || matching.contains(name)) &&
                     selection_.contains(name))
                planned.files.push_back(name);
        }
        plan_.fileCount += planned.files.size();
        if (!planned.files.empty() || !options_.isRestricted())
            plan_.directories.push_back(std::move(planned));
    }

    /// The library decides what a wildcard matches, so it is asked.
    std::set<KazString> filtered(const KazString& directory) const {
        std::vector<KazString> names;
        if (!options_.filter.isEmpty())
            listNames(directory, options_.filter, names);
        return {names.begin(), names.end()};
    }

    /// A host's file name may hold a backslash, which separates in native text:
    /// such a file cannot be named, but must not be forgotten in silence.
    void findUnspeakable(const KazString& directory) {
        std::error_code error;
        for (fs::directory_iterator i(hostPath(directory), error), end; !error && i != end;
             i.increment(error))
            if (i->path().filename().string().find('\\') != std::string::npos && selection_.isAll())
                fail(i->path().string().c_str(), localText(texts::backslash));
    }

    const CopyOptions& options_;
    Selection selection_;
    std::vector<KazString> pending_; ///< directories, each listed when its turn comes
    Plan plan_;
};

} // namespace

Plan makePlan(const CopyOptions& options) {
    return Lister(options).list();
}
