// SPDX-License-Identifier: Apache-2.0
// The rules of strings that a model of the text alone cannot show: blocks, the kinds of
// empty, signs, errors; and of tokenizers, nothing to split at, and no memory.

#include "kit/host.h"
#include "string_kit.h"
#include "testkit/alloc_failure.h"
#include "testkit/capture.h"
#include "testkit/director.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/strings/KazQuotedStringTokenizer.h"
#include "tools/strings/KazWQuotedStringTokenizer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sstream>

namespace {

template <class String>
class StringRules : public testing::Test {
protected:
    /// Calls @p check with "HELLO\n" after each of the edits, and with what shared its block
    /// before. With a @p size it has a block of its own, of that size.
    template <class Check>
    static void afterEach(Check check, const std::vector<std::function<void(String&)>>& edits,
                          unsigned size = 0) {
        for (std::size_t i = 0; i < edits.size(); ++i) {
            SCOPED_TRACE(i);
            String s(TestText<String>("HELLO\n"));
            const String sharer = s;
            if (size > 0)
                s.setSize(size);
            edits[i](s);
            check(s, sharer);
        }
    }
};
using BothStrings = testing::Types<KazString, KazWString>;
TYPED_TEST_SUITE(StringRules, BothStrings);

TYPED_TEST(StringRules, CapacityIsTheNextOfTheForm16kPlus3) {
    for (const auto& [needed, capacity] :
         {std::pair{1, 3}, {3, 3}, {4, 19}, {19, 19}, {20, 35}, {35, 35}, {36, 51}, {1000, 1011}}) {
        const TypeParam made(
            TestText<TypeParam>(std::string(static_cast<std::size_t>(needed), 'a')));
        TypeParam grown(wideChar<TypeParam>('a')), buffer;
        while (grown.getLength() < needed)
            grown.append(wideChar<TypeParam>('x'));
        buffer.getBuffer(needed);
        for (const TypeParam& s : {made, grown, buffer})
            EXPECT_EQ(blockOf(s).bufferLength, capacity) << needed;
    }
    TypeParam none;
    none.getBuffer(0);
    EXPECT_EQ(blockOf(none).bufferLength, 3);
    none.setSize(100);
    EXPECT_EQ(blockOf(none).bufferLength, 115);
}

TYPED_TEST(StringRules, EscapingMakesRoomForACharacterAsOftenAsTheSetNamesIt) {
    TypeParam escaped(TestText<TypeParam>("abababab")), links = escaped;
    escaped.escape(TestText<TypeParam>("bbb"), wideChar<TypeParam>('x'));
    links.escapeForQrl(TestText<TypeParam>("bbb"));
    TypeParam lines(TestText<TypeParam>("\n\n\n\n\n\n\n\n"));
    lines.escapeForQrl(TestText<TypeParam>("\n"));
    for (const TypeParam& each : {escaped, links, lines})
        EXPECT_EQ(blockOf(each).bufferLength, 35); // for 8 + 3 * 4, and for 8 + 8 + 8
}

TYPED_TEST(StringRules, RebuildingFitsTheBlockToTheTextAndEditsInPlaceKeepIt) {
    const auto x = wideChar<TypeParam>('x');
    const TestText<TypeParam> l("L"), ab("ab"), none("");
    const auto holds = [](int room) {
        return [room](const TypeParam& s, auto&) { EXPECT_EQ(blockOf(s).bufferLength, room); };
    };
    this->afterEach(holds(19),
                    {[&](TypeParam& s) { s.prepend(ab); }, [&](TypeParam& s) { s.insert(2, ab); },
                     [&](TypeParam& s) { s.insert(99, ab); }, [&](TypeParam& s) { s.remove(1, 1); },
                     [&](TypeParam& s) { s.replace(1, 1, ab); },
                     [&](TypeParam& s) { s.replace(l, ab); }, [&](TypeParam& s) { s.escape(l, x); },
                     [&](TypeParam& s) { s.unescape('H'); },
                     [&](TypeParam& s) { s.escapeForQrl(none); }},
                    100);
    this->afterEach(holds(115),
                    {[&](TypeParam& s) { s.append(ab); }, [&](TypeParam& s) { s.append(x); },
                     [&](TypeParam& s) { s.repeat(ab, 47); },
                     [&](TypeParam& s) { s.fill(x, 90, 25); },
                     [&](TypeParam& s) { s.translate(l, ab); }, [&](TypeParam& s) { s.toUpper(); },
                     [&](TypeParam& s) { s.setLength(1); }, [&](TypeParam& s) { s.escape(ab, x); }},
                    100);
}

TYPED_TEST(StringRules, WhatIsTheWholeTextSharesItsBlock) {
    TypeParam a(TestText<TypeParam>("hello"));
    a = std::move(*&a);
    const TypeParam whole = a.subString(0, 5), front = a.subStringBefore(99);
    const TypeParam rest = a.subStringFrom(0);
    TypeParam shared, prepended; // null strings take over the whole block
    shared.append(a);
    prepended.prepend(a);
    EXPECT_EQ(blockOf(a).referenceCount, 6);
    EXPECT_NE(a.subString(0, 99).disguise(), a.disguise());
}

TYPED_TEST(StringRules, BlocksAreKeptOrTakenOrGivenUp) {
    const auto q = wideChar<TypeParam>('q');
    const TestText<TypeParam> whole("HELLO\n"), other("qx"), none("");
    this->afterEach(
        [](const TypeParam& s, const TypeParam& sharer) {
            EXPECT_EQ(s.disguise(), sharer.disguise());
        },
        {[&](TypeParam& s) { s.replace(other, none); },
         [&](TypeParam& s) { s.replaceAll(other, none); },
         [&](TypeParam& s) { s.replace(2, 0, none); }, [&](TypeParam& s) { s.append(none); },
         [&](TypeParam& s) { s.insert(2, none); }, [&](TypeParam& s) { s.split(q); },
         [&](TypeParam& s) { s.fillFrom(q, -1); }, [&](TypeParam& s) { s.fillBefore(q, -1); }});
    // Edits in place take a block of their own even for nothing.
    this->afterEach(
        [](const TypeParam& s, const TypeParam& sharer) {
            EXPECT_EQ(plain(s), "HELLO\n");
            EXPECT_EQ(blockOf(sharer).referenceCount, 1);
        },
        {[&](TypeParam& s) { s.fillFrom(q, 6); }, [&](TypeParam& s) { s.fillBefore(q, 0); },
         [&](TypeParam& s) { s.translate(other, q); }, [&](TypeParam& s) { s.toUpper(); },
         [&](TypeParam& s) { s.getBuffer(0); }});
    this->afterEach([](const TypeParam& s, auto&) { EXPECT_EQ(s.disguise(), nullptr); },
                    {[&](TypeParam& s) { s.clear(); }, [&](TypeParam& s) { s.setSize(0); },
                     [&](TypeParam& s) { s.replace(0, 6, none); },
                     [&](TypeParam& s) { s.replaceAll(whole, none); },
                     [&](TypeParam& s) { s.split(wideChar<TypeParam>('H')); },
                     [&](TypeParam& s) { s = none; }});
}

TYPED_TEST(StringRules, SharedBlocksAreCutAndShowWhatTheirBufferHolds) {
    TypeParam read;
    std::fill_n(read.getBuffer(19), 19, wideChar<TypeParam>('y'));
    read.setLength(4);
    read.getBuffer(2);
    EXPECT_EQ(plain(read), "yyyy");
    TypeParam longer = read, cut = read;
    longer.setLength(10); // what another sharer's buffer holds behind the text is taken in
    EXPECT_EQ(plain(longer).substr(5), "yyyyy");
    cut.getBuffer(2);
    EXPECT_EQ(plain(cut), "yy");
    EXPECT_EQ(plain(read), "yyyy");

    TypeParam spare(TestText<TypeParam>("abcd")); // 15 spare: not worth it
    for (const unsigned size : {19U, 35U}) {
        spare.setSize(size);
        spare.minimizeSize();
        EXPECT_EQ(blockOf(spare).bufferLength, 19);
    }
}

TYPED_TEST(StringRules, RepresentationsSurviveInUntypedHands) {
    TypeParam s(TestText<TypeParam>("text"));
    void* const kept = TypeParam::checkIn(s.disguise());
    s.clear();
    const TypeParam again = TypeParam::undisguise(kept);
    EXPECT_EQ(blockOf(again).referenceCount, 2);
    EXPECT_EQ(TypeParam::compareDisguised(kept, again.disguise()), 0);
    EXPECT_EQ(TypeParam::compareNoCaseDisguised(kept, nullptr), 1);
    EXPECT_EQ(TypeParam::hashDisguised(kept), TypeParam::hash(again));

    void* slot = kept; // a slot that a container hands out as a string
    reinterpret_cast<TypeParam&>(slot) += wideChar<TypeParam>('x');
    EXPECT_EQ(plain(TypeParam::undisguise(slot)), "textx");
    TypeParam::checkOut(slot);
    EXPECT_EQ(TypeParam::checkIn(nullptr), nullptr);
    TypeParam::checkOut(nullptr);
    TypeParam::deleteString(new TypeParam(again));
    TypeParam::deleteString(nullptr);
    EXPECT_EQ(blockOf(again).referenceCount, 1);

    auto* const copy = again.getCopyValue();
    EXPECT_EQ(plain(TypeParam(copy)), "text");
    std::free(copy);
    EXPECT_EQ(TypeParam().getCopyValue(), nullptr);
}

TYPED_TEST(StringRules, MisuseIsReportedAndLeavesTheStringWhole) {
    moxkit::RecordingDirector director;
    TypeParam s(TestText<TypeParam>("hello")), null;
    const TypeParam sharer = s;
    EXPECT_EQ(std::as_const(s)[5], 0);
    EXPECT_EQ(std::as_const(s)[-1], 0);
    s[5] = 'x';
    EXPECT_EQ(s[INT_MIN], 0);
    EXPECT_EQ(TypeParam()[0], 0);
    EXPECT_EQ(director.fatals, std::vector<std::string>(5, "Internal error #5"));
    director.fatals.clear();
    s.setLength(-1);
    s.setLength(20);
    s.releaseBuffer(-2);
    EXPECT_EQ(director.fatals, std::vector<std::string>(3, "Internal error #4"));
    EXPECT_EQ(s.disguise(), sharer.disguise());
    null.setLength(7);
    null.setLength(-7);
    null.releaseBuffer();
    EXPECT_EQ(director.fatals.size(), 3u);
}

TYPED_TEST(StringRules, AStringOfOneNulHasLengthOne) {
    const TypeParam s(CharOf<TypeParam>{0});
    EXPECT_EQ(s.getLength(), 1);
    EXPECT_FALSE(s.isEmpty());
    EXPECT_TRUE(static_cast<bool>(s));
    EXPECT_EQ(s.compare(TestText<TypeParam>("")), 0);
    EXPECT_FALSE(s == TestText<TypeParam>(""));
    EXPECT_EQ(s.count(0), 1);
    const CharOf<TypeParam> nul{};
    EXPECT_EQ(s.find(nul) + s.findNot(nul) + s.findLast(nul), -3);
}

// Rows: this, other, then compare with text, compare with string, the same
// without case; equality with text, with string, without case.
TYPED_TEST(StringRules, EmptySidesDecideTheSign) {
    using Text = TestText<TypeParam>;
    const CharOf<TypeParam>* const nothing = nullptr;
    TypeParam block;
    block.getBuffer(0);
    const TypeParam strings[] = {TypeParam(), block, TypeParam(Text("ab"))}, longer(Text("abc"));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            SCOPED_TRACE(10 * i + j);
            const TypeParam &a = strings[i], &b = strings[j];
            const auto* const t = b.getValue();
            const int kinds = (i > j) - (i < j);
            const int order = i < 2 && j < 2 ? 0 : kinds;
            for (const int sign : {a.compare(t), a.compareN(t, 1), a.compareNoCase(t)})
                EXPECT_EQ(sign, order);
            for (const int sign : {a.compare(b), a.compareN(b, 0), TypeParam::compare(a, b),
                                   TypeParam::compareStrings(&a, &b)})
                EXPECT_EQ(sign, -order) << "strings turn it round where one is empty";
            EXPECT_EQ(TypeParam::compareNoCase(a, b), kinds);
            EXPECT_TRUE((a < t) == (order < 0) && (t > a) == (order < 0));
            EXPECT_EQ(a >= b, order <= 0);
            for (const bool isEqual :
                 {a == t, t == a, !(a != b), a.equalsN(t, 9), a.equalsN(b, 9), a.equalsNoCase(t)})
                EXPECT_EQ(isEqual, order == 0);
            EXPECT_EQ(a.equalsNoCase(b), kinds == 0);
        }
    const TypeParam &null = strings[0], &text = strings[2];
    EXPECT_TRUE(null.equalsNoCase(nothing));
    EXPECT_FALSE(block.equalsNoCase(nothing));
    EXPECT_EQ(block.compareNoCase(nothing), 1);
    EXPECT_TRUE(text < longer && longer > text && text <= text && text >= text && text != longer);
}

TYPED_TEST(StringRules, LengthsBeyondTheHeaderAreRefused) {
    const TestText<TypeParam> ab("ab");
    const auto x = wideChar<TypeParam>('x');
    TypeParam s(ab), null;
    void* const block = s.disguise();
    EXPECT_THROW(s.repeat(x, INT_MAX - 1), KazMemoryException);
    EXPECT_THROW(s.repeat(ab, INT_MAX), KazMemoryException);
    EXPECT_THROW(s.repeat(s, INT_MAX), KazMemoryException);
    EXPECT_THROW(s.fill(x, INT_MAX, INT_MAX), KazMemoryException);
    EXPECT_THROW(s.getBuffer(INT_MAX), KazMemoryException);
    EXPECT_THROW(s.setSize(UINT_MAX), KazMemoryException);
    EXPECT_EQ(s.disguise(), block);
    EXPECT_EQ(plain(s), "ab");
    EXPECT_THROW(null.repeat(ab, INT_MAX), KazMemoryException);
    EXPECT_THROW(null.setSize(UINT_MAX), KazMemoryException);
    EXPECT_EQ(null.disguise(), nullptr);
}

TYPED_TEST(StringRules, HardSearchesTakeNoMoreThanTheirLength) {
    // Each would take minutes where every place is tried with every other.
    using Text = TestText<TypeParam>;
    const std::string many(300000, 'a');
    TypeParam s{Text(many)};
    EXPECT_EQ(s.find(Text(std::string(100000, 'a') + "b")), -1);
    EXPECT_EQ(s.find(Text("b" + std::string(100000, 'a'))), -1);
    std::string stars;
    for (int i = 0; i < 30; ++i)
        stars += "*a";
    EXPECT_EQ(s.findPattern(Text(stars + "*b")), -1);
    const TypeParam open{Text(std::string(20000, '['))};
    EXPECT_EQ(open.findPattern(Text(std::string(4000, '[') + "b")), -1);
    s.replaceAll(Text("a"), Text("ax"));
    EXPECT_EQ(s.getLength(), 600000);
    s.replaceAll(Text("ax"), Text(""));
    EXPECT_TRUE(s.isEmpty());
}

using Tokens = std::vector<std::string>;

/// All further tokens.
template <class Tokenizer>
Tokens rest(Tokenizer& tokenizer) {
    Tokens result;
    while (!tokenizer.isDone())
        result.push_back(plain(tokenizer.nextString(false)));
    return result;
}

template <class String, class Tokenizer, class Quoted>
void expectTokens() {
    using Text = TestText<String>;
    Tokenizer all(String(Text(" a b ")), nullptr);
    EXPECT_EQ(rest(all), Tokens{" a b "});
    const Quoted source(String(Text("a 'b c' d\\ e")), Text(" "), Text("'"), '\\');
    Quoted quoted = source;
    Tokenizer sliced = quoted; // quotes and escapes mean nothing to it
    EXPECT_EQ(rest(sliced), (Tokens{"a", "'b", "c'", "d\\", "e"}));
    Tokenizer& base = quoted;
    EXPECT_EQ(rest(base), (Tokens{"a", "'b c'", "d\\ e"}));
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        Quoted target(String(Text("x-y")), Text("-"), Text(""), 'q');
        const long failures = moxkit::sweepAllocations(
            [&] {
                auto copy = source;
                target = copy;
            },
            [&] {
                auto untouched = target;
                EXPECT_EQ(rest(untouched), (Tokens{"x", "y"}));
            },
            mode);
        EXPECT_EQ(failures, 4);
        EXPECT_EQ(rest(target), (Tokens{"a", "'b c'", "d\\ e"}));
    }
}

TEST(Tokenizers, WithoutDelimitersOrQuotesOrMemory) {
    expectTokens<KazString, KazStringTokenizer, KazQuotedStringTokenizer>();
    expectTokens<KazWString, KazWStringTokenizer, KazWQuotedStringTokenizer>();
}

TEST(NarrowString, WhatItDoesNotOfferIsAnInternalError) {
    moxkit::RecordingDirector director;
    const KazString s("a");
    EXPECT_FALSE(s.equalsLocale("a") || s.equalsLocale(s) || KazString::equalsLocale("a", "a") ||
                 KazString::equalsLocale(s, s));
    EXPECT_EQ(s.compareLocale("a") + s.compareLocale(s) + KazString::compareLocale("a", "a") +
                  KazString::compareLocale(s, s),
              -4);
    EXPECT_EQ(s.findNot("b") + s.findNot(s) + s.findLastNot("b", 0) + s.findLastNot(s, 0), -4);
    EXPECT_EQ(director.fatals, std::vector<std::string>(12, "Internal error #1"));
}

TEST(NarrowString, FormatsTextOfAnyLength) {
    KazString s("value");
    s.format("%s!", s.getValue());
    s.appendFormat("%s%d", s.getValue(), -7);
    EXPECT_EQ(s, "value!value!-7");
    for (const int n : {0, 511, 512, 31999, 32000, 200000}) {
        s.format("<%*d>", n, 5);
        EXPECT_EQ(s.getLength(), std::max(n, 1) + 2);
        EXPECT_EQ(s.getValue()[s.getLength() - 2], '5');
    }
    s.format("%s", "");
    EXPECT_EQ(s.disguise(), nullptr);
    const KazString before("kept");
    s = before;
    if (kit::refusesWideFields()) {
        const std::string tooWide = "%99999999999d"; // the runtime refuses by itself
        EXPECT_THROW(s.appendFormat(tooWide.c_str(), 1), KazMemoryException);
    }
    EXPECT_EQ(s.disguise(), before.disguise());
    s.format("%ls", L"\x416"); // no character of the locale
    EXPECT_TRUE(s.isEmpty());
}

TEST(NarrowString, LiteralsAreAppendedLikeAnyText) {
    // Each as a text of unknown length, and where the compiler knows it.
    const std::pair<const char*, void (*)(KazString&)> texts[] = {
        {"1", [](KazString& s) { s.append("1"); }},
        {"12", [](KazString& s) { s.append("12"); }},
        {"123", [](KazString& s) { s.append("123"); }},
        {"1234567", [](KazString& s) { s.append("1234567"); }},
        {"12345678", [](KazString& s) { s.append("12345678"); }},
        {"1234567890123456", [](KazString& s) { s.append("1234567890123456"); }},
        {"12345678901234567", [](KazString& s) { s.append("12345678901234567"); }},
        {"", [](KazString& s) { s.append(""); }},
    };
    KazString literals, others, held, before;
    for (int i = 0; i < 500; ++i) {
        const auto& [text, appendLiteral] = texts[i * i % 11 % 8];
        if (i % 50 == 0) { // from now on the block is not its own, or not the same
            held = literals;
            before = KazString(literals.getValue());
        }
        appendLiteral(literals);
        others.append(text);
        ASSERT_EQ(literals, others);
        ASSERT_EQ(held, before);
        ASSERT_EQ(blockOf(literals).bufferLength, blockOf(others).bufferLength);
    }
}

TEST(NarrowString, WhatTheBufferHoldsBehindTheTextCanBeAppended) {
    for (const char* const behind : {"9", "876", "54321", "0123456789", "01234567890123456789"}) {
        KazString s("ab");
        std::strcpy(s.getBuffer(40) + 3, behind);
        s.append(s.getValue() + 3);
        EXPECT_EQ(plain(s), std::string("ab") + behind);
    }
}

TEST(NarrowString, TextOnEitherSideOfAnOperator) {
    const KazString s("b");
    EXPECT_EQ("a" + s + 'c' + "d" + s, "abcdb");
    char buffer[] = "xy"; // not const: the built-in operators would do as well
    EXPECT_EQ(buffer + s + buffer, "xybxy");
    EXPECT_TRUE(buffer != s && s < buffer);
    std::ostringstream out;
    out << s << KazString() << KazWString("w");
    EXPECT_EQ(out.str(), "bw");
}

/// Reaches what is there for derived classes; with that, damages a block.
struct OpenString : KazString {
    using KazString::addReference;
    using KazString::KazString;
    using KazString::removeReference;
    using KazString::setBufferLength;
    using KazString::setStringLength;
};

TEST(NarrowString, DumpNamesWhatIsWrongWithTheBlock) {
    moxkit::Capture capture;
    KazString().dump();
    OpenString s("hello");
    const KazString sharer = s;
    s.dump();
    s.setBufferLength(3);
    s.dump();
    s.setBufferLength(19);
    s.setStringLength(7);
    s.dump();
    s.setStringLength(5);
    KazWString().dump();
    KazWString("wide").dump();
    EXPECT_EQ(capture.out(),
              "NULL string\n"
              "value = 'hello', ref count = 2\n"
              "Error: buffer overflow - string length = 5, buffer length = 3\n"
              "value = 'hello', ref count = 2\n"
              "Error: wrong internal string length - internal length = 7, real length = 5\n"
              "value = 'hello', ref count = 2\n"
              "NULL string\n"
              "value = 'wide', ref count = 1\n");
}

TEST(NarrowString, DerivedClassesShareAndFillBlocksByHand) {
    const KazString text("text");
    OpenString s("old");
    s.addReference(text);
    EXPECT_EQ(s.disguise(), text.disguise());
    EXPECT_EQ(blockOf(text).referenceCount, 2);
    s.removeReference();
    EXPECT_EQ(s.disguise(), nullptr);
    EXPECT_EQ(blockOf(text).referenceCount, 1);

    constexpr int largest = 0x7FFFFFF3;
    s = "hello";
    s.setStringLength(largest);
    s.setBufferLength(largest);
    EXPECT_THROW(s.append('x'), KazMemoryException); // a full block takes nothing more
    EXPECT_EQ(s.getLength(), largest);
    s.setStringLength(5);
    s.setBufferLength(19);
    EXPECT_EQ(s, "hello");
}

/// Constants of the class in the hands of a static object of another file.
const KazString builtEarly = KazString::theEmptyString + KazString::theDefaultWhitespaces;

TEST(NarrowString, ConstantsAreThereBeforeMain) {
    EXPECT_EQ(builtEarly, " \t\n\r");
    EXPECT_EQ(KazString::theEmptyString.disguise(), nullptr);
}

} // namespace
