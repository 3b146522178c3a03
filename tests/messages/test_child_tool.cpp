// SPDX-License-Identifier: Apache-2.0
// Tools inside tools: what becomes of the child's progress, lines and end.
#include "logging_director.h"
#include "relayed.h"
#include "tools/messages/KazChildTool.h"

#include <gtest/gtest.h>

namespace {

class ChildTool : public Relayed {};

TEST_F(ChildTool, IsAStepOfItsParentsProgress) {
    const Words child = {"start:a:1:Inner", "add:a:25", "message:one", "add:a:25",
                         "error:two",       "second",   "tell:a:it",   "half:rest"};
    const Words line = joined({"start:a:1:Outer", "add:a:10"}, running(40, child), {"add:a:10"});
    const moxkit::Result result = relay(line);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(told(), "10 % 20 % 30 % 50 % 60 % > one > Second ....................it > rest "
                      "! two . status 0 ");
    EXPECT_EQ(result.out.find("Inner"), std::string::npos);
}

TEST_F(ChildTool, AttachesItsOwnChildrenToItsParent) {
    const Words grandchild = {"start:a:1:Innermost", "add:a:50", "add:a:50", "exit:4"};
    const Words child = joined({"start:a:1:Inner"}, running(50, grandchild), {"add:a:20"});
    relay(joined({"start:a:1:Outer"}, running(40, child), {"add:a:60"}));
    EXPECT_EQ(told(), "10 % 20 % 28 % 40 % 100 % > status 4 . status 0 ");
}

TEST_F(ChildTool, TellsHowItsChildEnded) {
    relay(joined({"start:a:1:Outer"}, running(10, {"ask:Q", "exit:3"}), running(20, {"deaf"})));
    EXPECT_EQ(told(), "10 % 30 % > Q: Sure? [Yes]/No reply 0 . status 3 . status 0 ");

    const moxkit::Result result = relay({"start:a:1:Outer", "run:a:50", "1", "nosuchtool"});
    EXPECT_EQ(told(), "50 % ! \"nosuchtool\" could not be started: No such file or directory "
                      ". status -1 ");
    EXPECT_EQ(result.status, 0);
    relay({"start:a:1:Outer", "run:a:100", "0"});
    EXPECT_EQ(told(), "100 % ! \"\" could not be started: No such file or directory . status -1 ");
}

TEST_F(ChildTool, EndsItsStepWhateverTheDirectorThrows) {
    struct Refusing : LoggingDirector {
        void doTtyMsg(int, const char*, va_list) override { throw 1; }
        void doEndSubProgress(int id) override {
            LoggingDirector::doEndSubProgress(id);
            throw 2;
        }
    };
    Refusing director;
    director.install();
    const std::string tool = moxkit::binDirectory() + "/step_tool";
    const char* const child[] = {tool.c_str(), "half:a line", nullptr};
    KazProgressHandle progress("work", 1);
    int thrown = 0;
    try {
        kazRunTool(progress, 40, child);
    } catch (int number) {
        thrown = number;
    }
    EXPECT_EQ(thrown, 1);
    EXPECT_EQ(director.takeLog(), (Log{"start work,1", "startSub 77,40,100", "endSub 77"}));
}

TEST_F(ChildTool, WithoutAnOfferOfAParentIsAToolAsEver) {
    const Words words = {"start:a:1:Alone", "add:a:100", "end:a"};
    const std::string shown = "Alone ....................";
    EXPECT_EQ(relay(words).out, shown);
    EXPECT_EQ(relay(joined(words, {"-progress_channel", "1:0:100"})).out, shown);
    for (const char* number : {"", "x", "0", "1", "2", "-1", "3x", "99999999999999999999", "77"}) {
        options.env["KAZ_PROGRESS_FD"] = number;
        EXPECT_EQ(relay(joined(words, {"-progress_channel", "1:0:100"})).out, shown) << number;
        EXPECT_EQ(relay(words).out, shown) << number;
    }
}

} // namespace
