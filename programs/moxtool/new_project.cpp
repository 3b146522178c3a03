// SPDX-License-Identifier: Apache-2.0
// The project is made whole under a name of its own and renamed at the end, so that
// nobody ever sees half of one, and what is there is never written over. All is done by
// handles of directories, which no link can lead astray.

#include "commands.h"
#include "common/trace_options.h"
#include "moxtool/templates.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr KazCommandLine::Option options[] = {
    {arg_target, "DIR", "where it is made, instead of here", false, KazCommandLine::AnyDirectory},
    traceTopics,
    traceFile};

constexpr KazCommandLine commandLine({"moxtool new", MOX_VERSION,
                                      "Makes a project for a tool that builds, is tested and runs.",
                                      options, std::size(options), "NAME", 1, 1});

constexpr std::size_t longestName = 64;

/// Part of file names, of the build's description and of texts: nothing in it may need quotes.
bool isProjectName(std::string_view name) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const auto isPlain = [letters](char c) {
        return letters.find(c) != letters.npos || (c >= '0' && c <= '9') || c == '_' || c == '-';
    };
    return !name.empty() && name.size() <= longestName && letters.find(name[0]) != letters.npos &&
           std::all_of(name.begin(), name.end(), isPlain);
}

void replaceAll(std::string& text, std::string_view what, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += by.size())
        text.replace(at, what.size(), by);
}

/// Writes a file that is not there yet. False, with errno set, when it cannot be written.
bool writeFile(const KazDirectory& folder, const char* name, const std::string& text) {
    std::FILE* const file = folder.openFile(name, "wb");
    if (file == nullptr)
        return false;
    const bool isWhole = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const int reason = errno;
    const bool isClosed = std::fclose(file) == 0;
    if (!isWhole)
        errno = reason;
    return isWhole && isClosed;
}

/// A file of the project, as it is written.
struct ProjectFile {
    std::string folder; ///< "" is the project's own
    std::string name;
    std::string text;

    ProjectFile(const Template& source, const std::string& project)
        : name(source.name), text(source.text) {
        replaceAll(name, "@NAME@", project);
        replaceAll(text, "@NAME@", project);
        replaceAll(text, "@VERSION@", MOX_VERSION);
        if (const std::size_t separator = name.find('/'); separator != name.npos) {
            folder = name.substr(0, separator);
            name.erase(0, separator + 1);
        }
    }
};

/// A directory that is made under a name of its own. What goes with it is known before,
/// so that all can be taken away again without memory.
class Draft {
public:
    Draft(const KazDirectory& place, std::string name, const std::vector<ProjectFile>& files)
        : place_(place), name_(std::move(name)), files_(files) {}
    /// Away with it, unless it has got its name.
    ~Draft() {
        // Nothing was made, or it has its name: neither is this object's to remove.
        if (!isBegun_)
            return;
        for (const ProjectFile& file : files_)
            (file.folder.empty() ? project_ : sub_).removeFile(file.name.c_str());
        // Each file tries to remove its folder. There is one, and further tries fail quietly.
        for (const ProjectFile& file : files_)
            if (!file.folder.empty())
                project_.removeDirectory(file.folder.c_str());
        place_.removeDirectory(name_.c_str());
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    /// 0, or why it cannot be made.
    int begin() {
        if (place_.makeDirectory(name_.c_str(), 0777) != 0)
            return errno;
        isBegun_ = true;
        project_ = place_.openDirectory(name_.c_str());
        return project_.isOpen() ? 0 : errno;
    }

    /// 0, or why not all of it could be written, and @p name given to it.
    int finish(const std::string& name) {
        for (const ProjectFile& file : files_)
            if (!write(file))
                return errno;
        // Fails where the name is taken, also when it was taken meanwhile.
        if (place_.rename(name_.c_str(), place_, name.c_str(), false) != 0)
            return errno;
        isBegun_ = false;
        return 0;
    }

private:
    bool write(const ProjectFile& file) {
        if (!file.folder.empty() && !sub_.isOpen() && !makeSub(file.folder.c_str()))
            return false;
        const KazDirectory& folder = file.folder.empty() ? project_ : sub_;
        return writeFile(folder, file.name.c_str(), file.text) &&
               (!file.text.starts_with("#!") || folder.setMode(file.name.c_str(), 0755) == 0);
    }

    /// There is one such folder.
    bool makeSub(const char* name) {
        if (project_.makeDirectory(name, 0777) != 0)
            return false;
        sub_ = project_.openDirectory(name);
        return sub_.isOpen();
    }

    const KazDirectory& place_;
    std::string name_;
    const std::vector<ProjectFile>& files_;
    KazDirectory project_;
    KazDirectory sub_;
    bool isBegun_ = false;
};

int fail(const KazString& path, int reason) {
    const KazString host = kazHostPath(path);
    print_err("moxtool new: %s: %s", kazPrintable(host.getValue()).getValue(),
              std::generic_category().message(reason).c_str());
    return 1;
}

/// The status to end with; what is wrong has been said. @p where: native text, "" is here.
int makeProject(const std::string& name, const char* where) {
    const KazDirectory place(where);
    if (!place.isOpen())
        return fail(where, errno);
    std::vector<ProjectFile> files;
    for (int i = 0; i < templateCount; ++i)
        files.emplace_back(templates[i], name);
    const std::string draftName = "." + name + ".new";
    Draft draft(place, draftName, files);
    if (const int reason = draft.begin(); reason != 0)
        return fail(kazComposePath(where, draftName.c_str()), reason);
    const int reason = draft.finish(name);
    return reason == 0 ? 0 : fail(kazComposePath(where, name.c_str()), reason);
}

} // namespace

int newCommand(int argc, char** argv) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    const std::string name = kaz_arg_get_untagged(0);
    if (!isProjectName(name)) {
        commandLine.complain(
            "%s is no name for a project: a letter, then letters, digits, _ and -, 64 "
            "at most",
            kazPrintable(name.c_str()).getValue());
        return KazCommandLine::wrongUsage;
    }
    if (std::find(suitePrograms.begin(), suitePrograms.end(), name) != suitePrograms.end()) {
        commandLine.complain("%s is a program of the suite", name.c_str());
        return KazCommandLine::wrongUsage;
    }
    return makeProject(name, kaz_arg_text_or(arg_target, ""));
}
