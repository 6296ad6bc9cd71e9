#include "sampling/linux/sockettable.h"

#include "sampling/linux/netlinksocket.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>

#include <array>
#include <cstring>

namespace {

/// Every state from established (1) to closing (11). Beyond, newer kernels list sockets that are
/// bound and neither listen nor are connected; such a socket takes part in no TCP.
constexpr std::uint32_t allStates = 0xffe;

/// Whether `address` is ::ffff:a.b.c.d.
bool isMapped(const __be32 (&address)[4])
{
    return address[0] == 0 && address[1] == 0 && address[2] == htonl(0xffff);
}

/// The message's entry if it is one; its type is the request's.
std::optional<inet_diag_msg> entryOf(const NetlinkMessage &message, std::uint16_t type)
{
    inet_diag_msg entry;
    if (message.type != type || message.payload.size() < sizeof entry)
        return std::nullopt;
    std::memcpy(&entry, message.payload.data(), sizeof entry);
    return entry;
}

std::optional<SocketRow> parseSocket(const inet_diag_msg &entry)
{
    const inet_diag_sockid &id = entry.id;
    std::uint32_t localAddress = id.idiag_src[0];
    std::uint32_t remoteAddress = id.idiag_dst[0];
    if (entry.idiag_family == AF_INET6) {
        if (!isMapped(id.idiag_src))
            return std::nullopt;
        localAddress = id.idiag_src[3];
        remoteAddress = isMapped(id.idiag_dst) ? id.idiag_dst[3] : 0;
    } else if (entry.idiag_family != AF_INET) {
        return std::nullopt;
    }
    return SocketRow{.inode = entry.idiag_inode,
                     .uid = entry.idiag_uid,
                     .localAddress = localAddress,
                     .remoteAddress = remoteAddress,
                     .localPort = id.idiag_sport,
                     .remotePort = id.idiag_dport,
                     .state = entry.idiag_state};
}

bool dumpFamily(NetlinkSocket &socket, std::uint8_t family, std::uint8_t protocol,
                std::vector<SocketRow> &rows)
{
    inet_diag_req_v2 request{};
    request.sdiag_family = family;
    request.sdiag_protocol = protocol;
    request.idiag_states = allStates;
    const std::size_t before = rows.size();
    return socket.dump(
        SOCK_DIAG_BY_FAMILY, std::as_bytes(std::span(&request, 1)), [&] { rows.resize(before); },
        [&](const NetlinkMessage &message) {
            const auto entry = entryOf(message, SOCK_DIAG_BY_FAMILY);
            if (const auto row = entry ? parseSocket(*entry) : std::nullopt)
                rows.push_back(*row);
        });
}

/// Both families of TCP in one walk through the kernel's table, most of which is empty: that takes
/// longer than to tell the sockets of a desktop. Only the older request asks for every family.
bool dumpTcp(NetlinkSocket &socket, std::vector<SocketRow> &rows)
{
    inet_diag_req request{};
    request.idiag_states = allStates;
    std::vector<SocketRow> mapped;
    const auto restart = [&] {
        rows.clear();
        mapped.clear();
    };
    const bool complete
        = socket.dump(TCPDIAG_GETSOCK, std::as_bytes(std::span(&request, 1)), restart,
                      [&](const NetlinkMessage &message) {
                          const auto entry = entryOf(message, TCPDIAG_GETSOCK);
                          if (const auto row = entry ? parseSocket(*entry) : std::nullopt)
                              (entry->idiag_family == AF_INET ? rows : mapped).push_back(*row);
                      });
    if (!complete) {
        restart();
        return false;
    }
    // IPv4 first, as with a walk for each family.
    rows.insert(rows.end(), mapped.begin(), mapped.end());
    return true;
}

} // namespace

std::optional<std::vector<SocketRow>> dumpSockets(NetlinkSocket &socket, std::uint8_t protocol)
{
    std::vector<SocketRow> rows;
    if (protocol == IPPROTO_TCP && dumpTcp(socket, rows))
        return rows;
    if (!dumpFamily(socket, AF_INET, protocol, rows)
        || !dumpFamily(socket, AF_INET6, protocol, rows))
        return std::nullopt;
    return rows;
}

std::uint32_t tcpTableState(std::uint8_t kernelState)
{
    // Index: the kernel's TCP_ESTABLISHED (1) to TCP_NEW_SYN_RECV (12).
    constexpr std::array<std::uint8_t, 13> states{0, 5, 3, 4, 6, 7, 11, 1, 8, 10, 2, 9, 4};
    return kernelState < states.size() ? states.at(kernelState) : 0;
}
