#include "plan.h"

#include "names.h"
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

/// Does the file belong to the diagram: by its name under the naming rules, or
/// as the user spells it, alone or with a revision or suffix behind a point?
bool belongsTo(const KazString& file, const Diagram& diagram) {
    for (const KazString& name : {diagram.fileName, diagram.given}) {
        const int length = name.getLength();
        if (file.equalsN(name, length) && (file.getLength() == length || file[length] == '.'))
            return true;
    }
    return false;
}

class Lister {
public:
    explicit Lister(const CopyOptions& options)
        : options_(options), found_(options.diagrams.size()) {}

    Plan list() {
        pending_.push_back("");
        for (std::size_t i = 0; i < pending_.size(); ++i)
            listDirectory(KazString(pending_[i]));
        for (std::size_t i = 0; i < found_.size(); ++i)
            if (!found_[i])
                fail(options_.diagrams[i].given, "the system has no such diagram");
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
            fail(directory, "the directory cannot be read");
            return;
        }
        findUnspeakable(directory);
        PlannedDirectory planned{relative, {}};
        const std::set<KazString> matching = filtered(directory);
        for (const KazString& name : names) {
            if (TI_isRealDirectory(joined(directory, name)))
                pending_.push_back(joined(relative, name));
            else if (options_.filter.isEmpty() || matching.contains(name))
                addFile(planned, name);
        }
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

    void addFile(PlannedDirectory& planned, const KazString& name) {
        bool wanted = options_.diagrams.empty();
        for (std::size_t i = 0; i < found_.size(); ++i)
            if (belongsTo(name, options_.diagrams[i]))
                wanted = found_[i] = true;
        if (!wanted)
            return;
        planned.files.push_back(name);
        ++plan_.fileCount;
    }

    /// A host's file name may hold a backslash, which separates in native text:
    /// such a file cannot be named, but must not be forgotten in silence.
    void findUnspeakable(const KazString& directory) {
        std::error_code error;
        for (fs::directory_iterator i(hostPath(directory), error), end; !error && i != end;
             i.increment(error))
            if (i->path().filename().string().find('\\') != std::string::npos &&
                options_.diagrams.empty())
                fail(i->path().string().c_str(), "the name holds a backslash");
    }

    const CopyOptions& options_;
    std::vector<bool> found_;
    std::vector<KazString> pending_; ///< directories, each listed when its turn comes
    Plan plan_;
};

} // namespace

Plan makePlan(const CopyOptions& options) {
    return Lister(options).list();
}
