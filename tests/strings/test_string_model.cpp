// Random edits on a few strings that share blocks, beside std::string.

#include "kit/random.h"
#include "reference.h"
#include "string_kit.h"

#include <functional>

namespace {

/// A pool of strings and what they should hold. Each step edits one of them,
/// the subject, with an argument that may be a text of its own, a part of the
/// subject's text, or a string of the pool, the subject included.
template <class String>
class Model {
public:
    using Char = CharOf<String>;

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
        check();
    }

private:
    std::size_t pick() {
        return static_cast<std::size_t>(rng_.below(static_cast<int>(strings_.size())));
    }
    String& subject() { return strings_[i_]; }
    std::string& text() { return texts_[i_]; }
    std::string word() { return rng_.text(rng_.oneIn(8) ? 40 : 4, "abxy \n\\'"); }
    char letter() { return "abxy \n\\'"[rng_.below(8)]; }
    Char wide(char c) { return wideChar<String>(c); }
    /// A position around the text, invalid ones included.
    int position() { return rng_.between(-2, static_cast<int>(text().size()) + 2); }

    /// Calls @p edit with an argument in each form and with its value.
    template <class Edit>
    void withText(Edit edit) {
        switch (rng_.below(3)) {
        case 0: {
            const std::string value = word();
            return edit(static_cast<const Char*>(TestText<String>(value)), value);
        }
        case 1: {
            const int at = rng_.below(static_cast<int>(text().size()) + 1);
            const std::string value = text().substr(static_cast<std::size_t>(at));
            return edit(subject().getValue() + at, value);
        }
        default: {
            const std::size_t other = pick();
            const std::string value = texts_[other];
            return edit(strings_[other], value);
        }
        }
    }

    void add(std::function<void()> edit) { edits_.push_back(std::move(edit)); }

    void setUpAppending() {
        add([this] {
            withText([this](auto&& arg, auto&& value) {
                subject() = arg;
                text() = value;
            });
        });
        add([this] {
            withText([this](auto&& arg, auto&& value) {
                subject() += arg;
                text() += value;
            });
        });
        add([this] {
            withText([this](auto&& arg, auto&& value) {
                subject() = subject() + arg;
                text() += value;
            });
        });
        add([this] {
            withText([this](auto&& arg, auto&& value) {
                subject().prepend(arg);
                text().insert(0, value);
            });
        });
        add([this] {
            withText([this](auto&& arg, auto&& value) {
                const int pos = position();
                subject().insert(pos, arg);
                if (pos >= 0)
                    reference::replaceRange(text(), pos, 0, value);
            });
        });
        add([this] {
            withText([this](auto&& arg, auto&& value) {
                const int n = rng_.between(-1, 3);
                subject().repeat(arg, n);
                std::string repeated;
                for (int k = 0; k < n; ++k)
                    repeated += value;
                text() += repeated;
            });
        });
        add([this] {
            const char c = letter();
            const int n = rng_.between(-1, 20);
            subject().repeat(wide(c), n);
            text().append(static_cast<std::size_t>(std::max(n, 0)), c);
        });
        add([this] {
            for (int n = rng_.below(40); n > 0; --n) {
                const char c = letter();
                subject() += wide(c);
                text() += c;
            }
        });
        add([this] {
            const int n = static_cast<int>(rng_.bits());
            subject().appendNumber(n);
            text() += std::to_string(n);
        });
        add([this] {
            const std::size_t other = pick();
            String moved = std::move(strings_[other]);
            std::string movedText;
            movedText.swap(texts_[other]);
            subject() = std::move(moved);
            text() = movedText;
        });
    }

    void setUpReplacing() {
        add([this] {
            withText([this](auto&& arg, auto&& value) {
                const int pos = position(), n = rng_.between(-1, 6);
                const bool isNull = subject().disguise() == nullptr;
                subject().replace(pos, n, arg);
                if (!isNull)
                    reference::replaceRange(text(), pos, n, value);
            });
        });
        add([this] {
            withText([this](auto&& to, auto&& value) {
                const std::string from = rng_.text(2, "abxy");
                subject().replace(static_cast<const Char*>(TestText<String>(from)), to);
                reference::replaceFirst(text(), from, value);
            });
        });
        add([this] {
            withText([this](auto&& to, auto&& value) {
                const std::string from = rng_.text(2, "abxy");
                subject().replaceAll(static_cast<const Char*>(TestText<String>(from)), to);
                reference::replaceAll(text(), from, value);
            });
        });
        add([this] {
            withText([this](auto&& from, auto&& value) {
                const std::string to = word();
                subject().replaceAll(from, static_cast<const Char*>(TestText<String>(to)));
                reference::replaceAll(text(), value, to);
            });
        });
        add([this] {
            withText([this](auto&& set, auto&& value) {
                const char c = letter();
                subject().replaceInSet(set, wide(c));
                forSharers([&](std::string& s) { reference::replaceInSet(s, value, c); });
            });
        });
        add([this] {
            withText([this](auto&& set, auto&& value) {
                const char c = letter();
                subject().replaceAllInSet(set, wide(c));
                forSharers([&](std::string& s) { reference::replaceAllInSet(s, value, c); });
            });
        });
        add([this] {
            withText([this](auto&& from, auto&& value) {
                const std::string to = word() + word();
                subject().translate(static_cast<const Char*>(from),
                                    static_cast<const Char*>(TestText<String>(to)));
                reference::translate(text(), value, to);
            });
        });
        add([this] {
            withText([this](auto&& set, auto&& value) {
                const char c = letter();
                subject().translate(static_cast<const Char*>(set), wide(c));
                reference::replaceAllInSet(text(), value, c);
            });
        });
        add([this] {
            subject().toUpper();
            eachLetter([](int c) { return std::toupper(c); });
        });
        add([this] {
            subject().toLower();
            eachLetter([](int c) { return std::tolower(c); });
        });
    }

    void setUpCutting() {
        add([this] {
            const int pos = position(), n = rng_.between(-1, 6);
            subject().remove(pos, n);
            reference::remove(text(), pos, n);
        });
        add([this] {
            const int pos = position();
            subject().removeFrom(pos);
            if (pos >= 0 && pos < static_cast<int>(text().size()))
                text().erase(static_cast<std::size_t>(pos));
        });
        add([this] {
            const int pos = position();
            subject().removeBefore(pos);
            reference::remove(text(), 0, pos);
        });
        add([this] {
            const int start = position(), n = rng_.between(-1, 6);
            store(subject().subString(start, n), reference::subString(text(), start, n));
        });
        add([this] {
            const int n = position();
            store(subject().subStringBefore(n), reference::subString(text(), 0, n));
        });
        add([this] {
            const int start = position();
            store(subject().subStringFrom(start), reference::subString(text(), start, 1000));
        });
        add([this] {
            const std::string set = word();
            const String tail = subject().split(TestText<String>(set));
            store(tail, reference::split(text(), set));
        });
        add([this] {
            const char c = letter();
            const String tail = subject().split(wide(c));
            store(tail, reference::split(text(), std::string(1, c)));
        });
        add([this] {
            withText([this](auto&& set, auto&& value) {
                subject().trimLeft(set);
                reference::trimLeft(text(), value);
            });
        });
        add([this] {
            withText([this](auto&& set, auto&& value) {
                subject().trimRight(set);
                reference::trimRight(text(), value);
            });
        });
        add([this] {
            subject().trimLeft();
            subject().trimRight();
            reference::trimLeft(text(), " \t\n\r");
            reference::trimRight(text(), " \t\n\r");
        });
    }

    void setUpBuffers() {
        add([this] {
            if (text().empty())
                return;
            const int at = rng_.below(static_cast<int>(text().size()));
            subject()[at] = wide('b');
            text()[static_cast<std::size_t>(at)] = 'b';
        });
        add([this] {
            const int n = rng_.below(static_cast<int>(text().size()) + 1);
            subject().setLength(n);
            text().erase(static_cast<std::size_t>(n));
        });
        add([this] {
            const std::string value = word();
            Char* const buffer = subject().getBuffer(static_cast<int>(value.size()));
            std::transform(value.begin(), value.end(), buffer, wideChar<String>);
            buffer[value.size()] = 0;
            subject().releaseBuffer();
            text() = value;
        });
        add([this] {
            const int n = rng_.between(1, 60);
            const bool wasShared = subject().disguise() && blockOf(subject()).referenceCount > 1;
            const bool fits = subject().disguise() && blockOf(subject()).bufferLength == n;
            subject().setSize(static_cast<unsigned>(n));
            if (wasShared && !fits && n < static_cast<int>(text().size()))
                text().erase(static_cast<std::size_t>(n));
        });
        add([this] {
            subject().minimizeSize();
            if (subject().disguise() != nullptr) {
                EXPECT_LE(blockOf(subject()).bufferLength - subject().getLength(), 15);
            }
        });
        add([this] {
            const char c = letter();
            const int start = position(), n = rng_.between(-1, 30);
            const bool isNull = subject().disguise() == nullptr;
            subject().fill(wide(c), start, n);
            if (!isNull)
                reference::fill(text(), c, start, n);
        });
        add([this] {
            const char c = letter();
            const int start = position();
            subject().fillFrom(wide(c), start);
            reference::fill(text(), c, start, static_cast<int>(text().size()) - start);
        });
        add([this] {
            const char c = letter();
            const int n = position();
            subject().fillBefore(wide(c), n);
            reference::fill(text(), c, 0, std::min(n, static_cast<int>(text().size())));
        });
    }

    void setUpPunctuation() {
        add([this] {
            withText([this](auto&& set, auto&& value) {
                const char c = letter();
                subject().escape(set, wide(c));
                reference::escape(text(), value, c);
            });
        });
        add([this] {
            withText([this](auto&& set, auto&& value) {
                subject().escapeForQrl(set);
                reference::escapeForQrl(text(), value);
            });
        });
        add([this] {
            const char c = letter();
            subject().unescape(wide(c));
            reference::unescape(text(), c);
        });
        add([this] {
            withText([this](auto&& set, auto&& value) {
                const char q = letter(), esc = letter();
                subject().enquote(wide(q), set, wide(esc));
                reference::escape(text(), value, esc);
                text() = q + text() + q;
            });
        });
        add([this] {
            const char q = letter(), esc = letter();
            subject().dequote(wide(q), wide(esc));
            reference::dequote(text(), q, esc);
        });
    }

    /// Puts a result into the pool, where it may share its source's block.
    void store(const String& result, const std::string& expected) {
        EXPECT_EQ(plain(result), expected);
        i_ = pick();
        subject() = result;
        text() = expected;
    }

    /// What x, y and z stand for in the wide class has no case.
    template <class Map>
    void eachLetter(Map map) {
        for (char& c : text())
            if (wide(c) < 0x80)
                c = static_cast<char>(map(c));
    }

    template <class Edit>
    void forSharers(Edit edit) {
        for (std::size_t i = 0; i < strings_.size(); ++i)
            if (i == i_ || (subject().disguise() && strings_[i].disguise() == subject().disguise()))
                edit(texts_[i]);
    }

    void check() {
        for (std::size_t i = 0; i < strings_.size(); ++i)
            EXPECT_EQ(plain(strings_[i]), texts_[i]) << "string " << i << ", subject " << i_;
        checkBlocks(strings_);
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
