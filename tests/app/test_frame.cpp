// SPDX-License-Identifier: Apache-2.0
// What hangs off the application object: contexts, and the arguments that they hold.
#include "frame_app.h"
#include "fuzz/argument_words.h"
#include "fuzz/option_rows.h"
#include "testkit/alloc_failure.h"
#include "testkit/capture.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/app/KazEditorsBase.h"
#include "tools/app/KazMasterContext.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/KazToolsContext.h"
#include "tools/app/arguments.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// Notes its number when it goes.
class Noted : public KazContext {
public:
    Noted(std::vector<int>& log, int number) : log_(log), number_(number) {}
    ~Noted() override { log_.push_back(number_); }

private:
    std::vector<int>& log_;
    int number_;
};

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

// Before others take the place of the application that this program is.
TEST(ConsoleApp, MakesItsContextWhenNoneIsActive) {
    KazConsoleApp* app = KazConsoleApp::getInstance();
    const std::unique_ptr<KazMasterContext> made(app->getActiveContext());
    EXPECT_EQ(app->getActiveContext(), made.get());
    EXPECT_EQ(KazMasterContext::getInstance(), made.get());
    KazMasterContext own;
    EXPECT_EQ(app->getActiveContext(), &own);
    app->setActiveContext(nullptr);
    const std::unique_ptr<KazMasterContext> again(app->getActiveContext());
    EXPECT_TRUE(again && again != made && again.get() != &own);
}

TEST(MasterContext, DeletesItsSlotsInOrderAndLeavesTheApplication) {
    FrameApp app;
    std::vector<int> gone;
    auto context = std::make_unique<KazMasterContext>();
    EXPECT_EQ(KazMasterContext::getInstance(), context.get());
    for (int slot : {15, 3, 0, 16})
        EXPECT_TRUE(context->setSlot(slot, new Noted(gone, slot)));
    Noted refused(gone, 99);
    EXPECT_FALSE(context->setSlot(17, &refused) || context->setSlot(-1, &refused));
    for (int slot : {17, -1, 1})
        EXPECT_EQ(context->getSlot(slot), nullptr);
    EXPECT_TRUE(context->setSlot(3, context->getSlot(3))) << "it stays";
    context.reset();
    EXPECT_EQ(gone, (std::vector<int>{0, 3, 15, 16}));
    EXPECT_EQ(app.getActiveContext(), nullptr);
}

TEST(MasterContext, OnlyTheActiveOneClearsTheApplication) {
    FrameApp app;
    auto first = std::make_unique<KazMasterContext>();
    KazMasterContext second;
    first.reset();
    EXPECT_EQ(app.getActiveContext(), &second);
    KazMasterContext copy(second);
    EXPECT_EQ(app.getActiveContext(), &second) << "a copy does not register";
}

TEST(MasterContext, CopiesShareWithoutOwning) {
    FrameApp app;
    std::vector<int> gone;
    {
        KazMasterContext original;
        original.setSlot(0, new Noted(gone, 0));
        {
            KazMasterContext copy(original);
            EXPECT_EQ(copy.getSlot(0), original.getSlot(0));
            copy.setSlot(1, new Noted(gone, 1));
            copy.setSlot(0, new Noted(gone, 10));
        }
        EXPECT_EQ(gone, (std::vector<int>{10, 1})) << "what was put into the copy is its own";
        KazMasterContext assigned;
        assigned.setSlot(0, new Noted(gone, 2));
        assigned = original;
        EXPECT_EQ(gone.back(), 2);
        original = assigned;
        original = *&original;
        EXPECT_EQ(gone.size(), 3u);
    }
    EXPECT_EQ(gone, (std::vector<int>{10, 1, 2, 0}));
}

TEST(MasterContext, MayOutliveTheApplication) {
    std::optional<FrameApp> app(std::in_place);
    auto context = std::make_unique<KazMasterContext>();
    ASSERT_NE(KazToolsContext::getInstance(), nullptr);
    app.reset();
    EXPECT_EQ(KazApp::getInstance(), nullptr);
    EXPECT_EQ(KazMasterContext::getInstance(), nullptr);
    EXPECT_EQ(KazToolsContext::getInstance(), nullptr);
    context.reset();
    KazMasterContext withoutApplication;
    EXPECT_STREQ(KazApp::getArgv0(), "");
}

TEST(ToolsContext, EachMasterContextHasItsOwn) {
    FrameApp app;
    EXPECT_EQ(KazToolsContext::getInstance(), nullptr) << "no active context";
    KazMasterContext master;
    KazToolsContext* tools = KazToolsContext::getInstance();
    ASSERT_EQ(tools, KazToolsContext::getInstance());
    EXPECT_EQ(master.getSlot(KazMasterContext::toolsSlot), tools);

    EXPECT_EQ(tools->getParsedArgs(), nullptr);
    KazParsedArgs* args = tools->allocParsedArgs();
    EXPECT_EQ(tools->allocParsedArgs(), args);
    EXPECT_EQ(tools->getParsedArgs(), args);
    KazMasterContext other;
    EXPECT_NE(KazToolsContext::getInstance(), tools);
}

TEST(ToolsContext, IsMadeWholeOrNotAtAll) {
    FrameApp app;
    const long failed = moxkit::sweepAllocations(
        [] {
            KazMasterContext master;
            KazToolsContext::getInstance()->allocParsedArgs();
        },
        [&] { EXPECT_EQ(app.getActiveContext(), nullptr); });
    EXPECT_GT(failed, 2);
}

TEST(EditorsBase, GivesTheInstalledOnesCommand) {
    class Graphical : public KazEditorsBase {
        KazString getCreationCommand(const char* name) override {
            return "start " + KazString(name);
        }
    };
    {
        Graphical installed;
        EXPECT_STREQ(KazEditorsBase::getInstance()->getCreationCommand("gr"), "start gr");
    }
    KazEditorsBase* plain = KazEditorsBase::getInstance();
    EXPECT_STREQ(plain->getCreationCommand("gr"), "gr");
    EXPECT_STREQ(plain->getCreationCommand(nullptr), "");
}

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
