// SPDX-License-Identifier: Apache-2.0
// Edits of a few strings that share blocks, and questions about them, beside
// std::string.

#include "fuzz/harness.h"
#include "fuzz/string_reference.h"
#include "strings/string_kit.h"

#include <array>
#include <climits>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

namespace {

/// The same done to, or asked of, a string s and its text t, with an argument, which has the
/// value v, and with what else was drawn.
#define BOTH(ofString, ofText)                                                                     \
    [](S& s, [[maybe_unused]] auto&& a, [[maybe_unused]] D d) -> decltype(auto) {                  \
        return ofString;                                                                           \
    },                                                                                             \
        [](T& t, [[maybe_unused]] V v, [[maybe_unused]] D d) -> decltype(auto) { return ofText; }

/// A pool of strings and what they should hold. Each step edits one of them,
/// the subject, with an argument that may be a text of its own, a part of the
/// subject's text, or a string of the pool, the subject included.
template <class String>
class Model {
public:
    Model() : texts_(5) {
        setUpAppending();
        setUpReplacing();
        setUpCutting();
        setUpBuffers();
        setUpPunctuation();
        setUpQuestions();
    }

    void run(fuzz::Input& input) {
        input_ = &input;
        failures_.emplace(input);
        strings_.assign(texts_.size(), String());
        texts_.assign(texts_.size(), std::string());
        // Enough for any corpus file, and a bound for inputs that are much larger.
        for (int i = 0; i < 4000 && !input.empty(); ++i)
            step();
    }

private:
    /// What an edit may use beside its argument.
    struct Draw {
        int pos; ///< around the text, invalid positions included
        int at;  ///< valid, the end included
        int few, many, number;
        unsigned size;
        char c, q;
        std::string from, word;
        bool isNull; ///< the subject
        bool isCut;  ///< by setSize(size)
        void* block; ///< the subject's
    };

    using Char = CharOf<String>;
    using Text = TestText<String>;
    using S = String;
    using T = std::string;
    using V = const std::string&;
    using D = const Draw&;

    void step() {
        i_ = pick();
        input_->pick(edits_)();
        // Long texts cost time and find nothing more.
        if (text().size() > 300) {
            subject().removeFrom(40);
            text().erase(40);
        }
        check();
    }

    /// Also between an edit that ran out of memory and its repetition.
    void check() const {
        for (std::size_t i = 0; i < strings_.size(); ++i)
            FUZZ_CHECK(plain(strings_[i]) == texts_[i]);
        FUZZ_CHECK(faultOf(strings_) == "");
    }

    static Char wide(char c) { return wideChar<String>(c); }

    std::size_t pick() { return input_->between<std::size_t>(0, strings_.size() - 1); }
    String& subject() { return strings_[i_]; }
    std::string& text() { return texts_[i_]; }

    /// Words have few different characters, so that sets and searches hit. In
    /// the wide class x, y and z stand for characters beyond a byte.
    static constexpr std::string_view letters = "abxy \n\\'AB\xE9";
    std::string word() { return input_->textOf(letters, input_->flag() ? 60 : 5); }
    char letter() { return input_->pick(letters); }

    Draw draw() {
        const int length = static_cast<int>(text().size());
        Draw d{input_->between(-2, length + 2),
               input_->between(0, length),
               input_->between(-1, 6),
               input_->between(-1, 60),
               input_->raw<int>(),
               input_->between(1U, 70U),
               letter(),
               letter(),
               input_->textOf("abxy", 2),
               word(),
               subject().disguise() == nullptr,
               false,
               subject().disguise()};
        d.isCut = !d.isNull && blockOf(subject()).referenceCount > 1 &&
                  blockOf(subject()).bufferLength != static_cast<int>(d.size) &&
                  d.size < text().size();
        return d;
    }

    /// Calls @p edit with an argument in each form and with its value.
    template <class Edit>
    void withText(Edit edit) {
        const int form = input_->between(0, 2);
        if (form == 0) {
            const std::string value = word();
            edit(static_cast<const Char*>(Text(value)), value);
        } else if (form == 1) {
            const auto at = input_->between<std::size_t>(0, text().size());
            const std::string value = text().substr(at);
            edit(subject().getValue() + at, value);
        } else {
            const std::size_t other = pick();
            const std::string value = texts_[other];
            edit(strings_[other], value);
        }
    }

    template <class Edit, class Reference>
    void add(Edit edit, Reference reference) {
        edits_.push_back([this, edit, reference] {
            withText([&](auto&& argument, const std::string& value) {
                const Draw d = draw();
                failures_->step([&] { edit(subject(), argument, d); }, [this] { check(); });
                reference(text(), value, d);
            });
        });
    }

    /// For what only takes away or marks: whoever finds nothing leaves the block alone, and
    /// what leaves no text leaves no block.
    template <class Edit, class Reference>
    void addCutting(Edit edit, Reference reference) {
        add(edit, [this, reference](T& t, V v, D d) {
            const bool wasEmpty = t.empty();
            const T before = t;
            reference(t, v, d);
            FUZZ_CHECK(wasEmpty || t != before || subject().disguise() == d.block);
            FUZZ_CHECK(wasEmpty || !t.empty() || subject().disguise() == nullptr);
        });
    }

    /// For what changes all that share the subject's block.
    template <class Edit, class Reference>
    void addInPlace(Edit edit, Reference reference) {
        add(edit, [this, reference](T&, V value, D d) {
            for (std::size_t i = 0; i < strings_.size(); ++i)
                if (i == i_ || (!d.isNull && strings_[i].disguise() == subject().disguise()))
                    reference(texts_[i], value, d);
        });
    }

    /// Puts the result into the pool, where it may share its source's block.
    template <class Extract, class Reference>
    void addResult(Extract extract, Reference reference) {
        edits_.push_back([this, extract, reference] {
            const Draw d = draw();
            String result;
            failures_->step([&] { result = extract(subject(), text(), d); }, [this] { check(); });
            const std::string expected = reference(text(), "", d);
            FUZZ_CHECK(plain(result) == expected);
            i_ = pick();
            subject() = result;
            FUZZ_CHECK(subject().disguise() == result.disguise());
            text() = expected;
        });
    }

    /// For what changes nothing.
    template <class Question, class Reference>
    void ask(Question question, Reference reference) {
        edits_.push_back([this, question, reference] {
            withText([&](auto&& argument, const std::string& value) {
                const Draw d = draw();
                const auto answer =
                    failures_->ask([&] { return question(subject(), argument, d); });
                FUZZ_CHECK(answer == reference(text(), value, d));
            });
        });
    }

    void setUpAppending() {
        add(BOTH(s = a, t = v));
        add(BOTH(s += a, t += v));
        add(BOTH(s = s + a, t += v));
        add(BOTH(s = wide(d.c) + ('a' + s + 'b' + wide(d.q)), t = d.c + ('a' + t + 'b') + d.q));
        add(BOTH(s.prepend(a), t.insert(0, v)));
        add(BOTH(s.insert(d.pos, a), reference::replaceRange(t, d.pos, 0, v)));
        add(BOTH(s.repeat(a, d.few), reference::repeat(t, v, d.few)));
        add(BOTH(s.repeat(wide(d.c), d.many), reference::repeat(t, T(1, d.c), d.many)));
        add(
            [](S& s, auto&&, D d) {
                S grown = s;
                for (int n = d.many; n > 0; --n)
                    grown += wide(d.c);
                s = grown;
            },
            [](T& t, V, D d) { reference::repeat(t, T(1, d.c), d.many); });
        add(BOTH(s.appendNumber(d.number), t += std::to_string(d.number)));
        edits_.push_back([this] {
            const std::size_t other = pick();
            String moved = std::move(strings_[other]);
            subject() = std::move(moved);
            text() = std::exchange(texts_[other], "");
        });
    }

    void setUpReplacing() {
        add(BOTH(s.replace(d.pos, d.few, a),
                 d.isNull ? void() : reference::replaceRange(t, d.pos, d.few, v)));
        add(BOTH(s.replace(static_cast<const Char*>(Text(d.from)), a),
                 reference::replaceFirst(t, d.from, v)));
        add(BOTH(s.replace(S(Text(d.from)), a), reference::replaceFirst(t, d.from, v)));
        add(BOTH(s.replaceAll(S(Text(d.from)), a), reference::replaceAll(t, d.from, v)));
        add(BOTH(s.replaceAll(static_cast<const Char*>(Text(d.from)), a),
                 reference::replaceAll(t, d.from, v)));
        add(BOTH(s.replaceAll(a, static_cast<const Char*>(Text(d.word))),
                 reference::replaceAll(t, v, d.word)));
        addInPlace(BOTH(s.replaceInSet(a, wide(d.c)), reference::replaceInSet(t, v, d.c)));
        addInPlace(BOTH(s.replaceAllInSet(a, wide(d.c)), reference::replaceAllInSet(t, v, d.c)));
        add(BOTH(s.translate(static_cast<const Char*>(a), Text(d.word)),
                 reference::translate(t, v, d.word)));
        add(BOTH(s.translate(static_cast<const Char*>(a), wide(d.c)),
                 reference::replaceAllInSet(t, v, d.c)));
        add(BOTH(s.toUpper(), eachLetter(t, raise)));
        add(BOTH(s.toLower(), eachLetter(t, lower)));
    }

    void setUpCutting() {
        addCutting(BOTH(s.remove(d.pos, d.few), reference::remove(t, d.pos, d.few)));
        addCutting(BOTH(s.removeFrom(d.pos), reference::remove(t, d.pos, INT_MAX)));
        addCutting(BOTH(s.removeBefore(d.pos), reference::remove(t, 0, d.pos)));
        addResult(BOTH(s.subString(d.pos, d.few), reference::subString(t, d.pos, d.few)));
        addResult(BOTH(s.subStringBefore(d.pos), reference::subString(t, 0, d.pos)));
        addResult(BOTH(s.subStringFrom(d.pos), reference::subString(t, d.pos, INT_MAX)));
        addResult(BOTH(s.split(Text(d.word)), reference::split(t, d.word)));
        addResult(BOTH(s.split(wide(d.c)), reference::split(t, T(1, d.c))));
        addCutting(BOTH(s.trimLeft(a), reference::trimLeft(t, v)));
        addCutting(BOTH(s.trimRight(a), reference::trimRight(t, v)));
        addCutting(BOTH(s.trimLeft(), reference::trimLeft(t, " \t\n\r")));
        addCutting(BOTH(s.trimRight(), reference::trimRight(t, " \t\n\r")));
    }

    void setUpBuffers() {
        add(BOTH(d.at < s.getLength() ? void(s[d.at] = wide('b')) : void(),
                 reference::fill(t, 'b', d.at, d.at < int(t.size()) ? 1 : 0)));
        add(BOTH(s.setLength(d.at), t.resize(static_cast<std::size_t>(d.at))));
        add(
            [](S& s, auto&&, D d) {
                Char* const buffer = s.getBuffer(static_cast<int>(d.word.size()));
                *std::transform(d.word.begin(), d.word.end(), buffer, wide) = 0;
                s.releaseBuffer();
            },
            [](T& t, V, D d) { t = d.word; });
        add(BOTH(s.setSize(d.size), d.isCut ? t.resize(d.size) : void()));
        add(
            [](S& s, auto&&, D d) {
                s.minimizeSize();
                FUZZ_CHECK(d.isNull || blockOf(s).bufferLength - s.getLength() <= 15);
            },
            [](T&, V, D) {});
        add(BOTH(s.fill(wide(d.c), d.pos, d.many),
                 d.isNull ? void() : reference::fill(t, d.c, d.pos, d.many)));
        add(BOTH(s.fill(wide(d.c)), reference::fill(t, d.c, 0, int(t.size()))));
        add(BOTH(s.fillFrom(wide(d.c), d.pos),
                 reference::fill(t, d.c, d.pos, int(t.size()) - d.pos)));
        add(BOTH(s.fillBefore(wide(d.c), d.pos),
                 reference::fill(t, d.c, 0, std::min(d.pos, int(t.size())))));
    }

    void setUpPunctuation() {
        addCutting(BOTH(s.escape(a, wide(d.c)), reference::escape(t, v, d.c)));
        addCutting(BOTH(s.escapeForQrl(a), reference::escapeForQrl(t, v)));
        addCutting(BOTH(s.unescape(wide(d.c)), reference::unescape(t, d.c)));
        add([](S& s, auto&& a, D d) { s.enquote(wide(d.q), a, wide(d.c)); },
            [](T& t, V v, D d) {
                reference::escape(t, v, d.c);
                t = d.q + t + d.q;
            });
        addCutting(BOTH(s.dequote(wide(d.q), wide(d.c)), reference::dequote(t, d.q, d.c)));
    }

    void setUpQuestions() {
        // On one character from both ends, with every start around the text.
        ask(BOTH(s.find(wide(d.c), d.pos), reference::find(t, T(1, d.c), d.pos)));
        ask(BOTH(s.findNot(wide(d.c), d.pos),
                 reference::at(t, d.pos, [&](auto i) { return t.find_first_not_of(d.c, i); })));
        ask(BOTH(s.findLast(wide(d.c), d.pos), reference::at(t, d.pos, [&](auto i) {
                     return t.rfind(d.c, i == 0 ? T::npos : i);
                 })));
        ask(BOTH(s.findLastNot(wide(d.c), d.pos),
                 reference::at(t, d.pos, [&](auto i) { return t.find_last_not_of(d.c, i); })));
        ask(BOTH(s.count(wide(d.c)), static_cast<int>(std::count(t.begin(), t.end(), d.c))));
        // On a text or a set.
        ask(BOTH(s.find(a, d.pos), reference::find(t, v, d.pos)));
        ask(BOTH(s.find(Text(d.from), d.pos), reference::find(t, d.from, d.pos)));
        ask(BOTH(d.at < s.getLength() ? std::as_const(s)[d.at] : 0,
                 d.at < int(t.size()) ? wide(t[static_cast<std::size_t>(d.at)]) : 0));
        ask(BOTH(s.findLast(a, d.pos), reference::findLast(t, v, d.pos)));
        ask(BOTH(s.findLast(Text(d.from), d.pos), reference::findLast(t, d.from, d.pos)));
        ask(BOTH(s.findChar(Text(d.word), d.pos),
                 reference::at(t, d.pos, [&](auto i) { return t.find_first_of(d.word, i); })));
        ask(BOTH(s.findLastChar(Text(d.word), d.pos), reference::at(t, d.pos, [&](auto i) {
                     return t.find_last_of(d.word, i == 0 ? T::npos : i);
                 })));
        // Orders of unsigned characters, and hashes.
        ask(BOTH(s == a, t == v));
        ask(BOTH(s.isEmpty() ? 0 : s.compare(Text(plain(S(a)))), t.empty() ? 0 : order(t, v)));
        ask(
            [](S& s, auto&& a, D d) {
                const S o(a);
                return s && o ? std::array{sign(s.compareN(o.getValue(), d.at)),
                                           sign(s.compareN(o, d.at)), s.compareNoCase(o),
                                           S::compareNoCase(s.getValue(), o.getValue())}
                              : std::array<int, 4>();
            },
            [](T& t, V v, D d) {
                const auto n = static_cast<std::size_t>(d.at);
                const int first = order(t.substr(0, n), v.substr(0, n));
                const int noCase = order(lowered(t), lowered(v));
                return t.empty() || v.empty() ? std::array<int, 4>()
                                              : std::array{first, first, noCase, noCase};
            });
        ask(BOTH(S(s.getValue()).equalsNoCase(Text(plain(S(a)))), lowered(t) == lowered(v)));
        ask(BOTH(s && S(a) ? s.equalsNoCase(S(a)) : s == S(a), lowered(t) == lowered(v)));
        ask(
            [](S& s, auto&&, D) {
                return std::array{S::hash(s), S::hash(s.getValue()), S::hashNoCase(s),
                                  S::hashNoCase(s.getValue()),
                                  S::hashNoCaseDisguised(s.disguise())};
            },
            [](T& t, V, D) {
                T upper = t;
                eachLetter(upper, raise);
                const unsigned exact = reference::hash(codes(t));
                const unsigned noCase = reference::hash(codes(upper));
                return std::array{exact, exact, noCase, noCase, noCase};
            });
    }

    static int raise(int c) { return std::toupper(c); }
    static int lower(int c) { return std::tolower(c); }

    /// What x, y and z stand for in the wide class has no case.
    static void eachLetter(std::string& t, int (*map)(int)) {
        for (char& c : t)
            if (wide(c) < 0x80)
                c = static_cast<char>(map(c));
    }

    static std::string lowered(std::string t) {
        eachLetter(t, lower);
        return t;
    }

    static std::vector<unsigned> codes(const std::string& t) {
        std::vector<unsigned> result;
        for (const char c : t)
            result.push_back(static_cast<std::make_unsigned_t<Char>>(wide(c)));
        return result;
    }

    static int sign(int order) { return (order > 0) - (order < 0); }

    static int order(const std::string& a, const std::string& b) {
        const std::vector<unsigned> left = codes(a), right = codes(b);
        return (left > right) - (left < right);
    }

    fuzz::Input* input_ = nullptr;
    std::optional<fuzz::Failures> failures_;
    std::vector<String> strings_;
    std::vector<std::string> texts_;
    std::size_t i_ = 0;
    std::vector<std::function<void()>> edits_;
};

} // namespace

void fuzz::harness(Input& input) {
    static Model<KazString> narrow;
    static Model<KazWString> wide;
    if (input.flag())
        wide.run(input);
    else
        narrow.run(input);
}
