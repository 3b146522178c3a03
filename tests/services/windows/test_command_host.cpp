// SPDX-License-Identifier: Apache-2.0
// Commands on Windows: exceptions, batch files, and what no word can hold there.
#include "tools/services/KazCommand.h"

#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Command, AnExceptionIsToldByItsNumber) {
    KazCommand command((moxkit::binDirectory() + "\\service_peer.exe").c_str());
    EXPECT_FALSE(command.add("crash").run());
    EXPECT_EQ(static_cast<unsigned>(command.getStatus()), 0xC0000005u);
    EXPECT_EQ(command.getSignal(), 0);
    EXPECT_GE(command.getErrorText().find("was ended by exception 0xC0000005"), 0);
}

TEST(Command, NobodyElseReadsArguments) {
    const moxkit::TempTree tree;
    tree.write("batch.cmd", "@echo called\r\n");
    KazCommand batch(tree.native("batch.cmd").c_str());
    EXPECT_FALSE(batch.run());
    EXPECT_EQ(batch.getError(), ENOEXEC);
    KazCommand line = KazCommand::shell("echo");
    EXPECT_FALSE(line.add("a\nb").run());
    EXPECT_EQ(line.getError(), EINVAL);
}

} // namespace
