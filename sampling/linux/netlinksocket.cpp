#include "sampling/linux/netlinksocket.h"

#include "sampling/linux/netlinkdata.h"

#include <linux/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

// The kernel fills a dump's datagrams up to what the reader offers, but never beyond 32 KiB.
constexpr std::size_t initialBufferSize = 32UL * 1024;
constexpr std::size_t largestBufferSize = 4UL * 1024 * 1024;
// A list that changes during every one of so many dumps is taken as the last one has it.
constexpr int dumpAttempts = 5;

/// Receives one datagram. Returns its real length, which is beyond the buffer's when it was cut
/// off; 0 when nothing can be received. `fromKernel` tells who sent it.
std::size_t receiveDatagram(int descriptor, std::span<std::byte> buffer, bool &fromKernel)
{
    sockaddr_nl sender{};
    iovec part{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    ssize_t length = 0;
    do {
        length = ::recvmsg(descriptor, &message, MSG_TRUNC);
    } while (length < 0 && errno == EINTR);
    fromKernel = sender.nl_pid == 0;
    return length > 0 ? static_cast<std::size_t>(length) : 0;
}

/// NLMSG_DONE carries the error with which a dump ended early, or 0.
bool endsWell(std::span<const std::byte> payload)
{
    return payload.size() < sizeof(int) || readAs<int>(payload) == 0;
}

} // namespace

DumpEnd receiveDump(int descriptor, std::uint32_t sequence, std::uint32_t port,
                    std::vector<std::byte> &buffer,
                    const std::function<void(const NetlinkMessage &)> &handle)
{
    bool interrupted = false;
    while (true) {
        bool fromKernel = false;
        const std::size_t length = receiveDatagram(descriptor, buffer, fromKernel);
        if (length == 0 || length > largestBufferSize)
            return DumpEnd::Failed;
        if (length > buffer.size()) {
            buffer.resize(length);
            return DumpEnd::Truncated;
        }
        if (!fromKernel)
            continue;

        std::span<const std::byte> rest(buffer.data(), length);
        while (!rest.empty()) {
            if (rest.size() < sizeof(nlmsghdr))
                return DumpEnd::Failed;
            const auto header = readAs<nlmsghdr>(rest);
            if (header.nlmsg_len < sizeof(nlmsghdr) || header.nlmsg_len > rest.size())
                return DumpEnd::Failed;
            const auto payload = rest.first(header.nlmsg_len).subspan(sizeof(nlmsghdr));
            rest = rest.subspan(std::min(netlinkAligned(header.nlmsg_len), rest.size()));
            if (header.nlmsg_seq != sequence || header.nlmsg_pid != port)
                continue;
            if ((header.nlmsg_flags & NLM_F_DUMP_INTR) != 0)
                interrupted = true;
            switch (header.nlmsg_type) {
            case NLMSG_NOOP:
                break;
            case NLMSG_ERROR:
            case NLMSG_OVERRUN:
                return DumpEnd::Failed;
            case NLMSG_DONE:
                if (!endsWell(payload))
                    return DumpEnd::Failed;
                return interrupted ? DumpEnd::Interrupted : DumpEnd::Complete;
            default:
                handle({header.nlmsg_type, payload});
            }
        }
    }
}

FileDescriptor openNetlinkSocket(int protocol)
{
    FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol));
    if (!socket)
        return {};
    // The kernel answers a dump at once; the limit only keeps a lost reply from stopping the
    // program for good.
    const timeval limit{1, 0};
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    // Connected, the socket is sent nothing by other processes.
    if (::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) != 0
        || ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&kernel), sizeof kernel) != 0)
        return {};
    return socket;
}

bool NetlinkSocket::dump(std::uint16_t type, std::span<const std::byte> body,
                         const std::function<void()> &restart,
                         const std::function<void(const NetlinkMessage &)> &handle)
{
    int interruptions = 0;
    int truncations = 0;
    while (truncations < dumpAttempts) {
        restart();
        if (!ready() || !request(type, body))
            break;
        const DumpEnd end = receiveDump(m_socket.get(), m_sequence, m_port, m_buffer, handle);
        if (end == DumpEnd::Complete)
            return true;
        if (end == DumpEnd::Failed)
            break;
        if (end == DumpEnd::Interrupted && ++interruptions == dumpAttempts)
            return true;
        if (end == DumpEnd::Truncated) {
            ++truncations;
            // The rest of a truncated dump would otherwise precede the next one, and the kernel
            // refuses a second dump on a socket while the first lasts.
            m_socket.reset();
        }
    }
    m_socket.reset();
    return false;
}

bool NetlinkSocket::ready()
{
    if (m_socket)
        return true;
    m_socket = m_open();
    if (!m_socket)
        return false;
    sockaddr_nl own{};
    socklen_t size = sizeof own;
    if (::getsockname(m_socket.get(), reinterpret_cast<sockaddr *>(&own), &size) != 0)
        return false;
    m_port = own.nl_family == AF_NETLINK ? own.nl_pid : 0;
    if (m_buffer.empty())
        m_buffer.resize(initialBufferSize);
    return true;
}

bool NetlinkSocket::request(std::uint16_t type, std::span<const std::byte> body)
{
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(sizeof header + body.size());
    header.nlmsg_type = type;
    header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    header.nlmsg_seq = ++m_sequence;
    header.nlmsg_pid = m_port;
    std::vector<std::byte> request(header.nlmsg_len);
    std::memcpy(request.data(), &header, sizeof header);
    std::ranges::copy(body, request.begin() + sizeof header);
    ssize_t sent = 0;
    do {
        sent = ::send(m_socket.get(), request.data(), request.size(), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(request.size());
}
