// SPDX-License-Identifier: Apache-2.0
// Searches for patterns and texts beside ones that try every place.

#include "fuzz/harness.h"
#include "fuzz/string_reference.h"
#include "strings/string_kit.h"

#include <optional>
#include <string>
#include <vector>

namespace {

/// One element of a pattern: a run, or one character of a set.
struct Element {
    bool isRun = false;
    bool isAny = false;
    bool isNegated = false;
    std::vector<std::pair<unsigned, unsigned>> ranges;

    bool matches(unsigned code) const {
        for (const auto& [low, high] : ranges)
            if (low <= code && code <= high)
                return !isNegated;
        return isAny || isNegated;
    }
};

/// Reads a pattern of codes into elements.
class Reader {
public:
    explicit Reader(std::vector<unsigned> pattern) : pattern_(std::move(pattern)) {}

    std::vector<Element> elements() {
        std::vector<Element> result;
        while (at_ < pattern_.size())
            result.push_back(element());
        return result;
    }

private:
    Element element() {
        Element result;
        if (take('*'))
            result.isRun = true;
        else if (take('.'))
            result.isAny = true;
        else if (std::optional<Element> set = bracketed())
            result = *set;
        else
            result.ranges.push_back({literal(), 0}),
                result.ranges[0].second = result.ranges[0].first;
        return result;
    }

    /// The set that begins here; nothing when no bracket closes it.
    std::optional<Element> bracketed() {
        const std::size_t start = at_;
        if (!take('['))
            return {};
        Element result;
        result.isNegated = take('^') || take('!');
        for (bool isFirst = true; at_ < pattern_.size() && (isFirst || !is(']')); isFirst = false) {
            const unsigned low = literal();
            unsigned high = low;
            if (is('-') && at_ + 1 < pattern_.size() && pattern_[at_ + 1] != ']') {
                ++at_;
                high = literal();
            }
            result.ranges.push_back({low, high});
        }
        if (take(']'))
            return result;
        at_ = start;
        return {};
    }

    bool is(unsigned code) const { return at_ < pattern_.size() && pattern_[at_] == code; }
    bool take(unsigned code) {
        const bool there = is(code);
        at_ += there;
        return there;
    }
    unsigned literal() {
        if (is('\\') && at_ + 1 < pattern_.size())
            ++at_;
        return pattern_[at_++];
    }

    std::vector<unsigned> pattern_;
    std::size_t at_ = 0;
};

template <class String>
std::vector<unsigned> codesOf(const std::string& s) {
    std::vector<unsigned> codes;
    for (const char c : s)
        codes.push_back(static_cast<std::make_unsigned_t<CharOf<String>>>(wideChar<String>(c)));
    return codes;
}

/// The first place from which all elements can be walked: the set of elements
/// that may come next is carried along the text.
int firstMatch(const std::vector<Element>& elements, const std::vector<unsigned>& text, int start) {
    const auto size = static_cast<int>(text.size());
    for (int begin = start; begin < size; ++begin) {
        std::vector<bool> next(elements.size() + 1);
        next[0] = true;
        for (int i = begin;; ++i) {
            for (std::size_t e = 0; e < elements.size(); ++e)
                if (next[e] && elements[e].isRun)
                    next[e + 1] = true;
            if (next[elements.size()])
                return begin;
            if (i == size)
                break;
            std::vector<bool> then(next.size());
            for (std::size_t e = 0; e < elements.size(); ++e) {
                if (next[e] && elements[e].isRun)
                    then[e] = true;
                else if (next[e] && elements[e].matches(text[static_cast<std::size_t>(i)]))
                    then[e + 1] = true;
            }
            next = then;
        }
    }
    return -1;
}

template <class String>
void searchPatterns(fuzz::Input& input) {
    using Text = TestText<String>;
    static constexpr std::string_view letters = "axb.[]^!-\\*z";
    const std::string pattern = input.textOf(letters, 12);
    const std::string text = input.textOf(input.flag() ? letters : "ax", 40);
    const int start = input.between(0, static_cast<int>(text.size()));
    const int expected = pattern.empty() ? -1
                                         : firstMatch(Reader(codesOf<String>(pattern)).elements(),
                                                      codesOf<String>(text), start);
    FUZZ_CHECK(String(Text(text)).findPattern(Text(pattern), start) == expected);
    FUZZ_CHECK(String(Text(text)).findPattern(String(Text(pattern)), start) == expected);
}

/// A text made of a unit, with a fault here and there: what is hard for searches.
std::string periodic(fuzz::Input& input, const std::string& unit, std::size_t length) {
    std::string result;
    while (result.size() < length) {
        result += unit;
        if (input.between(0, 20) == 1)
            result += input.textOf("axb", 2);
    }
    return result;
}

template <class String>
void searchTexts(fuzz::Input& input) {
    using Text = TestText<String>;
    const std::string unit = input.textOf("ax", 4) + "a";
    const std::string hay =
        periodic(input, unit, input.between<std::size_t>(0, input.flag() ? 1500 : 50));
    const std::size_t skipped = input.flag() ? 1 : 0;
    const std::size_t most = input.flag() ? 2 : std::string::npos;
    const std::string wanted =
        periodic(input, unit, input.between<std::size_t>(1, 100)).substr(skipped, most);
    if (wanted.empty())
        return;
    const String s{Text(hay)};
    const int from = input.between(0, static_cast<int>(hay.size()));
    FUZZ_CHECK(s.find(Text(wanted), from) == reference::find(hay, wanted, from));
    FUZZ_CHECK(s.findLast(Text(wanted), from) == reference::findLast(hay, wanted, from));
    // Replacements longer than what they replace come in here, in short texts too.
    const std::string by = input.textOf("xby", 40);
    std::string replaced = hay;
    reference::replaceAll(replaced, wanted, by);
    String all = s;
    all.replaceAll(Text(wanted), Text(by));
    FUZZ_CHECK(plain(all) == replaced);
}

} // namespace

void fuzz::harness(Input& input) {
    static constexpr void (*searches[])(Input&) = {searchPatterns<KazString>,
                                                   searchPatterns<KazWString>,
                                                   searchTexts<KazString>, searchTexts<KazWString>};
    for (int i = 0; i < 500 && !input.empty(); ++i)
        input.pick(searches)(input);
}
