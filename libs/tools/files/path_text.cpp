// SPDX-License-Identifier: Apache-2.0
#include "tools/files/path_text.h"

#include "tools/files/detail/text.h"
#include "tools/platform/case_map.h"
#include "tools/platform/processor/vector.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

using kaz::detail::isSeparator;
using kaz::detail::joinPath;
using kaz::detail::normalised;
using kaz::detail::orEmpty;
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

/// What a comparison of file names sees of a character.
int mappedForCompare(char c, const kaz::host::CaseMap& lower) {
    // Signed, so that the order does not depend on the sign of char on the processor.
    return static_cast<signed char>(c == '/' ? separator : lower(c));
}

/// Whether the locale maps the letters of ASCII as ASCII does. To ask for all of them
/// takes longer than to compare 60 characters, so the table that was found to do so is
/// remembered. Where another locale has put its own there, "I" shows it: no other letter
/// of ASCII has a small one elsewhere.
bool mapsLettersAsAscii(const kaz::host::CaseMap& lower) {
    static constinit std::atomic<const std::int32_t*> known = nullptr;
    const std::int32_t* const table = lower.table();
    if (table == nullptr)
        return false;
    if (table == known.load(std::memory_order_relaxed) && lower('I') == 'i')
        return true;
    if (!lower.isAsciiForLetters())
        return false;
    known.store(table, std::memory_order_relaxed);
    return true;
}

/// The root of a UNC name: up to and including the separator behind the share. Apart,
/// so that the paths of other kinds, which never come here, cost 6 % less to split.
[[gnu::noinline]] std::size_t shareRootLength(std::string_view path) {
    constexpr const char* separators = "\\/";
    const std::size_t server = path.find_first_of(separators, 2);
    // Without a share the whole of it is the root: there is nothing to cut from.
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
    // Any character before the colon counts; whether it is a drive is for the host to say.
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
    // Letters of drives are compared by case: a difference gives the absolute path, which works.
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

} // namespace

int kazFilenameCompare(const char* a, const char* b) {
    if (a == b)
        return 0;
    a = orEmpty(a);
    b = orEmpty(b);
    const auto lower = kaz::host::CaseMap::lower();
    // The fast walk folds ASCII by itself, which is right only in such a locale.
    const bool inSteps = mapsLettersAsAscii(lower);
    const std::size_t both = inSteps ? std::min(std::strlen(a), std::strlen(b)) : 0;
    for (std::size_t i = 0;; ++i) {
        // To where they differ, or seem to: other letters are the locale's.
        if (inSteps)
            i += kaz::host::bytes().endOfSameName(a + i, b + i, both - i);
        const int difference = mappedForCompare(a[i], lower) - mappedForCompare(b[i], lower);
        // Neither is read behind its end, whatever a locale takes for NUL.
        if (difference != 0 || a[i] == '\0' || b[i] == '\0')
            return difference;
    }
}

KazString kazComposePath(const char* dir, const char* name) {
    return joinPath(kazIsExplicitPath(name) ? "" : orEmpty(dir), orEmpty(name));
}

KazString kazComposePath(const char* a, const char* b, const char* c) {
    return kazComposePath(kazComposePath(a, b).getValue(), c);
}

int kazRootPartLength(const char* path) {
    return static_cast<int>(rootLength(orEmpty(path)));
}

int kazDirPartLength(const char* path) {
    return static_cast<int>(dirLength(orEmpty(path)));
}

KazString kazPathRootPart(const char* path) {
    const std::string_view text = orEmpty(path);
    return toText(text.substr(0, rootLength(text)));
}

KazString kazPathDirPart(const char* path) {
    const std::string_view text = orEmpty(path);
    return toText(text.substr(0, dirLength(text)));
}

KazString kazLastFileComponent(const char* path) {
    const std::string_view text = orEmpty(path);
    return toText(text.substr(dirLength(text)));
}

KazString kazDirForDisplay(const char* path) {
    std::string_view text = orEmpty(path);
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
    return joinPath({}, orEmpty(path));
}

void kazMakeNativePath(char* path) {
    kazNormalizePath(path);
}

void kazMakeRightSlashPath(char* path) {
    if (path != nullptr)
        std::replace(path, path + std::strlen(path), separator, '/');
}

KazString kazRelativePath(KazString base, KazString path) {
    const std::string_view from = base.getValue();
    const std::string_view to = path.getValue();
    if (!kazIsAbsolutePath(from.data()) || !kazIsAbsolutePath(to.data()) || !haveSameRoot(from, to))
        return joinPath({}, to);

    // What is not cut from rest is the answer, separators and all.
    std::string_view rest = to.substr(rootLength(to));
    std::string_view baseParts = withoutSeparators(from.substr(rootLength(from)));
    std::string_view pathParts = withoutSeparators(rest);
    std::size_t count = 0;
    std::size_t matches = 0;
    // Goes on behind the first difference: components that match at the same depth count, as they
    // always have.
    while (!baseParts.empty()) {
        ++count;
        const std::string_view part = nextComponent(baseParts);
        if (!pathParts.empty() && nextComponent(pathParts) == part) {
            ++matches;
            cutFirstComponent(rest);
        }
    }
    constexpr std::string_view upwards = "..\\";
    // The last component of the base is a file and no directory to leave.
    const std::size_t up = count > matches ? count - matches - 1 : 0;
    return writtenText(up * upwards.size() + rest.size(), [&](char* out) {
        for (std::size_t i = 0; i < up; ++i)
            out = std::copy(upwards.begin(), upwards.end(), out);
        writeNormalised(rest, out);
    });
}

void kazRemoveBlanksFromPath(KazString& path) {
    // By the locale: letters beyond ASCII are kept where it knows them.
    const auto isBlank = [](unsigned char c) {
        return std::isprint(c) == 0 || std::isspace(c) != 0;
    };
    const int length = path.getLength();
    // Nothing to change, so a text that is shared stays shared.
    if (std::none_of(path.getValue(), path.getValue() + length, isBlank))
        return;
    char* text = path.getBuffer(0);
    std::replace_if(text, text + length, isBlank, '_');
}
