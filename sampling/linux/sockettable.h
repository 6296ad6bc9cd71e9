#pragma once

#include <cstdint>
#include <optional>
#include <vector>

class NetlinkSocket;

/// One IPv4 socket as the kernel lists it.
struct SocketRow
{
    std::uint32_t inode = 0; ///< of the socket's file; 0 when no file refers to it any more
    std::uint32_t uid = 0; ///< user who created the socket
    std::uint32_t localAddress = 0; ///< network byte order
    std::uint32_t remoteAddress = 0; ///< network byte order; 0 when not connected
    std::uint16_t localPort = 0; ///< network byte order
    std::uint16_t remotePort = 0; ///< network byte order; 0 when not connected
    std::uint8_t state = 0; ///< the kernel's own numbering, include/net/tcp_states.h
};

/// All IPv4 sockets of `protocol` (IPPROTO_TCP, IPPROTO_UDP) that have a local port, over a
/// NETLINK_SOCK_DIAG socket, sock_diag(7). IPv4 traffic of an IPv6 socket has IPv4-mapped
/// addresses (RFC 4291, 2.5.5.2); such sockets follow the IPv4 ones as IPv4 rows, and no other IPv6
/// socket is in the table. No value when a dump cannot be had.
std::optional<std::vector<SocketRow>> dumpSockets(NetlinkSocket &socket, std::uint8_t protocol);

/// TcpRow::state of a TCP state in the kernel's numbering; 0 for one that has no such number.
std::uint32_t tcpTableState(std::uint8_t kernelState);
