// Process helpers: words of a command line, and program names.
#include "tools/files/process.h"

#include "kit/random.h"
#include "tools/app/KazEditorsBase.h"
#include "words.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using words::join;
using words::split;
using words::Words;

TEST(Words, JoinAndSplitAreInverse) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 3000; ++round) {
        Words words;
        for (int n = random.below(5); n > 0; --n)
            words.push_back(random.text(8, "ab \t\n\"'\\$`*?;&|<>()[]{}~#!%=-\xe9\x01"));
        ASSERT_EQ(split(join(words)), words) << join(words);
    }
}

TEST(Words, NothingAndTheUnclosed) {
    char** argv = nullptr;
    EXPECT_EQ(str_to_argv(nullptr, &argv), 0);
    EXPECT_EQ(argv[0], nullptr);
    std::free(argv);
    EXPECT_TRUE(split(" \t\n").empty());
    for (const char* unclosed : {"'", "a \"b", "\"\\\"", "x 'y\\"}) {
        EXPECT_EQ(str_to_argv(unclosed, &argv), -1) << unclosed;
        EXPECT_EQ(argv, nullptr);
    }
    EXPECT_TRUE(argv_to_str(3, nullptr).isEmpty());
    const char* early[] = {"a", nullptr, "b"};
    EXPECT_STREQ(argv_to_str(3, early).getValue(), "a");
}

class Editors : public KazEditorsBase {
public:
    KazString getCreationCommand(const char* name) override {
        return KazString("'C:\\my tools\\") + name + "' -editor x";
    }
};

TEST(Environment, ProgramNameOfAnEditor) {
    {
        const Editors editors; // before there is a plain object, which nobody would own then
        EXPECT_STREQ(TI_cprogname("cde"), "cde");
    }
    EXPECT_STREQ(TI_cprogname("class editor"), "class editor");
    EXPECT_STREQ(TI_cprogname("../../bin/x"), "x");
    EXPECT_STREQ(TI_cprogname(nullptr), "");
}

} // namespace
