// SPDX-License-Identifier: Apache-2.0
// Sockets on POSIX: what children see of them.
#include "tools/services/sockets.h"

#include "tools/files/process.h"

#include <gtest/gtest.h>

namespace {

TEST(SocketsHost, AreNotInherited) {
    kaz_socket listener = kaz_socket_listen(nullptr, 0);
    kaz_socket client = kaz_socket_connect(nullptr, kaz_socket_port(listener), 10000);
    kaz_socket server = kaz_socket_accept(listener, 10000);
    KazString output;
    EXPECT_EQ(shell_cmd_output("ls -l /proc/self/fd | grep -c 'socket:'", output), 1);
    EXPECT_STREQ(output.getValue(), "0\n");
    for (kaz_socket* each : {&listener, &client, &server})
        kaz_socket_close(each);
}

} // namespace
