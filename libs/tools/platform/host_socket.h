// SPDX-License-Identifier: Apache-2.0
/// @file
/// A part of the door to the operating system (see host.h): TCP connections.
///
/// No call here waits longer than its deadline (looking a name up excepted), ends in a
/// signal, or lets a child process inherit a socket.
#pragma once

#include "tools/platform/deadline.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace kaz::host {

using SocketHandle = std::intptr_t;
inline constexpr SocketHandle noSocket = -1;

enum class SocketOutcome { ok, closed, timeout, refused, unknownHost, inUse, failed };

/// How a call on sockets ended, and the system's words for it where there are any.
struct SocketResult {
    SocketOutcome outcome = SocketOutcome::ok;
    std::string reason;
    bool isEnd = false; ///< closed in order: nothing that was sent is missing
};

/// Tries the addresses of @p host one after the other.
SocketHandle connectSocket(const char* host, int port, const Deadline& deadline,
                           SocketResult& result);
/// A socket that takes connections to an address of this machine; port 0 is a free one.
SocketHandle listenSocket(const char* address, int port, SocketResult& result);
SocketHandle acceptSocket(SocketHandle listener, const Deadline& deadline, SocketResult& result);
void closeSocket(SocketHandle socket);

/// Sends all, or gives the reason why not.
SocketResult sendSocket(SocketHandle socket, const void* data, std::size_t size,
                        const Deadline& deadline);
/// Waits for data and takes what is there; the number of bytes becomes @p got. At the end
/// of the data the outcome is closed.
SocketResult receiveSocket(SocketHandle socket, void* data, std::size_t size,
                           const Deadline& deadline, std::size_t& got);

int socketPort(SocketHandle socket); ///< of this end; -1 when it cannot be told
std::string socketPeer(SocketHandle socket);

} // namespace kaz::host
