#include "fuzz/kernelreplies.h"

#include "fuzz/require.h"

#include <linux/netlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>

Conversations conversationsOf(std::span<const std::uint8_t> input)
{
    constexpr unsigned lengthBits = 0x3fff;
    constexpr unsigned largeBit = 0x4000;
    constexpr unsigned lastBit = 0x8000;
    constexpr std::size_t beyondFirstBuffer = 33UL * 1024;

    Conversations conversations(1);
    while (input.size() >= 2) {
        const unsigned head = input[0] | static_cast<unsigned>(input[1]) << 8;
        input = input.subspan(2);
        const auto bytes
            = std::as_bytes(input.first(std::min<std::size_t>(head & lengthBits, input.size())));
        input = input.subspan(bytes.size());
        // A datagram of no length cannot be told from the end.
        if (!bytes.empty()) {
            conversations.back().emplace_back(bytes.begin(), bytes.end());
            if ((head & largeBit) != 0)
                conversations.back().back().resize(beyondFirstBuffer);
        }
        if ((head & lastBit) != 0)
            conversations.emplace_back();
    }
    return conversations;
}

Datagram netlinkMessage(std::uint16_t type, std::uint32_t sequence,
                        std::span<const std::byte> payload)
{
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(NLMSG_LENGTH(payload.size()));
    header.nlmsg_type = type;
    header.nlmsg_flags = NLM_F_MULTI;
    header.nlmsg_seq = sequence;
    Datagram message(NLMSG_SPACE(payload.size()));
    std::memcpy(message.data(), &header, sizeof header);
    std::ranges::copy(payload, message.begin() + NLMSG_HDRLEN);
    return message;
}

FileDescriptor KernelReplies::open()
{
    std::array<int, 2> ends{};
    // Keeps the bounds of what is sent, as a netlink socket does.
    require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) == 0,
            "a pair of sockets can be had");
    m_socket = FileDescriptor(ends[0]);
    FileDescriptor program(ends[1]);

    m_said.clear();
    if (m_opened < m_conversations.size()) {
        for (const Datagram &datagram : m_conversations[m_opened]) {
            // What does not fit into the socket's queue is not said.
            if (::send(m_socket.get(), datagram.data(), datagram.size(), MSG_DONTWAIT) < 0)
                break;
            m_said.push_back(datagram);
        }
    }
    ++m_opened;
    require(::shutdown(m_socket.get(), SHUT_WR) == 0, "the kernel's side can hang up");
    return program;
}
