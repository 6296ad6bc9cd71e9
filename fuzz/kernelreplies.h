#pragma once

#include "sampling/linux/filedescriptor.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

using Datagram = std::vector<std::byte>;
/// What is said over one socket after the other.
using Conversations = std::vector<std::vector<Datagram>>;

/// The datagrams that the bytes of an input stand for. Each one follows two octets, the lower one
/// first: its length (14 bits; of one that goes beyond the input's end what is there), whether it
/// is made larger than the program's first buffer (bit 14), and whether the next one is said over
/// another socket (bit 15).
Conversations conversationsOf(std::span<const std::uint8_t> input);

/// One netlink message with its header and padding, sent by the kernel to port 0.
Datagram netlinkMessage(std::uint16_t type, std::uint32_t sequence,
                        std::span<const std::byte> payload);

/// The kernel's side of netlink sockets: says what it is told to say, whatever it is asked.
class KernelReplies
{
public:
    explicit KernelReplies(Conversations conversations) : m_conversations(std::move(conversations))
    {
    }

    /// The program's end of the next socket. All that is said over it is queued, then the kernel
    /// hangs up; over more sockets than there are conversations nothing is said.
    FileDescriptor open();

    /// What was said over the socket that was opened last.
    const std::vector<Datagram> &said() const { return m_said; }
    /// How many sockets were opened.
    std::size_t opened() const { return m_opened; }

private:
    Conversations m_conversations;
    std::size_t m_opened = 0;
    std::vector<Datagram> m_said;
    FileDescriptor m_socket; ///< takes the program's requests
};
