#include "tools/files/kazpath.h"

#include "tools/config/toolinfo.h"
#include "tools/files/detail/text.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

using kaz::detail::isSeparator;
using kaz::detail::joinPath;
using kaz::detail::normalised;
using kaz::detail::textOf;
using kaz::detail::toText;
using kaz::detail::writeNormalised;
using kaz::detail::writtenText;

namespace {

constexpr char separator = '\\';

bool isAsciiLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Both ends of an explicit prefix such as "..": the text ends or goes on below.
bool endsOrDescends(char c) {
    return c == '\0' || isSeparator(c);
}

int mappedForCompare(char c) {
    const int mapped = c == '/' ? separator : std::tolower(static_cast<unsigned char>(c));
    return static_cast<signed char>(mapped);
}

/// The root of a UNC name: up to and including the separator behind the share. Apart,
/// so that the paths of other kinds, which never come here, cost 6 % less to split.
[[gnu::noinline]] std::size_t shareRootLength(std::string_view path) {
    constexpr const char* separators = "\\/";
    const std::size_t server = path.find_first_of(separators, 2);
    if (server == std::string_view::npos)
        return path.size();
    const std::size_t share = path.find_first_of(separators, server + 1);
    return share == std::string_view::npos ? path.size() : share + 1;
}

bool isShare(std::string_view path) {
    return path.size() > 1 && isSeparator(path[0]) && isSeparator(path[1]);
}

std::size_t rootLength(std::string_view path) {
    if (isShare(path))
        return shareRootLength(path);
    if (!path.empty() && isSeparator(path[0]))
        return 1;
    if (path.size() < 2 || path[1] != ':')
        return 0;
    return path.size() > 2 && isSeparator(path[2]) ? 3 : 2;
}

/// What a directory part ends in. One look instead of three comparisons a
/// character.
constexpr std::array<bool, 256> endsDirectory = [] {
    std::array<bool, 256> result{};
    for (const unsigned char c : {'/', '\\', ':'})
        result[c] = true;
    return result;
}();

std::size_t dirLength(std::string_view path) {
    const char* const begin = path.data();
    const char* end = begin + path.size();
    while (end != begin && !endsDirectory[static_cast<unsigned char>(end[-1])])
        --end;
    const auto length = static_cast<std::size_t>(end - begin);
    // Other roots end in such a character themselves.
    return isShare(path) && length < shareRootLength(path) ? 0 : length;
}

/// Do two paths of one root length begin with the same root, but for the kind of
/// separator?
bool haveSameRoot(std::string_view a, std::string_view b) {
    const auto same = [](char x, char y) { return normalised(x) == normalised(y); };
    const std::size_t length = rootLength(a);
    return length == rootLength(b) &&
           std::equal(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(length), b.begin(), same);
}

std::string_view withoutSeparators(std::string_view path) {
    const auto begin = std::find_if_not(path.begin(), path.end(), isSeparator);
    return std::string_view(begin, path.end());
}

/// Takes the component off with which @p rest begins, and the separators behind
/// it. A carriage return at its end does not belong to a name that was read from
/// a foreign file.
std::string_view nextComponent(std::string_view& rest) {
    const auto end = std::find_if(rest.begin(), rest.end(), isSeparator);
    std::string_view component(rest.begin(), end);
    rest = withoutSeparators(std::string_view(end, rest.end()));
    if (component.ends_with('\r'))
        component.remove_suffix(1);
    return component;
}

/// Cuts the first component and one separator behind it.
void cutFirstComponent(std::string_view& path) {
    const auto end = std::find_if(path.begin(), path.end(), isSeparator);
    path = end == path.end() ? std::string_view() : std::string_view(end + 1, path.end());
}

/// How a directory is written does not matter to kazSamePathName: runs of
/// backslashes count once, a leading pair stays a pair, one at the end is none.
std::string plainDirectory(std::string_view dir) {
    std::string result;
    for (const char c : dir) {
        const bool repeated = c == separator && !result.empty() && result.back() == separator;
        if (!repeated || result.size() == 1)
            result += c;
    }
    if (!result.empty() && result.back() == separator)
        result.pop_back();
    return result;
}

bool isSameFile(const std::string& a, const std::string& b) {
    kaz::host::FileStatus one, two;
    return kaz::host::status(a.c_str(), one) == 0 && kaz::host::status(b.c_str(), two) == 0 &&
           one.device == two.device && one.serial == two.serial;
}

/// Creates a file through @p first and looks for it through @p second. A file of
/// that name that was there before serves as it is: it is neither emptied nor
/// deleted.
bool reachSameFile(const std::string& first, const std::string& second, const std::string& name) {
    const std::string path = first + separator + name;
    // Removal through the handle works when memory has run out.
    const kaz::host::Directory directory(first.c_str());
    const auto remove = [&] {
        if (directory.removeFile(name) != 0)
            kaz::host::removeFile(path.c_str());
    };
    const std::string other = second + separator + name;
    std::FILE* probe = kaz::host::openStream(path.c_str(), "wx");
    if (probe == nullptr)
        return errno == EEXIST && isSameFile(path, other);
    std::fclose(probe);
    try {
        probe = kaz::host::openStream(other.c_str(), "r");
    } catch (...) {
        remove();
        throw;
    }
    if (probe != nullptr)
        std::fclose(probe);
    remove();
    return probe != nullptr;
}

/// What the make_unix_path functions do where a part is missing: the other one
/// as it is. False when both are there.
bool copyOnlyPart(const char* dir, const char* name, char* out) {
    if (dir != nullptr && name != nullptr)
        return false;
    const char* only = textOf(dir != nullptr ? dir : name);
    std::memmove(out, only, std::strlen(only) + 1);
    return true;
}

void writeFullPath(const std::string& path, char* out) {
    const KazString full = kazFullPath(path.c_str());
    std::memcpy(out, full.getValue(), static_cast<std::size_t>(full.getLength()) + 1);
}

} // namespace

int kazFilenameCompare(const char* a, const char* b) {
    if (a == b)
        return 0;
    for (a = textOf(a), b = textOf(b);; ++a, ++b) {
        const int difference = mappedForCompare(*a) - mappedForCompare(*b);
        if (difference != 0 || *a == '\0')
            return difference;
    }
}

KazString kazComposePath(const char* dir, const char* name) {
    return joinPath(kazIsExplicitPath(name) ? "" : textOf(dir), textOf(name));
}

KazString kazComposePath(const char* a, const char* b, const char* c) {
    return kazComposePath(kazComposePath(a, b).getValue(), c);
}

int kazRootPartLength(const char* path) {
    return static_cast<int>(rootLength(textOf(path)));
}

int kazDirPartLength(const char* path) {
    return static_cast<int>(dirLength(textOf(path)));
}

KazString kazPathRootPart(const char* path) {
    const std::string_view text = textOf(path);
    return toText(text.substr(0, rootLength(text)));
}

KazString kazPathDirPart(const char* path) {
    const std::string_view text = textOf(path);
    return toText(text.substr(0, dirLength(text)));
}

KazString kazLastFileComponent(const char* path) {
    const std::string_view text = textOf(path);
    return toText(text.substr(dirLength(text)));
}

KazString kazDirForDisplay(const char* path) {
    std::string_view text = textOf(path);
    if (text.size() > rootLength(text) && isSeparator(text.back()))
        text.remove_suffix(1);
    return toText(text);
}

bool kazIsAbsolutePath(const char* path) {
    return path != nullptr && (isSeparator(path[0]) || (isAsciiLetter(path[0]) && path[1] == ':'));
}

bool kazIsExplicitPath(const char* path) {
    if (path == nullptr)
        return false;
    if (kazIsAbsolutePath(path))
        return true;
    if (path[0] == '~')
        return endsOrDescends(path[1]);
    return path[0] == '.' &&
           (endsOrDescends(path[1]) || (path[1] == '.' && endsOrDescends(path[2])));
}

void kazNormalizePath(char* path) {
    if (path != nullptr)
        std::replace(path, path + std::strlen(path), '/', separator);
}

KazString kazNormalizedPath(const char* path) {
    return joinPath({}, textOf(path));
}

void kazMakeNativePath(char* path) {
    kazNormalizePath(path);
}

void kazMakeRightSlashPath(char* path) {
    if (path != nullptr)
        std::replace(path, path + std::strlen(path), separator, '/');
}

KazString kazFullPath(const char* path) {
    if (path == nullptr)
        return KazString();
    const std::string& full = kaz::host::absolutePath(_TI_hm(path));
    return full.empty() ? KazString(path) : toText(full);
}

KazString kazRelativePath(KazString base, KazString path) {
    const std::string_view from = base.getValue();
    const std::string_view to = path.getValue();
    if (!kazIsAbsolutePath(from.data()) || !kazIsAbsolutePath(to.data()) || !haveSameRoot(from, to))
        return joinPath({}, to);

    std::string_view rest = to.substr(rootLength(to));
    std::string_view baseParts = withoutSeparators(from.substr(rootLength(from)));
    std::string_view pathParts = withoutSeparators(rest);
    std::size_t count = 0;
    std::size_t matches = 0;
    while (!baseParts.empty()) {
        ++count;
        const std::string_view part = nextComponent(baseParts);
        if (!pathParts.empty() && nextComponent(pathParts) == part) {
            ++matches;
            cutFirstComponent(rest);
        }
    }
    constexpr std::string_view upwards = "..\\";
    const std::size_t up = count > matches ? count - matches - 1 : 0;
    return writtenText(up * upwards.size() + rest.size(), [&](char* out) {
        for (std::size_t i = 0; i < up; ++i)
            out = std::copy(upwards.begin(), upwards.end(), out);
        writeNormalised(rest, out);
    });
}

int kazSamePathName(KazString a, KazString b) {
    if (a == b)
        return 1;
    const std::string first = plainDirectory(a.getValue());
    const std::string second = plainDirectory(b.getValue());
    if (KazString(first.c_str()).equalsNoCase(second.c_str()))
        return 1;
    const std::string probe = "_tmp" + std::to_string(kaz::host::processId());
    return reachSameFile(first, second, probe) ? 1 : 0;
}

void kazRemoveBlanksFromPath(KazString& path) {
    const auto isBlank = [](unsigned char c) { return !std::isprint(c) || std::isspace(c); };
    const int length = path.getLength();
    if (std::none_of(path.getValue(), path.getValue() + length, isBlank))
        return;
    char* text = path.getBuffer(0);
    std::replace_if(text, text + length, isBlank, '_');
}

void make_unix_path(const char* dir, const char* name, char* out) {
    if (copyOnlyPart(dir, name, out))
        return;
    std::string path = dir;
    if (!path.empty() && !isSeparator(path.back()))
        path += separator;
    writeFullPath(path + name, out);
}

void make_unix_path_rel(const char* dir, const char* name, const char* base, char* out) {
    if (*textOf(base) == '\0') {
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
