#pragma once

#include "sampling/linux/netlinksocket.h"
#include "sampling/linux/processfiles.h"
#include "sampling/linux/socketowners.h"
#include "sampling/systemqueries.h"

/// Answers the system queries from the Linux kernel's netlink dumps and its process file system.
/// Without the privilege to read other users' open files (CAP_SYS_PTRACE) only the user's own
/// sockets have an owner.
class LinuxSystemQueries final : public SystemQueries
{
public:
    /// `processRoot` is where the process file system is mounted.
    explicit LinuxSystemQueries(const std::string &processRoot = "/proc");

    std::optional<std::vector<InterfaceRow>> interfaceTable() override;
    std::optional<std::vector<TcpRow>> tcpTable() override;
    std::optional<std::vector<UdpRow>> udpTable() override;
    std::string imagePath(std::uint32_t pid) override;
    std::optional<std::string> processListName(std::uint32_t pid) override;

private:
    NetlinkSocket m_linkSocket;
    NetlinkSocket m_diagSocket;
    ProcessFiles m_processFiles;
    SocketOwners m_owners;
};
