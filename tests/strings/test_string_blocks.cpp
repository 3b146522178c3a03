// SPDX-License-Identifier: Apache-2.0
// Strings that come and go beside a model of their texts: blocks that are freed may
// be taken again. A program of its own, as it begins with one thread.

#include "string_kit.h"
#include "testkit/random.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

namespace {

/// Strings of one width in places that are filled, changed and emptied at random.
template <class String>
class Places {
public:
    Places() : strings_(24), texts_(24) {}

    void change(moxkit::Random& random) {
        const std::size_t to = place(random), from = place(random);
        const std::string text = random.text(140, "abcxyz");
        String& s = strings_[to];
        std::string& expected = texts_[to];
        switch (random.below(6)) {
        case 0:
            s = TestText<String>(text);
            expected = text;
            break;
        case 1:
            s = strings_[from];
            expected = texts_[from];
            break;
        case 2:
            s.append(TestText<String>(text.substr(0, 3)));
            expected += text.substr(0, 3);
            break;
        case 3:
            s = strings_[from].subString(1, 5);
            expected = texts_[from].size() > 1 ? texts_[from].substr(1, 5) : "";
            break;
        case 4: { // room that is asked for is empty, whatever was there
            String room, sharer = strings_[from];
            room.getBuffer(random.between(1, 140));
            sharer.setSize(static_cast<unsigned>(random.between(1, 140)));
            EXPECT_EQ(trashBehind(room) + trashBehind(sharer), 0);
            break;
        }
        default:
            s = String();
            expected.clear();
        }
        EXPECT_EQ(trashBehind(s), 0);
    }

    void expectRight() const {
        for (std::size_t i = 0; i < strings_.size(); ++i)
            EXPECT_EQ(plain(strings_[i]), texts_[i]) << "at " << i;
        EXPECT_EQ(faultOf(strings_), "");
    }

private:
    std::size_t place(moxkit::Random& random) const {
        return static_cast<std::size_t>(random.below(static_cast<int>(strings_.size())));
    }

    /// How many characters behind the text are not 0.
    static int trashBehind(const String& s) {
        int count = 0;
        for (int i = s.getLength(); s.disguise() && i <= blockOf(s).bufferLength; ++i)
            count += s.getValue()[i] != 0;
        return count;
    }

    std::vector<String> strings_;
    std::vector<std::string> texts_;
};

/// Both widths by turns: a block of one may become one of the other.
struct Work {
    Places<KazString> narrow;
    Places<KazWString> wide;

    void go(std::uint64_t seed) {
        moxkit::Random random(seed);
        for (int step = 0; step < 4000; ++step) {
            random.oneIn(2) ? narrow.change(random) : wide.change(random);
            if (step % 200 == 199)
                expectRight();
        }
    }

    void expectRight() const {
        narrow.expectRight();
        wide.expectRight();
    }
};

TEST(StringBlocks, HoldTheTextsOfTheirStringsInOneThreadAndInSeveral) {
    SCOPED_TRACE(moxkit::seedText());
    const std::uint64_t seed = moxkit::seed();
    Work first;
    first.go(seed);

    // Others begin with strings of this thread, which goes on meanwhile.
    std::vector<Work> works(3);
    for (std::size_t i = 0; i < works.size(); ++i)
        works[i].go(seed + i);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < works.size(); ++i)
        threads.emplace_back([work = std::move(works[i]), i, seed]() mutable {
            work.expectRight();
            work.go(seed + 10 + i);
        });
    for (std::uint64_t i = 0; i < 3; ++i)
        first.go(seed + 20 + i);
    for (std::thread& thread : threads)
        thread.join();
    first.go(seed + 30);
}

} // namespace
