// SPDX-License-Identifier: Apache-2.0
// Children that are killed, that leave something behind, and that have to stop.
#include "../relayed.h"

#include <csignal>

namespace {

class ChildToolHost : public Relayed {};

Words script(int share, const std::string& text) {
    return {"run:a:" + std::to_string(share), "3", "sh", "@c", text};
}

TEST_F(ChildToolHost, OutlivesWhatItsChildDoes) {
    relay(joined({"start:a:1:Outer"}, running(10, {"half:cut", "raise:" + std::to_string(SIGKILL)}),
                 // Somebody holds the pipe for longer than the child lives.
                 script(10, "sleep 20 & exit 6"),
                 // What is no report counts for nothing, and no report goes back.
                 script(50, "echo \"$1 50.0 \" >&3; echo \"$1 nan\" >&3; echo '1:0:100 50' >&3;"
                            "echo '1:0:101 80' >&3; echo '1:0:100 20' >&3; echo '1:0:100 101' >&3;"
                            "printf '1:0:100 60' >&3")));
    EXPECT_EQ(told(), "10 % 20 % 45 % 50 % 70 % > cut . status 137 . status 6 . status 0 ");
}

TEST_F(ChildToolHost, HandsNothingOnThatItsChildrenInherit) {
    const std::string open = "test -e /proc/self/fd/3 && echo open; echo $KAZ_PROGRESS_FD";
    relay(joined({"start:a:1:Outer"}, script(50, open)));
    EXPECT_EQ(told(), "50 % > open > 3 . status 0 ");
    // A tool closes it before it starts anything, whether it attaches or not.
    const std::string look = "test -e /proc/self/fd/3 && echo open || echo closed";
    for (const Words& words : {Words{}, Words{"deaf"}}) {
        relay(joined({"start:a:1:Outer"}, running(50, joined(words, {"shell:" + look}))));
        EXPECT_EQ(told(),
                  "50 % > Executing: " + look + " > closed > Execution Complete. . status 0 ");
    }
}

TEST_F(ChildToolHost, IsAskedToEndWhenTheUserWantsToStop) {
    options.signal = SIGTERM;
    options.signalAfter = "ready";
    moxkit::Result result = relay(joined(
        {"start:a:1:Outer"}, running(50, {"start:a:1:Inner", "message:ready", "wait:a:50000"})));
    EXPECT_EQ(result.status, 9);
    EXPECT_EQ(told(), "50 % > ready > undone by step_tool . undone by step_tool ");

    // One that does not listen is killed, and its output is still heard.
    result =
        relay(joined({"start:a:1:Outer"},
                     script(50, "trap 'echo no' TERM; echo ready; while :; do sleep 0.1; done")));
    EXPECT_EQ(result.status, 9);
    EXPECT_EQ(told(), "50 % > ready > no . undone by step_tool ");
}

TEST_F(ChildToolHost, IsShownNowhereWhenItsParentHasGone) {
    const std::string tool = moxkit::binDirectory() + "/step_tool";
    const std::string rest =
        "\"$0\" start:a:1:Alone wait:a:300 add:a:50 message:on -progress_channel 1:0:100 ";
    options.env["KAZ_PROGRESS_FD"] = "5";
    EXPECT_EQ(moxkit::run({"/bin/bash", "-c", rest + "5> >(exec true)", tool}, options).out,
              "on\n");
    EXPECT_EQ(moxkit::run({"/bin/bash", "-c", rest + "5>file", tool}, options).out,
              "Alone ..........on\n"); // no pipe
    EXPECT_EQ(moxkit::run({"/bin/bash", "-c", rest + "5< <(exec true)", tool}, options).out,
              "Alone ..........on\n"); // none to write to
}

} // namespace
