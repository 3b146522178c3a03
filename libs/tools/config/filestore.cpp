// SPDX-License-Identifier: Apache-2.0
// Names are put together in blocks of a fixed size. A part that does not fit is left out or
// refused as a whole, since half of a path is the name of another file; edit_get_sys_dir and
// edit_set_store_dir, which have no way to refuse, cut. The expansion of "~" may outgrow the
// caller's block, and the parts may lie in it: so names come together in blocks of our own
// and are copied when they are known to fit.
//
// A "~" that cannot be expanded stands for no directory, also where one of that very name
// is in the current directory.
#include "tools/config/filestore.h"

#include "tools/app/KazApp.h"
#include "tools/app/KazToolsContext.h"
#include "tools/config/detail/names.h"
#include "tools/config/detail/quoted_name.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

namespace {

using kaz::detail::appendPart;
using kaz::detail::copyCut;
using kaz::detail::orEmpty;
using kaz::detail::quotedName;

constexpr int nameLimit = kazFilestoreNameSize;
constexpr std::size_t nameSize = nameLimit;
// With the terminating NUL; a longer path is refused, though the blocks would hold it.
constexpr std::size_t sysFileSize = 141;

KazString filestoreDir() {
    const KazToolsContext* context = KazToolsContext::getInstance();
    return context != nullptr ? context->getFilestoreDir() : KazString();
}

const char* projectDir() {
    return kaz::detail::withoutTildeEscape(orEmpty(kaz_env_projdir()));
}

/// Sets the process's file-creation mask for a scope.
class ScopedMask {
public:
    // The mask belongs to the process: files that another thread makes meanwhile get it, too.
    explicit ScopedMask(unsigned long mask)
        : previous_(kaz::host::setFileMask(static_cast<unsigned>(mask))) {}
    ~ScopedMask() { kaz::host::setFileMask(previous_); }
    ScopedMask(const ScopedMask&) = delete;
    ScopedMask& operator=(const ScopedMask&) = delete;

private:
    unsigned previous_;
};

/// Does @p dir still begin with a "~" that means a home directory, because there was
/// no room for it or there is none? A directory of that very name is another one.
bool isUnexpanded(const char* dir) {
    return dir[0] == '~' && (dir[1] == '\0' || dir[1] == '\\' || dir[1] == '/');
}

bool isUsableDirectory(const char* dir) {
    // An empty name is the current directory, which is not asked about. Without the right to
    // write a read-only database can still be worked with.
    return *dir == '\0' || (!isUnexpanded(dir) && kaz::host::isDirectory(dir) &&
                            kaz::host::access(dir, kazIsDbReadonly() ? 5 : 7) == 0);
}

void appendIfItFits(char (&path)[nameSize], const char* part) {
    if (std::strlen(path) + std::strlen(part) + 1 < nameSize)
        kaz_fs_cat_dir(path, path + nameSize, part);
}

/// The path of a file of the current system, or empty when something it is made
/// of is missing or when it is too long.
KazString sysFilePath(const char* subdirectory, const char* name) {
    // A copy: the buffer of "~" is used again by the next expansion.
    KazString path = _TI_hm(projectDir());
    const char* system = orEmpty(kaz_env_system());
    if (!path || *system == '\0' || name == nullptr)
        return KazString();
    appendPart(path, system);
    if (*subdirectory != '\0')
        appendPart(path, subdirectory);
    appendPart(path, name);
    return static_cast<std::size_t>(path.getLength()) < sysFileSize ? path : KazString();
}

void report(const KazString& message) {
    const KazApp* app = KazApp::getInstance();
    // A graphical tool has no terminal where errors would be read.
    if (app != nullptr && app->isGraphical())
        print_msg("%s", message.getValue());
    else
        print_err("%s", message.getValue());
}

void reportOpenFailure(const char* name, int error) {
    const KazString file = quotedName(name);
    const KazString revision = quotedName(orEmpty(kaz_env_revision()));
    const std::string reason = kaz::host::errorText(error);
    KazString message;
    if (reason.empty())
        message.format("%s Revision %s: Undocumented system error: %d", file.getValue(),
                       revision.getValue(), error);
    else
        message.format("%s Revision %s: %.30s", file.getValue(), revision.getValue(),
                       reason.c_str());
    report(message);
}

std::FILE* openSysFile(const char* subdirectory, const char* name, const char* mode) {
    const KazString path = sysFilePath(subdirectory, name);
    if (!path || mode == nullptr)
        return nullptr;
    std::FILE* stream = kaz_fs_system_umask_fopen(path, mode);
    if (stream == nullptr) {
        // The report goes through a director, which may change errno.
        const int error = errno;
        reportOpenFailure(name, error);
        errno = error;
    }
    return stream;
}

} // namespace

KazString kaz::detail::systemDir() {
    return _TI_hm(kaz_env_system_dir());
}

int kazGetDbOpen() {
    const KazToolsContext* context = KazToolsContext::getInstance();
    return context != nullptr ? context->getDbOpen() : 0;
}

void kazSetDbOpen(int state) {
    if (KazToolsContext* context = KazToolsContext::getInstance())
        context->setDbOpen(state);
}

bool kazIsDbReadonly() {
    const KazToolsContext* context = KazToolsContext::getInstance();
    return context != nullptr && context->isDbReadonly();
}

void kazSetDbReadonly(bool readonly) {
    if (KazToolsContext* context = KazToolsContext::getInstance())
        context->setDbReadonly(readonly);
}

void kaz_fs_filestore_dir_asgn(const KazString& dir) {
    if (KazToolsContext* context = KazToolsContext::getInstance())
        context->setFilestoreDir(dir);
}

char* kaz_fs_filestore_path() {
    // Handed out as it is: callers keep the pointer and see the next question's answer in it.
    static char path[nameSize];
    const KazString project = projectDir();
    const KazString system = orEmpty(kaz_env_system());
    const KazString filestore = filestoreDir();
    path[0] = '\0';
    if (static_cast<std::size_t>(project.getLength()) < nameSize)
        copyCut(path, nameSize, project);
    appendIfItFits(path, system);
    // After the system, whether that has fitted or not.
    if (filestore)
        appendIfItFits(path, filestore);
    return path;
}

int kaz_fs_cat_dir(char* dir, const char* end, const char* sub) {
    if (dir == nullptr)
        return 1;
    const std::size_t length = std::strlen(dir);
    const bool hasSub = *orEmpty(sub) != '\0';
    // It would not fit the blocks below; nothing is written then.
    if (length >= nameSize)
        return hasSub ? 2 : isUsableDirectory(dir) ? 0 : 1;

    // A name of its own, because the expansion of "~" may outgrow dir.
    char name[nameSize];
    copyCut(name, nameSize, dir);
    edit_make_dir_name(name);
    // Without an end nothing beyond the present text may be used.
    const std::size_t room = end == nullptr ? length : end > dir ? std::size_t(end - dir) : 0;
    char joined[nameSize];
    const auto limit = static_cast<int>(std::min(room, nameSize));
    const bool fits = !hasSub || TI_catfile(name, sub, joined, limit) != nullptr;
    // Only from here on, because sub may be part of dir.
    if (std::strlen(name) < std::max(room, length + 1))
        std::strcpy(dir, name);
    if (!fits)
        return 2;
    if (!hasSub)
        return isUsableDirectory(name) ? 0 : 1;
    edit_make_dir_name(joined);
    // A "~" in sub may have grown beyond the caller's room.
    if (std::strlen(joined) >= room)
        return 2;
    std::strcpy(dir, joined);
    return isUsableDirectory(joined) ? 0 : 1;
}

unsigned long kaz_fs_file_umask(const char* path) {
    kaz::host::FileStatus status;
    if (kaz::host::status(_TI_hm(path), status) != 0)
        return kaz::host::fileMask();
    // The bits that differ from "all may read and write" are those to mask.
    return status.mode ^ 0666U;
}

unsigned long kaz_fs_system_umask() {
    return kaz_fs_file_umask(kazComposePath(kaz::detail::systemDir(), ".sys_file_mode"));
}

std::FILE* kaz_fs_system_umask_fopen(const char* path, const char* mode) {
    const ScopedMask mask(kaz_fs_system_umask());
    // A copy, because the expansion of another path takes its place.
    return TI_fopen(KazString(_TI_hm(path)), mode);
}

std::FILE* kaz_fs_open_sys_file(char* name, char* mode) {
    return openSysFile("", name, mode);
}

std::FILE* kaz_fs_open_filestore_file(char* name, char* mode) {
    return openSysFile(filestoreDir(), name, mode);
}

char* edit_get_sys_dir() {
    static char dir[nameSize];
    const KazString project = projectDir();
    const KazString system = orEmpty(kaz_env_system());
    copyCut(dir, nameSize, project);
    const bool fits = static_cast<std::size_t>(project.getLength()) < nameSize &&
                      kaz_fs_cat_dir(dir, dir + nameSize, system) != 2;
    // Cut, as there is no way to refuse; the message is all that tells.
    if (!fits) {
        KazString whole = project;
        appendPart(whole, system);
        copyCut(dir, nameSize, whole);
        print_err("System directory '%s': name too long:", quotedName(dir).getValue());
    }
    return dir;
}

int edit_make_dir_name(char* dir) {
    if (dir == nullptr || *dir == '\0')
        return -1;
    TI_userdir(dir, nameLimit);
    // It mostly exists: one look at it instead of two at each directory above it.
    if (!isUnexpanded(dir) && !kaz::host::isDirectory(dir))
        TI_makedir(dir, nameLimit);
    return 0;
}

int edit_set_store_dir() {
    static char remembered[nameSize];
    const char* system = orEmpty(kaz_env_system_dir());
    char name[nameSize] = "";
    // Only an open database has a directory of its own below the system's.
    if (kazGetDbOpen() == 1 && std::strlen(system) < nameSize) {
        copyCut(name, nameSize, system);
        if (kaz_fs_cat_dir(name, name + nameSize, filestoreDir()) != 0)
            name[0] = '\0';
    }
    if (name[0] == '\0')
        copyCut(name, nameSize, system);
    if (std::strcmp(name, remembered) != 0) {
        TI_Vasg("filestore", name);
        // Only now: an assignment that fails is tried again by the next call.
        copyCut(remembered, nameSize, name);
    }
    return 0;
}

void kaz_fs_make_absolute_dir(char* dir) {
    if (dir == nullptr || *dir == '\0')
        return;
    const KazString full = kazFullPath(dir);
    // What does not fit stays relative in the caller's block; the directory is made all the same.
    if (static_cast<std::size_t>(full.getLength()) < nameSize)
        copyCut(dir, nameSize, full);
    TI_makedir(full);
}
