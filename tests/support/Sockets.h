// Sockets under the names that both hosts can have.
#pragma once

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>

#include <sys/types.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace korlan::test {

#ifdef _WIN32
constexpr int MSG_NOSIGNAL = 0;
inline int NewSocket(int family, int kind) {
    WSADATA data{};
    [[maybe_unused]] static const int started = WSAStartup(MAKEWORD(2, 2), &data);
    return static_cast<int>(::socket(family, kind, 0));
}
inline int AcceptSocket(int listener) { // does not block
    const SOCKET socket = ::accept(static_cast<SOCKET>(listener), nullptr, nullptr);
    u_long on = 1;
    ioctlsocket(socket, FIONBIO, &on);
    return static_cast<int>(socket);
}
inline void CloseSocket(int socket) {
    closesocket(static_cast<SOCKET>(socket));
}
inline int PollSockets(pollfd* polled, unsigned count) {
    return WSAPoll(polled, count, -1);
}
using SocketHandle = SOCKET;
#else
inline int NewSocket(int family, int kind) {
    return ::socket(family, kind | SOCK_CLOEXEC, 0);
}
inline int AcceptSocket(int listener) { // does not block
    return accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
}
inline void CloseSocket(int socket) {
    close(socket);
}
inline int PollSockets(pollfd* polled, unsigned count) {
    return poll(polled, count, -1);
}
using SocketHandle = int;
#endif

} // namespace korlan::test
