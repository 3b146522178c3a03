// SPDX-License-Identifier: Apache-2.0
// Both hosts have the same socket interface but for the few things in socket_api.h.
// Sockets never block: what cannot be done at once waits in poll() until the deadline.
#include "tools/platform/host.h"

#if defined(_WIN32)
#include "tools/platform/windows/socket_api.h"
#else
#include "tools/platform/posix/socket_api.h"
#endif

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <utility>

namespace kaz::host {

namespace {

api::Native nativeOf(SocketHandle socket) {
    return static_cast<api::Native>(socket);
}

/// Closes at the end what nobody has taken.
class Socket {
public:
    explicit Socket(api::Native native) : handle_(static_cast<SocketHandle>(native)) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { closeSocket(handle_); }

    bool isOpen() const { return handle_ != noSocket; }
    api::Native get() const { return nativeOf(handle_); }
    SocketHandle release() { return std::exchange(handle_, noSocket); }

private:
    SocketHandle handle_;
};

SocketResult resultOf(int error) {
    return {api::outcomeOf(error), api::errorText(error), false};
}

SocketResult timedOut() {
    return {SocketOutcome::timeout, "The time limit was reached", false};
}

SocketResult ended() {
    return {SocketOutcome::closed, "The peer has closed the connection", true};
}

/// Until something can be done. Ok also when the socket has failed: the next call on it
/// tells.
SocketResult await(api::Native socket, short what, const Deadline& deadline) {
    for (;;) {
        pollfd wait{};
        wait.fd = socket;
        wait.events = what;
        const int ready = api::poll(wait, deadline.left());
        if (ready > 0)
            return {};
        if (ready == 0 && deadline.isOver())
            return timedOut();
        if (ready < 0 && !api::wouldWait(api::lastError()))
            return resultOf(api::lastError());
    }
}

void setOption(api::Native socket, int level, int option, int value) {
    ::setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

struct FreeAddresses {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

/// The look-up of a name has no time limit: a slow resolver can make the call longer than the
/// caller's deadline.
Addresses lookUp(const char* host, int port, int flags, SocketResult& result) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    addrinfo* list = nullptr;
    if (!api::startUp()) {
        result = resultOf(api::lastError());
        return nullptr;
    }
    const int error = ::getaddrinfo(host, std::to_string(port).c_str(), &hints, &list);
    if (error == 0)
        return Addresses(list);
    const bool isLackOfMemory = error == EAI_MEMORY;
    result = {isLackOfMemory ? SocketOutcome::failed : SocketOutcome::unknownHost,
              api::lookUpText(error), false};
    return nullptr;
}

/// Why a connection that was waited for has not come about, or ok.
/// A socket can also be written to when the connection has failed; only this option tells, and
/// once, since asking takes the error away.
SocketResult connected(api::Native socket) {
    int error = 0;
    api::Length size = sizeof error;
    ::getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
    return error == 0 ? SocketResult() : resultOf(error);
}

SocketHandle connectTo(const addrinfo& address, const Deadline& deadline, SocketResult& result) {
    Socket socket(api::open(address.ai_family));
    if (!socket.isOpen()) {
        result = resultOf(api::lastError());
        return noSocket;
    }
    result = {};
    if (::connect(socket.get(), address.ai_addr, static_cast<api::Length>(address.ai_addrlen)) !=
        0) {
        const int error = api::lastError();
        result = api::wouldWait(error) ? await(socket.get(), POLLOUT, deadline) : resultOf(error);
        if (result.outcome == SocketOutcome::ok)
            result = connected(socket.get());
    }
    if (result.outcome != SocketOutcome::ok)
        return noSocket;
    setOption(socket.get(), IPPROTO_TCP, TCP_NODELAY, 1);
    return socket.release();
}

SocketHandle listenAt(const addrinfo& address, SocketResult& result) {
    constexpr int waiting = 128; // connections that are not accepted yet
    Socket socket(api::open(address.ai_family));
    if (socket.isOpen()) {
        // On Linux a port that closed connections still occupy can be taken; on Windows nobody else
        // can take it beside us.
        setOption(socket.get(), SOL_SOCKET, api::ownPort, 1);
        // One listener for both protocols. The default is the system's setting, which differs from
        // host to host.
        if (address.ai_family == AF_INET6)
            setOption(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, 0);
    }
    if (!socket.isOpen() ||
        ::bind(socket.get(), address.ai_addr, static_cast<api::Length>(address.ai_addrlen)) != 0 ||
        ::listen(socket.get(), waiting) != 0) {
        result = resultOf(api::lastError());
        return noSocket;
    }
    result = {};
    return socket.release();
}

using Address = sockaddr_storage;

/// Host and port of an address in numbers; empty when there is none.
std::pair<std::string, std::string> numbersOf(const Address& address, api::Length size) {
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> port{};
    if (::getnameinfo(reinterpret_cast<const sockaddr*>(&address), size, host.data(), host.size(),
                      port.data(), port.size(), NI_NUMERICHOST | NI_NUMERICSERV) != 0)
        return {};
    return {host.data(), port.data()};
}

} // namespace

SocketHandle connectSocket(const char* host, int port, const Deadline& deadline,
                           SocketResult& result) {
    result = {};
    const Addresses addresses = lookUp(host, port, 0, result);
    for (const addrinfo* each = addresses.get(); each != nullptr; each = each->ai_next) {
        const SocketHandle socket = connectTo(*each, deadline, result);
        // The deadline is one for all addresses: once it is over the others get no turn. Of several
        // failures the last one is told.
        if (socket != noSocket || result.outcome == SocketOutcome::timeout)
            return socket;
    }
    return noSocket;
}

SocketHandle listenSocket(const char* address, int port, SocketResult& result) {
    result = {};
    const Addresses addresses = lookUp(address, port, AI_PASSIVE, result);
    for (const addrinfo* each = addresses.get(); each != nullptr; each = each->ai_next)
        if (const SocketHandle socket = listenAt(*each, result); socket != noSocket)
            return socket;
    return noSocket;
}

SocketHandle acceptSocket(SocketHandle listener, const Deadline& deadline, SocketResult& result) {
    for (;;) {
        Socket socket(api::accept(nativeOf(listener)));
        result = {};
        if (socket.isOpen()) {
            setOption(socket.get(), IPPROTO_TCP, TCP_NODELAY, 1);
            return socket.release();
        }
        const int error = api::lastError();
        // One that has gone before it was accepted is not the one to give.
        if (!api::wouldWait(error) && !api::wasBrokenOff(error))
            result = resultOf(error);
        else
            result = await(nativeOf(listener), POLLIN, deadline);
        if (result.outcome != SocketOutcome::ok)
            return noSocket;
    }
}

void closeSocket(SocketHandle socket) {
    if (socket != noSocket)
        api::close(nativeOf(socket));
}

/// After a failure nobody knows how much has arrived: the connection is of no more use.
SocketResult sendSocket(SocketHandle socket, const void* data, std::size_t size,
                        const Deadline& deadline) {
    const auto* next = static_cast<const char*>(data);
    while (size > 0) {
        const auto sent = ::send(nativeOf(socket), next, size, api::sendFlags);
        if (sent > 0) {
            next += sent;
            size -= static_cast<std::size_t>(sent);
            continue;
        }
        const int error = api::lastError();
        if (!api::wouldWait(error))
            return resultOf(error);
        SocketResult waited = await(nativeOf(socket), POLLOUT, deadline);
        if (waited.outcome != SocketOutcome::ok)
            return waited;
    }
    return {};
}

SocketResult receiveSocket(SocketHandle socket, void* data, std::size_t size,
                           const Deadline& deadline, std::size_t& got) {
    got = 0;
    for (;;) {
        const auto received = ::recv(nativeOf(socket), static_cast<char*>(data), size, 0);
        if (received == 0)
            return ended();
        if (received > 0) {
            got = static_cast<std::size_t>(received);
            return {};
        }
        const int error = api::lastError();
        if (!api::wouldWait(error))
            return resultOf(error);
        SocketResult waited = await(nativeOf(socket), POLLIN, deadline);
        if (waited.outcome != SocketOutcome::ok)
            return waited;
    }
}

int socketPort(SocketHandle socket) {
    Address address{};
    api::Length size = sizeof address;
    if (::getsockname(nativeOf(socket), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return -1;
    const std::string port = numbersOf(address, size).second;
    return port.empty() ? -1 : std::stoi(port);
}

std::string socketPeer(SocketHandle socket) {
    Address address{};
    api::Length size = sizeof address;
    if (::getpeername(nativeOf(socket), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return {};
    const auto [host, port] = numbersOf(address, size);
    if (host.empty())
        return {};
    return (address.ss_family == AF_INET6 ? '[' + host + ']' : host) + ':' + port;
}

} // namespace kaz::host
