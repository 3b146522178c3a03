// SPDX-License-Identifier: Apache-2.0
// Path algebra: laws that hold between the functions, and plain models of those
// that build a path, of the wildcard and of the list of a search path.
#include "fuzz/harness.h"
#include "tools/config/KazFilePath.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/platform/wildcard.h"
#include "tools/strings/KazStringTokenizer.h"

#include <array>
#include <cctype>
#include <filesystem>
#include <regex>
#include <vector>

namespace {

std::string str(const KazString& text) {
    return text.getValue();
}

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

std::string nativeOf(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

bool hasDrive(const std::string& path) {
    return path.size() > 1 && path[1] == ':' &&
           std::string("abcdefghijklmnopqrstuvwxyz").find(static_cast<char>(path[0] | 32)) !=
               std::string::npos;
}

/// Paths of the characters that matter, or any text.
std::string path(fuzz::Input& input) {
    return input.flag() ? input.textOf("ab:./\\~C\r", 60) : input.cText(200);
}

void partsAddUp(const std::string& p) {
    const int root = kazRootPartLength(p.c_str());
    const int dir = kazDirPartLength(p.c_str());
    const std::string last = str(kazLastFileComponent(p.c_str()));
    // A share with its server, one separator, or anything in front of a colon.
    static const std::regex roots(R"([\\/]{2}[^\\/]*(?:[\\/][^\\/]*[\\/]?)?|[\\/]|[^]:[\\/]?)");
    std::smatch match;
    std::regex_search(p, match, roots, std::regex_constants::match_continuous);
    FUZZ_CHECK(root == match.length());
    const std::size_t separators = p.find_first_not_of("\\/");
    const bool isShare = p.size() > 1 && std::min(separators, p.size()) > 1;
    const int afterLast = static_cast<int>(p.find_last_of("/\\:") + 1);
    FUZZ_CHECK(dir == (isShare && afterLast < root ? 0 : afterLast));
    FUZZ_CHECK(str(kazPathRootPart(p.c_str())) == p.substr(0, static_cast<std::size_t>(root)));
    FUZZ_CHECK(str(kazPathDirPart(p.c_str())) == p.substr(0, static_cast<std::size_t>(dir)));
    FUZZ_CHECK(str(kazPathDirPart(p.c_str())) + last == p);

    const std::string shown = str(kazDirForDisplay(p.c_str()));
    const bool cut = p.size() > static_cast<std::size_t>(root) && isSeparator(p.back());
    FUZZ_CHECK(shown == p.substr(0, p.size() - (cut ? 1 : 0)));
    const bool absolute = hasDrive(p) || (!p.empty() && isSeparator(p[0]));
    const auto ends = [&p](std::size_t at) { return p.size() == at || isSeparator(p[at]); };
    FUZZ_CHECK(kazIsAbsolutePath(p.c_str()) == absolute);
    FUZZ_CHECK(kazIsExplicitPath(p.c_str()) ==
               (absolute || (p.starts_with('~') && ends(1)) || (p.starts_with('.') && ends(1)) ||
                (p.starts_with("..") && ends(2))));
}

void normalisingChangesSeparatorsOnly(const std::string& p) {
    const std::string normal = str(kazNormalizedPath(p.c_str()));
    FUZZ_CHECK(normal == nativeOf(p));
    std::string other = p;
    kazMakeRightSlashPath(other.data());
    FUZZ_CHECK(other.find('\\') == other.npos);
    kazNormalizePath(other.data());
    FUZZ_CHECK(other == normal);
    other = p;
    kazMakeNativePath(other.data());
    FUZZ_CHECK(other == normal);
    FUZZ_CHECK(kazFilenameCompare(p.c_str(), normal.c_str()) == 0);
    FUZZ_CHECK(kazRootPartLength(p.c_str()) == kazRootPartLength(normal.c_str()));
    FUZZ_CHECK(kazIsExplicitPath(p.c_str()) == kazIsExplicitPath(normal.c_str()));
}

std::string joined(const std::string& dir, const std::string& name) {
    const bool between = !dir.empty() && !name.empty() && !isSeparator(dir.back());
    return nativeOf(dir + (between ? "\\" : "") + name);
}

void composingFollowsItsRule(const std::string& dir, const std::string& name) {
    const std::string both = str(kazComposePath(dir.c_str(), name.c_str()));
    FUZZ_CHECK(both == (kazIsExplicitPath(name.c_str()) ? nativeOf(name) : joined(dir, name)));
    FUZZ_CHECK(str(kazComposePath("top", dir.c_str(), name.c_str())) ==
               str(kazComposePath(str(kazComposePath("top", dir.c_str())).c_str(), name.c_str())));
    std::array<char, 1024> out{"unchanged"};
    const std::string plain = joined(dir, name);
    const int size = static_cast<int>(plain.size());
    FUZZ_CHECK(TI_catfile(dir.c_str(), name.c_str(), out.data(), size) == nullptr);
    FUZZ_CHECK(std::string(out.data()) == "unchanged");
    FUZZ_CHECK(TI_catfile(dir.c_str(), name.c_str(), out.data(), size + 1) == out.data());
    FUZZ_CHECK(out.data() == plain);
}

int mapped(char c) {
    const int lower = c == '/' ? '\\' : std::tolower(static_cast<unsigned char>(c));
    return static_cast<signed char>(lower);
}

void comparingMapsCharacters(const std::string& a, const std::string& b) {
    std::size_t i = 0;
    while (i < a.size() && i < b.size() && mapped(a[i]) == mapped(b[i]))
        ++i;
    const int expected = mapped(a.c_str()[i]) - mapped(b.c_str()[i]);
    FUZZ_CHECK(kazFilenameCompare(a.c_str(), b.c_str()) == expected);
}

/// The same name in other spelling, with one character changed or not.
std::string respelled(fuzz::Input& input, std::string name) {
    for (char& c : name)
        if (input.byte() % 4 == 0)
            c = c == '/'    ? '\\'
                : c == '\\' ? '/'
                            : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (!name.empty() && input.flag())
        name[input.between<std::size_t>(0, name.size() - 1)] =
            input.textOf("ab\\/\xe9", 1).append("x")[0];
    return name;
}

/// The walk, step by step.
std::string relativeByTheSteps(const KazString& base, const KazString& path) {
    KazString rest = kazNormalizedPath(path);
    const KazString from = kazNormalizedPath(base);
    if (!kazIsAbsolutePath(from) || !kazIsAbsolutePath(rest) ||
        kazPathRootPart(from) != kazPathRootPart(rest))
        return str(rest);
    rest.removeBefore(kazRootPartLength(rest));
    KazStringTokenizer parts(from.subStringFrom(kazRootPartLength(from)), "\\");
    KazStringTokenizer others(rest, "\\");
    int count = 0;
    int matches = 0;
    while (!parts.isDone()) {
        ++count;
        const KazString part = parts.nextString(true);
        if (others.isDone() || others.nextString(true) != part)
            continue;
        ++matches;
        const int end = rest.find('\\');
        rest = end < 0 ? KazString() : rest.subStringFrom(end + 1);
    }
    std::string result;
    for (int up = count - 1 - matches; up > 0; --up)
        result += "..\\";
    return result + str(rest);
}

/// The absolute form on a host without drives, component by component.
std::string fullByComponents(const std::string& path) {
    std::string text = nativeOf(path);
    std::string root = "\\";
    if (text.empty() || (hasDrive(text) && (text.size() < 3 || text[2] != '\\')))
        return path;
    const bool trailing = text.back() == '\\';
    bool open = true; // something may follow the root
    if (hasDrive(text)) {
        root = text.substr(0, 3);
        text.erase(0, 2);
    } else if (text.starts_with("\\\\")) {
        root = "\\\\";
        for (int part = 0; part < 2; ++part) {
            const std::size_t begin = std::min(text.find_first_not_of('\\'), text.size());
            const std::size_t end = std::min(text.find('\\', begin), text.size());
            root += text.substr(begin, end - begin);
            text.erase(0, end);
            root += part == 0 && !text.empty() ? "\\" : "";
        }
        open = !text.empty();
        root += open ? "\\" : "";
    } else if (text[0] != '\\') {
        text = std::filesystem::current_path().string() + '/' + text;
    }
    std::replace(text.begin(), text.end(), '\\', '/');
    text.erase(0, text.find_first_not_of('/'));
    std::string folded = std::filesystem::path('/' + text).lexically_normal().string().substr(1);
    if (folded.ends_with('/'))
        folded.pop_back();
    return root + nativeOf(folded) + (trailing && open && !folded.empty() ? "\\" : "");
}

void fullPathIsFolded(const std::string& p) {
    static const bool hasDrives = !kazHostPath("C:\\x").isEmpty();
    if (p.starts_with('~'))
        return; // the user's home decides
    const std::string full = str(kazFullPath(p.c_str()));
    if (hasDrives)
        return; // the system decides; it has devices and other surprises
    FUZZ_CHECK(full == fullByComponents(p));
    FUZZ_CHECK(str(kazFullPath(full.c_str())) == full);
    FUZZ_CHECK(full == p || str(kazFullPath(nativeOf(p).c_str())) == full);
}

void joiningIntoABufferIsTheFullPath(const std::string& dir, const std::string& name) {
    std::array<char, 8192> out{};
    std::string both = dir;
    if (!both.empty() && !isSeparator(both.back()))
        both += '\\';
    make_unix_path(dir.c_str(), name.c_str(), out.data());
    FUZZ_CHECK(out.data() == str(kazFullPath((both + name).c_str())));
    make_unix_path_rel(dir.c_str(), name.c_str(), "base", out.data());
    both = "base\\" + dir;
    if (!isSeparator(both.back()) || dir.empty())
        both += '\\';
    FUZZ_CHECK(out.data() == str(kazFullPath((both + name).c_str())));
}

/// However often separators are repeated inside, and with one more at the end.
void spellingsOfADirectoryAreTheSame(const std::string& p) {
    std::string other;
    for (const char c : p)
        other += c == '\\' && !other.empty() ? "\\\\\\" : std::string(1, c);
    if (p.size() > 2 && !p.starts_with("\\") && p.find("\\\\") == p.npos && p.back() != '\\')
        FUZZ_CHECK(kazSamePathName(p.c_str(), (other + '\\').c_str()) == 1);
}

void blanksAreGone(const std::string& p) {
    KazString text = p.c_str();
    const KazString sharer = text;
    kazRemoveBlanksFromPath(text);
    FUZZ_CHECK(str(sharer) == p);
    FUZZ_CHECK(static_cast<std::size_t>(text.getLength()) == p.size());
    for (std::size_t i = 0; i < p.size(); ++i) {
        const auto c = static_cast<unsigned char>(p[i]);
        const bool stays = std::isprint(c) != 0 && std::isspace(c) == 0;
        FUZZ_CHECK(text.getValue()[i] == (stays ? p[i] : '_'));
    }
}

/// All combinations at once: reached[i] tells whether the pattern so far can take
/// the first i characters.
bool matchesByTable(const std::string& pattern, const std::string& name) {
    if (pattern == "*.*")
        return true;
    std::vector<bool> reached(name.size() + 1, false);
    reached[0] = true;
    for (const char p : pattern) {
        std::vector<bool> next(name.size() + 1, false);
        for (std::size_t i = 0; i <= name.size(); ++i)
            if (p == '*')
                next[i] = reached[i] || (i > 0 && next[i - 1]);
            else
                next[i] = i > 0 && reached[i - 1] && (p == '?' || p == name[i - 1]);
        reached = next;
    }
    return reached.back();
}

void wildcardsMatchAsTheTableSays(const std::string& pattern, const std::string& name) {
    const auto same = [](char a, char b) { return a == b; };
    FUZZ_CHECK(kaz::host::matchWildcard(pattern, name, same) == matchesByTable(pattern, name));
}

/// A search path comes back from its text; changing it keeps the order.
void searchPathIsItsText(const std::string& list, const std::string& more) {
    KazFilePath path(list.c_str());
    const auto expectEqual = [](const KazFilePath& a, const KazFilePath& b) {
        FUZZ_CHECK(a.getSize() == b.getSize() && a.isEmpty() == (b.getSize() == 0));
        for (int i = -1; i <= a.getSize(); ++i)
            FUZZ_CHECK(a.getDir(i) == b.getDir(i));
    };
    expectEqual(KazFilePath(path.getText()), path);
    path.append(more.c_str());
    expectEqual(path, KazFilePath((list + ";" + more).c_str()));
    path.prepend(more.c_str());
    expectEqual(path, KazFilePath((more + ";" + list + ";" + more).c_str()));
    if (path.isEmpty())
        return;
    const KazString first = path.getDir(0);
    FUZZ_CHECK(path.contains(first) && path.remove(first) && !path.contains(first));
}

void all(fuzz::Input input) {
    const std::string a = path(input);
    const std::string b = path(input);
    for (const std::string& p : {a, b}) {
        partsAddUp(p);
        normalisingChangesSeparatorsOnly(p);
        fullPathIsFolded(p);
        spellingsOfADirectoryAreTheSame(p);
        blanksAreGone(p);
    }
    composingFollowsItsRule(a, b);
    comparingMapsCharacters(a, b);
    const std::string longName = a + b;
    comparingMapsCharacters(longName, respelled(input, longName));
    FUZZ_CHECK(str(kazRelativePath(a.c_str(), b.c_str())) ==
               relativeByTheSteps(a.c_str(), b.c_str()));
    const std::string common = "/" + input.textOf("ab/\\\r", 10);
    FUZZ_CHECK(str(kazRelativePath((common + a).c_str(), (common + b).c_str())) ==
               relativeByTheSteps((common + a).c_str(), (common + b).c_str()));
    joiningIntoABufferIsTheFullPath(a, b);
    searchPathIsItsText(input.textOf("ab; ~\\A\t", 30), input.textOf("ab; \n", 10));
    const std::string pattern = input.textOf("*?ab.", 40);
    wildcardsMatchAsTheTableSays(pattern, input.textOf("ab.", 60));
    wildcardsMatchAsTheTableSays(b, a);
}

} // namespace

void fuzz::harness(Input& input) {
    Failures::whole(input, all);
}
