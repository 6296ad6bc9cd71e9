// The table of sockets that a kernel's replies make, asked for twice over one socket as two ticks
// do. Then the entries of these replies, said without a fault: they are the same table whether the
// kernel is asked for both families at once or for one after the other. An input's first octet
// chooses the protocol; conversationsOf() says what follows.
#include "fuzz/alignedcopy.h"
#include "fuzz/kernelreplies.h"
#include "fuzz/require.h"
#include "sampling/linux/netlinksocket.h"
#include "sampling/linux/sockettable.h"

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <tuple>

namespace {

using Payloads = std::vector<Datagram>;

void checkStates(const std::vector<SocketRow> &rows)
{
    constexpr std::uint32_t highestState = 12;
    for (const SocketRow &row : rows)
        require(tcpTableState(row.state) <= highestState, "a state has a number of the table");
}

/// The messages of a dump, but for large ones; none when it fails.
Payloads payloadsIn(Conversations conversations)
{
    constexpr std::size_t largest = 1024; // so that all of them are one datagram
    KernelReplies kernel(std::move(conversations));
    NetlinkSocket socket([&] { return kernel.open(); });
    Payloads payloads;
    const bool complete = socket.dump(
        SOCK_DIAG_BY_FAMILY, {}, [&] { payloads.clear(); },
        [&](const NetlinkMessage &message) {
            if (message.payload.size() <= largest)
                payloads.emplace_back(message.payload.begin(), message.payload.end());
        });
    return complete ? payloads : Payloads();
}

/// One whole reply of those payloads that have an entry of one of these families.
Datagram reply(std::uint16_t type, std::uint32_t sequence, const Payloads &payloads,
               std::initializer_list<int> families)
{
    Datagram datagram;
    const auto say = [&](const Datagram &message) {
        datagram.insert(datagram.end(), message.begin(), message.end());
    };
    for (const Datagram &payload : payloads) {
        const int family = payload.empty() ? AF_UNSPEC : std::to_integer<int>(payload.front());
        if (std::ranges::find(families, family) != families.end())
            say(netlinkMessage(type, sequence, payload));
    }
    const std::array<std::byte, sizeof(int)> noError{};
    say(netlinkMessage(NLMSG_DONE, sequence, noError));
    return datagram;
}

/// The row of an IPv6 socket: the last 32 bits of its addresses.
SocketRow mappedRow(SocketRow row, const inet_diag_sockid &id)
{
    const auto *remote = reinterpret_cast<const in6_addr *>(id.idiag_dst);
    row.localAddress = id.idiag_src[3];
    row.remoteAddress = IN6_IS_ADDR_V4MAPPED(remote) ? id.idiag_dst[3] : 0;
    return row;
}

std::vector<SocketRow> expectedRows(const Payloads &payloads)
{
    std::vector<SocketRow> rows;
    std::vector<SocketRow> mapped;
    for (const Datagram &payload : payloads) {
        if (payload.size() < sizeof(inet_diag_msg))
            continue;
        const AlignedCopy copy(payload);
        const auto *entry = copy.as<inet_diag_msg>();
        const inet_diag_sockid &id = entry->id;
        const SocketRow row{entry->idiag_inode, entry->idiag_uid, id.idiag_src[0],
                            id.idiag_dst[0],    id.idiag_sport,   id.idiag_dport,
                            entry->idiag_state};
        const auto *local = reinterpret_cast<const in6_addr *>(id.idiag_src);
        if (entry->idiag_family == AF_INET)
            rows.push_back(row);
        else if (entry->idiag_family == AF_INET6 && IN6_IS_ADDR_V4MAPPED(local))
            mapped.push_back(mappedRow(row, id));
    }
    rows.insert(rows.end(), mapped.begin(), mapped.end());
    return rows;
}

auto fields(const SocketRow &row)
{
    return std::tie(row.inode, row.uid, row.localAddress, row.remoteAddress, row.localPort,
                    row.remotePort, row.state);
}

void requireTable(std::vector<Datagram> replies, std::uint8_t protocol,
                  const std::vector<SocketRow> &expected, const char *what)
{
    KernelReplies kernel({std::move(replies)});
    NetlinkSocket socket([&] { return kernel.open(); });
    const auto table = dumpSockets(socket, protocol);
    require(table && std::ranges::equal(*table, expected, {}, fields, fields), what);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::uint8_t protocol = data[0] % 2 == 0 ? IPPROTO_TCP : IPPROTO_UDP;
    const Conversations conversations = conversationsOf({data + 1, size - 1});
    KernelReplies kernel(conversations);
    NetlinkSocket socket([&] { return kernel.open(); });
    for (int tick = 0; tick < 2; ++tick) {
        if (const auto table = dumpSockets(socket, protocol))
            checkStates(*table);
    }

    const Payloads payloads = payloadsIn(conversations);
    const std::vector<SocketRow> expected = expectedRows(payloads);
    requireTable({reply(TCPDIAG_GETSOCK, 1, payloads, {AF_UNSPEC, AF_INET, AF_INET6})}, IPPROTO_TCP,
                 expected, "both families at once are the table");
    requireTable({reply(SOCK_DIAG_BY_FAMILY, 1, payloads, {AF_INET}),
                  reply(SOCK_DIAG_BY_FAMILY, 2, payloads, {AF_INET6})},
                 IPPROTO_UDP, expected, "one family after the other is the table");
    return 0;
}
