#include "sampling/linux/interfacetable.h"

#include "sampling/linux/netlinkdata.h"
#include "sampling/linux/netlinksocket.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

/// An interface is up by its operational state, RFC 2863. Drivers that keep none, as tunnels and
/// virtual links, leave it unknown; their flags tell.
bool isUp(std::uint8_t operationalState, unsigned flags)
{
    if (operationalState == IF_OPER_UP)
        return true;
    constexpr unsigned running = IFF_UP | IFF_RUNNING;
    return operationalState == IF_OPER_UNKNOWN && (flags & running) == running;
}

/// Attribute text up to its terminating null byte.
std::string textOf(std::span<const std::byte> value)
{
    const std::string_view text(reinterpret_cast<const char *>(value.data()), value.size());
    return std::string(text.substr(0, text.find('\0')));
}

/// Numbers that were seen, which mostly come in ascending order.
class SeenIndices
{
public:
    /// Returns whether the index is new.
    bool add(int index)
    {
        if (m_sorted.empty() || m_sorted.back() < index) {
            m_sorted.push_back(index);
            return true;
        }
        const auto place = std::ranges::lower_bound(m_sorted, index);
        if (*place == index)
            return false;
        m_sorted.insert(place, index);
        return true;
    }
    void clear() { m_sorted.clear(); }

private:
    std::vector<int> m_sorted;
};

std::optional<ifinfomsg> linkOf(const NetlinkMessage &message)
{
    ifinfomsg link{};
    if (message.type != RTM_NEWLINK || message.payload.size() < sizeof link)
        return std::nullopt;
    std::memcpy(&link, message.payload.data(), sizeof link);
    return link;
}

InterfaceRow rowOf(const ifinfomsg &link, const NetlinkMessage &message)
{
    InterfaceRow row;
    row.loopback = link.ifi_type == ARPHRD_LOOPBACK;
    std::uint8_t operationalState = IF_OPER_UNKNOWN;
    forEachAttribute(message.payload.subspan(NLMSG_ALIGN(sizeof link)),
                     [&](std::uint16_t type, std::span<const std::byte> value) {
                         switch (type) {
                         case IFLA_IFNAME:
                             row.description = textOf(value);
                             break;
                         case IFLA_IFALIAS:
                             row.alias = textOf(value);
                             break;
                         case IFLA_OPERSTATE:
                             if (!value.empty())
                                 operationalState = std::to_integer<std::uint8_t>(value.front());
                             break;
                         case IFLA_STATS64: {
                             // Newer kernels append members; older ones may send fewer.
                             rtnl_link_stats64 statistics{};
                             std::memcpy(&statistics, value.data(),
                                         std::min(value.size(), sizeof statistics));
                             row.inOctets = statistics.rx_bytes;
                             row.outOctets = statistics.tx_bytes;
                             break;
                         }
                         default:
                             break;
                         }
                     });
    row.up = isUp(operationalState, link.ifi_flags);
    return row;
}

} // namespace

std::optional<std::vector<InterfaceRow>> dumpInterfaces(NetlinkSocket &socket)
{
    ifinfomsg request{};
    request.ifi_family = AF_UNSPEC;
    std::vector<InterfaceRow> rows;
    SeenIndices indices; // a list that changes meanwhile may have an interface twice
    const auto restart = [&] {
        rows.clear();
        indices.clear();
    };
    const bool complete = socket.dump(RTM_GETLINK, std::as_bytes(std::span(&request, 1)), restart,
                                      [&](const NetlinkMessage &message) {
                                          const auto link = linkOf(message);
                                          if (link && indices.add(link->ifi_index))
                                              rows.push_back(rowOf(*link, message));
                                      });
    if (!complete)
        return std::nullopt;
    return rows;
}
