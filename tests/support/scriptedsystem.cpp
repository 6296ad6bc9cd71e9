#include "tests/support/scriptedsystem.h"

namespace {

class ScriptedQueries : public SystemQueries
{
public:
    std::optional<std::vector<InterfaceRow>> interfaceTable() override
    {
        return m_system.interfaces;
    }
    std::optional<std::vector<TcpRow>> tcpTable() override { return m_system.tcp; }
    std::optional<std::vector<UdpRow>> udpTable() override { return m_system.udp; }

    std::string imagePath(std::uint32_t pid) override
    {
        m_system.imagePathQuestions.append(pid);
        return m_system.imagePaths.value(pid).toStdString();
    }

    std::optional<std::string> processListName(std::uint32_t pid) override
    {
        const auto found = m_system.processNames.constFind(pid);
        if (found == m_system.processNames.constEnd())
            return std::nullopt;
        return found->toStdString();
    }

private:
    ScriptedSystem &m_system = ScriptedSystem::instance();
};

} // namespace

std::unique_ptr<SystemQueries> makeSystemQueries()
{
    return std::make_unique<ScriptedQueries>();
}

ScriptedSystem &ScriptedSystem::instance()
{
    static ScriptedSystem system;
    return system;
}

void ScriptedSystem::reset()
{
    *this = ScriptedSystem{};
}

void ScriptedSystem::setCounters(quint64 inOctets, quint64 outOctets)
{
    InterfaceRow row;
    row.up = true;
    row.description = "eth0";
    row.inOctets = inOctets;
    row.outOctets = outOctets;
    interfaces = {row};
}

void ScriptedSystem::addProcess(quint32 pid, const QString &name, int tcpSockets, int udpSockets)
{
    imagePaths.insert(pid, "/usr/bin/" + name.toUtf8());
    processNames.insert(pid, name.toUtf8());
    TcpRow tcpRow;
    tcpRow.pid = pid;
    tcpRow.state = 5;
    tcp->insert(tcp->end(), static_cast<std::size_t>(tcpSockets), tcpRow);
    UdpRow udpRow;
    udpRow.pid = pid;
    udp->insert(udp->end(), static_cast<std::size_t>(udpSockets), udpRow);
}

void ScriptedSystem::removeProcess(quint32 pid)
{
    imagePaths.remove(pid);
    processNames.remove(pid);
    std::erase_if(*tcp, [pid](const TcpRow &row) { return row.pid == pid; });
    std::erase_if(*udp, [pid](const UdpRow &row) { return row.pid == pid; });
}
