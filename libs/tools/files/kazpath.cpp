// SPDX-License-Identifier: Apache-2.0
#include "tools/files/kazpath.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/files/detail/text.h"
#include "tools/files/home.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

using kaz::detail::isSeparator;
using kaz::detail::orEmpty;
using kaz::detail::toText;

namespace {

constexpr char separator = '\\';

/// How a directory is written does not matter to kazSamePathName: runs of
/// backslashes count once, a leading pair stays a pair, one at the end is none.
std::string plainDirectory(std::string_view dir) {
    std::string result;
    for (const char c : dir) {
        const bool repeated = c == separator && !result.empty() && result.back() == separator;
        // At the very front a second one is kept: it begins the name of a share.
        if (!repeated || result.size() == 1)
            result += c;
    }
    if (!result.empty() && result.back() == separator)
        result.pop_back();
    return result;
}

/// A file that is there for as long as somebody looks for it from elsewhere.
class Probe {
public:
    Probe(const std::string& directory, const std::string& name)
        // Never over a file that is there: "wx" makes one or fails.
        : path_(directory + separator + name), name_(name), directory_(directory.c_str()) {
        std::FILE* probe = kaz::host::openStream(path_.c_str(), "wx");
        isMade_ = probe != nullptr;
        if (isMade_)
            std::fclose(probe);
        else
            wasThere_ = errno == EEXIST;
    }
    ~Probe() {
        // Removal through the handle works when memory has run out, and when the
        // directory has got another name meanwhile.
        if (isMade_ && directory_.removeFile(name_) != 0)
            removeByPath();
    }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    /// Is it the file called @p other? One that was there before serves as it is: it
    /// is neither emptied nor deleted.
    bool isSeenAs(const std::string& other) const {
        if (isMade_)
            return kaz::host::canOpenForReading(other.c_str());
        return wasThere_ && kaz::host::sameFile(path_.c_str(), other.c_str());
    }

private:
    void removeByPath() const noexcept {
        try {
            kaz::host::removeFile(path_.c_str());
        } catch (const KazMemoryException&) {
        }
    }

    std::string path_;
    std::string name_;
    kaz::host::Directory directory_;
    bool isMade_ = false;
    bool wasThere_ = false;
};

/// What the make_unix_path functions do where a part is missing: the other one
/// as it is. False when both are there.
bool copyOnlyPart(const char* dir, const char* name, char* out) {
    if (dir != nullptr && name != nullptr)
        return false;
    // memmove, because callers may pass the buffer of the result as the part.
    const char* only = orEmpty(dir != nullptr ? dir : name);
    std::memmove(out, only, std::strlen(only) + 1);
    return true;
}

void writeFullPath(const std::string& path, char* out) {
    const KazString full = kazFullPath(path.c_str());
    std::memcpy(out, full.getValue(), static_cast<std::size_t>(full.getLength()) + 1);
}

} // namespace

KazString kazFullPath(const char* path) {
    if (path == nullptr)
        return KazString();
    const std::string& full = kaz::host::absolutePath(_TI_hm(path));
    return full.empty() ? KazString(path) : toText(full);
}

int kazSamePathName(KazString a, KazString b) {
    // From the cheap questions to the one that writes: only names that differ reach the probe.
    if (a == b)
        return 1;
    const std::string first = plainDirectory(a.getValue());
    const std::string second = plainDirectory(b.getValue());
    if (KazString(first.c_str()).equalsNoCase(second.c_str()))
        return 1;
    // Processes that ask at the same time about one directory do not see each other's probes.
    const std::string name = "_tmp" + std::to_string(kaz::host::processId());
    const std::string other = second + separator + name;
    return Probe(first, name).isSeenAs(other) ? 1 : 0;
}

void make_unix_path(const char* dir, const char* name, char* out) {
    if (copyOnlyPart(dir, name, out))
        return;
    // Put together before out is written, which may be one of the parts.
    std::string path = dir;
    if (!path.empty() && !isSeparator(path.back()))
        path += separator;
    writeFullPath(path + name, out);
}

void make_unix_path_rel(const char* dir, const char* name, const char* base, char* out) {
    if (*orEmpty(base) == '\0') {
        make_unix_path(dir, name, out);
        return;
    }
    if (copyOnlyPart(dir, name, out))
        return;
    std::string path;
    for (const char* part : {base, dir}) {
        path += part;
        if (path.empty() || !isSeparator(path.back()))
            path += separator;
    }
    writeFullPath(path + name, out);
}
