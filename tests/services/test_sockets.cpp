// SPDX-License-Identifier: Apache-2.0
// Connections on the loopback address: with this process, and with peers that are
// silent, drip, or leave.
#include "tools/services/sockets.h"

#include "kit/host.h"
#include "kit/random.h"
#include "testkit/process.h"
#include "tools/services/KazCommand.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

std::chrono::milliseconds since(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
}

class Sockets : public testing::Test {
protected:
    Sockets() : listener(kaz_socket_listen(nullptr, 0)), port(kaz_socket_port(listener)) {}
    ~Sockets() override {
        for (kaz_socket* each : {&listener, &client, &server})
            kaz_socket_close(each);
    }

    void connect() {
        client = kaz_socket_connect(nullptr, port, patience);
        server = kaz_socket_accept(listener, patience);
        ASSERT_NE(client, kaz_no_socket);
        ASSERT_NE(server, kaz_no_socket);
    }

    /// A process that connects and does so.
    void meet(const char* what) {
        KazCommand peer(
            (moxkit::binDirectory() + "/service_peer" + (kit::hasDrives ? ".exe" : "")).c_str());
        ASSERT_TRUE(peer.add(what).add(std::to_string(port).c_str()).start());
        server = kaz_socket_accept(listener, patience);
        ASSERT_NE(server, kaz_no_socket) << kaz_socket_error_text();
    }

    void send(const std::string& text) const {
        ASSERT_EQ(kaz_socket_send(client, text.data(), static_cast<int>(text.size()), patience),
                  kaz_socket_ok)
            << kaz_socket_error_text();
    }

    /// A line, or the status as text.
    std::string line(int longest = 100, int limit = patience) const {
        KazString text("unchanged");
        const int status = kaz_socket_receive_line(server, text, longest, limit);
        if (status == kaz_socket_ok)
            return "[" + std::string(text.getValue(), static_cast<std::size_t>(text.getLength())) +
                   "]";
        EXPECT_STREQ(text.getValue(), "unchanged");
        EXPECT_STRNE(kaz_socket_error_text(), "");
        return std::to_string(status);
    }

    static constexpr int patience = 20000;
    kaz_socket listener;
    int port;
    kaz_socket client = kaz_no_socket;
    kaz_socket server = kaz_no_socket;
};

TEST_F(Sockets, WhatIsSentArrives) {
    ASSERT_GT(port, 0) << kaz_socket_error_text();
    meet("echo");
    kit::Random random;
    for (int size : {1, 100, 5000, 60000}) {
        std::string sent;
        for (int i = 0; i < size; ++i)
            sent += static_cast<char>(random.below(256));
        ASSERT_EQ(kaz_socket_send(server, sent.data(), size, patience), kaz_socket_ok);
        std::string received(sent.size(), '\0');
        for (int done = 0; done < size;) {
            const int got = kaz_socket_receive(server, received.data() + done,
                                               random.between(1, size - done), patience);
            ASSERT_GT(got, 0) << kaz_socket_error_text();
            done += got;
        }
        ASSERT_EQ(received, sent);
    }
    EXPECT_EQ(kaz_socket_send(server, nullptr, 0, 0), kaz_socket_ok);
    EXPECT_STREQ(kaz_socket_error_text(), "");
}

TEST_F(Sockets, Lines) {
    connect();
    send(std::string("one\ntwo\r\n\r\n\nnul\0\n\r\r\n", 20));
    for (const std::string& expected :
         {std::string("[one]"), std::string("[two]"), std::string("[]"), std::string("[]"),
          std::string("[nul\0]", 6), std::string("[\r]")})
        EXPECT_EQ(line(), expected);
    send("12345\n12345\n123456"); // no end is waited for
    EXPECT_EQ(line(5), "[12345]");
    EXPECT_EQ(line(5), "[12345]");
    EXPECT_EQ(line(5), std::to_string(kaz_socket_failed));
    send("next\nhalf a");
    EXPECT_EQ(line(), "[next]");
    EXPECT_EQ(line(100, 50), std::to_string(kaz_socket_timeout));
    send(" line\nrest");
    EXPECT_EQ(line(), "[half a line]");
    char ahead[2];
    EXPECT_EQ(kaz_socket_receive(server, ahead, 2, patience), 2); // what was read ahead comes first
    EXPECT_EQ(std::string(ahead, 2), "re");
    kaz_socket_close(&client);
    EXPECT_EQ(line(), "[st]");
    EXPECT_EQ(line(), std::to_string(kaz_socket_closed));
    EXPECT_EQ(line(-1), std::to_string(kaz_socket_invalid));
}

/// The limit is that of the whole call, however often something arrives.
TEST_F(Sockets, SilentAndDrippingPeersDoNotHold) {
    meet("silent");
    char buffer[100];
    auto start = Clock::now();
    EXPECT_EQ(kaz_socket_receive(server, buffer, sizeof buffer, 200), kaz_socket_timeout);
    EXPECT_GE(since(start).count(), 190);
    EXPECT_LT(since(start).count(), 5000);
    const std::string large(1 << 20, 'x');
    start = Clock::now();
    int status = kaz_socket_ok;
    for (int i = 0; i < 200 && status == kaz_socket_ok; ++i)
        status = kaz_socket_send(server, large.data(), 1 << 20, 200);
    EXPECT_EQ(status, kaz_socket_timeout);
    EXPECT_EQ(kaz_socket_receive(server, buffer, sizeof buffer, 0), kaz_socket_timeout);
    kaz_socket_close(&server);

    meet("drip");
    start = Clock::now();
    EXPECT_EQ(line(1000000, 500), std::to_string(kaz_socket_timeout));
    EXPECT_GE(since(start).count(), 490);
    EXPECT_LT(since(start).count(), 5000);
    EXPECT_EQ(line(3, patience), std::to_string(kaz_socket_failed)) << "no line is that long";
}

TEST_F(Sockets, APeerThatBreaksOffIsAStatus) {
    meet("leave");
    EXPECT_EQ(kaz_socket_send(server, "unread", 6, patience), kaz_socket_ok);
    char buffer[10];
    EXPECT_EQ(kaz_socket_receive(server, buffer, sizeof buffer, patience), kaz_socket_closed);
    int status = kaz_socket_ok; // the first may still go out; none is a signal
    for (int i = 0; i < 10 && status == kaz_socket_ok; ++i)
        status = kaz_socket_send(server, "x", 1, patience);
    EXPECT_EQ(status, kaz_socket_closed);
    EXPECT_STRNE(kaz_socket_error_text(), "");
}

TEST_F(Sockets, WhoIsNotThere) {
    int status = 0;
    kaz_socket none = kaz_socket_listen(nullptr, port, &status);
    EXPECT_EQ(none, kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_in_use);
    EXPECT_EQ(kaz_socket_accept(listener, 0, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_timeout);
    EXPECT_EQ(kaz_socket_accept(listener, 100, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_timeout);
    // Only this machine reaches it, by that address.
    EXPECT_EQ(kaz_socket_connect("127.0.0.2", port, patience, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_refused) << kaz_socket_error_text();
    kaz_socket_close(&listener);
    EXPECT_EQ(kaz_socket_connect("127.0.0.1", port, patience, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_refused) << kaz_socket_error_text();
    EXPECT_EQ(kaz_socket_connect(nullptr, port, patience, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_refused);
    const std::string nobody(300, 'x'); // longer than any name
    EXPECT_EQ(kaz_socket_connect(nobody.c_str(), 80, patience, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_unknown_host);
    EXPECT_STRNE(kaz_socket_error_text(), "");
    EXPECT_EQ(kaz_socket_listen(nobody.c_str(), 0, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_unknown_host);
}

TEST_F(Sockets, HandlesAreChecked) {
    connect();
    int status = 0;
    char buffer[10];
    for (const int wrong : {-1, 65536, 1 << 30})
        EXPECT_EQ(kaz_socket_connect("127.0.0.1", wrong, 0, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_invalid);
    EXPECT_EQ(kaz_socket_connect("127.0.0.1", 0, 0, nullptr), kaz_no_socket);
    EXPECT_EQ(kaz_socket_listen(nullptr, 65536, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_invalid);
    EXPECT_EQ(kaz_socket_receive(server, buffer, 0, 0), kaz_socket_invalid);
    EXPECT_EQ(kaz_socket_receive(server, nullptr, 1, 0), kaz_socket_invalid);
    EXPECT_EQ(kaz_socket_send(server, buffer, -1, 0), kaz_socket_invalid);
    EXPECT_EQ(kaz_socket_send(server, nullptr, 1, 0), kaz_socket_invalid);
    const kaz_socket stale = client;
    kaz_socket_close(&client);
    EXPECT_EQ(client, kaz_no_socket);
    kaz_socket_close(&client);
    kaz_socket_close(nullptr);
    KazString text;
    for (const kaz_socket wrong :
         {stale, kaz_no_socket, kaz_socket{0}, kaz_socket{12345}, listener}) {
        EXPECT_EQ(kaz_socket_send(wrong, "x", 1, 0), kaz_socket_invalid);
        EXPECT_EQ(kaz_socket_receive(wrong, buffer, 1, 0), kaz_socket_invalid);
        EXPECT_EQ(kaz_socket_receive_line(wrong, text, 1, 0), kaz_socket_invalid);
        EXPECT_TRUE(kaz_socket_peer(wrong).isEmpty());
        EXPECT_STRNE(kaz_socket_error_text(), "");
    }
    EXPECT_EQ(kaz_socket_accept(server, 0, &status), kaz_no_socket);
    EXPECT_EQ(status, kaz_socket_invalid);
    EXPECT_EQ(kaz_socket_port(stale), kaz_socket_invalid);
}

TEST_F(Sockets, AddressesInWords) {
    connect();
    EXPECT_EQ(kaz_socket_peer(client).getValue(), "127.0.0.1:" + std::to_string(port));
    EXPECT_EQ(kaz_socket_peer(server).getValue(),
              "127.0.0.1:" + std::to_string(kaz_socket_port(client)));
    EXPECT_EQ(kaz_socket_port(server), port);
    kaz_socket other = kaz_socket_listen("::1", 0);
    if (other == kaz_no_socket)
        GTEST_SKIP() << "no such addresses here: " << kaz_socket_error_text();
    const int otherPort = kaz_socket_port(other);
    kaz_socket_close(&client);
    client = kaz_socket_connect(nullptr, otherPort, patience); // it is this machine, too
    EXPECT_EQ(kaz_socket_peer(client).getValue(), "[::1]:" + std::to_string(otherPort));
    kaz_socket_close(&other);
}

} // namespace
