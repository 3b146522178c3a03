// SPDX-License-Identifier: Apache-2.0
// Names of projects, systems and diagrams: what the buffers of fixed size hold in
// the end is what a model without buffers says, and the directories are there.
#include "fuzz/directory.h"
#include "fuzz/harness.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "tools/app/KazMasterContext.h"
#include "tools/config/filestore.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Texts = std::vector<std::string>;

constexpr std::size_t nameSize = 140;

/// The home directory and the current one; everything happens inside it.
using fuzz::directory;

// ------------------------------------------------------------------- the model

bool isSeparator(char c) {
    return c == '\\' || c == '/';
}

/// "~" in front of a separator or alone is the tree. Where there is no room to say
/// so, the name means no directory.
bool leadsHome(const std::string& name) {
    return name.starts_with('~') && (name.size() == 1 || isSeparator(name[1]));
}

std::string atHome(const std::string& name) {
    if (!leadsHome(name))
        return name;
    return directory().native() + "\\" + (name.size() > 1 ? name.substr(2) : "");
}

/// The same where there is room for a name.
std::string atHomeIfItFits(const std::string& name) {
    const std::string expanded = atHome(name);
    return expanded.size() < nameSize ? expanded : name;
}

std::string joined(const std::string& dir, const std::string& part) {
    const bool separates = dir.empty() || isSeparator(dir.back());
    return dir + (separates ? "" : "\\") + part;
}

bool isDirectory(const std::string& name) {
    return fs::is_directory(kazHostPath(name.c_str()).getValue());
}

struct Appended {
    int status;
    std::string dir;
};

/// What kaz_fs_cat_dir leaves of @p dir in a buffer of @p room characters, and
/// its result when nothing is in the way of the directories.
Appended append(const std::string& dir, std::size_t room, const std::string& sub) {
    const std::string start = atHomeIfItFits(dir);
    const std::string left = start.size() < std::max(room, dir.size() + 1) ? start : dir;
    if (sub.empty())
        return {leadsHome(start) ? 1 : 0, left};
    std::string whole = kazNormalizedPath(joined(start, sub).c_str()).getValue();
    if (whole.size() >= std::min(room, nameSize))
        return {2, left};
    whole = atHomeIfItFits(whole);
    return whole.size() < room ? Appended{leadsHome(whole) ? 1 : 0, whole} : Appended{2, left};
}

std::string withoutEscape(const std::string& project) {
    return project.starts_with("\\~") ? project.substr(1) : project;
}

std::string underscored(std::string name, const std::string& illegal) {
    for (char& c : name)
        c = illegal.find(c) != illegal.npos ? '_' : c;
    return name;
}

std::string cleaned(std::string name) {
    if (name.starts_with('-'))
        name[0] = '_';
    return underscored(name, " `!#$^&*[]|\\:;\"',<>?/");
}

std::string withReplacements(const std::string& name) {
    return underscored(name, " *\"'`?![](){};/\\&");
}

// ------------------------------------------------------------------- the checks

/// Of this input.
fuzz::Failures* failures = nullptr;

/// What @p ask answers as a text, with the reports of the last time alone.
template <class Ask>
std::string asked(moxkit::RecordingDirector& director, Ask ask) {
    return failures->ask([&] {
        director.errors.clear();
        return std::string(ask());
    });
}

void compareReplacements(const std::string& name) {
    std::string copy(name.size() + 1, '#');
    failures->step([&] { kaz_diag_strcpy(copy.data(), name.c_str()); });
    FUZZ_CHECK(copy.c_str() == withReplacements(name));
    std::string inPlace = name;
    kaz_diag_strcpy(inPlace.data(), inPlace.c_str());
    FUZZ_CHECK(inPlace == withReplacements(name));
}

void compareLegality(fuzz::Input& input) {
    std::string diagram = input.cText(40);
    const std::string system = input.cText(3), project = input.cText(3);
    const bool hasProject = input.flag(), hasDatabase = input.flag(), report = input.flag();
    const int checks = input.byte();
    kaz_env_diagram_asgn(diagram.c_str());
    kaz_env_system_asgn(system.c_str());
    kaz_env_projdir_asgn(hasProject ? project.c_str() : nullptr);
    kaz_env_pdb_enabled_asgn(hasDatabase ? "1" : nullptr);

    moxkit::RecordingDirector director;
    const int result = failures->ask([&] {
        director.errors.clear();
        kaz_env_diagram_asgn(diagram.c_str());
        return edit_name_is_legal(checks, report);
    });
    Texts errors;
    if ((checks & 1) != 0 && diagram.empty())
        errors = {"Empty diagram name"};
    else if ((checks & 2) != 0 && system.empty())
        errors = {"Empty system name"};
    else if ((checks & 4) != 0 && (!hasProject || (hasDatabase && project.empty())))
        errors = {"Empty project directory name"};
    if ((checks & 1) != 0)
        diagram = cleaned(diagram);
    if (errors.empty() && (checks & 8) != 0 && diagram.find_first_of("*?[") != diagram.npos)
        errors = {"Invalid Diagram name: " + diagram};
    FUZZ_CHECK(result == (errors.empty() ? 1 : 0));
    FUZZ_CHECK(director.errors == (report ? errors : Texts()));
    FUZZ_CHECK(kaz_env_diagram() == diagram);
}

std::string takeLongText(fuzz::Input& input, std::size_t most) {
    return std::string(input.byte() % 4 == 0 ? input.between<std::size_t>(0, most) : 0, 'n') +
           input.cText(20);
}

void compareDiagramFile(fuzz::Input& input) {
    const std::string given = (input.flag() ? "~\\" : "") + takeLongText(input, 150);
    const std::string dir = atHome(given), store = takeLongText(input, 20);
    const std::string diagram = takeLongText(input, 150), revision = takeLongText(input, 80);
    const bool hasRevision = input.flag();
    kaz_env_system_dir_asgn(given.c_str());
    kaz_fs_filestore_dir_asgn(store.c_str());
    kaz_env_diagram_asgn(diagram.c_str());
    kaz_env_revision_asgn(hasRevision ? revision.c_str() : nullptr);

    std::string name = store.empty() ? dir : joined(dir, store);
    name = joined(name, withReplacements(diagram));
    Texts errors;
    if (hasRevision && (revision.empty() || revision.size() > 71))
        errors.push_back("Revision name '" + revision + "' too long, truncated");
    if (hasRevision && !revision.empty())
        name += "." + revision.substr(0, 71);
    if (name.size() > nameSize)
        errors.push_back("Filename too long '" + name + "'");
    moxkit::RecordingDirector director;
    FUZZ_CHECK(asked(director, edit_make_name) ==
               (diagram.empty() ? "" : name.substr(0, nameSize)));
    FUZZ_CHECK(director.errors == (diagram.empty() ? Texts() : errors));
}

/// Part of a path, of names that any host takes. With nothing in front of it, it
/// would lead out of the tree if it began with a separator.
std::string takePart(fuzz::Input& input) {
    std::string part = input.textOf("ab~\\/", 12);
    part.erase(0, std::min(part.find_first_not_of("\\/"), part.size()));
    return part + std::string(input.byte() % 4 == 0 ? input.between<std::size_t>(0, 150) : 0, 'p');
}

std::string takeProject(fuzz::Input& input) {
    const std::string fronts[] = {directory().native() + "\\", "~\\", "\\~\\", ""};
    return fronts[input.between(0, 3)] + takePart(input);
}

void compareAppending(fuzz::Input& input) {
    const std::string dir = withoutEscape(takeProject(input)), part = takePart(input);
    std::string buffer = dir;
    buffer.resize(std::max(dir.size() + 1, input.between<std::size_t>(0, 160)), '#');
    buffer[dir.size()] = '\0';
    const std::size_t room = buffer.size();
    const bool hasEnd = input.flag(), isOwnTail = input.flag();
    const std::size_t tail = isOwnTail ? input.between<std::size_t>(0, dir.size()) : 0;
    const std::string sub = isOwnTail ? dir.substr(tail) : part;
    const int status = kaz_fs_cat_dir(buffer.data(), hasEnd ? buffer.data() + room : nullptr,
                                      isOwnTail ? buffer.data() + tail : part.c_str());
    Appended expected = append(dir, hasEnd ? room : dir.size(), sub);
    if (dir.size() >= nameSize)
        // It is not made here, but a step with a shorter relative name may have made it.
        expected = {!sub.empty() ? 2 : isDirectory(dir) && !leadsHome(dir) ? 0 : 1, dir};
    FUZZ_CHECK(status == expected.status && buffer.c_str() == expected.dir);
    FUZZ_CHECK(status != 0 || expected.dir.empty() || isDirectory(atHomeIfItFits(expected.dir)));
}

struct Filestore {
    std::string path;
    bool isMade = false;
};

/// What kaz_fs_filestore_path gives: whatever part does not fit is left out, and
/// directories are made when a part is appended, even an empty one.
Filestore filestore(const std::string& project, const std::string& system,
                    const std::string& store) {
    Filestore result{project.size() < nameSize ? project : ""};
    for (const std::string& part : store.empty() ? Texts{system} : Texts{system, store})
        if (result.path.size() + part.size() + 1 < nameSize)
            result = {append(result.path, nameSize, part).dir, true};
    return result;
}

void comparePaths(fuzz::Input& input) {
    const std::string project = takeProject(input), system = takePart(input);
    const std::string store = takePart(input), meant = withoutEscape(project);
    kaz_env_projdir_asgn(project.c_str());
    kaz_env_system_asgn(system.c_str());
    kaz_env_system_dir_asgn(nullptr);
    kaz_fs_filestore_dir_asgn(store.c_str());
    kazSetDbOpen(input.between(0, 2));
    kazSetDbReadonly(input.flag());

    moxkit::RecordingDirector director;
    const std::string path = asked(director, kaz_fs_filestore_path);
    const Filestore expectedPath = filestore(meant, system, store);
    FUZZ_CHECK(path == expectedPath.path);
    FUZZ_CHECK(!expectedPath.isMade || path.empty() || leadsHome(path) || isDirectory(path));

    const std::string systemDir = asked(director, edit_get_sys_dir);
    const Appended expected = append(meant, nameSize, system);
    if (meant.size() < nameSize && expected.status != 2) {
        FUZZ_CHECK(systemDir == expected.dir && director.errors.empty());
    } else {
        FUZZ_CHECK(systemDir == joined(meant, system).substr(0, nameSize - 1));
        FUZZ_CHECK(director.errors ==
                   Texts{"System directory '" + systemDir + "': name too long:"});
    }

    // The directory of the present settings, assigned when it is another one.
    static std::string assigned;
    failures->step([] { FUZZ_CHECK(edit_set_store_dir() == 0); });
    const char* const stored = TI_Vcont("filestore");
    const std::string whole = kaz_env_system_dir() != nullptr ? kaz_env_system_dir() : "";
    const Appended inside = append(whole, nameSize, store);
    const bool usesStore = kazGetDbOpen() == 1 && whole.size() < nameSize && inside.status == 0;
    const std::string name = usesStore ? inside.dir : whole.substr(0, nameSize - 1);
    FUZZ_CHECK(name == assigned || name.empty() ? stored == nullptr || stored == atHome(name)
                                                : stored != nullptr && stored == atHome(name));
    assigned = name;
}

void compareAbsolute(fuzz::Input& input) {
    std::string dir = withoutEscape(takeProject(input));
    if (dir.empty())
        return;
    if (input.flag()) { // so that its full path is about as long as a name may be
        const auto length = static_cast<std::size_t>(kazFullPath(dir.c_str()).getLength());
        const std::size_t wanted = nameSize - 2 + input.between<std::size_t>(0, 4);
        dir.append(wanted - std::min(length, wanted), 'p');
    }
    if (dir.size() >= nameSize)
        return;
    char buffer[nameSize];
    const std::string full = kazFullPath(dir.c_str()).getValue();
    failures->step([&] {
        dir.copy(buffer, dir.size());
        buffer[dir.size()] = '\0';
        kaz_fs_make_absolute_dir(buffer);
    });
    FUZZ_CHECK(buffer == (full.size() < nameSize ? full : dir));
    FUZZ_CHECK(isDirectory(full));
}

} // namespace

void fuzz::harness(Input& input) {
    static const moxkit::ScopedEnv toolInfo("ToolInfo", "/no/such/file");
    static const moxkit::ScopedEnv home("HOME", directory().path().c_str());
    const moxkit::RecordingDirector quiet;
    const fs::path before = fs::current_path();
    fs::current_path(directory().path());
    for (const auto& entry : fs::directory_iterator("."))
        fs::remove_all(entry.path());
    KazMasterContext::getInstance()->setSlot(KazMasterContext::toolsSlot, nullptr);

    fuzz::Failures ofInput(input);
    failures = &ofInput;
    static constexpr void (*parts[])(Input&) = {compareLegality, compareDiagramFile,
                                                compareAppending, comparePaths, compareAbsolute};
    for (int steps = input.between(1, 6); steps > 0; --steps)
        input.pick(parts)(input);
    std::string rest = input.rest();
    std::erase(rest, '\0');
    compareReplacements(rest);
    fs::current_path(before);
}
