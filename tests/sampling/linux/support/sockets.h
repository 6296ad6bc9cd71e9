#pragma once

#include "sampling/linux/filedescriptor.h"

#include <cstdint>
#include <utility>

/// Sockets on the loopback for tests. Every function ends the process with a message when the
/// system refuses, since no test can go on then.

/// Which IP a socket speaks, and whom it listens to.
enum class SocketKind {
    IPv4, ///< on 127.0.0.1
    IPv6, ///< on ::1, IPv6 only
    DualStack, ///< on ::, IPv4 too
    Mapped, ///< IPv6 socket on ::ffff:127.0.0.1
};

FileDescriptor openTcpSocket(SocketKind kind);
/// Binds to a free port of the kernel's choice.
FileDescriptor bindTcp(SocketKind kind);
FileDescriptor listenTcp(SocketKind kind, int backlog = 64);
FileDescriptor bindUdp(SocketKind kind);
/// A TCP connection to `port` of this host, in host byte order.
FileDescriptor connectTcp(std::uint16_t port, SocketKind kind = SocketKind::IPv4);
FileDescriptor acceptTcp(const FileDescriptor &listener);
/// Both ends of an IPv4 TCP connection, the connecting one first.
std::pair<FileDescriptor, FileDescriptor> connectedPair();

/// Sends until neither the peer's window nor the own buffer takes any more.
void fillPeer(const FileDescriptor &socket);
/// Receives until the peer's end of the stream.
void drain(const FileDescriptor &socket);

/// Number of the inode behind an open file.
std::uint32_t inodeOf(int descriptor);
/// Local port in host byte order.
std::uint16_t portOf(int descriptor);
