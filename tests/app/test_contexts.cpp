// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazMasterContext.h"

#include "frame_app.h"
#include "testkit/alloc_failure.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/app/KazEditorsBase.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/KazToolsContext.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
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
    for (int id = 0; id < KazToolsContext::envValueCount; ++id) {
        const KazEnvValue* value = tools->getEnvValue(static_cast<kaz_env_id_enum>(id));
        EXPECT_TRUE(!value->isAssigned() && value->isNull());
    }
    EXPECT_TRUE(tools->getDbOpen() == 0 && !tools->isDbReadonly());
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
