// SPDX-License-Identifier: Apache-2.0
// Paths come in native text and go to the host as they are; errno is the host's when a function
// fails, and every such failure can be traced. Names of temporary files are handed over together
// with the file, so that nobody can take the name in between.
#include "tools/files/tifiles.h"

#include "tools/files/detail/pattern.h"
#include "tools/files/detail/text.h"
#include "tools/files/detail/traced.h"
#include "tools/files/kazpath.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace host = kaz::host;
using kaz::detail::isSeparator;
using kaz::detail::orEmpty;
using kaz::detail::toText;
using kaz::detail::traced;

namespace {

int failWith(int number) {
    errno = number;
    return -1;
}

/// Made or there already, perhaps by somebody else in between: both are what the caller wants.
int makeOne(const std::string& dir) {
    if (host::makeDirectory(dir.c_str(), 0777) == 0)
        return traced(0, "make directory", dir.c_str());
    // The look at the directory would replace it.
    const int reason = errno;
    return host::isDirectory(dir.c_str()) ? 0
                                          : traced(failWith(reason), "make directory", dir.c_str());
}

/// The directory to list and what its entries' paths begin with. In the current
/// directory an entry such as "~" or "c:x" would not stay there without ".\".
std::string entryPath(const std::string& prefix, const std::string& name) {
    if (prefix.empty() && kazIsExplicitPath(name.c_str()) && name != "." && name != "..")
        return ".\\" + name;
    return prefix + name;
}

struct CloseStream {
    void operator()(FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<FILE, CloseStream>;

std::string temporaryPlace(const char* dir) {
    return *orEmpty(dir) != '\0' ? dir : host::temporaryDirectory();
}

} // namespace

KazString kazHostPath(const char* native) {
    return toText(host::hostPath(orEmpty(native)));
}

KazString kazNativePath(const char* hostSpelling) {
    return toText(host::nativePath(orEmpty(hostSpelling)));
}

char* TI_catfile(const char* dir, const char* name, char* out, int size) {
    const KazString path = kaz::detail::joinPath(orEmpty(dir), orEmpty(name));
    if (out == nullptr || path.getLength() >= size)
        return nullptr;
    std::memcpy(out, path.getValue(), static_cast<std::size_t>(path.getLength()) + 1);
    return out;
}

int TI_makedir(const char* dir) {
    const std::string path = orEmpty(dir);
    // From the top down, each step at once: no look whether it is there, since between look and
    // making others may make it or take it away.
    for (std::size_t i = static_cast<std::size_t>(kazRootPartLength(dir)); i < path.size(); ++i) {
        // Each separator that ends a component, once, however many stand in a row; the root is
        // never made.
        const bool endsComponent = isSeparator(path[i]) && i > 0 && !isSeparator(path[i - 1]);
        if (endsComponent && makeOne(path.substr(0, i)) != 0)
            return -1;
    }
    return makeOne(path);
}

int TI_makedir(const char* dir, int limit) {
    if (static_cast<long long>(std::strlen(orEmpty(dir))) >= limit)
        return failWith(ENAMETOOLONG);
    return TI_makedir(dir);
}

int TI_mkdir(const char* dir, int mode) {
    return traced(host::makeDirectory(orEmpty(dir), static_cast<unsigned>(mode)), "make directory",
                  dir);
}

FILE* TI_fopen(const char* path, const char* mode) {
    return traced(host::openStream(orEmpty(path), orEmpty(mode)), "open", path);
}

bool TI_isTerminal(FILE* stream) {
    return stream != nullptr && host::isTerminal(stream);
}

bool TI_isRealDirectory(const char* path) {
    return host::isRealDirectory(orEmpty(path));
}

int read_a_dir(const char* pattern, KazStringColl& entries) {
    const std::string_view text = orEmpty(pattern);
    const std::size_t dirLength = kaz::detail::wildcardStart(text.data());
    // The paths of the result begin with native text, however the pattern was spelt.
    const std::string prefix = host::nativePath(std::string(text.substr(0, dirLength)).c_str());
    const host::Directory dir(prefix.empty() ? "." : prefix.c_str());
    std::vector<host::Entry> found;
    // A part of the entries would pass for all of them.
    if (traced(dir.list(text.substr(dirLength), found), "list", text.data()) != 0)
        return 0;
    int appended = 0;
    for (const host::Entry& entry : found) {
        // Such a name cannot be given back to the host.
        if (!entry.expressible)
            continue;
        entries.add(toText(entryPath(prefix, entry.name)));
        ++appended;
    }
    return appended;
}

int copy_file(const char* source, const char* target, bool keepExisting) {
    return traced(host::copyFile(orEmpty(source), orEmpty(target), !keepExisting), "copy", source,
                  orEmpty(target));
}

int TI_writefile(const char* path, const void* data, std::size_t size) {
    return traced(host::writeFile(orEmpty(path), data, size), "write", path);
}

namespace {

/// The name of what was just created. Nobody could find it again without the
/// name: when memory for that runs out, it is removed.
KazString nameOfNew(const std::string& created, int (*remove)(const char*)) {
    try {
        return toText(created);
    } catch (...) {
        remove(created.c_str());
        throw;
    }
}

} // namespace

FILE* TI_tmpfile(const char* dir, const char* prefix, KazString& path) {
    std::string created;
    // Closed by its owner when the name finds no memory below.
    Stream file(host::createTemporary(temporaryPlace(dir).c_str(), orEmpty(prefix), created));
    traced(file != nullptr ? 0 : -1, "make temporary", file != nullptr ? created.c_str() : dir);
    if (file != nullptr)
        path = nameOfNew(created, host::removeFile);
    return file.release();
}

KazString TI_tmpname(const char* dir, const char* prefix) {
    KazString path;
    // The file stays: it is what keeps the name from being given to somebody else.
    const Stream file(TI_tmpfile(dir, prefix, path));
    return path;
}

KazString TI_tmpdir(const char* dir, const char* prefix) {
    std::string created;
    const int made =
        host::createTemporaryDirectory(temporaryPlace(dir).c_str(), orEmpty(prefix), created);
    if (traced(made, "make temporary directory", made == 0 ? created.c_str() : dir) != 0)
        return KazString();
    return nameOfNew(created, host::removeDirectory);
}
