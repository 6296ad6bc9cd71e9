#include "sampling/linux/linuxsystemqueries.h"

#include "sampling/linux/interfacetable.h"
#include "sampling/linux/sockettable.h"

#include <linux/netlink.h>
#include <netinet/in.h>

LinuxSystemQueries::LinuxSystemQueries(const std::string &processRoot)
    : m_linkSocket([] { return openNetlinkSocket(NETLINK_ROUTE); }),
      m_diagSocket([] { return openNetlinkSocket(NETLINK_SOCK_DIAG); }),
      m_processFiles(processRoot),
      m_owners(processRoot)
{
}

std::optional<std::vector<InterfaceRow>> LinuxSystemQueries::interfaceTable()
{
    return dumpInterfaces(m_linkSocket);
}

std::optional<std::vector<TcpRow>> LinuxSystemQueries::tcpTable()
{
    const auto sockets = dumpSockets(m_diagSocket, IPPROTO_TCP);
    if (!sockets)
        return std::nullopt;
    const std::vector<std::uint32_t> owners = m_owners.owners(SocketOwners::Table::Tcp, *sockets);
    std::vector<TcpRow> rows;
    rows.reserve(sockets->size());
    for (std::size_t i = 0; i < sockets->size(); ++i) {
        const SocketRow &socket = (*sockets)[i];
        rows.push_back({.pid = owners[i],
                        .localAddress = socket.localAddress,
                        .localPort = socket.localPort,
                        .remoteAddress = socket.remoteAddress,
                        .remotePort = socket.remotePort,
                        .state = tcpTableState(socket.state)});
    }
    return rows;
}

std::optional<std::vector<UdpRow>> LinuxSystemQueries::udpTable()
{
    const auto sockets = dumpSockets(m_diagSocket, IPPROTO_UDP);
    if (!sockets)
        return std::nullopt;
    const std::vector<std::uint32_t> owners = m_owners.owners(SocketOwners::Table::Udp, *sockets);
    std::vector<UdpRow> rows;
    rows.reserve(sockets->size());
    for (std::size_t i = 0; i < sockets->size(); ++i) {
        const SocketRow &socket = (*sockets)[i];
        rows.push_back(
            {.pid = owners[i], .localAddress = socket.localAddress, .localPort = socket.localPort});
    }
    return rows;
}

std::string LinuxSystemQueries::imagePath(std::uint32_t pid)
{
    return m_processFiles.imagePath(pid, m_owners.imageLink(pid));
}

std::optional<std::string> LinuxSystemQueries::processListName(std::uint32_t pid)
{
    return m_processFiles.name(pid);
}
