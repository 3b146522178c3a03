// SPDX-License-Identifier: Apache-2.0
/// @file
/// TCP connections, the same on every host. Blocking calls with a time limit, for tools that talk
/// to a server or an editor.
///
/// - Limits are in milliseconds for the whole call; a negative one is no limit, 0 does not wait.
/// - Results below 0 are a kaz_socket_status_enum; kaz_socket_error_text() says more.
/// - Sending to a peer that has gone is a status, never a signal. Sockets are not inherited by
///   child processes.
/// - A kaz_socket is a number that is never given twice: using one that was closed is
///   kaz_socket_invalid, as for any other number.
/// - One thread at a time.
/// - Nothing is encrypted, and nobody is authenticated.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstdint>

/// An open socket, or kaz_no_socket. Whoever gets one closes it.
typedef std::intptr_t kaz_socket;
/// Stands for no socket.
inline constexpr kaz_socket kaz_no_socket = -1;

/// How a call ended.
enum kaz_socket_status_enum {
    kaz_socket_ok = 0,
    kaz_socket_closed = -1,       ///< the peer has closed the connection or broken it off
    kaz_socket_timeout = -2,      ///< the limit was reached
    kaz_socket_refused = -3,      ///< nobody listens there
    kaz_socket_unknown_host = -4, ///< there is no such host
    kaz_socket_in_use = -5,       ///< the port is taken
    kaz_socket_failed = -6,       ///< any other reason
    kaz_socket_invalid = -7,      ///< a bad argument: no open socket, a port out of range, ...
};

/// Connects to @p host, a name or an IPv4 or IPv6 address, trying its addresses one after the
/// other within the limit. Null or "" is this machine: 127.0.0.1, or ::1 where nobody listens
/// there. @p status, when not null, becomes kaz_socket_ok or the reason of the failure. Looking a
/// name up may exceed the limit.
KAZ_API kaz_socket kaz_socket_connect(const char* host, int port, int limit, int* status = nullptr);

/// Listens on @p address; null or "" is the loopback interface, which only this machine reaches
/// ("0.0.0.0" and "::" are all interfaces, "::" those of IPv4 too). Port 0 takes a free one, see
/// kaz_socket_port().
KAZ_API kaz_socket kaz_socket_listen(const char* address, int port, int* status = nullptr);
/// The next connection.
KAZ_API kaz_socket kaz_socket_accept(kaz_socket listener, int limit, int* status = nullptr);

/// Sends all @p size bytes; 0 bytes may be null. kaz_socket_ok, or why not all may have arrived.
KAZ_API int kaz_socket_send(kaz_socket socket, const void* data, int size, int limit);
/// Waits for data and takes what is there, at most @p size bytes. Their number (above 0), or a
/// status; kaz_socket_closed at the end of the data. A @p size below 1 is kaz_socket_invalid.
KAZ_API int kaz_socket_receive(kaz_socket socket, void* data, int size, int limit);
/// Receives up to LF; @p line becomes the text without LF and a CR before it. The last line may
/// lack its LF. More than @p longest bytes without one are kaz_socket_failed, a negative @p longest
/// is kaz_socket_invalid. kaz_socket_ok, or a status, with @p line unchanged and what was received
/// in parts lost only for kaz_socket_failed: after a time-out the next call goes on, and
/// kaz_socket_receive() gives what came before a connection was broken off.
KAZ_API int kaz_socket_receive_line(kaz_socket socket, KazString& line, int longest, int limit);

/// The port of this end; kaz_socket_invalid when @p socket is none.
KAZ_API int kaz_socket_port(kaz_socket socket);
/// The peer's address, "127.0.0.1:2100" or "[::1]:2100"; "" when there is none.
KAZ_API KazString kaz_socket_peer(kaz_socket socket);
/// Closes; @p *socket becomes kaz_no_socket. Null and kaz_no_socket are ignored.
KAZ_API void kaz_socket_close(kaz_socket* socket);

/// Why the last call here failed, in words; "" when it did not. Lives until the next call.
KAZ_API const char* kaz_socket_error_text();
