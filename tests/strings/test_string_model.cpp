// Random edits on a few strings that share blocks, beside std::string.

#include "kit/random.h"
#include "reference.h"
#include "string_kit.h"

#include <climits>
#include <functional>
#include <utility>

namespace {

/// A pool of strings and what they should hold. Each step edits one of them,
/// the subject, with an argument that may be a text of its own, a part of the
/// subject's text, or a string of the pool, the subject included.
template <class String>
class Model {
public:
    explicit Model(std::uint64_t seed) : rng_(seed), strings_(5), texts_(5) {
        setUpAppending();
        setUpReplacing();
        setUpCutting();
        setUpBuffers();
        setUpPunctuation();
    }

    void step() {
        i_ = pick();
        const std::size_t edit =
            static_cast<std::size_t>(rng_.below(static_cast<int>(edits_.size())));
        SCOPED_TRACE("edit " + std::to_string(edit) + " on \"" + text() + "\"");
        edits_[edit]();
        // Long texts slow the test down and find nothing more.
        if (text().size() > 200) {
            subject().removeFrom(40);
            text().erase(40);
        }
        for (std::size_t i = 0; i < strings_.size(); ++i)
            EXPECT_EQ(plain(strings_[i]), texts_[i]) << "string " << i << ", subject " << i_;
        checkBlocks(strings_);
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
    };

    using Char = CharOf<String>;
    using Text = TestText<String>;
    using S = String;
    using T = std::string;
    using V = const std::string&;
    using D = const Draw&;

    static Char wide(char c) { return wideChar<String>(c); }

    std::size_t pick() {
        return static_cast<std::size_t>(rng_.below(static_cast<int>(strings_.size())));
    }
    String& subject() { return strings_[i_]; }
    std::string& text() { return texts_[i_]; }
    std::string word() { return rng_.text(rng_.oneIn(8) ? 40 : 4, "abxy \n\\'"); }
    char letter() { return "abxy \n\\'"[rng_.below(8)]; }

    Draw draw() {
        const int length = static_cast<int>(text().size());
        Draw d{rng_.between(-2, length + 2),
               rng_.below(length + 1),
               rng_.between(-1, 6),
               rng_.between(-1, 30),
               rng_.oneIn(9) ? INT_MIN : static_cast<int>(rng_.bits()),
               static_cast<unsigned>(rng_.between(1, 60)),
               letter(),
               letter(),
               rng_.text(2, "abxy"),
               word(),
               subject().disguise() == nullptr,
               false};
        d.isCut = !d.isNull && blockOf(subject()).referenceCount > 1 &&
                  blockOf(subject()).bufferLength != static_cast<int>(d.size) &&
                  d.size < text().size();
        return d;
    }

    /// Calls @p edit with an argument in each form and with its value.
    template <class Edit>
    void withText(Edit edit) {
        const int form = rng_.below(3);
        if (form == 0) {
            const std::string value = word();
            edit(static_cast<const Char*>(Text(value)), value);
        } else if (form == 1) {
            const int at = rng_.below(static_cast<int>(text().size()) + 1);
            const std::string value = text().substr(static_cast<std::size_t>(at));
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
                edit(subject(), argument, d);
                reference(text(), value, d);
            });
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
            const String result = extract(subject(), d);
            const std::string expected = reference(text(), d);
            EXPECT_EQ(plain(result), expected);
            i_ = pick();
            subject() = result;
            text() = expected;
        });
    }

    void setUpAppending() {
        add([](S& s, auto&& a, D) { s = a; }, [](T& t, V v, D) { t = v; });
        add([](S& s, auto&& a, D) { s += a; }, [](T& t, V v, D) { t += v; });
        add([](S& s, auto&& a, D) { s = s + a; }, [](T& t, V v, D) { t += v; });
        add([](S& s, auto&& a, D) { s.prepend(a); }, [](T& t, V v, D) { t.insert(0, v); });
        add([](S& s, auto&& a, D d) { s.insert(d.pos, a); },
            [](T& t, V v, D d) { reference::replaceRange(t, d.pos, 0, v); });
        add([](S& s, auto&& a, D d) { s.repeat(a, d.few); },
            [](T& t, V v, D d) { reference::repeat(t, v, d.few); });
        add([](S& s, auto&&, D d) { s.repeat(wide(d.c), d.many); },
            [](T& t, V, D d) { reference::repeat(t, T(1, d.c), d.many); });
        add(
            [](S& s, auto&&, D d) {
                for (int n = d.many; n > 0; --n)
                    s += wide(d.c);
            },
            [](T& t, V, D d) { reference::repeat(t, T(1, d.c), d.many); });
        add([](S& s, auto&&, D d) { s.appendNumber(d.number); },
            [](T& t, V, D d) { t += std::to_string(d.number); });
        edits_.push_back([this] {
            const std::size_t other = pick();
            String moved = std::move(strings_[other]);
            subject() = std::move(moved);
            text() = std::exchange(texts_[other], "");
        });
    }

    void setUpReplacing() {
        add([](S& s, auto&& a, D d) { s.replace(d.pos, d.few, a); },
            [](T& t, V v, D d) {
                d.isNull ? void() : reference::replaceRange(t, d.pos, d.few, v);
            });
        add([](S& s, auto&& a, D d) { s.replace(static_cast<const Char*>(Text(d.from)), a); },
            [](T& t, V v, D d) { reference::replaceFirst(t, d.from, v); });
        add([](S& s, auto&& a, D d) { s.replaceAll(static_cast<const Char*>(Text(d.from)), a); },
            [](T& t, V v, D d) { reference::replaceAll(t, d.from, v); });
        add([](S& s, auto&& a, D d) { s.replaceAll(a, static_cast<const Char*>(Text(d.word))); },
            [](T& t, V v, D d) { reference::replaceAll(t, v, d.word); });
        addInPlace([](S& s, auto&& a, D d) { s.replaceInSet(a, wide(d.c)); },
                   [](T& t, V v, D d) { reference::replaceInSet(t, v, d.c); });
        addInPlace([](S& s, auto&& a, D d) { s.replaceAllInSet(a, wide(d.c)); },
                   [](T& t, V v, D d) { reference::replaceAllInSet(t, v, d.c); });
        add([](S& s, auto&& a, D d) { s.translate(static_cast<const Char*>(a), Text(d.word)); },
            [](T& t, V v, D d) { reference::translate(t, v, d.word); });
        add([](S& s, auto&& a, D d) { s.translate(static_cast<const Char*>(a), wide(d.c)); },
            [](T& t, V v, D d) { reference::replaceAllInSet(t, v, d.c); });
        add([](S& s, auto&&, D) { s.toUpper(); },
            [](T& t, V, D) { eachLetter(t, [](int c) { return std::toupper(c); }); });
        add([](S& s, auto&&, D) { s.toLower(); },
            [](T& t, V, D) { eachLetter(t, [](int c) { return std::tolower(c); }); });
    }

    void setUpCutting() {
        add([](S& s, auto&&, D d) { s.remove(d.pos, d.few); },
            [](T& t, V, D d) { reference::remove(t, d.pos, d.few); });
        add([](S& s, auto&&, D d) { s.removeFrom(d.pos); },
            [](T& t, V, D d) { reference::remove(t, d.pos, 1000); });
        add([](S& s, auto&&, D d) { s.removeBefore(d.pos); },
            [](T& t, V, D d) { reference::remove(t, 0, d.pos); });
        addResult([](S& s, D d) { return s.subString(d.pos, d.few); },
                  [](T& t, D d) { return reference::subString(t, d.pos, d.few); });
        addResult([](S& s, D d) { return s.subStringBefore(d.pos); },
                  [](T& t, D d) { return reference::subString(t, 0, d.pos); });
        addResult([](S& s, D d) { return s.subStringFrom(d.pos); },
                  [](T& t, D d) { return reference::subString(t, d.pos, 1000); });
        addResult([](S& s, D d) { return s.split(Text(d.word)); },
                  [](T& t, D d) { return reference::split(t, d.word); });
        addResult([](S& s, D d) { return s.split(wide(d.c)); },
                  [](T& t, D d) { return reference::split(t, T(1, d.c)); });
        add([](S& s, auto&& a, D) { s.trimLeft(a); },
            [](T& t, V v, D) { reference::trimLeft(t, v); });
        add([](S& s, auto&& a, D) { s.trimRight(a); },
            [](T& t, V v, D) { reference::trimRight(t, v); });
        add([](S& s, auto&&, D) { s.trimLeft(); },
            [](T& t, V, D) { reference::trimLeft(t, " \t\n\r"); });
        add([](S& s, auto&&, D) { s.trimRight(); },
            [](T& t, V, D) { reference::trimRight(t, " \t\n\r"); });
    }

    void setUpBuffers() {
        add([](S& s, auto&&, D d) { d.at < s.getLength() ? void(s[d.at] = wide('b')) : void(); },
            [](T& t, V, D d) { reference::fill(t, 'b', d.at, d.at < int(t.size()) ? 1 : 0); });
        add([](S& s, auto&&, D d) { s.setLength(d.at); },
            [](T& t, V, D d) { t.resize(static_cast<std::size_t>(d.at)); });
        add(
            [](S& s, auto&&, D d) {
                Char* const buffer = s.getBuffer(static_cast<int>(d.word.size()));
                *std::transform(d.word.begin(), d.word.end(), buffer, wide) = 0;
                s.releaseBuffer();
            },
            [](T& t, V, D d) { t = d.word; });
        add([](S& s, auto&&, D d) { s.setSize(d.size); },
            [](T& t, V, D d) { d.isCut ? t.resize(d.size) : void(); });
        add(
            [](S& s, auto&&, D d) {
                s.minimizeSize();
                EXPECT_TRUE(d.isNull || blockOf(s).bufferLength - s.getLength() <= 15);
            },
            [](T&, V, D) {});
        add([](S& s, auto&&, D d) { s.fill(wide(d.c), d.pos, d.many); },
            [](T& t, V, D d) { d.isNull ? void() : reference::fill(t, d.c, d.pos, d.many); });
        add([](S& s, auto&&, D d) { s.fillFrom(wide(d.c), d.pos); },
            [](T& t, V, D d) { reference::fill(t, d.c, d.pos, int(t.size()) - d.pos); });
        add([](S& s, auto&&, D d) { s.fillBefore(wide(d.c), d.pos); },
            [](T& t, V, D d) { reference::fill(t, d.c, 0, std::min(d.pos, int(t.size()))); });
    }

    void setUpPunctuation() {
        add([](S& s, auto&& a, D d) { s.escape(a, wide(d.c)); },
            [](T& t, V v, D d) { reference::escape(t, v, d.c); });
        add([](S& s, auto&& a, D) { s.escapeForQrl(a); },
            [](T& t, V v, D) { reference::escapeForQrl(t, v); });
        add([](S& s, auto&&, D d) { s.unescape(wide(d.c)); },
            [](T& t, V, D d) { reference::unescape(t, d.c); });
        add([](S& s, auto&& a, D d) { s.enquote(wide(d.q), a, wide(d.c)); },
            [](T& t, V v, D d) {
                reference::escape(t, v, d.c);
                t = d.q + t + d.q;
            });
        add([](S& s, auto&&, D d) { s.dequote(wide(d.q), wide(d.c)); },
            [](T& t, V, D d) { reference::dequote(t, d.q, d.c); });
    }

    /// What x, y and z stand for in the wide class has no case.
    template <class Map>
    static void eachLetter(std::string& t, Map map) {
        for (char& c : t)
            if (wide(c) < 0x80)
                c = static_cast<char>(map(c));
    }

    kit::Random rng_;
    std::vector<String> strings_;
    std::vector<std::string> texts_;
    std::size_t i_ = 0;
    std::vector<std::function<void()>> edits_;
};

template <class String>
class StringModel : public testing::Test {};
TYPED_TEST_SUITE(StringModel, BothStrings);

TYPED_TEST(StringModel, EditsAsTheReferenceDoes) {
    SCOPED_TRACE(kit::seedText());
    Model<TypeParam> model(kit::seed());
    for (int i = 0; i < 60000 && !this->HasFailure(); ++i)
        model.step();
}

} // namespace
