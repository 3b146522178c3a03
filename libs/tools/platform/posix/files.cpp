// SPDX-License-Identifier: Apache-2.0
// Files by path. A native path that no file here can have, with a drive or a share in front, is
// refused with ENOENT before the system is asked: as plain text it might name some other file.
// Results are the system's, with calls repeated that a signal interrupted.
#include "tools/platform/host.h"
#include "tools/platform/posix/copy_at.h"
#include "tools/platform/posix/descriptor.h"
#include "tools/platform/posix/file_status.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace kaz::host {

namespace {

/// Calls @p operation with the host's spelling of a path that can name a file.
template <typename Operation>
int onHostPath(const char* path, Operation operation) {
    if (!canName(path))
        return failWith(ENOENT);
    const std::string name = hostPath(path);
    return retry([&] { return operation(name.c_str()); });
}

/// What mkstemp and its kin replace at the end of a template.
constexpr std::string_view placeholder = "XXXXXX";

std::string temporaryTemplate(const char* directory, const char* prefix) {
    std::string result = hostPath(directory);
    if (!result.empty() && result.back() != '/')
        result += '/';
    for (const char* c = prefix; *c != '\0'; ++c)
        result += *c == '/' || *c == '\\' || *c == ':' ? '_' : *c;
    return result.append(placeholder);
}

/// Fills the placeholder anew before each try: a try that failed has used it up.
template <typename Create>
auto createFrom(std::string& name, Create create) {
    return retry([&] {
        std::copy(placeholder.begin(), placeholder.end(), name.end() - placeholder.size());
        return create(name.data());
    });
}

/// Carries what the placeholder became over to the native path. Without an
/// allocation, so that nothing fails once the file is there.
void takeName(const std::string& created, std::string& nativeTemplate, std::string& path) {
    std::copy(created.end() - placeholder.size(), created.end(),
              nativeTemplate.end() - placeholder.size());
    path.swap(nativeTemplate);
}

} // namespace

int status(const char* path, FileStatus& result) {
    result = FileStatus();
    return onHostPath(path, [&](const char* name) { return statusAt(AT_FDCWD, name, 0, result); });
}

bool isDirectory(const char* path) {
    FileStatus info;
    return status(path, info) == 0 && info.kind == Kind::directory;
}

bool isRealDirectory(const char* path) {
    // A trailing separator would make the system follow a link at the end.
    std::string own = path;
    while (own.size() > 1 && (own.back() == '/' || own.back() == '\\'))
        own.pop_back();
    FileStatus info;
    return canName(path) &&
           statusAt(AT_FDCWD, hostPath(own.c_str()).c_str(), AT_SYMLINK_NOFOLLOW, info) == 0 &&
           info.kind == Kind::directory;
}

int access(const char* path, int mode) {
    const int wanted =
        ((mode & 4) != 0 ? R_OK : 0) | ((mode & 2) != 0 ? W_OK : 0) | ((mode & 1) != 0 ? X_OK : 0);
    return onHostPath(path, [&](const char* name) { return ::access(name, wanted); });
}

int makeDirectory(const char* path, unsigned mode) {
    return onHostPath(path, [&](const char* name) { return ::mkdir(name, mode); });
}

int removeDirectory(const char* path) {
    return onHostPath(path, [](const char* name) { return ::rmdir(name); });
}

int removeFile(const char* path) {
    return onHostPath(path, [](const char* name) { return ::unlink(name); });
}

unsigned fileMask() {
    // There is no other way to ask. Nothing that another thread creates in between is open to
    // anybody.
    const mode_t mask = ::umask(0777);
    ::umask(mask);
    return mask;
}

unsigned setFileMask(unsigned mask) {
    return ::umask(mask & 0777);
}

std::FILE* openStream(const char* path, const char* mode) {
    if (canName(path)) {
        const std::string name = hostPath(path);
        return retry([&] { return std::fopen(name.c_str(), mode); });
    }
    errno = ENOENT;
    return nullptr;
}

int copyFile(const char* source, const char* target, bool mayReplace) {
    return onHostPath(source, [&](const char* from) {
        return onHostPath(target, [&](const char* to) {
            CopyKnowledge nothing;
            CopyRules rules;
            rules.mayReplace = mayReplace;
            return copyAt({AT_FDCWD, from}, {AT_FDCWD, to}, rules, nothing);
        });
    });
}

std::FILE* createTemporary(const char* directory, const char* prefix, std::string& path) {
    if (!canName(directory)) {
        errno = ENOENT;
        return nullptr;
    }
    std::string name = temporaryTemplate(directory, prefix);
    std::string native = nativePath(name.c_str());
    Descriptor file(createFrom(name, [](char* place) { return ::mkostemp(place, O_CLOEXEC); }));
    if (!file.isOpen())
        return nullptr;
    std::FILE* stream = retry([&] { return ::fdopen(file.get(), "w+b"); });
    if (stream == nullptr) {
        ::unlink(name.c_str());
        return nullptr;
    }
    file.release();
    takeName(name, native, path);
    return stream;
}

int createTemporaryDirectory(const char* parent, const char* prefix, std::string& path) {
    if (!canName(parent))
        return failWith(ENOENT);
    std::string name = temporaryTemplate(parent, prefix);
    std::string native = nativePath(name.c_str());
    if (createFrom(name, ::mkdtemp) == nullptr)
        return -1;
    takeName(name, native, path);
    return 0;
}

} // namespace kaz::host
