// A process that owns known IPv4 sockets: a TCP listener on all addresses, both ends of a
// connection to it over the loopback, a bound UDP socket, and an IPv6 listener.
//
// It writes one line with the ports in that order (listener, connecting end, UDP, IPv6), then obeys
// one command a line, answering each with "done", until its standard input ends:
//   exchange N    sends N octets from the connecting end to the accepted one
//   half-close    ends the connecting end's direction

#include <winsock2.h>
#include <ws2tcpip.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

template <typename Value> Value checked(Value value, Value failure)
{
    if (value == failure) {
        std::cerr << "socket call failed: " << WSAGetLastError() << std::endl;
        std::exit(EXIT_FAILURE);
    }
    return value;
}

void succeed(int result)
{
    checked(result, SOCKET_ERROR);
}

template <typename Address> void bindTo(SOCKET socket, const Address &address)
{
    succeed(bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)));
}

/// Port that the socket is bound to, in host byte order; it stands alike in both families'
/// addresses.
unsigned short localPort(SOCKET socket)
{
    sockaddr_in6 address{};
    int size = sizeof(address);
    succeed(getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size));
    return ntohs(address.sin6_port);
}

sockaddr_in ipv4(u_long address, unsigned short port = 0)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(address);
    result.sin_port = htons(port);
    return result;
}

/// Receives without waiting, whatever comes. Wine can name the owner of a socket only once the
/// socket's process has itself read or written; until then the socket is its server's.
void touch(SOCKET socket)
{
    u_long nonBlocking = 1;
    succeed(ioctlsocket(socket, static_cast<long>(FIONBIO), &nonBlocking));
    char octet = 0;
    recv(socket, &octet, 1, 0);
    nonBlocking = 0;
    succeed(ioctlsocket(socket, static_cast<long>(FIONBIO), &nonBlocking));
}

void exchange(SOCKET from, SOCKET to, std::size_t octets)
{
    std::array<char, 4096> block{};
    while (octets > 0) {
        const int sent
            = send(from, block.data(), static_cast<int>(std::min(octets, block.size())), 0);
        succeed(sent);
        octets -= static_cast<std::size_t>(sent);
        for (int left = sent; left > 0;)
            left -= checked(recv(to, block.data(), left, 0), SOCKET_ERROR);
    }
}

} // namespace

int main()
{
    WSADATA data{};
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0)
        return EXIT_FAILURE;

    const SOCKET listener = checked(socket(AF_INET, SOCK_STREAM, 0), INVALID_SOCKET);
    bindTo(listener, ipv4(INADDR_ANY));
    succeed(listen(listener, 1));
    const unsigned short listenPort = localPort(listener);

    const SOCKET connecting = checked(socket(AF_INET, SOCK_STREAM, 0), INVALID_SOCKET);
    const sockaddr_in peer = ipv4(INADDR_LOOPBACK, listenPort);
    succeed(connect(connecting, reinterpret_cast<const sockaddr *>(&peer), sizeof(peer)));
    const SOCKET accepted = checked(accept(listener, nullptr, nullptr), INVALID_SOCKET);
    exchange(connecting, accepted, 1);

    const SOCKET datagrams = checked(socket(AF_INET, SOCK_DGRAM, 0), INVALID_SOCKET);
    bindTo(datagrams, ipv4(INADDR_LOOPBACK));

    const SOCKET ipv6 = checked(socket(AF_INET6, SOCK_STREAM, 0), INVALID_SOCKET);
    sockaddr_in6 ipv6Loopback{};
    ipv6Loopback.sin6_family = AF_INET6;
    ipv6Loopback.sin6_addr = in6addr_loopback;
    bindTo(ipv6, ipv6Loopback);
    succeed(listen(ipv6, 1));

    for (const SOCKET socket : {listener, datagrams, ipv6})
        touch(socket);

    std::cout << listenPort << ' ' << localPort(connecting) << ' ' << localPort(datagrams) << ' '
              << localPort(ipv6) << std::endl;

    std::string command;
    while (std::cin >> command) {
        if (command == "exchange") {
            std::size_t octets = 0;
            std::cin >> octets;
            exchange(connecting, accepted, octets);
        } else if (command == "half-close") {
            succeed(shutdown(connecting, SD_SEND));
            char octet = 0;
            recv(accepted, &octet, 1, 0); // returns when the end has arrived
        }
        std::cout << "done" << std::endl;
    }
    return EXIT_SUCCESS;
}
