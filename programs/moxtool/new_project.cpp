// SPDX-License-Identifier: Apache-2.0
// The project is made whole under a name of its own and renamed at the end, so that
// nobody ever sees half of one, and what is there is never written over. All is done by
// handles of directories, which no link can lead astray.

#include "commands.h"
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

namespace {

constexpr KazCommandLine::Option options[] = {
    {arg_target, "DIR", "where it is made, instead of here", false, KazCommandLine::AnyDirectory}};

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

class Project {
public:
    /// @p folder: native text, "" is here.
    Project(std::string name, const char* folder)
        : name_(std::move(name)),
          madeName_("." + name_ + ".new"),
          where_(folder),
          folder_(folder) {}

    /// The status to end with; what is wrong has been said.
    int make() const {
        if (!folder_.isOpen())
            return fail(where_, errno);
        if (folder_.makeDirectory(madeName_.c_str(), 0777) != 0)
            return fail(kazComposePath(where_, madeName_.c_str()), errno);
        if (isMade())
            return 0;
        const int reason = errno;
        folder_.removeTree(madeName_.c_str());
        return fail(kazComposePath(where_, name_.c_str()), reason);
    }

private:
    static int fail(const KazString& path, int reason) {
        const KazString host = kazHostPath(path);
        print_err("moxtool new: %s: %s", kazPrintable(host.getValue()).getValue(),
                  std::generic_category().message(reason).c_str());
        return 1;
    }

    /// False, with errno set, for one that is not.
    bool isMade() const {
        const KazDirectory project = folder_.openDirectory(madeName_.c_str());
        const auto isWritten = [&](const Template& file) { return write(project, file); };
        return project.isOpen() && std::all_of(templates, templates + templateCount, isWritten) &&
               folder_.rename(madeName_.c_str(), folder_, name_.c_str(), false) == 0;
    }

    bool write(const KazDirectory& project, const Template& file) const {
        std::string name = filled(file.name);
        const std::size_t separator = name.find('/');
        if (separator == name.npos)
            return writeInto(project, name, file);
        const std::string folder = name.substr(0, separator);
        if (project.makeDirectory(folder.c_str(), 0777) != 0 && errno != EEXIST)
            return false;
        return writeInto(project.openDirectory(folder.c_str()), name.substr(separator + 1), file);
    }

    bool writeInto(const KazDirectory& folder, const std::string& name,
                   const Template& file) const {
        const bool isProgram = file.text.starts_with("#!");
        return writeFile(folder, name.c_str(), filled(file.text)) &&
               (!isProgram || folder.setMode(name.c_str(), 0755) == 0);
    }

    std::string filled(std::string_view text) const {
        std::string result(text);
        replaceAll(result, "@NAME@", name_);
        replaceAll(result, "@VERSION@", MOX_VERSION);
        return result;
    }

    std::string name_;
    std::string madeName_;
    KazString where_;
    KazDirectory folder_;
};

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
    return Project(name, kaz_arg_text_or(arg_target, "")).make();
}
