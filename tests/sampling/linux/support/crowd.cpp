#include "tests/sampling/linux/support/crowd.h"

#include <sys/socket.h>
#include <unistd.h>

#include <iterator>

Crowd::Crowd(quint32 seed) : m_random(seed)
{
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, m_flight.data()) != 0)
        qFatal("socketpair failed");
    for (int i = 0; i < 4; ++i)
        m_members.emplace_back();
}

Crowd::~Crowd()
{
    ::close(m_flight[0]);
    ::close(m_flight[1]);
}

void Crowd::step()
{
    Member &member = anyMember();
    switch (m_random.bounded(20)) {
    case 0:
    case 1:
    case 2:
        listen(member);
        break;
    case 3:
    case 4:
        keep(member, member.agent.bindUdp());
        break;
    case 5:
    case 6:
        connect(member);
        break;
    case 7:
        member.files.push_back(member.agent.openFile().descriptor);
        break;
    case 8:
        if (!member.files.empty()) {
            member.agent.close(member.files.back());
            member.files.pop_back();
        }
        break;
    case 9:
    case 10:
    case 11:
        closeOne(member);
        break;
    case 12:
        move(member);
        break;
    case 13:
    case 14:
        pass(member);
        break;
    case 15:
        fork(member);
        break;
    case 16:
        member.agent.exec();
        break;
    case 17:
        end(member);
        break;
    case 18:
        replaceByNamesake(member);
        break;
    default:
        fly(member);
        break;
    }
}

std::vector<quint32> Crowd::pids() const
{
    std::vector<quint32> pids{static_cast<quint32>(::getpid())};
    for (const Member &member : m_members)
        pids.push_back(member.agent.pid());
    return pids;
}

int Crowd::serialOf(quint32 pid) const
{
    const auto serial = m_serials.find(pid);
    return serial == m_serials.end() ? 0 : serial->second;
}

void Crowd::keep(Member &member, const AgentReply &reply)
{
    member.sockets[reply.descriptor] = reply.inode;
}

void Crowd::listen(Member &member)
{
    const AgentReply reply = member.agent.listenTcp();
    keep(member, reply);
    m_listeners[reply.inode] = reply.port;
}

void Crowd::connect(Member &member)
{
    Member &server = anyMember();
    for (const auto &[descriptor, inode] : server.sockets) {
        if (!m_listeners.contains(inode))
            continue;
        const int listener = descriptor;
        keep(member, member.agent.connectTcp(m_listeners.at(inode)));
        keep(server, server.agent.accept(listener));
        return;
    }
}

std::map<int, quint32>::iterator Crowd::anySocket(Member &member)
{
    if (member.sockets.empty())
        return member.sockets.end();
    return std::next(member.sockets.begin(), m_random.bounded(int(member.sockets.size())));
}

void Crowd::closeOne(Member &member)
{
    const auto socket = anySocket(member);
    if (socket == member.sockets.end())
        return;
    member.agent.close(socket->first);
    member.sockets.erase(socket);
}

void Crowd::move(Member &member)
{
    const auto socket = anySocket(member);
    const int target = m_random.bounded(200, 400);
    if (socket == member.sockets.end() || member.sockets.contains(target))
        return;
    member.agent.moveDescriptor(socket->first, target);
    member.sockets[target] = socket->second;
    member.sockets.erase(socket);
}

void Crowd::pass(Member &member)
{
    Member &other = anyMember();
    const auto socket = anySocket(member);
    if (&other == &member || socket == member.sockets.end())
        return;
    m_shared.insert(socket->second);
    const auto [descriptor, inode] = *socket;
    keep(other, member.agent.passTo(other.agent, descriptor));
    if (m_random.bounded(2) == 0) {
        member.agent.close(descriptor);
        member.sockets.erase(descriptor);
    }
}

void Crowd::fork(Member &member)
{
    if (m_members.size() >= 8)
        return;
    const auto parent = static_cast<std::size_t>(&member - m_members.data());
    for (const auto &[descriptor, inode] : member.sockets)
        m_shared.insert(inode);
    m_members.push_back({member.agent.fork(), member.sockets, member.files});
    if (m_random.bounded(2) == 0)
        return;
    for (const auto &[descriptor, inode] : m_members[parent].sockets)
        m_members[parent].agent.close(descriptor);
    m_members[parent].sockets.clear();
}

void Crowd::end(Member &member)
{
    if (m_random.bounded(2) == 0)
        member.agent.exit();
    else
        member.agent.kill();
    const auto index = &member - m_members.data();
    m_members.erase(m_members.begin() + index);
    while (m_members.size() < 3)
        m_members.emplace_back();
}

void Crowd::replaceByNamesake(Member &member)
{
    const quint32 pid = member.agent.pid();
    member.agent.kill();
    m_members.erase(m_members.begin() + (&member - m_members.data()));
    m_canAim = aimAtPid(pid);
    m_members.emplace_back();
    if (m_members.back().agent.pid() == pid)
        ++m_reusedPids;
    ++m_serials[m_members.back().agent.pid()];
    listen(m_members.back());
}

void Crowd::fly(Member &member)
{
    const char octet = 0;
    if (m_flying) {
        char received = 0;
        FileDescriptor arrived;
        receiveRecord(m_flight[1], &received, sizeof received, arrived);
        m_flying = false;
        keep(member, member.agent.receive(arrived));
        return;
    }
    const auto socket = anySocket(member);
    if (socket == member.sockets.end())
        return;
    m_shared.insert(socket->second);
    const FileDescriptor copy = member.agent.take(socket->first);
    sendRecord(m_flight[0], &octet, sizeof octet, copy.get());
    m_flying = true;
    member.agent.close(socket->first);
    member.sockets.erase(socket);
}
