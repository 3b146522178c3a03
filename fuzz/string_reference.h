// SPDX-License-Identifier: Apache-2.0
/// @file
/// The rules of the string classes once more, on std::string and as plainly as
/// possible.
#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

namespace reference {

inline bool isIn(char c, const std::string& set) {
    return set.find(c) != std::string::npos;
}

inline void trimLeft(std::string& s, const std::string& set) {
    while (!s.empty() && isIn(s.front(), set))
        s.erase(0, 1);
}

inline void trimRight(std::string& s, const std::string& set) {
    while (s.size() > 1 && isIn(s.back(), set))
        s.pop_back();
}

inline void replaceRange(std::string& s, int pos, int n, const std::string& by) {
    if (pos >= 0 && n >= 0)
        s.replace(std::min<std::size_t>(s.size(), static_cast<std::size_t>(pos)),
                  static_cast<std::size_t>(n), by);
}

inline void repeat(std::string& s, const std::string& by, int n) {
    for (std::string unit = by; n > 0; --n)
        s += unit;
}

inline void remove(std::string& s, int pos, int n) {
    if (pos >= 0 && n > 0 && pos < static_cast<int>(s.size()))
        s.erase(static_cast<std::size_t>(pos), static_cast<std::size_t>(n));
}

inline void replaceFirst(std::string& s, const std::string& from, const std::string& to) {
    const std::size_t pos = from.empty() ? std::string::npos : s.find(from);
    if (pos != std::string::npos)
        s.replace(pos, from.size(), to);
}

inline void replaceAll(std::string& s, const std::string& from, const std::string& to) {
    for (std::size_t pos = 0; !from.empty() && (pos = s.find(from, pos)) != std::string::npos;
         pos += to.size())
        s.replace(pos, from.size(), to);
}

inline void replaceAllInSet(std::string& s, const std::string& set, char by) {
    for (char& c : s)
        if (isIn(c, set))
            c = by;
}

inline void replaceInSet(std::string& s, const std::string& set, char by) {
    for (const char c : set)
        if (isIn(c, s)) {
            s[s.find(c)] = by;
            return;
        }
}

inline void translate(std::string& s, const std::string& from, const std::string& to) {
    if (from.size() > to.size())
        return;
    for (char& c : s)
        if (isIn(c, from))
            c = to[from.find(c)];
}

inline void fill(std::string& s, char c, int start, int n) {
    if (start < 0 || n <= 0)
        return;
    if (s.size() < static_cast<std::size_t>(start + n))
        s.resize(static_cast<std::size_t>(start + n), c);
    std::fill_n(s.begin() + start, n, c);
}

inline std::string subString(const std::string& s, int start, int n) {
    if (start < 0 || start >= static_cast<int>(s.size()) || n < 1)
        return "";
    return s.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(n));
}

inline std::string split(std::string& s, const std::string& set) {
    const std::size_t pos = s.find_first_of(set);
    if (pos == std::string::npos)
        return "";
    const std::string tail = s.substr(pos + 1);
    s.erase(pos);
    return tail;
}

inline void escape(std::string& s, const std::string& set, char esc) {
    std::string result;
    for (const char c : s) {
        if (isIn(c, set))
            result += esc;
        result += c;
    }
    s = result;
}

inline void escapeForQrl(std::string& s, const std::string& set) {
    escape(s, set, '\\');
    if (!isIn('\n', set))
        replaceAll(s, "\n", "\\n");
}

inline void unescape(std::string& s, char esc) {
    std::string result;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == esc && ++i == s.size())
            break;
        result += s[i];
    }
    s = result;
}

inline void dequote(std::string& s, char q, char esc) {
    if (!s.empty() && s.front() == q)
        s.erase(0, 1);
    if (!s.empty() && s.back() == q)
        s.pop_back();
    unescape(s, esc);
}

/// What @p search finds when it begins at @p start; -1 where it cannot.
template <class Search>
int at(const std::string& s, int start, Search search) {
    if (s.empty() || start < 0 || start > static_cast<int>(s.size()))
        return -1;
    const std::size_t found = search(static_cast<std::size_t>(start));
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

inline int find(const std::string& s, const std::string& wanted, int start) {
    return wanted.empty() ? -1 : at(s, start, [&](std::size_t i) { return s.find(wanted, i); });
}

/// The last of the matches from the left, without overlap, that end at or before
/// @p start; 0 is the end.
inline int findLast(const std::string& s, const std::string& wanted, int start) {
    const std::size_t limit = start == 0 ? s.size() : static_cast<std::size_t>(start);
    int last = -1;
    for (int i = 0; (i = find(s, wanted, i)) >= 0; i += static_cast<int>(wanted.size()))
        if (start >= 0 && limit <= s.size() && static_cast<std::size_t>(i) + wanted.size() <= limit)
            last = i;
    return last;
}

inline unsigned hash(const std::vector<unsigned>& codes) {
    unsigned h = 0, shift = 0;
    for (const unsigned code : codes) {
        h += code << shift;
        shift = (shift + 7) % 23;
    }
    return h;
}

} // namespace reference
