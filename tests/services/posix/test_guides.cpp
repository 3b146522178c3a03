// SPDX-License-Identifier: Apache-2.0
// The tools of the guides, run as their readers would.
#include "testkit/process.h"
#include "testkit/temp_tree.h"
#include "tools/services/KazCommand.h"
#include "tools/services/KazGuid.h"
#include "tools/services/sockets.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Guides, CountingLinesAndTellingAServer) {
    const moxkit::TempTree tree;
    const std::string file = tree.write("-a b", "1\n2\n3\n");
    const moxkit::Result alone = moxkit::run({"commands_guide", file});
    EXPECT_EQ(alone.status, 0) << alone.err;
    EXPECT_EQ(alone.out.substr(36), " 3 " + file + "\n\n");
    KazGuid guid;
    EXPECT_TRUE(KazGuid::parse(alone.out.substr(0, 36).c_str(), guid));
    const moxkit::Result missing = moxkit::run({"commands_guide", tree.path("no")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("\"wc\" ended with status 1: wc: "), std::string::npos)
        << missing.err;

    kaz_socket listener = kaz_socket_listen(nullptr, 0);
    const std::string port = std::to_string(kaz_socket_port(listener));
    KazCommand guide((moxkit::binDirectory() + "/commands_guide").c_str());
    EXPECT_TRUE(guide.add(file.c_str()).add(port.c_str()).start());
    kaz_socket client = kaz_socket_accept(listener, 10000);
    KazString line;
    EXPECT_EQ(kaz_socket_receive_line(client, line, 1000, 10000), kaz_socket_ok);
    EXPECT_EQ(line.getValue() + 36, " 3 " + file);
    EXPECT_EQ(kaz_socket_send(client, "thanks\n", 7, 10000), kaz_socket_ok);
    kaz_socket_close(&client);
    kaz_socket_close(&listener);
}

TEST(Guides, OpeningALine) {
    const moxkit::TempTree tree;
    const std::string file = tree.write("x.c", "");
    tree.write("ToolInfo",
               "source_editor = @terminal " + tree.path("ed") + " '+${line}:${column}'\n");
    std::filesystem::permissions(tree.write("ed", "#!/bin/sh\nprintf '<%s>' \"$@\"\n"),
                                 std::filesystem::perms::owner_all);
    moxkit::RunOptions options;
    options.env = {{"ToolInfo", tree.path("ToolInfo")}, {"KAZ_SOURCE_EDITOR", moxkit::unset}};
    const moxkit::Result shown = moxkit::run({"source_guide", file, "12"}, options);
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.out, "<+12:1><" + file + ">");
    EXPECT_EQ(moxkit::run({"source_guide", tree.path("no")}, options).status, 1);
    // A missing configuration is no reason to end.
    options.env["ToolInfo"] = tree.path("no");
    options.env["VISUAL"] = options.env["EDITOR"] = moxkit::unset;
    EXPECT_EQ(moxkit::run({"source_guide", file}, options).err,
              "No source editor is configured; set the variable source_editor.\n");
    options.env["KAZ_SOURCE_EDITOR"] = "@terminal " + tree.path("ed");
    EXPECT_EQ(moxkit::run({"source_guide", file}, options).out, "<" + file + ">");
}

} // namespace
