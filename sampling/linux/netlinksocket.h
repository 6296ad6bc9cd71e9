#pragma once

#include "sampling/linux/filedescriptor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

/// One message of a dump, without its header.
struct NetlinkMessage
{
    std::uint16_t type = 0; ///< nlmsg_type
    std::span<const std::byte> payload; ///< valid while the message is handled
};

/// How a dump ended.
enum class DumpEnd {
    Complete, ///< every message up to NLMSG_DONE was handled
    Interrupted, ///< handled up to NLMSG_DONE, but the list changed meanwhile (NLM_F_DUMP_INTR)
    Truncated, ///< a datagram did not fit into the buffer, which is larger now
    Failed, ///< refused, cut short or malformed
};

/// Receives the replies to one dump request from `descriptor` and hands each message to `handle`.
/// Datagrams and messages with another sequence number or port are not part of the dump and are
/// passed over. `buffer` is where datagrams are received and may be enlarged.
DumpEnd receiveDump(int descriptor, std::uint32_t sequence, std::uint32_t port,
                    std::vector<std::byte> &buffer,
                    const std::function<void(const NetlinkMessage &)> &handle);

/// A netlink socket connected to the kernel, of a protocol such as NETLINK_ROUTE; none when the
/// kernel refuses. Receiving from it never waits longer than a second.
FileDescriptor openNetlinkSocket(int protocol);

/// Asks the kernel for whole tables over one netlink socket, netlink(7). The socket is opened at
/// the first dump and kept; after a failure it is closed, so that no late reply reaches the next.
class NetlinkSocket
{
public:
    /// `open` is called whenever a socket is needed and returns it, or none when it is refused.
    explicit NetlinkSocket(std::function<FileDescriptor()> open) : m_open(std::move(open)) { }

    /// Requests a dump of message type `type` with the family header `body`, and hands every
    /// message to `handle`. An interrupted dump is asked for again a few times, then taken: it is
    /// complete, but what changed meanwhile may be missing or be there twice. `restart` is called
    /// before each attempt and forgets what the last one brought. Returns false when the table
    /// cannot be had as a whole; what was handled is then worth nothing.
    bool dump(std::uint16_t type, std::span<const std::byte> body,
              const std::function<void()> &restart,
              const std::function<void(const NetlinkMessage &)> &handle);

private:
    bool ready();
    bool request(std::uint16_t type, std::span<const std::byte> body);

    std::function<FileDescriptor()> m_open;
    FileDescriptor m_socket;
    std::uint32_t m_port = 0;
    std::uint32_t m_sequence = 0;
    std::vector<std::byte> m_buffer;
};
