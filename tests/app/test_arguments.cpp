// SPDX-License-Identifier: Apache-2.0
#include "tools/app/arguments.h"

#include "frame_app.h"
#include "fuzz/argument_words.h"
#include "fuzz/option_rows.h"
#include "testkit/alloc_failure.h"
#include "testkit/capture.h"
#include "tools/app/KazMasterContext.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/KazToolsContext.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using Texts = std::vector<std::string>;

std::vector<arg_type_enum> allTypes() {
    std::vector<arg_type_enum> result;
    for (const OptionRow& row : readOptionRows())
        result.push_back(static_cast<arg_type_enum>(row.type));
    result.push_back(arg_end);
    return result;
}

Texts valuesOf(const KazParsedArgs& args, arg_type_enum type) {
    Texts result;
    while (const char* text = args.getArgText(type, static_cast<int>(result.size()), nullptr))
        result.emplace_back(text);
    return result;
}

} // namespace

// What the parser makes of the rows is compared with a model elsewhere.
TEST(OptionTable, HasTheKnownRowsInTheirOrder) {
    const KazArgDescription* actual = KazArgDescription::table();
    for (const OptionRow& row : readOptionRows()) {
        SCOPED_TRACE(row.text);
        ASSERT_NE(actual->type, arg_end);
        EXPECT_EQ(actual->text, row.text);
        EXPECT_EQ(actual->type, row.type);
        EXPECT_EQ(actual->defaultText ? actual->defaultText : "-", row.defaultText);
        EXPECT_EQ(KazArgDescription::find(actual->type), actual);
        EXPECT_EQ(kaz_arg_is_repeating(actual->type), row.repeats > 1);
        ++actual;
    }
    EXPECT_EQ(actual->type, arg_end);
    EXPECT_FALSE(kaz_arg_is_repeating(static_cast<arg_type_enum>(46)));
    EXPECT_EQ(KazArgDescription::find(arg_end), nullptr);
    EXPECT_EQ(KazArgDescription::match(nullptr), nullptr);
}

TEST(ParsedArgs, KeepsWhatItHasWhenMemoryRunsOut) {
    Words words({"-x", "key", "value", "-batch", "plain", "-Command", "0x4142"});
    const std::vector<arg_type_enum> types = allTypes();
    moxkit::Capture capture; // The parses after a failure report repetitions.
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        auto args = std::make_unique<KazParsedArgs>();
        const auto parse = [&] {
            args->parse(words.argc(), words.argv(), nullptr, types.data(), 0);
        };
        const long failed = moxkit::sweepAllocations(
            parse,
            [&] {
                const Texts kept = valuesOf(*args, arg_x);
                EXPECT_TRUE(kept.empty() || kept[0] == "key");
                EXPECT_TRUE(kept.size() < 2 || kept == (Texts{"key", "value"}));
                EXPECT_EQ(valuesOf(*args, arg_Command), Texts{});
                parse();
                EXPECT_EQ(valuesOf(*args, arg_batch), Texts{"1"});
                args = std::make_unique<KazParsedArgs>();
            },
            mode);
        EXPECT_GE(failed, 5) << "one for each value at least";
        EXPECT_EQ(valuesOf(*args, arg_Command), Texts{"AB"});
    }
}

TEST(ParsedArgs, TakeNullEntriesAndListsOfAnything) {
    char plain[] = "plain", option[] = "-projdir";
    char* argv[] = {nullptr, nullptr, plain, option, nullptr, nullptr};
    const arg_type_enum odd[] = {arg_projdir, static_cast<arg_type_enum>(1000), arg_end};
    KazParsedArgs args;
    EXPECT_TRUE(args.parse(5, argv, nullptr, odd, 1));
    EXPECT_STREQ(args.getUntagged(0), "plain");
    EXPECT_EQ(valuesOf(args, arg_projdir), Texts{""});
    EXPECT_FALSE(args.parse(3, argv, odd, nullptr, 0)) << "one that no option can satisfy";
    EXPECT_TRUE(args.parse(0, nullptr, nullptr, nullptr, 2));
    args.copyGlobal(nullptr);
    EXPECT_TRUE(text_is_float(nullptr) && !text_is_integer(nullptr));
}

TEST(Arguments, QueriesGoToTheToolsOwnSetOnceItExists) {
    FrameApp app;
    const auto parse = [types = allTypes()](const Texts& line, bool own) {
        Words words(line);
        return kaz_arg_parse(words.argc(), words.argv(), nullptr, types.data(), 0, own);
    };
    const Texts own{"-trace", "t2", "-x", "a", "b", "mine"};
    ASSERT_TRUE(parse({"-projdir", "shared", "-trace", "t1", "-verbose", "plain"}, false));
    EXPECT_STREQ(kaz_arg_get_untagged(0), "plain");
    EXPECT_FALSE(parse(own, true)) << "there is no context to hold a set";
    KazMasterContext context;
    EXPECT_STREQ(kaz_arg_text(arg_projdir, 0, nullptr), "shared") << "no own set yet";
    ASSERT_TRUE(parse(own, true));
    EXPECT_EQ(kaz_arg_text(arg_projdir, 0, nullptr), nullptr);
    EXPECT_STREQ(kaz_arg_text(arg_verbose, 0, nullptr), "1");
    EXPECT_STREQ(kaz_arg_text(arg_trace, 0, nullptr), "t1");
    EXPECT_STREQ(kaz_arg_text_or(arg_trace, "none", 1), "t2");
    EXPECT_STREQ(kaz_arg_repeating_text(arg_x, 0, 1, nullptr), "b");
    EXPECT_STREQ(kaz_arg_get_untagged(0), "mine");
    EXPECT_EQ(kaz_arg_untagged_count(), 1);
    EXPECT_STREQ(kaz_arg_text_or(arg_projdir, "here"), "here");
    EXPECT_EQ(kaz_arg_text_or(arg_projdir, nullptr), nullptr);

    app.setActiveContext(nullptr);
    EXPECT_STREQ(kaz_arg_text(arg_projdir, 0, nullptr), "shared");
    app.setActiveContext(&context);
}

TEST(Arguments, WithoutAnApplicationNothingIsKnown) {
    { FrameApp passing; }
    ASSERT_EQ(KazApp::getInstance(), nullptr);
    Words words({"x"});
    for (const bool own : {false, true})
        EXPECT_FALSE(kaz_arg_parse(words.argc(), words.argv(), nullptr, nullptr, 0, own));
    const char* fallback = "f";
    EXPECT_STREQ(kaz_arg_text(arg_x, 0, &fallback), "f");
    EXPECT_STREQ(kaz_arg_text_or(arg_x, "g"), "g");
    EXPECT_EQ(kaz_arg_untagged_count(), 0);
    EXPECT_STREQ(kaz_arg_repeating_text(arg_x, 0, 0, &fallback), "f");
    EXPECT_EQ(kaz_arg_repeating_text(arg_x, 0, 0, nullptr), nullptr);
    EXPECT_EQ(kaz_arg_get_untagged(0), nullptr);
}

TEST(Arguments, AnArgvOfNothingIsShiftedToNothing) {
    char a[] = "a";
    char *argv[] = {a, nullptr}, **same = nullptr;
    int argc = 0;
    arg_shift_argv(&argc, argv);
    EXPECT_EQ(argv[0], nullptr);
    argv_to_glob(7, argv, &argc, &same);
    EXPECT_TRUE(argc == 7 && same == argv);
    argv_to_glob(1, nullptr, nullptr, nullptr);
}

TEST(Arguments, TheEditorMayNameTheProgram) {
    const std::string far = std::string(510, 'd') + "/tool";
    const std::pair<std::string, std::string> names[] = {
        {"tool", "gr"}, {"dir\\tool", "dir\\gr"}, {"a/b/tool", "a\\b\\gr"}, {far, far}};
    for (auto [argv0, name] : names) {
        Words words({"x", "-Ed", "gr", "y"});
        words.argv()[0] = argv0.data();
        int argc = words.argc();
        char* editor = nullptr;
        EXPECT_EQ(get_editor_from_argv(&argc, words.argv(), &editor, 1), 1);
        EXPECT_STREQ(editor, "gr");
        EXPECT_EQ(Texts(words.argv(), words.argv() + argc), (Texts{name, "x", "y"}));
        if (words.argv()[0] != argv0.data())
            std::free(words.argv()[0]);
    }
}
