// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the socket interfaces of the hosts do not share.
#pragma once

#include "tools/platform/windows/text.h"

#include <winsock2.h>
// Behind winsock2.h.
#include <windows.h>
#include <ws2tcpip.h>

namespace kaz::host::api {

using Native = SOCKET;
using Length = int;
inline constexpr int sendFlags = 0;
inline constexpr int ownPort = SO_EXCLUSIVEADDRUSE; ///< a listener's option

/// The system's part for sockets is started with the first one, and ends with the process.
inline bool startUp() {
    static const int failure = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (failure != 0)
        WSASetLastError(failure);
    return failure == 0;
}

inline int lastError() {
    return WSAGetLastError();
}

inline std::string errorText(int error) {
    std::wstring text(512, L'\0');
    text.resize(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                               static_cast<DWORD>(error), 0, text.data(),
                               static_cast<DWORD>(text.size()), nullptr));
    text.resize(text.find_last_not_of(L" .\r\n") + 1);
    return text.empty() ? "socket error " + std::to_string(error) : narrowed(text);
}

inline std::string lookUpText(int error) {
    return errorText(error);
}

inline bool wouldWait(int error) {
    return error == WSAEWOULDBLOCK || error == WSAEINPROGRESS || error == WSAEINTR;
}

inline bool wasBrokenOff(int error) {
    return error == WSAECONNRESET;
}

inline SocketOutcome outcomeOf(int error) {
    switch (error) {
    case WSAECONNRESET:
    case WSAECONNABORTED:
    case WSAESHUTDOWN:
        return SocketOutcome::closed;
    case WSAETIMEDOUT:
        return SocketOutcome::timeout;
    case WSAECONNREFUSED:
        return SocketOutcome::refused;
    case WSAEADDRINUSE:
    case WSAEACCES: // somebody has the port for himself
        return SocketOutcome::inUse;
    default:
        return SocketOutcome::failed;
    }
}

/// An open socket that does not block and is not inherited, or the error value.
inline Native prepared(Native socket) {
    u_long on = 1;
    if (socket != INVALID_SOCKET) {
        SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
        ioctlsocket(socket, FIONBIO, &on);
    }
    return socket;
}

inline Native open(int family) {
    return prepared(WSASocketW(family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED));
}

inline Native accept(Native listener) {
    return prepared(::accept(listener, nullptr, nullptr));
}

/// By select(): the system's own poll does not tell everywhere that a connection was
/// refused.
inline int poll(pollfd& wait, int milliseconds) {
    fd_set wanted;
    fd_set failed;
    FD_ZERO(&wanted);
    FD_ZERO(&failed);
    FD_SET(wait.fd, &wanted);
    FD_SET(wait.fd, &failed);
    timeval time{milliseconds / 1000, milliseconds % 1000 * 1000};
    return ::select(0, wait.events == POLLIN ? &wanted : nullptr,
                    wait.events == POLLIN ? nullptr : &wanted, &failed,
                    milliseconds < 0 ? nullptr : &time);
}

inline void close(Native socket) {
    closesocket(socket);
}

} // namespace kaz::host::api
