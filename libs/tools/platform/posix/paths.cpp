#include "tools/platform/host.h"
#include "tools/platform/posix/descriptor.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace kaz::host {

namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bool hasDrive(const char* path) {
    const char letter = static_cast<char>(path[0] | 0x20);
    return letter >= 'a' && letter <= 'z' && path[1] == ':';
}

bool hasShare(const char* path) {
    return isSeparator(path[0]) && isSeparator(path[1]);
}

std::string withSeparators(const char* path, char from, char to) {
    std::string result = path;
    std::replace(result.begin(), result.end(), from, to);
    return result;
}

/// Takes the next component off @p rest, without its separators.
std::string_view nextComponent(std::string_view& rest) {
    const std::size_t start = std::min(rest.find_first_not_of('\\'), rest.size());
    const std::size_t end = std::min(rest.find('\\', start), rest.size());
    const std::string_view result = rest.substr(start, end - start);
    rest.remove_prefix(end);
    return result;
}

/// Appends the components of @p rest, which starts with a separator or is empty,
/// to @p root, which ends in one unless it is a share alone. ".." stops there.
std::string fold(std::string root, std::string_view rest) {
    const bool trailing = !rest.empty() && rest.back() == '\\';
    std::string result = std::move(root);
    const std::size_t least = result.size();
    while (!rest.empty()) {
        const std::string_view component = nextComponent(rest);
        if (component.empty() || component == ".")
            continue;
        if (component == "..") {
            const std::size_t cut = result.rfind('\\');
            result.resize(cut == std::string::npos ? least : std::max(cut, least));
            continue;
        }
        if (result.back() != '\\')
            result += '\\';
        result += component;
    }
    if (trailing && result.back() != '\\')
        result += '\\';
    return result;
}

/// A share's root is its first two components; they are no places to go up from.
std::string foldShare(std::string_view path) {
    std::string_view rest = path.substr(2);
    std::string root = "\\\\";
    root += nextComponent(rest);
    root += '\\';
    root += nextComponent(rest);
    if (!rest.empty())
        root += '\\'; // going up never takes it away
    return fold(std::move(root), rest);
}

/// "" with errno set when the text does not say where it starts.
std::string foldedFromRoot(const std::string& path) {
    if (hasShare(path.c_str()))
        return foldShare(path);
    if (path[0] == '\\')
        return fold("\\", path);
    if (hasDrive(path.c_str())) {
        if (path[2] == '\\')
            return fold(path.substr(0, 3), std::string_view(path).substr(2));
        errno = ENOENT;
        return {};
    }
    const std::string here = currentDirectory();
    return here.empty() ? here : fold("\\", here + '\\' + path);
}

std::string resolvedLink(const char* link) {
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = ::readlink(link, buffer.data(), buffer.size());
    return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length))
                      : std::string();
}

std::string resolvedDirectory(const std::string& directory) {
    std::array<char, PATH_MAX> buffer;
    return ::realpath(directory.c_str(), buffer.data()) != nullptr ? buffer.data() : "";
}

} // namespace

bool canName(const char* path) {
    return !hasDrive(path) && !hasShare(path);
}

std::string hostPath(const char* native) {
    return canName(native) ? withSeparators(native, '\\', '/') : std::string();
}

std::string nativePath(const char* hostSpelling) {
    return withSeparators(hostSpelling, '/', '\\');
}

std::size_t pathLimit() {
    return PATH_MAX;
}

char searchPathSeparator() {
    return ':';
}

std::string absolutePath(const char* path) {
    if (*path == '\0') {
        errno = ENOENT;
        return {};
    }
    std::string result = foldedFromRoot(nativePath(path));
    if (result.size() < pathLimit())
        return result;
    errno = ENAMETOOLONG;
    return {};
}

std::string currentDirectory() {
    std::array<char, PATH_MAX> buffer;
    return ::getcwd(buffer.data(), buffer.size()) != nullptr ? nativePath(buffer.data())
                                                             : std::string();
}

std::string moduleFileName() {
    Dl_info info;
    if (::dladdr(reinterpret_cast<const void*>(&moduleFileName), &info) == 0)
        return {};
    // Linked into the program itself the name is argv[0], which the search path
    // may have completed.
    const std::string file = std::strchr(info.dli_fname, '/') != nullptr
                                 ? info.dli_fname
                                 : resolvedLink("/proc/self/exe");
    const std::size_t slash = file.rfind('/');
    if (slash == std::string::npos)
        return {};
    std::string directory = resolvedDirectory(file.substr(0, slash + 1));
    if (directory.empty())
        return {};
    if (directory.back() != '/')
        directory += '/';
    return nativePath((directory + file.substr(slash + 1)).c_str());
}

} // namespace kaz::host
