// SPDX-License-Identifier: Apache-2.0
// Files by path, mostly through the runtime library, which sets errno itself. What it does
// differently from elsewhere is mended here: the mode "x" that it does not know, and its habit of
// leaving temporary files to be inherited.
#include "tools/platform/host.h"
#include "tools/platform/windows/copy.h"
#include "tools/platform/windows/text.h"

#include <array>
#include <cerrno>
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

namespace kaz::host {

namespace {

/// Names that nobody else uses: process, clock and a counter make them.
class TemporaryNames {
public:
    TemporaryNames(const char* directory, const char* prefix)
        : start_(nativePath(directory)), seed_(GetTickCount() ^ (GetCurrentProcessId() << 12)) {
        if (!start_.empty() && start_.back() != '\\')
            start_ += '\\';
        for (const char* c = prefix; *c != '\0'; ++c)
            start_ += *c == '/' || *c == '\\' || *c == ':' ? '_' : *c;
    }

    std::string next() {
        static constinit unsigned counter = 0;
        constexpr char digits[] = "abcdefghijklmnopqrstuvwxyz012345";
        // The constants are those of a common linear congruence. The names need not be secret: a
        // name that is taken fails with EEXIST, and the next one is tried.
        seed_ = seed_ * 1664525 + 1013904223 + counter++;
        std::string result = start_;
        // Six times five of the 32 bits.
        for (unsigned rest = seed_, n = 0; n < 6; ++n, rest >>= 5)
            result += digits[rest & 31];
        return result;
    }

private:
    std::string start_;
    unsigned seed_;
};

/// For the mode "x", which this runtime library passes over: it would empty a file
/// that is there. @p mode is the rest of it.
std::FILE* createStream(const char* path, const std::string& mode) {
    const int use = mode.find('+') != mode.npos ? _O_RDWR : _O_WRONLY;
    const int kind = mode.find('b') != mode.npos ? _O_BINARY : _O_TEXT;
    const int file = ::_open(path, _O_CREAT | _O_EXCL | use | kind, _S_IREAD | _S_IWRITE);
    if (file < 0)
        return nullptr;
    std::FILE* stream = ::_fdopen(file, mode.c_str());
    if (stream == nullptr) {
        ::_close(file);
        ::_unlink(path);
    }
    return stream;
}

} // namespace

int access(const char* path, int mode) {
    // Execution is no permission here; the runtime library does not know the bit.
    return ::_access(path, mode & 6);
}

int makeDirectory(const char* path, unsigned) {
    return ::_mkdir(path);
}

int removeDirectory(const char* path) {
    return ::_rmdir(path);
}

int removeFile(const char* path) {
    return ::_unlink(path);
}

/// There is no other way to ask. A file that another thread creates in between is writable whatever
/// the mask was; no mask hides a file here.
unsigned fileMask() {
    const int mask = ::_umask(0);
    ::_umask(mask);
    return static_cast<unsigned>(mask);
}

unsigned setFileMask(unsigned mask) {
    return static_cast<unsigned>(::_umask(static_cast<int>(mask & (_S_IREAD | _S_IWRITE))));
}

std::FILE* openStream(const char* path, const char* mode) {
    std::string known = mode;
    return std::erase(known, 'x') > 0 ? createStream(path, known) : std::fopen(path, mode);
}

int copyFile(const char* source, const char* target, bool mayReplace) {
    const std::wstring from = literalPath(source);
    const std::wstring to = from.empty() ? from : literalPath(target);
    CopyRules rules;
    rules.mayReplace = mayReplace;
    return to.empty() ? -1 : copyLiteral(from, to, rules);
}

std::FILE* createTemporary(const char* directory, const char* prefix, std::string& path) {
    TemporaryNames names(directory, prefix);
    std::string name;
    int file = -1;
    do {
        name = names.next();
        file = ::_open(name.c_str(), _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY | _O_NOINHERIT,
                       _S_IREAD | _S_IWRITE);
    } while (file < 0 && errno == EEXIST);
    if (file < 0)
        return nullptr;
    std::FILE* stream = ::_fdopen(file, "w+b");
    if (stream == nullptr) {
        ::_close(file);
        ::_unlink(name.c_str());
        return nullptr;
    }
    path.swap(name);
    return stream;
}

int createTemporaryDirectory(const char* parent, const char* prefix, std::string& path) {
    TemporaryNames names(parent, prefix);
    std::string name;
    do {
        name = names.next();
        if (::_mkdir(name.c_str()) == 0) {
            path.swap(name);
            return 0;
        }
    } while (errno == EEXIST);
    return -1;
}

} // namespace kaz::host
