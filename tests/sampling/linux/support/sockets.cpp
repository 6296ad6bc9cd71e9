#include "tests/sampling/linux/support/sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::abort();
}

int familyOf(SocketKind kind)
{
    return kind == SocketKind::IPv4 ? AF_INET : AF_INET6;
}

FileDescriptor openSocket(SocketKind kind, int type)
{
    FileDescriptor socket(::socket(familyOf(kind), type, 0));
    if (!socket)
        fail("socket");
    const int ipv6Only = kind == SocketKind::IPv6 ? 1 : 0;
    if (kind != SocketKind::IPv4
        && ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, &ipv6Only, sizeof ipv6Only) != 0)
        fail("IPV6_V6ONLY");
    return socket;
}

union Address {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

/// The loopback as `kind` writes it, or :: for listening to both.
std::pair<Address, socklen_t> addressFor(SocketKind kind, std::uint16_t port)
{
    Address address{};
    if (kind == SocketKind::IPv4) {
        address.ipv4.sin_family = AF_INET;
        address.ipv4.sin_port = htons(port);
        address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return {address, sizeof address.ipv4};
    }
    address.ipv6.sin6_family = AF_INET6;
    address.ipv6.sin6_port = htons(port);
    if (kind == SocketKind::IPv6)
        address.ipv6.sin6_addr = in6addr_loopback;
    if (kind == SocketKind::Mapped)
        ::inet_pton(AF_INET6, "::ffff:127.0.0.1", &address.ipv6.sin6_addr);
    return {address, sizeof address.ipv6};
}

FileDescriptor bound(SocketKind kind, int type)
{
    FileDescriptor socket = openSocket(kind, type);
    const auto [address, length] = addressFor(kind, 0);
    if (::bind(socket.get(), &address.any, length) != 0)
        fail("bind");
    return socket;
}

} // namespace

FileDescriptor openTcpSocket(SocketKind kind)
{
    return openSocket(kind, SOCK_STREAM);
}

FileDescriptor bindTcp(SocketKind kind)
{
    return bound(kind, SOCK_STREAM);
}

FileDescriptor listenTcp(SocketKind kind, int backlog)
{
    FileDescriptor socket = bound(kind, SOCK_STREAM);
    if (::listen(socket.get(), backlog) != 0)
        fail("listen");
    return socket;
}

FileDescriptor bindUdp(SocketKind kind)
{
    return bound(kind, SOCK_DGRAM);
}

FileDescriptor connectTcp(std::uint16_t port, SocketKind kind)
{
    FileDescriptor socket = openSocket(kind, SOCK_STREAM);
    const auto [address, length] = addressFor(kind, port);
    if (::connect(socket.get(), &address.any, length) != 0)
        fail("connect");
    return socket;
}

FileDescriptor acceptTcp(const FileDescriptor &listener)
{
    FileDescriptor socket(::accept(listener.get(), nullptr, nullptr));
    if (!socket)
        fail("accept");
    return socket;
}

std::pair<FileDescriptor, FileDescriptor> connectedPair()
{
    const FileDescriptor listener = listenTcp(SocketKind::IPv4);
    FileDescriptor client = connectTcp(portOf(listener.get()));
    return {std::move(client), acceptTcp(listener)};
}

void fillPeer(const FileDescriptor &socket)
{
    // What the kernel still takes after the buffers were full for this long is only what it moved
    // to the peer meanwhile; full for good is when nothing moves any more.
    constexpr int settledMs = 300;
    static const std::array<char, 65536> octets{};
    pollfd writable{socket.get(), POLLOUT, 0};
    while (::poll(&writable, 1, settledMs) > 0) {
        if (::send(socket.get(), octets.data(), octets.size(), MSG_DONTWAIT) < 0 && errno != EAGAIN)
            fail("send");
    }
}

void drain(const FileDescriptor &socket)
{
    static std::array<char, 65536> octets;
    while (true) {
        const ssize_t length = ::recv(socket.get(), octets.data(), octets.size(), 0);
        if (length < 0)
            fail("recv");
        if (length == 0)
            return;
    }
}

std::uint32_t inodeOf(int descriptor)
{
    struct stat file
    {
    };
    if (::fstat(descriptor, &file) != 0)
        fail("fstat");
    return static_cast<std::uint32_t>(file.st_ino);
}

std::uint16_t portOf(int descriptor)
{
    Address address{};
    socklen_t length = sizeof address;
    if (::getsockname(descriptor, &address.any, &length) != 0)
        fail("getsockname");
    return ntohs(address.any.sa_family == AF_INET ? address.ipv4.sin_port : address.ipv6.sin6_port);
}
