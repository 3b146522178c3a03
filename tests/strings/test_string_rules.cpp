// SPDX-License-Identifier: Apache-2.0
// The rules of KazString that a model of the text alone cannot show: blocks,
// the kinds of empty, signs, errors.

#include "kit/host.h"
#include "string_kit.h"
#include "testkit/capture.h"
#include "testkit/director.h"
#include "tools/app/exceptions/KazMemoryException.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sstream>

namespace {

template <class String>
class StringRules : public testing::Test {};
using BothStrings = testing::Types<KazString, KazWString>;
TYPED_TEST_SUITE(StringRules, BothStrings);

TYPED_TEST(StringRules, CapacityIsTheNextOfTheForm16kPlus3) {
    for (const auto& [needed, capacity] :
         {std::pair{1, 3}, {3, 3}, {4, 19}, {19, 19}, {20, 35}, {35, 35}, {36, 51}, {1000, 1011}}) {
        TypeParam made(TestText<TypeParam>(std::string(static_cast<std::size_t>(needed), 'a')));
        EXPECT_EQ(blockOf(made).bufferLength, capacity) << needed;
        TypeParam grown(wideChar<TypeParam>('a'));
        while (grown.getLength() < needed)
            grown.append(wideChar<TypeParam>('x'));
        EXPECT_EQ(blockOf(grown).bufferLength, capacity) << needed;
        TypeParam buffer;
        buffer.getBuffer(needed);
        EXPECT_EQ(blockOf(buffer).bufferLength, capacity) << needed;
    }
    TypeParam none;
    none.getBuffer(0);
    EXPECT_EQ(blockOf(none).bufferLength, 3);
    none.setSize(100);
    EXPECT_EQ(blockOf(none).bufferLength, 115);
}

TYPED_TEST(StringRules, EscapingMakesRoomForACharacterAsOftenAsTheSetNamesIt) {
    TypeParam escaped(TestText<TypeParam>("abababab"));
    escaped.escape(TestText<TypeParam>("bbb"), wideChar<TypeParam>('x'));
    EXPECT_EQ(plain(escaped), "axbaxbaxbaxb");
    EXPECT_EQ(blockOf(escaped).bufferLength, 35); // for 8 + 3 * 4
    TypeParam lines(TestText<TypeParam>("\n\n\n\n\n\n\n\n"));
    lines.escapeForQrl(TestText<TypeParam>("\n"));
    EXPECT_EQ(lines.getLength(), 16);
    EXPECT_EQ(blockOf(lines).bufferLength, 35); // for 8 + 8 + 8
    TypeParam links(TestText<TypeParam>("abababab"));
    links.escapeForQrl(TestText<TypeParam>("bbb"));
    EXPECT_EQ(blockOf(links).bufferLength, 35); // for 8 + 3 * 4, as above
}

TYPED_TEST(StringRules, RebuildingFitsTheBlockToTheTextAndEditsInPlaceKeepIt) {
    using Edit = std::function<void(TypeParam&)>;
    const auto x = wideChar<TypeParam>('x');
    const TestText<TypeParam> l("l"), ab("ab"), none("");
    const auto capacitiesAfter = [](const std::vector<Edit>& edits) {
        std::vector<int> result;
        for (const Edit& edit : edits) {
            TypeParam s(TestText<TypeParam>("hello\n"));
            s.setSize(100);
            edit(s);
            result.push_back(blockOf(s).bufferLength);
        }
        return result;
    };
    const std::vector<Edit> rebuilding = {
        [&](TypeParam& s) { s.prepend(ab); },       [&](TypeParam& s) { s.insert(2, ab); },
        [&](TypeParam& s) { s.insert(99, ab); },    [&](TypeParam& s) { s.remove(1, 1); },
        [&](TypeParam& s) { s.replace(1, 1, ab); }, [&](TypeParam& s) { s.replace(l, ab); },
        [&](TypeParam& s) { s.escape(l, x); },      [&](TypeParam& s) { s.unescape('h'); },
        [&](TypeParam& s) { s.escapeForQrl(none); }};
    EXPECT_EQ(capacitiesAfter(rebuilding), std::vector<int>(rebuilding.size(), 19));
    const std::vector<Edit> inPlace = {
        [&](TypeParam& s) { s.append(ab); },       [&](TypeParam& s) { s.append(x); },
        [&](TypeParam& s) { s.repeat(ab, 47); },   [&](TypeParam& s) { s.fill(x, 90, 25); },
        [&](TypeParam& s) { s.translate(l, ab); }, [&](TypeParam& s) { s.toUpper(); },
        [&](TypeParam& s) { s.setLength(1); },     [&](TypeParam& s) { s.escape(ab, x); }};
    EXPECT_EQ(capacitiesAfter(inPlace), std::vector<int>(inPlace.size(), 115));
}

TYPED_TEST(StringRules, CopiesShareUntilOneIsChanged) {
    TypeParam a(TestText<TypeParam>("hello"));
    TypeParam b = a;
    TypeParam c;
    c = b;
    EXPECT_EQ(blockOf(a).referenceCount, 3);
    c = a; // shares already
    c = *&c;
    c = std::move(*&c);
    EXPECT_EQ(blockOf(a).referenceCount, 3);
    b += wideChar<TypeParam>('x');
    EXPECT_EQ(blockOf(a).referenceCount, 2);
    EXPECT_EQ(blockOf(b).referenceCount, 1);

    const TypeParam whole = a.subString(0, 5);
    const TypeParam front = a.subStringBefore(99);
    const TypeParam rest = a.subStringFrom(0);
    EXPECT_EQ(blockOf(a).referenceCount, 5);
    EXPECT_NE(a.subString(0, 99).disguise(), a.disguise());

    TypeParam shared; // null strings take over the whole block
    shared.append(a);
    TypeParam prepended;
    prepended.prepend(a);
    EXPECT_EQ(blockOf(a).referenceCount, 7);
}

TYPED_TEST(StringRules, EditsThatFindNothingLeaveTheBlockAlone) {
    TypeParam a(TestText<TypeParam>("hello"));
    const TypeParam sharer = a;
    const TestText<TypeParam> other("qx"), empty("");
    const auto q = wideChar<TypeParam>('q');
    a.replace(other, empty);
    a.replaceAll(other, empty);
    a.replace(2, 0, empty);
    a.append(empty);
    a.insert(2, empty);
    a.split(q);
    a.fillFrom(q, -1);
    a.fillBefore(q, -1);
    EXPECT_EQ(a.disguise(), sharer.disguise());
}

TYPED_TEST(StringRules, EditsInPlaceTakeABlockOfTheirOwnEvenForNothing) {
    const auto q = wideChar<TypeParam>('q');
    const TestText<TypeParam> hello("HELLO"), other("qx");
    const std::vector<std::function<void(TypeParam&)>> edits = {
        [&](TypeParam& s) { s.fillFrom(q, 5); },      [&](TypeParam& s) { s.fillBefore(q, 0); },
        [&](TypeParam& s) { s.translate(other, q); }, [&](TypeParam& s) { s.toUpper(); },
        [&](TypeParam& s) { s.getBuffer(0); },
    };
    for (std::size_t i = 0; i < edits.size(); ++i) {
        TypeParam s(hello);
        const TypeParam sharer = s;
        edits[i](s);
        EXPECT_EQ(plain(s), "HELLO") << "edit " << i;
        EXPECT_EQ(blockOf(sharer).referenceCount, 1) << "edit " << i;
    }
}

TYPED_TEST(StringRules, WhatLeavesNoTextLeavesNoBlock) {
    const auto x = wideChar<TypeParam>('x');
    const TestText<TypeParam> xx("xx"), none("");
    const std::vector<std::function<void(TypeParam&)>> edits = {
        [&](TypeParam& s) { s.clear(); },
        [&](TypeParam& s) { s.setSize(0); },
        [&](TypeParam& s) { s.replace(0, 2, none); },
        [&](TypeParam& s) { s.replaceAll(xx, none); },
        [&](TypeParam& s) { s.split(x); },
        [&](TypeParam& s) { s = none; },
    };
    for (std::size_t i = 0; i < edits.size(); ++i) {
        TypeParam s(xx);
        edits[i](s);
        EXPECT_EQ(s.disguise(), nullptr) << "edit " << i;
    }
}

TYPED_TEST(StringRules, BuffersShowNoOldMemory) {
    for (std::size_t length = 1; length < 40; ++length)
        for (unsigned size = 1; size < 60; ++size) {
            TypeParam s(TestText<TypeParam>(std::string(length, 'a')));
            const TypeParam sharer = s;
            TypeParam(TestText<TypeParam>(std::string(size, 'x'))); // what the next block may hold
            s.setSize(size);
            const int kept = s.getLength();
            ASSERT_EQ(s.getValue()[kept], 0);
            s.setLength(blockOf(s).bufferLength);
            for (int i = kept; i < s.getLength(); ++i)
                ASSERT_EQ(s.getValue()[i], 0) << length << ", " << size << ", " << i;
        }
    TypeParam s(TestText<TypeParam>("abc"));
    s.append(TestText<TypeParam>(std::string(300, 'x')));
    s.setLength(blockOf(s).bufferLength);
    EXPECT_EQ(s.getValue()[s.getLength() - 1], 0);

    // What another sharer's buffer holds behind the text can be taken in, too.
    TypeParam read;
    std::fill_n(read.getBuffer(19), 19, wideChar<TypeParam>('y'));
    read.setLength(4);
    TypeParam longer = read;
    longer.setLength(10);
    EXPECT_EQ(plain(longer).substr(5), "yyyyy");
    EXPECT_EQ(plain(read), "yyyy");
}

TYPED_TEST(StringRules, SharedBlocksAreCutBySizeAndBuffer) {
    const TestText<TypeParam> hello("hello");
    TypeParam alone(hello);
    alone.getBuffer(2);
    EXPECT_EQ(plain(alone), "hello");
    TypeParam buffered = alone;
    buffered.getBuffer(2);
    EXPECT_EQ(plain(buffered), "he");
    EXPECT_EQ(plain(alone), "hello");

    TypeParam spare;
    spare.setSize(19);
    spare.append(TestText<TypeParam>("abcd"));
    spare.minimizeSize(); // 15 spare: not worth it
    EXPECT_EQ(blockOf(spare).bufferLength, 19);
    spare.setSize(35);
    spare.minimizeSize();
    EXPECT_EQ(blockOf(spare).bufferLength, 19);
}

TYPED_TEST(StringRules, RepresentationsSurviveInUntypedHands) {
    TypeParam s(TestText<TypeParam>("text"));
    void* const kept = TypeParam::checkIn(s.disguise());
    EXPECT_EQ(blockOf(s).referenceCount, 2);
    s.clear();
    const TypeParam again = TypeParam::undisguise(kept);
    EXPECT_EQ(plain(again), "text");
    EXPECT_EQ(TypeParam::compareDisguised(kept, again.disguise()), 0);
    EXPECT_EQ(TypeParam::compareNoCaseDisguised(kept, nullptr), 1);
    EXPECT_EQ(TypeParam::hashDisguised(kept), TypeParam::hash(again));

    void* slot = kept; // a slot that a container hands out as a string
    auto& inSlot = reinterpret_cast<TypeParam&>(slot);
    inSlot += wideChar<TypeParam>('x');
    EXPECT_EQ(plain(TypeParam::undisguise(slot)), "textx");
    EXPECT_EQ(blockOf(again).referenceCount, 1);
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
    TypeParam s(TestText<TypeParam>("hello"));
    const TypeParam sharer = s;
    EXPECT_EQ(std::as_const(s)[5], 0);
    EXPECT_EQ(std::as_const(s)[-1], 0);
    s[5] = 'x';
    EXPECT_EQ(s[INT_MIN], 0);
    EXPECT_EQ(TypeParam()[0], 0);
    s.setLength(-1);
    s.setLength(20);
    s.releaseBuffer(-2);
    EXPECT_EQ(s.disguise(), sharer.disguise());
    TypeParam null;
    null.setLength(7);
    null.setLength(-7);
    null.releaseBuffer();
    const std::vector<std::string> expected = {
        "Internal error #5", "Internal error #5", "Internal error #5", "Internal error #5",
        "Internal error #5", "Internal error #4", "Internal error #4", "Internal error #4"};
    EXPECT_EQ(director.fatals, expected);
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
    const TypeParam null, text(Text("ab"));
    TypeParam block;
    block.getBuffer(0);
    struct Row {
        const TypeParam &a, &b;
        int compareText, compareString, noCaseText, noCaseString;
        bool equals, sameText, sameString;
    };
    const Row rows[] = {
        {null, null, 0, 0, 0, 0, true, true, true},
        {null, block, 0, 0, 0, -1, true, true, false},
        {block, null, 0, 0, 0, 1, true, true, false},
        {block, block, 0, 0, 0, 0, true, true, true},
        {null, text, -1, 1, -1, -1, false, false, false},
        {text, null, 1, -1, 1, 1, false, false, false},
        {block, text, -1, 1, -1, -1, false, false, false},
        {text, block, 1, -1, 1, 1, false, false, false},
        {text, text, 0, 0, 0, 0, true, true, true},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(i);
        const Row& r = rows[i];
        const auto* const t = r.b.getValue();
        EXPECT_EQ(r.a.compare(t), r.compareText);
        EXPECT_EQ(r.a.compare(r.b), r.compareString);
        EXPECT_EQ(r.a.compareN(t, 1), r.compareText);
        EXPECT_EQ(r.a.compareN(r.b, 0), r.compareString);
        EXPECT_EQ(TypeParam::compare(r.a, r.b), r.compareString);
        EXPECT_EQ(TypeParam::compareStrings(&r.a, &r.b), r.compareString);
        EXPECT_EQ(r.a < t, r.compareText < 0);
        EXPECT_EQ(r.a >= r.b, r.compareString >= 0);
        EXPECT_EQ(t > r.a, r.compareText < 0);
        EXPECT_EQ(r.a.compareNoCase(t), r.noCaseText);
        EXPECT_EQ(TypeParam::compareNoCase(r.a, r.b), r.noCaseString);
        EXPECT_EQ(r.a == t, r.equals);
        EXPECT_EQ(r.a != r.b, !r.equals);
        EXPECT_EQ(t == r.a, r.equals);
        EXPECT_EQ(r.a.equalsN(t, 9), r.compareText == 0);
        EXPECT_EQ(r.a.equalsN(r.b, 9), r.compareString == 0);
        EXPECT_EQ(r.a.equalsNoCase(t), r.sameText);
        EXPECT_EQ(r.a.equalsNoCase(r.b), r.sameString);
    }
    EXPECT_TRUE(null.equalsNoCase(static_cast<const CharOf<TypeParam>*>(nullptr)));
    EXPECT_FALSE(block.equalsNoCase(static_cast<const CharOf<TypeParam>*>(nullptr)));
    EXPECT_EQ(block.compareNoCase(static_cast<const CharOf<TypeParam>*>(nullptr)), 1);
    const TypeParam longer(Text("abc"));
    EXPECT_TRUE(text < longer && longer > text && text <= text && text >= text && text != longer);
}

TYPED_TEST(StringRules, LengthsBeyondTheHeaderAreRefused) {
    const TestText<TypeParam> ab("ab");
    const auto x = wideChar<TypeParam>('x');
    const std::vector<std::function<void(TypeParam&)>> edits = {
        [x](TypeParam& s) { s.repeat(x, INT_MAX - 1); },
        [&](TypeParam& s) { s.repeat(ab, INT_MAX); },
        [&](TypeParam& s) { s.repeat(s, INT_MAX); },
        [x](TypeParam& s) { s.fill(x, INT_MAX, INT_MAX); },
        [](TypeParam& s) { s.getBuffer(INT_MAX); },
        [](TypeParam& s) { s.setSize(UINT_MAX); },
    };
    for (std::size_t i = 0; i < edits.size(); ++i) {
        TypeParam s(ab);
        void* const block = s.disguise();
        EXPECT_THROW(edits[i](s), KazMemoryException) << i;
        EXPECT_EQ(s.disguise(), block);
        EXPECT_EQ(plain(s), "ab");
    }
    TypeParam null;
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
    EXPECT_EQ(s, "value!");
    s.appendFormat("%s%d", s.getValue(), -7);
    EXPECT_EQ(s, "value!value!-7");
    for (const int n : {0, 511, 512, 31999, 32000, 200000}) {
        s.format("<%*d>", n, 5);
        EXPECT_EQ(s.getLength(), std::max(n, 1) + 2);
        EXPECT_EQ(s.getValue()[s.getLength() - 2], '5');
    }
    s.format("a%cb", 0);
    EXPECT_EQ(s, "a");
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
    KazString literals, others, held;
    std::string expected, before;
    for (int i = 0; i < 500; ++i) {
        const auto& [text, appendLiteral] = texts[i * i % 11 % 8];
        if (i % 50 == 0) { // from now on the block is not its own, or not the same
            held = literals;
            before = expected;
        }
        appendLiteral(literals);
        others.append(text);
        expected += text;
        ASSERT_EQ(plain(literals), expected);
        ASSERT_EQ(plain(held), before);
        ASSERT_EQ(blockOf(literals).bufferLength, blockOf(others).bufferLength);
    }
    EXPECT_EQ(plain(others), expected);
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

TEST(NarrowString, DerivedClassesShareBlocksByHand) {
    const KazString text("text");
    OpenString s("old");
    s.addReference(text);
    EXPECT_EQ(s.disguise(), text.disguise());
    EXPECT_EQ(blockOf(text).referenceCount, 2);
    s.removeReference();
    EXPECT_EQ(s.disguise(), nullptr);
    EXPECT_EQ(blockOf(text).referenceCount, 1);
}

TEST(NarrowString, AFullBlockOfTheLargestSizeTakesNothingMore) {
    constexpr int largest = 0x7FFFFFF3;
    OpenString s("hello");
    s.setStringLength(largest);
    s.setBufferLength(largest);
    EXPECT_THROW(s.append('x'), KazMemoryException);
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
