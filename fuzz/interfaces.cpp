// The table of interfaces that a kernel's replies make, asked for twice over one socket as two
// ticks do: every row is what the macros of the kernel's own headers find in the link's message,
// rtnetlink(7). conversationsOf() says what the bytes of an input are.
#include "fuzz/alignedcopy.h"
#include "fuzz/kernelreplies.h"
#include "fuzz/require.h"
#include "sampling/linux/interfacetable.h"
#include "sampling/linux/netlinksocket.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <set>
#include <tuple>

namespace {

std::string textOf(const rtattr *attribute)
{
    const auto *text = static_cast<const char *>(RTA_DATA(attribute));
    return {text, ::strnlen(text, RTA_PAYLOAD(attribute))};
}

/// A counter of the statistics, of which the kernel may have sent a part.
std::uint64_t counterAt(const rtattr *attribute, std::size_t offset)
{
    std::uint64_t counter = 0;
    for (std::size_t i = 0; i < sizeof counter && offset + i < RTA_PAYLOAD(attribute); ++i)
        std::memcpy(reinterpret_cast<char *>(&counter) + i,
                    static_cast<const char *>(RTA_DATA(attribute)) + offset + i, 1);
    return counter;
}

InterfaceRow expectedRow(const AlignedCopy &message)
{
    const auto *link = message.as<ifinfomsg>();
    InterfaceRow row;
    row.loopback = link->ifi_type == ARPHRD_LOOPBACK;
    int state = IF_OPER_UNKNOWN;
    auto left = message.size() - static_cast<std::ptrdiff_t>(NLMSG_ALIGN(sizeof *link));
    for (const rtattr *attribute = IFLA_RTA(link); RTA_OK(attribute, left);
         attribute = RTA_NEXT(attribute, left)) {
        const int type = attribute->rta_type & NLA_TYPE_MASK;
        if (type == IFLA_IFNAME)
            row.description = textOf(attribute);
        if (type == IFLA_IFALIAS)
            row.alias = textOf(attribute);
        if (type == IFLA_OPERSTATE && RTA_PAYLOAD(attribute) > 0)
            state = *static_cast<const std::uint8_t *>(RTA_DATA(attribute));
        if (type == IFLA_STATS64) {
            row.inOctets = counterAt(attribute, offsetof(rtnl_link_stats64, rx_bytes));
            row.outOctets = counterAt(attribute, offsetof(rtnl_link_stats64, tx_bytes));
        }
    }
    const bool runs = (link->ifi_flags & IFF_UP) != 0 && (link->ifi_flags & IFF_RUNNING) != 0;
    row.up = state == IF_OPER_UP || (state == IF_OPER_UNKNOWN && runs);
    return row;
}

/// The rows of one dump; none when it fails.
std::optional<std::vector<InterfaceRow>> expectedTable(NetlinkSocket &socket)
{
    std::vector<InterfaceRow> rows;
    std::set<int> seen;
    const auto restart = [&] {
        rows.clear();
        seen.clear();
    };
    const bool complete = socket.dump(RTM_GETLINK, {}, restart, [&](const NetlinkMessage &message) {
        const AlignedCopy copy(message.payload);
        if (message.type == RTM_NEWLINK && message.payload.size() >= sizeof(ifinfomsg)
            && seen.insert(copy.as<ifinfomsg>()->ifi_index).second)
            rows.push_back(expectedRow(copy));
    });
    if (!complete)
        return std::nullopt;
    return rows;
}

auto fields(const InterfaceRow &row)
{
    return std::tie(row.loopback, row.up, row.alias, row.description, row.inOctets, row.outOctets);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Conversations conversations = conversationsOf({data, size});
    KernelReplies kernel(conversations);
    KernelReplies sameKernel(conversations);
    NetlinkSocket socket([&] { return kernel.open(); });
    NetlinkSocket otherSocket([&] { return sameKernel.open(); });
    for (int tick = 0; tick < 2; ++tick) {
        const auto table = dumpInterfaces(socket);
        const auto expected = expectedTable(otherSocket);
        require(table.has_value() == expected.has_value(), "a whole dump is a table");
        require(!table || std::ranges::equal(*table, *expected, {}, fields, fields),
                "rows are those of the macros");
    }
    require(kernel.opened() <= 10, "a table is given up after five attempts");
    return 0;
}
