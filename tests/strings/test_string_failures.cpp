// Edits that run out of memory, or of what a length can say.

#include "kit/alloc_failure.h"
#include "string_kit.h"

#include <climits>
#include <functional>

namespace {

template <class String>
class StringFailures : public testing::Test {};
TYPED_TEST_SUITE(StringFailures, BothStrings);

template <class String>
using Edits = std::vector<std::function<void(String&)>>;

template <class String>
Edits<String> allocatingEdits() {
    static const TestText<String> apostrophe("'"), a("a"), longText(std::string(99, 'x'));
    static const String other(longText);
    const auto x = wideChar<String>('x');
    return {
        [](String& s) { s = longText; },
        [](String& s) { s.append(longText); },
        [](String& s) { s.append(s); },
        [](String& s) { s += other; },
        [](String& s) { s = s + other; },
        [x](String& s) { s.repeat(x, 50); },
        [](String& s) { s.repeat(s, 9); },
        [](String& s) { s.prepend(longText); },
        [](String& s) { s.insert(2, other); },
        [](String& s) { s.remove(1, 2); },
        [](String& s) { s.removeBefore(2); },
        [](String& s) { s.replace(1, 2, longText); },
        [](String& s) { s.replace(a, longText); },
        [](String& s) { s.replaceAll(a, longText); },
        [x](String& s) { s.fill(x, 2, 70); },
        [](String& s) { s.getBuffer(100); },
        [](String& s) { s.setSize(100); },
        [x](String& s) { s.escape(a, x); },
        [](String& s) { s.unescape(' '); },
        [](String& s) { s.enquote('"', nullptr, '\\'); },
        [](String& s) { s.dequote('\'', '\\'); },
        [](String& s) { s.trimLeft(apostrophe); },
        [](String& s) { s.split(' '); },
        [](String& s) { s.minimizeSize(); },
        [](String& s) {
            const String sharer = s;
            s.toUpper();
        },
        [](String& s) {
            const String sharer = s;
            s.setLength(2);
        },
        [](String& s) {
            const String sharer = s;
            s[1] = 'b';
        },
    };
}

TYPED_TEST(StringFailures, LeaveTheTextAndItsSharersAsTheyWere) {
    const Edits<TypeParam> edits = allocatingEdits<TypeParam>();
    for (std::size_t i = 0; i < edits.size(); ++i)
        for (const bool isShared : {true, false}) {
            SCOPED_TRACE("edit " + std::to_string(i) + (isShared ? ", shared" : ", alone"));
            std::vector<TypeParam> strings(2);
            strings[0].setSize(40);
            strings[0].append(TestText<TypeParam>("'ab ab'"));
            if (isShared)
                strings[1] = strings[0];
            const std::string sharer = plain(strings[1]);
            const long failures = kit::sweepAllocations([&] { edits[i](strings[0]); },
                                                        [&] {
                                                            EXPECT_EQ(plain(strings[0]), "'ab ab'");
                                                            EXPECT_EQ(plain(strings[1]), sharer);
                                                            checkBlocks(strings);
                                                        });
            EXPECT_TRUE(failures > 0 || !isShared) << "nothing failed, so nothing was tested";
        }
}

TYPED_TEST(StringFailures, LengthsBeyondTheHeaderAreRefused) {
    const TestText<TypeParam> ab("ab");
    const auto x = wideChar<TypeParam>('x');
    const Edits<TypeParam> edits = {
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

} // namespace
