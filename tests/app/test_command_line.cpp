// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazCommandLine.h"

#include "fuzz/argument_words.h"
#include "testkit/alloc_failure.h"
#include "testkit/director.h"
#include "tools/app/arguments.h"
#include "tools/formats/nearwords.h"
#include "tools/messages/KazInterruptWatch.h"
#include "tools/messages/messages.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

constexpr KazCommandLine::Option options[] = {
    {arg_projdir, "DIR", "project directory", false, KazCommandLine::AnyDirectory},
    {arg_system, "NAME", "system to copy", true, KazCommandLine::OfTool},
    {arg_file, "FILE", "one more file", false, KazCommandLine::AnyFile},
    {arg_port, "N", "port of the server", false, KazCommandLine::WholeNumber},
    {arg_formats, "FORMAT", "what comes out", false, KazCommandLine::OneOf, "html|rtf|mif"},
    {arg_x, "NAME VALUE", "defines"},
    {arg_verbose, nullptr, "tell more"}};
constexpr KazCommandLine::Word words[] = {{"--plan", "tell what would be done"}};

void offerSystems(const char* option, const char* begin, KazCommandLine::Offer offer, void* data) {
    print_err("nobody hears this");
    fatal_err("nor this");
    for (const char* name : {"plant", "plant two", "bad\tname"})
        offer(name, option, data);
    static_cast<void>(begin);
}

constexpr KazCommandLine commandLine({"tool", "1.2", "Does things.", options, 7, "[diagram ...]", 0,
                                      2, KazCommandLine::OfTool, words, 1},
                                     offerSystems);

/// What the tool says to a line, and the status.
struct Said {
    int status;
    Texts messages;
    Texts errors;
};

Said say(const Texts& line, const KazCommandLine& to = commandLine) {
    const moxkit::RecordingDirector director;
    Words argv(line);
    const int status = to.parse(argv.argc(), argv.argv());
    return {status, director.messages, director.errors};
}

/// The first line of the complaint, without the name of the tool; "" for none.
std::string problemOf(const Texts& line) {
    const Said said = say(line);
    if (said.errors.empty())
        return "";
    EXPECT_EQ(said.status, +KazCommandLine::wrongUsage);
    EXPECT_EQ(said.errors.back(), "tool -help shows how it is used");
    EXPECT_EQ(said.errors.front().substr(0, 6), "tool: ");
    EXPECT_TRUE(said.messages.empty());
    return said.errors.front().substr(6);
}

Texts completions(const std::string& number, const Texts& typed) {
    Texts line{"--complete", number};
    line.insert(line.end(), typed.begin(), typed.end());
    const Said said = say(line);
    EXPECT_EQ(said.status, 0);
    EXPECT_TRUE(said.errors.empty());
    return said.messages;
}

} // namespace

TEST(CommandLine, SaysWhatIsWrongAndWhatMayBeMeant) {
    const std::pair<Texts, std::string> cases[] = {
        {{"-sistem", "a"}, "unknown option -sistem; did you mean -system?"},
        {{"-SYSTEM=plant"}, "unknown option -SYSTEM=plant; did you mean -system plant?"},
        {{"-verbsoe=1"}, "unknown option -verbsoe=1; did you mean -verbose?"},
        {{"--helpp"}, "unknown option --helpp; did you mean -help?"},
        {{"-q"}, "unknown option -q"},
        {{"-\033[2J"}, "unknown option -\\x1B[2J"},
        {{"-target", "x"}, "option -target is not for this program"},
        {{"-ta", "x"}, "-ta means -target, which is not for this program"},
        {{"-system"}, "option -system needs a value"},
        {{"-system", "s", "-x", "a"}, "option -x needs 2 values"},
        {{"-projdir", "-system"}, "option -system NAME is missing"},
        {{"-system", "s", "a", "b", "c\n"}, "there is no place for the argument c\\x0A"},
        {{"-system", "s", "--", "-a", "b", "-c"}, "there is no place for the argument -c"},
        {{"-system", "s", "-port", "12x"}, "option -port: 12x is not a whole number"},
        {{"-system", "s", "-port", "99999999999999999999"},
         "option -port: 99999999999999999999 is not a whole number"},
        {{"-system", "s", "-fo", "htm"},
         "option -formats: htm is none of html, rtf and mif; did you mean html?"},
        {{"-system", "s", "--plan", "--plan"}, "option --plan is given more than 1 times"}};
    for (const auto& [line, problem] : cases)
        EXPECT_EQ(problemOf(line), problem);
    const Said said = say({"-projdir", "-system"});
    ASSERT_EQ(said.errors.size(), 3u);
    EXPECT_EQ(said.errors[1], "tool: note: -system was taken as the value of -projdir");
}

TEST(CommandLine, OffersOptionsThatBeginLikeAnAbbreviation) {
    static constexpr KazCommandLine::Option few[] = {{arg_file, "FILE", "a file"},
                                                     {arg_first, nullptr, "the first"}};
    constexpr KazCommandLine line({"tool", "1", "", few, 2});
    EXPECT_EQ(say({"-f", "x"}, line).errors.at(0),
              "tool: -f means -formats, which is not for this program; "
              "did you mean -file (-fi) or -first (-fir)?");
}

TEST(CommandLine, HelpAndVersionComeFirstWhateverElseIsWrong) {
    for (const Texts& line : {Texts{"-help"}, Texts{"-nonsense", "-x", "--help"},
                              Texts{"-system", "s", "a", "b", "c", "-help", "--version"}}) {
        const Said said = say(line);
        EXPECT_EQ(said.status, 0);
        ASSERT_EQ(said.messages.size(), 1u);
        EXPECT_EQ(said.messages[0].substr(0, 12), "usage: tool ");
        EXPECT_NE(said.messages[0].find("one more file (-fi)"), std::string::npos);
        EXPECT_TRUE(said.errors.empty());
    }
    EXPECT_EQ(say({"-version"}).messages.at(0).substr(0, 18), "tool 1.2 (moxtools");
    // Only where an option may stand.
    EXPECT_EQ(problemOf({"-system", "-help", "-projdir"}), "option -projdir needs a value");
    EXPECT_EQ(problemOf({"-nonsense", "--", "-help"}), problemOf({"-nonsense"}));
    EXPECT_EQ(problemOf({"-system", "s", "--", "-help", "a", "b"}),
              "there is no place for the argument b");
}

// What the parser makes of each word is compared with a model elsewhere.
TEST(CommandLine, ExplainsEachWord) {
    const Said said = say({"--explain", "-sy", "-projdir", "doc\n", "--plan", "--plan"});
    EXPECT_EQ(said.status, +KazCommandLine::wrongUsage);
    const Texts expected = {"1\t-sy\toption -system, row 54, abbreviated",
                            "2\t-projdir\tvalue 1 of -system; it would be the option -projdir",
                            "3\tdoc?\targument 1",
                            "4\t--plan\toption --plan",
                            "5\t--plan\toption --plan, given more than 1 times",
                            "result\toption --plan is given more than 1 times"};
    EXPECT_EQ(said.messages, expected);
    EXPECT_EQ(say({"--explain", "-system", "a", "--plan"}).messages.back(), "result\tok");
}

// Before lines are completed, whose words stay in the application's set.
TEST(CommandLine, GivesAGoodLineToTheApplication) {
    EXPECT_FALSE(commandLine.isPlan());
    const Said said = say({"-system", "s", "one", "--plan", "--", "--plan"});
    EXPECT_EQ(said.status, +KazCommandLine::run);
    EXPECT_TRUE(said.errors.empty());
    EXPECT_TRUE(commandLine.isPlan());
    EXPECT_STREQ(kaz_arg_text(arg_system, 0, nullptr), "s");
    EXPECT_STREQ(kaz_arg_get_untagged(0), "one");
    EXPECT_STREQ(kaz_arg_get_untagged(1), "--plan");
}

TEST(CommandLine, CompletesWhatMayFollow) {
    EXPECT_EQ(completions("0", {"-ver"}),
              (Texts{"-verbose\ttell more", "-version\tshow the version"}));
    EXPECT_EQ(completions("0", {"-VERB"}), Texts{"-verbose\ttell more"});
    EXPECT_EQ(completions("1", {"-verbose", "-verb"}), Texts());
    EXPECT_EQ(completions("3", {"-x", "a", "b", "-x"}), Texts{"-x\tdefines"});
    EXPECT_EQ(completions("1", {"-projdir"}), Texts{":directory"});
    EXPECT_EQ(completions("1", {"-file", "x"}), Texts{":file"});
    EXPECT_EQ(completions("1", {"-formats", "r"}), Texts{"rtf\t"});
    EXPECT_EQ(completions("1", {"-system", "pl"}), (Texts{"plant\t-system", "plant two\t-system"}));
    EXPECT_EQ(completions("0", {}), (Texts{"plant\t", "plant two\t"}));
    EXPECT_EQ(completions("0", {"--p"}), Texts{"--plan\ttell what would be done"});
    EXPECT_EQ(completions("1", {"--", "-ver"}), Texts()); // no option any more
    EXPECT_EQ(completions("2", {"a", "b"}).size(), 10u);  // no third argument: options
    EXPECT_EQ(say({"--complete", "x"}).status, +KazCommandLine::wrongUsage);
    EXPECT_EQ(say({"--complete"}).status, +KazCommandLine::wrongUsage);
    EXPECT_EQ(completions("99999999999", {"a"}).size(), 2u);
}

TEST(CommandLine, HintsAndWatchesSurviveAllocationsThatFail) {
    KazStringColl systems;
    for (const char* name : {"brewery", "brewery two", "winery\t"})
        systems.add(name);
    const long points = moxkit::sweepAllocations(
        [&systems] {
            const KazInterruptWatch watch;
            kazDidYouMean("vinery\t", systems);
        },
        [&systems] {
            EXPECT_FALSE(KazInterruptWatch::isStopped());
            EXPECT_STREQ(kazDidYouMean("vinery\t", systems), "; did you mean winery\\x09?");
        });
    EXPECT_GT(points, 5);
}
