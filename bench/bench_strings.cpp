// SPDX-License-Identifier: Apache-2.0
// KazString and its tokenizers beside the strings that a tool would use
// instead, and the C library's searches.

#include "tools/strings/KazQuotedStringTokenizer.h"
#include "tools/strings/KazString.h"

#include <benchmark/benchmark.h>

#if defined(MOX_PEER_ABSEIL)
#include <absl/strings/ascii.h>
#include <absl/strings/match.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#endif
#if defined(MOX_PEER_FMT)
#include <fmt/format.h>
#endif
#if defined(MOX_PEER_GLIB)
#include <glib.h>
#endif
#if defined(MOX_PEER_QT)
#include <QByteArray>
#include <QList>
#endif

#include <malloc.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Sizes = std::vector<std::int64_t>;

/// Registers `work/impl/size` for every size. @p make takes the size and gives
/// the step that is measured: a function whose result is consumed.
template <class Make>
void row(const std::string& work, const std::string& impl, const Sizes& sizes, Make make) {
    for (const std::int64_t size : sizes)
        benchmark::RegisterBenchmark((work + "/" + impl + "/" + std::to_string(size)).c_str(),
                                     [make, size](benchmark::State& state) {
                                         auto step = make(static_cast<std::size_t>(size));
                                         for (auto _ : state) {
                                             auto result = step();
                                             benchmark::DoNotOptimize(result);
                                         }
                                     });
}

std::string textOf(std::size_t n,
                   const std::string& sentence = "the quick brown fox jumps over the lazy dog ") {
    std::string text;
    while (text.size() < n)
        text += sentence;
    text.resize(n);
    return text;
}

#if defined(MOX_PEER_GLIB)
/// A GString with an owner.
class GText {
public:
    explicit GText(const char* s) : string_(g_string_new(s)) {}
    GText(const GText& o)
        : string_(g_string_new_len(o.string_->str, static_cast<gssize>(o.string_->len))) {}
    GText& operator=(const GText& o) {
        g_string_truncate(string_, 0);
        g_string_append_len(string_, o.string_->str, static_cast<gssize>(o.string_->len));
        return *this;
    }
    ~GText() { g_string_free(string_, TRUE); }
    GString* operator->() const { return string_; }
    GString* get() const { return string_; }

private:
    GString* string_;
};
#endif

// ---- Copying, passing, assigning

template <class String>
[[gnu::noinline]] int taken(String s) {
    benchmark::DoNotOptimize(s);
    return 0;
}

template <class String>
void sharing(const std::string& impl) {
    const Sizes sizes = {8, 100, 10000};
    row("copy a string", impl, sizes, [](std::size_t n) {
        return [source = String(textOf(n).c_str())] {
            String copy = source;
            benchmark::DoNotOptimize(copy);
            return 0;
        };
    });
    row("pass a string", impl, sizes, [](std::size_t n) {
        return [source = String(textOf(n).c_str())] { return taken<String>(source); };
    });
    row("assign a string twice", impl, sizes, [](std::size_t n) {
        return [a = String(textOf(n).c_str()), b = String(textOf(n).c_str()),
                target = String("")]() mutable {
            target = a;
            benchmark::DoNotOptimize(target);
            target = b;
            benchmark::DoNotOptimize(target);
            return 0;
        };
    });
}

// ---- Appending

template <class String, class Append>
void appending(const std::string& impl, Append append) {
    row("append a character", impl, {1000, 10000, 100000, 1000000}, [append](std::size_t n) {
        return [append, n] {
            String s("");
            for (std::size_t i = 0; i < n; ++i)
                append(s, static_cast<char>('a' + i % 16));
            benchmark::DoNotOptimize(s);
            return 0;
        };
    });
}

/// Pieces that the caller's compiler knows, or that come from elsewhere; to one text or to
/// several in turn.
template <class String, class Append>
void appendingPieces(const std::string& impl, Append append) {
    row("append ten characters", impl, {100, 1000, 10000}, [append](std::size_t n) {
        return [append, n] {
            String s("");
            for (std::size_t i = 0; i < n; ++i)
                append(s, "0123456789");
            benchmark::DoNotOptimize(s);
            return 0;
        };
    });
    row("append ten characters from elsewhere", impl, {100, 1000, 10000}, [append](std::size_t n) {
        return [append, n, piece = static_cast<const char*>("0123456789")]() mutable {
            String s("");
            for (std::size_t i = 0; i < n; ++i) {
                benchmark::DoNotOptimize(piece);
                append(s, piece);
            }
            benchmark::DoNotOptimize(s);
            return 0;
        };
    });
    row("append to eight strings in turn", impl, {1000, 10000}, [append](std::size_t n) {
        return [append, n] {
            std::vector<String> all(8, String(""));
            for (std::size_t i = 0; i < n; ++i)
                append(all[i % 8], "0123456789");
            benchmark::DoNotOptimize(all);
            return 0;
        };
    });
}

/// Numbers of one to seven digits.
template <class String, class Append>
void appendingNumbers(const std::string& impl, Append append) {
    row("append a number", impl, {20, 1000}, [append](std::size_t n) {
        return [append, n] {
            String s("");
            for (int i = 0, number = 1; i < static_cast<int>(n); ++i, number = number * 7 % 9999991)
                append(s, number);
            benchmark::DoNotOptimize(s);
            return 0;
        };
    });
}

/// @p format makes a text of a text, which is so long, and two numbers.
template <class Format>
void formatting(const std::string& impl, Format format) {
    row("format a text and numbers", impl, {10, 100}, [format](std::size_t n) {
        return [format, name = textOf(n), i = 0]() mutable { return format(name.c_str(), ++i); };
    });
}

// ---- Comparing

/// Equal texts of two blocks.
template <class String>
void equality(const std::string& impl) {
    row("equal", impl, {8, 256, 4096}, [](std::size_t n) {
        return [a = String(textOf(n).c_str()), b = String(textOf(n).c_str())] {
            return static_cast<int>(a == b);
        };
    });
}

/// @p compare is called with equal texts of two blocks but for the last
/// character.
template <class String, class Compare>
void comparing(const std::string& impl, Compare compare) {
    row("compare", impl, {8, 100, 256, 10000}, [compare](std::size_t n) {
        return [compare, a = String((textOf(n - 1) + "x").c_str()),
                b = String((textOf(n - 1) + "y").c_str())] { return compare(a, b); };
    });
}

/// The same in another case.
template <class String, class Compare>
void comparingNoCase(const std::string& impl, Compare compare) {
    row("compare ignoring case", impl, {8, 100, 10000}, [compare](std::size_t n) {
        std::string lower = textOf(n - 1) + "x", upper = textOf(n - 1) + "Y";
        for (std::size_t i = 0; i < upper.size(); i += 2)
            upper[i] = static_cast<char>(std::toupper(upper[i]));
        return [compare, a = String(lower.c_str()), b = String(upper.c_str())] {
            return compare(a, b);
        };
    });
}

// ---- Searching in a text that has what is searched for at its end only

template <class String, class Find>
void searching(const std::string& work, const std::string& impl, const std::string& end,
               Find find) {
    row(work, impl, {100, 4096, 65536}, [find, end](std::size_t n) {
        return [find, text = String((textOf(n - end.size()) + end).c_str())] { return find(text); };
    });
}

/// Of common characters; with one in front that the text has nowhere else, or in each
/// word; and one that nearly occurs everywhere.
template <class String, class Find>
void searchingTexts(const std::string& impl, Find find) {
    const std::pair<const char*, const char*> all[] = {
        {"find a text", "needle"},
        {"find a text, rare first character", "#needle"},
        {"find a text, common first character", "owner"}};
    for (const auto& [work, wanted] : all)
        searching<String>(work, impl, wanted,
                          [find, wanted = wanted](const String& s) { return find(s, wanted); });
    row("find a text, near misses", impl, {4096, 65536}, [find](std::size_t n) {
        return [find, text = String(std::string(n, 'a').c_str()),
                wanted = std::string(n / 4, 'a') + "b"] { return find(text, wanted.c_str()); };
    });
}

// ---- Editing a copy

template <class String, class Edit>
void editing(const std::string& work, const std::string& impl, const Sizes& sizes,
             const std::function<std::string(std::size_t)>& makeText, Edit edit) {
    row(work, impl, sizes, [edit, makeText](std::size_t n) {
        return [edit, source = String(makeText(n).c_str())] {
            auto result = edit(source);
            benchmark::DoNotOptimize(result);
            return 0;
        };
    });
}

const Sizes editSizes = {100, 4096, 65536};
const Sizes replaceSizes = {1000, 65536, 1048576};
const Sizes tokenSizes = {100, 1000, 10240, 1048576};

std::string words(std::size_t n) {
    return textOf(n);
}

/// A paragraph with 16 blanks on either side.
std::string indented(std::size_t n) {
    const std::string blanks(16, ' ');
    return blanks + textOf(n - 33) + "." + blanks;
}

/// Blanks, a quarter of the text on either side.
std::string centred(std::size_t n) {
    const std::string blanks(n / 4, ' ');
    return blanks + textOf(n / 2 - 1) + "." + blanks;
}

std::string quotedWords(std::size_t n) {
    return textOf(
        n,
        "she said \"the quick brown fox\" and left C:\\temp as it was, with all that was in it; ");
}

std::string commaList(std::size_t n) {
    return textOf(n - 1, "alpha,beta gamma,delta,epsilon zeta eta,theta,,iota kappa lambda,") + ".";
}

std::string mixedList(std::size_t n) {
    return textOf(n - 1, "alpha, beta;gamma\tdelta epsilon;zeta eta,theta iota kappa\tlambda ") +
           ".";
}

std::string quotedList(std::size_t n) {
    return textOf(n, "alpha beta \"gamma delta\" epsilon\\ zeta eta 'theta iota' kappa lambda ");
}

// ---- Tokens

/// What a step does with a token: looks at it.
template <class String>
void use(const String& token) {
    benchmark::DoNotOptimize(token);
}

template <class Next>
int tokens(const std::string& text, Next next) {
    int count = 0;
    for (std::size_t start = 0; start <= text.size(); ++count) {
        const std::size_t end = std::min(next(text, start), text.size());
        use(text.substr(start, end - start));
        start = end + 1;
    }
    return count;
}

template <class Tokenizer>
int tokens(Tokenizer tokenizer) {
    int count = 0;
    for (; !tokenizer.isDone(); ++count)
        use(tokenizer.nextString(false));
    return count;
}

std::size_t unquotedBlank(const std::string& text, std::size_t i) {
    for (char open = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\')
            ++i;
        else if (open != 0)
            open = c == open ? '\0' : open;
        else if (c == '"' || c == '\'')
            open = c;
        else if (c == ' ')
            break;
    }
    return i;
}

// ---- The implementations

void addMoxtools() {
    const std::string impl = "moxtools";
    using S = KazString;
    sharing<S>(impl);
    appending<S>(impl, [](S& s, char c) { s.append(c); });
    appendingPieces<S>(impl, [](S& s, const char* piece) { s.append(piece); });
    appendingNumbers<S>(impl, [](S& s, int number) { s.appendNumber(number); });
    formatting(impl, [](const char* name, int i) {
        S s;
        s.format("%s: %d of %d", name, i, 77);
        return s;
    });
    equality<S>(impl);
    searching<S>("find the last of a character", impl, " ",
                 [](const S& s) { return s.findLast('#'); });
    comparing<S>(impl, [](const S& a, const S& b) { return a.compare(b); });
    comparingNoCase<S>(impl, [](const S& a, const S& b) { return a.compareNoCase(b); });
    searching<S>("find a character", impl, "#", [](const S& s) { return s.find('#'); });
    searching<S>("find one of a set", impl, "#", [](const S& s) { return s.findChar("#{}[]"); });
    searchingTexts<S>(impl, [](const S& s, const char* wanted) { return s.find(wanted); });
    searching<S>("count a character", impl, "o", [](const S& s) { return s.count('o'); });
    editing<S>("upper case", impl, editSizes, words, [](S s) {
        s.toUpper();
        return s;
    });
    const auto trim = [](S s) {
        s.trimLeft();
        s.trimRight();
        return s;
    };
    editing<S>("trim a few blanks", impl, editSizes, indented, trim);
    editing<S>("trim many blanks", impl, editSizes, centred, trim);
    editing<S>("escape", impl, editSizes, quotedWords, [](S s) {
        s.escape("\"\\", '\\');
        return s;
    });
    editing<S>("replace all", impl, replaceSizes, words, [](S s) {
        s.replaceAll("fox", "vixen");
        return s;
    });
    row("hash", impl, {16, 256, 65536},
        [](std::size_t n) { return [s = S(textOf(n).c_str())] { return S::hash(s); }; });
    editing<S>("tokens at a character", impl, tokenSizes, commaList,
               [](const S& s) { return tokens(KazStringTokenizer(s, ",")); });
    editing<S>("tokens at a set", impl, tokenSizes, mixedList,
               [](const S& s) { return tokens(KazStringTokenizer(s, ",; \t")); });
    editing<S>("tokens with quotes", impl, tokenSizes, quotedList,
               [](const S& s) { return tokens(KazQuotedStringTokenizer(s, " ", "\"'", '\\')); });
}

void addStandard() {
    const std::string impl = "std";
    using S = std::string;
    sharing<S>(impl);
    appending<S>(impl, [](S& s, char c) { s.push_back(c); });
    appendingPieces<S>(impl, [](S& s, const char* piece) { s.append(piece); });
    appendingNumbers<S>(impl, [](S& s, int number) { s += std::to_string(number); });
    formatting(impl, [](const char* name, int i) {
        char text[512];
        return S(text, static_cast<std::size_t>(
                           std::snprintf(text, sizeof text, "%s: %d of %d", name, i, 77)));
    });
    equality<S>(impl);
    searching<S>("find the last of a character", impl, " ",
                 [](const S& s) { return s.rfind('#'); });
    comparing<S>(impl, [](const S& a, const S& b) { return a.compare(b); });
    searching<S>("find a character", impl, "#", [](const S& s) { return s.find('#'); });
    searching<S>("find one of a set", impl, "#",
                 [](const S& s) { return s.find_first_of("#{}[]"); });
    searchingTexts<S>(impl, [](const S& s, const char* wanted) { return s.find(wanted); });
    searching<S>("count a character", impl, "o",
                 [](const S& s) { return std::count(s.begin(), s.end(), 'o'); });
    editing<S>("upper case", impl, editSizes, words, [](S s) {
        std::transform(s.begin(), s.end(), s.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        return s;
    });
    const auto trim = [](const S& s) {
        const char* const blanks = " \t\n\r";
        const std::size_t first = s.find_first_not_of(blanks);
        return s.substr(first, s.find_last_not_of(blanks) + 1 - first);
    };
    editing<S>("trim a few blanks", impl, editSizes, indented, trim);
    editing<S>("trim many blanks", impl, editSizes, centred, trim);
    editing<S>("escape", impl, editSizes, quotedWords, [](const S& s) {
        S result;
        result.reserve(s.size() + s.size() / 8);
        for (const char c : s) {
            if (c == '"' || c == '\\')
                result += '\\';
            result += c;
        }
        return result;
    });
    editing<S>("replace all", impl, replaceSizes, words, [](const S& s) {
        S result;
        result.reserve(s.size() + s.size() / 8);
        std::size_t copied = 0;
        for (std::size_t i; (i = s.find("fox", copied)) != S::npos; copied = i + 3)
            result.append(s, copied, i - copied).append("vixen");
        return result.append(s, copied, S::npos);
    });
    row("hash", impl, {16, 256, 65536},
        [](std::size_t n) { return [s = textOf(n)] { return std::hash<S>()(s); }; });
    editing<S>("tokens at a character", impl, tokenSizes, commaList, [](const S& s) {
        return tokens(s, [](const S& t, std::size_t i) { return t.find(',', i); });
    });
    editing<S>("tokens at a set", impl, tokenSizes, mixedList, [](const S& s) {
        return tokens(s, [](const S& t, std::size_t i) { return t.find_first_of(",; \t", i); });
    });
    editing<S>("tokens with quotes", impl, tokenSizes, quotedList,
               [](const S& s) { return tokens(s, unquotedBlank); });
}

void addCLibrary() {
    using S = std::string; // as a holder of terminated text
    comparing<S>("strcmp",
                 [](const S& a, const S& b) { return std::strcmp(a.c_str(), b.c_str()); });
    comparingNoCase<S>("strcasecmp",
                       [](const S& a, const S& b) { return strcasecmp(a.c_str(), b.c_str()); });
    searching<S>("find a character", "memchr", "#",
                 [](const S& s) { return std::memchr(s.data(), '#', s.size()); });
    searching<S>("find one of a set", "strpbrk", "#",
                 [](const S& s) { return std::strpbrk(s.c_str(), "#{}[]"); });
    searching<S>("find the last of a character", "memrchr", " ",
                 [](const S& s) { return memrchr(s.data(), '#', s.size()); });
    searchingTexts<S>(
        "strstr", [](const S& s, const char* wanted) { return std::strstr(s.c_str(), wanted); });
}

void addAbseil() {
#if defined(MOX_PEER_ABSEIL)
    const std::string impl = "absl";
    using S = std::string;
    appendingNumbers<S>(impl, [](S& s, int number) { absl::StrAppend(&s, number); });
    formatting(
        impl, [](const char* name, int i) { return absl::StrFormat("%s: %d of %d", name, i, 77); });
    comparingNoCase<S>(impl, [](const S& a, const S& b) { return absl::EqualsIgnoreCase(a, b); });
    editing<S>("upper case", impl, editSizes, words, [](S s) {
        absl::AsciiStrToUpper(&s);
        return s;
    });
    const auto trim = [](const S& s) { return S(absl::StripAsciiWhitespace(s)); };
    editing<S>("trim a few blanks", impl, editSizes, indented, trim);
    editing<S>("trim many blanks", impl, editSizes, centred, trim);
    editing<S>("escape", impl, editSizes, quotedWords, [](const S& s) {
        return absl::StrReplaceAll(s, {{"\"", "\\\""}, {"\\", "\\\\"}});
    });
    editing<S>("replace all", impl, replaceSizes, words, [](const S& s) {
        return absl::StrReplaceAll(s, {{"fox", "vixen"}});
    });
    const auto useAll = [](auto&& pieces) {
        int count = 0;
        for (const absl::string_view piece : pieces) {
            use(S(piece));
            ++count;
        }
        return count;
    };
    editing<S>("tokens at a character", impl, tokenSizes, commaList,
               [useAll](const S& s) { return useAll(absl::StrSplit(s, ',')); });
    editing<S>("tokens at a set", impl, tokenSizes, mixedList, [useAll](const S& s) {
        return useAll(absl::StrSplit(s, absl::ByAnyChar(",; \t")));
    });
#endif
}

void addFmt() {
#if defined(MOX_PEER_FMT)
    formatting("fmt",
               [](const char* name, int i) { return fmt::format("{}: {} of {}", name, i, 77); });
#endif
}

void addGlib() {
#if defined(MOX_PEER_GLIB)
    const std::string impl = "glib";
    using S = GText;
    sharing<S>(impl);
    appending<S>(impl, [](S& s, char c) { g_string_append_c(s.get(), c); });
    comparing<S>(impl, [](const S& a, const S& b) { return g_strcmp0(a->str, b->str); });
    comparingNoCase<S>(impl,
                       [](const S& a, const S& b) { return g_ascii_strcasecmp(a->str, b->str); });
    const auto owned = [](char* text) {
        benchmark::DoNotOptimize(text);
        g_free(text);
        return 0;
    };
    editing<S>("upper case", impl, editSizes, words, [](S s) {
        g_string_ascii_up(s.get());
        return s;
    });
    const auto trim = [](S s) {
        g_strstrip(s->str);
        return s;
    };
    editing<S>("trim a few blanks", impl, editSizes, indented, trim);
    editing<S>("trim many blanks", impl, editSizes, centred, trim);
    editing<S>("escape", impl, editSizes, quotedWords,
               [owned](const S& s) { return owned(g_strescape(s->str, nullptr)); });
    editing<S>("replace all", impl, replaceSizes, words, [](S s) {
        g_string_replace(s.get(), "fox", "vixen", 0);
        return s;
    });
    const auto useAll = [](char** pieces) {
        int count = 0;
        for (; pieces[count] != nullptr; ++count)
            use(pieces[count]);
        g_strfreev(pieces);
        return count;
    };
    editing<S>("tokens at a character", impl, tokenSizes, commaList,
               [useAll](const S& s) { return useAll(g_strsplit(s->str, ",", 0)); });
    editing<S>("tokens at a set", impl, tokenSizes, mixedList,
               [useAll](const S& s) { return useAll(g_strsplit_set(s->str, ",; \t", 0)); });
#endif
}

void addQt() {
#if defined(MOX_PEER_QT)
    const std::string impl = "qt";
    using S = QByteArray;
    sharing<S>(impl);
    appending<S>(impl, [](S& s, char c) { s.append(c); });
    comparing<S>(impl, [](const S& a, const S& b) { return a.compare(b); });
    comparingNoCase<S>(impl,
                       [](const S& a, const S& b) { return a.compare(b, Qt::CaseInsensitive); });
    searching<S>("find a character", impl, "#", [](const S& s) { return s.indexOf('#'); });
    searchingTexts<S>(impl, [](const S& s, const char* wanted) { return s.indexOf(wanted); });
    searching<S>("count a character", impl, "o", [](const S& s) { return s.count('o'); });
    editing<S>("upper case", impl, editSizes, words, [](S s) { return std::move(s).toUpper(); });
    const auto trim = [](const S& s) { return s.trimmed(); };
    editing<S>("trim a few blanks", impl, editSizes, indented, trim);
    editing<S>("trim many blanks", impl, editSizes, centred, trim);
    editing<S>("escape", impl, editSizes, quotedWords, [](S s) {
        s.replace('\\', "\\\\");
        s.replace('"', "\\\"");
        return s;
    });
    editing<S>("replace all", impl, replaceSizes, words, [](S s) {
        s.replace("fox", "vixen");
        return s;
    });
    editing<S>("tokens at a character", impl, tokenSizes, commaList, [](const S& s) {
        const QList<QByteArray> pieces = s.split(',');
        for (const QByteArray& piece : pieces)
            use(piece);
        return static_cast<int>(pieces.size());
    });
#endif
}

// ---- Memory

/// Counter `bytes`: what each of many strings takes, its object included.
template <class String, class Make>
void memory(const std::string& work, const std::string& impl, std::int64_t size, Make make) {
    benchmark::RegisterBenchmark(
        (work + "/" + impl + "/" + std::to_string(size)).c_str(),
        [size, make](benchmark::State& state) {
            constexpr std::size_t count = 10000;
            const String source(textOf(static_cast<std::size_t>(size)).c_str());
            std::size_t used = 0;
            for (auto _ : state) {
                std::vector<String> strings;
                strings.reserve(count);
                const std::size_t before = mallinfo2().uordblks;
                for (std::size_t i = 0; i < count; ++i)
                    strings.push_back(make(source));
                benchmark::DoNotOptimize(strings.data());
                used = mallinfo2().uordblks - before;
            }
            state.counters["bytes"] = static_cast<double>(used) / count + sizeof(String);
        });
}

template <class String, class Fresh>
void memoryRows(const std::string& impl, Fresh fresh) {
    for (const std::int64_t size : {8, 20, 100}) {
        memory<String>("memory: a string", impl, size, fresh);
        memory<String>("memory: a copy of a string", impl, size, [](const String& s) { return s; });
    }
}

void addMemory() {
    memoryRows<KazString>("moxtools", [](const KazString& s) { return KazString(s.getValue()); });
    memoryRows<std::string>("std", [](const std::string& s) { return std::string(s.c_str()); });
#if defined(MOX_PEER_GLIB)
    memoryRows<GText>("glib", [](const GText& s) { return GText(s->str); });
#endif
#if defined(MOX_PEER_QT)
    memoryRows<QByteArray>("qt", [](const QByteArray& s) { return QByteArray(s.constData()); });
#endif
}

} // namespace

int main(int argc, char** argv) {
    addMoxtools();
    addStandard();
    addCLibrary();
    addAbseil();
    addFmt();
    addGlib();
    addQt();
    addMemory();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
