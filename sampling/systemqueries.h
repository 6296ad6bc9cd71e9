#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// One network interface of the operating system's interface table.
struct InterfaceRow
{
    bool loopback = false; ///< the software loopback, never counted
    bool up = false; ///< operationally up: able to carry traffic now
    std::string alias; ///< name given by the user, UTF-8; empty when none was given
    std::string description; ///< the system's own name of the interface, UTF-8
    std::uint64_t inOctets = 0; ///< octets received since the interface exists; wraps at 2^64
    std::uint64_t outOctets = 0; ///< octets sent since the interface exists; wraps at 2^64
};

/// One IPv4 TCP socket, whatever its state.
struct TcpRow
{
    std::uint32_t pid = 0; ///< owning process; 0 when no owner can be named
    std::uint32_t localAddress = 0; ///< network byte order
    std::uint16_t localPort = 0; ///< network byte order
    std::uint32_t remoteAddress = 0; ///< network byte order; 0 when not connected
    std::uint16_t remotePort = 0; ///< network byte order; 0 when not connected
    /// 1 closed, 2 listen, 3 syn sent, 4 syn received, 5 established, 6 fin wait 1, 7 fin wait 2,
    /// 8 close wait, 9 closing, 10 last ack, 11 time wait, 12 delete (the MIB_TCP_STATE numbers of
    /// RFC 4022); any other value is unknown.
    std::uint32_t state = 0;
};

/// One bound IPv4 UDP socket.
struct UdpRow
{
    std::uint32_t pid = 0; ///< owning process; 0 when no owner can be named
    std::uint32_t localAddress = 0; ///< network byte order
    std::uint16_t localPort = 0; ///< network byte order
};

/// Everything the program asks of the operating system: five questions, each answered from the
/// state of that moment. One backend per operating system stands behind it, using standard C++ and
/// that system's headers alone.
///
/// A backend may remember what makes the next answer cheaper. It is used from one thread. No
/// question throws for a failing system call; the answer then is "nothing", as each one says.
class SystemQueries
{
public:
    SystemQueries() = default;
    SystemQueries(const SystemQueries &) = delete;
    SystemQueries &operator=(const SystemQueries &) = delete;
    virtual ~SystemQueries() = default;

    /// All interfaces in the system's order; no value when the table cannot be had.
    virtual std::optional<std::vector<InterfaceRow>> interfaceTable() = 0;

    /// All IPv4 TCP sockets in the system's order; no value when the table cannot be had.
    virtual std::optional<std::vector<TcpRow>> tcpTable() = 0;

    /// All IPv4 UDP sockets in the system's order; no value when the table cannot be had.
    virtual std::optional<std::vector<UdpRow>> udpTable() = 0;

    /// Full path of the process's executable, UTF-8; empty when it cannot be read.
    virtual std::string imagePath(std::uint32_t pid) = 0;

    /// The process's name in the system's process list, UTF-8 and possibly empty; no value when
    /// the list cannot be had or does not hold the process.
    virtual std::optional<std::string> processListName(std::uint32_t pid) = 0;
};

/// Creates the backend that the program was linked with. Never null.
std::unique_ptr<SystemQueries> makeSystemQueries();
