// SPDX-License-Identifier: Apache-2.0
// The test kit's director: what tests of tools hear and answer.
#include "testkit/director.h"

#include "testkit/capture.h"
#include "tools/messages/messages.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

TEST(RecordingDirector, KeepsWhatIsSaidAndAnswersWhatIsAsked) {
    moxkit::Capture capture;
    moxkit::RecordingDirector director;
    print_msg("tank %d", 3);
    print_err("100%s", "%");
    fatal_err("it %s", "burns");
    EXPECT_EQ(director.messages, Texts{"tank 3"});
    EXPECT_EQ(director.errors, Texts{"100%"});
    EXPECT_EQ(director.fatals, Texts{"it burns"});

    const auto confirm = [](KazIODirector::Reply reply) {
        return KazIODirector::confirm("Copy", "Go on?", KazIODirector::YesNo, reply);
    };
    director.replies = {KazIODirector::Decline, KazIODirector::Ignore};
    EXPECT_EQ(confirm(KazIODirector::Accept), KazIODirector::Decline);
    EXPECT_EQ(confirm(KazIODirector::Accept), KazIODirector::Ignore);
    EXPECT_EQ(confirm(KazIODirector::Decline), KazIODirector::Decline);

    KazString name("before");
    director.inputs = {"", "mary"};
    EXPECT_FALSE(KazIODirector::getUserInput(name, "Login", "Name", true));
    EXPECT_STREQ(name.getValue(), "before");
    EXPECT_TRUE(KazIODirector::getUserInput(name, "Login", "Name", false));
    EXPECT_STREQ(name.getValue(), "mary");
    EXPECT_FALSE(KazIODirector::getUserInput(name, "Login", "Name", true));

    EXPECT_EQ(director.questions, (Texts{"Copy: Go on?", "Copy: Go on?", "Copy: Go on?",
                                         "Login: Name", "Login: Name", "Login: Name"}));
    EXPECT_EQ(capture.out() + capture.err(), "");
}

} // namespace
