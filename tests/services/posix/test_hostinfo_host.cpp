// SPDX-License-Identifier: Apache-2.0
// Machine and user beside what the system's own programs say.
#include "tools/services/hostinfo.h"

#include "tools/services/KazCommand.h"

#include <gtest/gtest.h>
#include <string>

namespace {

/// The output of a line without its end.
std::string told(const char* line) {
    KazCommand command = KazCommand::shell(line);
    EXPECT_TRUE(command.run()) << command.getErrorText().getValue();
    std::string text = command.getOutput().getValue();
    text.resize(text.find_last_not_of('\n') + 1);
    return text;
}

TEST(HostInfo, AsTheSystemSays) {
    EXPECT_EQ(kazSystemName().getValue(), told("uname -srm"));
    EXPECT_EQ(kazHostName().getValue(), told("uname -n | sed 's/[.].*//'"));
    EXPECT_EQ(kazUserName().getValue(), told("id -un"));
    const std::string full = told("getent passwd \"$(id -u)\" | cut -d: -f5 | cut -d, -f1 | "
                                  "sed \"s/&/$(id -un | sed 's/./\\u&/')/g\"");
    EXPECT_EQ(kazUserFullName().getValue(), full.empty() ? told("id -un") : full);
    EXPECT_EQ(kazHostId().getValue(),
              told("python3 -c 'import uuid, platform\n"
                   "try: name = open(\"/etc/machine-id\").read().rstrip(\"\\r\\n\")\n"
                   "except OSError: name = \"\"\n"
                   "print(uuid.uuid5(uuid.UUID(\"5d0c9b5e-3c3f-5a0b-9d52-1f6a2f0b7c41\"),\n"
                   "      name or platform.node().split(\".\")[0]))'"));
}

} // namespace
