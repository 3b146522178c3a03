// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the socket interfaces of the hosts do not share.
#pragma once

#include "tools/platform/posix/descriptor.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace kaz::host::api {

using Native = int;
using Length = socklen_t;
inline constexpr int sendFlags = MSG_NOSIGNAL;
inline constexpr int ownPort = SO_REUSEADDR; ///< a listener's option

inline bool startUp() {
    return true;
}

inline int lastError() {
    return errno;
}

inline std::string errorText(int error) {
    return host::errorText(error);
}

inline std::string lookUpText(int error) {
    return error == EAI_SYSTEM ? host::errorText(errno) : ::gai_strerror(error);
}

inline bool wouldWait(int error) {
    return error == EAGAIN || error == EINPROGRESS || error == EINTR;
}

inline bool wasBrokenOff(int error) {
    return error == ECONNABORTED;
}

inline SocketOutcome outcomeOf(int error) {
    switch (error) {
    case EPIPE:
    case ECONNRESET:
        return SocketOutcome::closed;
    case ETIMEDOUT:
        return SocketOutcome::timeout;
    case ECONNREFUSED:
        return SocketOutcome::refused;
    case EADDRINUSE:
        return SocketOutcome::inUse;
    default:
        return SocketOutcome::failed;
    }
}

/// An open socket that does not block and is not inherited, or -1.
inline Native open(int family) {
    return ::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
}

inline Native accept(Native listener) {
    return ::accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
}

inline int poll(pollfd& wait, int milliseconds) {
    return ::poll(&wait, 1, milliseconds);
}

inline void close(Native socket) {
    Descriptor closing(socket);
}

} // namespace kaz::host::api
