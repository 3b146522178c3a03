// SPDX-License-Identifier: Apache-2.0
// Handles are numbers that are never given twice, so that one that was closed, or never
// was one, is noticed. Behind each stands the system's socket with what was read ahead
// of it.
#include "tools/services/sockets.h"

#include "tools/files/detail/text.h"
#include "tools/platform/host.h"

#include <array>
#include <map>
#include <string>
#include <string_view>

namespace host = kaz::host;
using host::Deadline;
using host::SocketOutcome;
using host::SocketResult;
using kaz::detail::orEmpty;
using kaz::detail::toText;

namespace {

struct Open {
    host::SocketHandle handle;
    bool isListener;
    std::string ahead; ///< received, and not yet given
};

/// Never destroyed, as static objects of a tool may hold connections to the very end.
std::map<kaz_socket, Open>& sockets() {
    static auto& open = *new std::map<kaz_socket, Open>;
    return open;
}

std::string& reason() {
    static auto& text = *new std::string;
    return text;
}

int statusOf(SocketOutcome outcome) {
    switch (outcome) {
    case SocketOutcome::ok:
        return kaz_socket_ok;
    case SocketOutcome::closed:
        return kaz_socket_closed;
    case SocketOutcome::timeout:
        return kaz_socket_timeout;
    case SocketOutcome::refused:
        return kaz_socket_refused;
    case SocketOutcome::unknownHost:
        return kaz_socket_unknown_host;
    case SocketOutcome::inUse:
        return kaz_socket_in_use;
    case SocketOutcome::failed:
        break;
    }
    return kaz_socket_failed;
}

/// Keeps the reason for kaz_socket_error_text.
int report(const SocketResult& result) {
    reason() = result.reason;
    if (result.outcome != SocketOutcome::ok && result.reason.empty())
        reason() = "Unknown error";
    return statusOf(result.outcome);
}

int fail(int status, const char* text) {
    reason() = text;
    return status;
}

int invalid(const char* text) {
    return fail(kaz_socket_invalid, text);
}

/// Null, and reported, when it is no open socket of that kind.
/// The kind is checked, too: a listener receives nothing, and a connection accepts nobody.
Open* find(kaz_socket socket, bool isListener) {
    const auto found = sockets().find(socket);
    if (found != sockets().end() && found->second.isListener == isListener)
        return &found->second;
    invalid(isListener ? "Not a listening socket" : "Not an open connection");
    return nullptr;
}

/// A new handle for a socket of the system, which is closed when there is no memory.
kaz_socket keep(host::SocketHandle handle, bool isListener) {
    static kaz_socket last = 0;
    if (handle == host::noSocket)
        return kaz_no_socket;
    try {
        sockets().emplace(last + 1, Open{handle, isListener, {}});
    } catch (...) {
        host::closeSocket(handle);
        throw;
    }
    return ++last;
}

/// Hands out what a call gave, with its status.
/// The handle first: it may throw, and the reason of the last call then stays.
kaz_socket give(host::SocketHandle handle, bool isListener, const SocketResult& result,
                int* status) {
    const kaz_socket socket = keep(handle, isListener);
    const int reported = report(result);
    if (status != nullptr)
        *status = reported;
    return socket;
}

kaz_socket refuse(const char* text, int* status) {
    invalid(text);
    if (status != nullptr)
        *status = kaz_socket_invalid;
    return kaz_no_socket;
}

constexpr int lastPort = 65535;
constexpr const char* loopback = "127.0.0.1";

/// Takes a piece of what has arrived to what was read ahead.
SocketResult readAhead(Open& open, const Deadline& deadline) {
    std::array<char, 4096> piece;
    std::size_t got = 0;
    SocketResult result =
        host::receiveSocket(open.handle, piece.data(), piece.size(), deadline, got);
    open.ahead.append(piece.data(), got);
    return result;
}

/// Gives the first @p length bytes of what was read ahead as a line, and drops them with
/// @p dropped more.
int giveLine(Open& open, std::size_t length, std::size_t dropped, KazString& line) {
    std::string_view text(open.ahead.data(), length);
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    line = toText(text);
    open.ahead.erase(0, length + dropped);
    return report({});
}

} // namespace

kaz_socket kaz_socket_connect(const char* host, int port, int limit, int* status) {
    if (port < 1 || port > lastPort)
        return refuse("No such port", status);
    const Deadline deadline(limit);
    SocketResult result;
    const bool isHere = *orEmpty(host) == '\0';
    host::SocketHandle socket =
        host::connectSocket(isHere ? loopback : host, port, deadline, result);
    if (isHere && result.outcome == SocketOutcome::refused) {
        // Perhaps somebody listens on the other kind of address only.
        SocketResult other;
        // One deadline for both tries; the first reason stays unless the second one succeeds.
        socket = host::connectSocket("::1", port, deadline, other);
        if (socket != host::noSocket)
            result = other;
    }
    return give(socket, false, result, status);
}

/// Without an address only this host is served: a tool must not open itself to the network
/// unasked. Port 0 lets the system choose.
kaz_socket kaz_socket_listen(const char* address, int port, int* status) {
    if (port < 0 || port > lastPort)
        return refuse("No such port", status);
    SocketResult result;
    const host::SocketHandle socket =
        host::listenSocket(*orEmpty(address) != '\0' ? address : loopback, port, result);
    return give(socket, true, result, status);
}

kaz_socket kaz_socket_accept(kaz_socket listener, int limit, int* status) {
    const Open* open = find(listener, true);
    if (open == nullptr)
        return refuse("Not a listening socket", status);
    SocketResult result;
    const host::SocketHandle socket = host::acceptSocket(open->handle, Deadline(limit), result);
    return give(socket, false, result, status);
}

int kaz_socket_send(kaz_socket socket, const void* data, int size, int limit) {
    const Open* open = find(socket, false);
    if (open == nullptr)
        return kaz_socket_invalid;
    if (size < 0 || (data == nullptr && size > 0))
        return invalid("Nothing to send");
    return report(
        host::sendSocket(open->handle, data, static_cast<std::size_t>(size), Deadline(limit)));
}

int kaz_socket_receive(kaz_socket socket, void* data, int size, int limit) {
    Open* open = find(socket, false);
    if (open == nullptr)
        return kaz_socket_invalid;
    if (size < 1 || data == nullptr)
        return invalid("No room to receive into");
    const auto most = static_cast<std::size_t>(size);
    // What was read ahead comes first, and alone: waiting for more could take the whole limit.
    std::size_t got = open->ahead.copy(static_cast<char*>(data), most);
    if (got > 0) {
        open->ahead.erase(0, got);
        report({});
        return static_cast<int>(got);
    }
    const int status = report(host::receiveSocket(open->handle, data, most, Deadline(limit), got));
    return status == kaz_socket_ok ? static_cast<int>(got) : status;
}

int kaz_socket_receive_line(kaz_socket socket, KazString& line, int longest, int limit) {
    Open* open = find(socket, false);
    if (open == nullptr)
        return kaz_socket_invalid;
    if (longest < 0)
        return invalid("No room to receive into");
    const Deadline deadline(limit);
    const auto most = static_cast<std::size_t>(longest);
    // Each byte is searched once, however small the pieces in which a line arrives.
    std::size_t searched = 0;
    for (;;) {
        const std::size_t end = open->ahead.find('\n', searched);
        if (end <= most)
            return giveLine(*open, end, 1, line);
        searched = open->ahead.size();
        // Dropped, so that a peer cannot fill the memory.
        if (searched > most) {
            open->ahead.clear();
            return fail(kaz_socket_failed, "The line is too long");
        }
        const SocketResult result = readAhead(*open, deadline);
        // A last line may lack its end, but only when the peer ended in order.
        if (result.outcome == SocketOutcome::closed && result.isEnd && searched > 0)
            return giveLine(*open, searched, 0, line);
        if (result.outcome != SocketOutcome::ok)
            return report(result);
    }
}

int kaz_socket_port(kaz_socket socket) {
    const auto found = sockets().find(socket);
    const int port =
        found != sockets().end() ? host::socketPort(found->second.handle) : kaz_socket_invalid;
    if (port < 0)
        return invalid("Not an open socket");
    report({});
    return port;
}

KazString kaz_socket_peer(kaz_socket socket) {
    const Open* open = find(socket, false);
    if (open == nullptr)
        return KazString();
    const std::string peer = host::socketPeer(open->handle);
    report(peer.empty() ? SocketResult{SocketOutcome::closed, "There is no peer", false}
                        : SocketResult());
    return toText(peer);
}

/// The caller's variable is cleared also for a bad handle, which makes closing twice harmless.
void kaz_socket_close(kaz_socket* socket) {
    report({});
    if (socket == nullptr || *socket == kaz_no_socket)
        return;
    const auto found = sockets().find(*socket);
    if (found != sockets().end()) {
        host::closeSocket(found->second.handle);
        sockets().erase(found);
    } else {
        invalid("Not an open socket");
    }
    *socket = kaz_no_socket;
}

const char* kaz_socket_error_text() {
    return reason().c_str();
}
