#pragma once

#include "tests/sampling/linux/support/agent.h"

#include <QRandomGenerator>

#include <array>
#include <map>
#include <set>
#include <vector>

/// Processes that do at random all that moves sockets about.
class Crowd
{
public:
    explicit Crowd(quint32 seed);
    ~Crowd();
    Crowd(const Crowd &) = delete;
    Crowd &operator=(const Crowd &) = delete;

    /// Lets a random process do one thing at random.
    void step();

    /// Ids of all its processes, the test's own first.
    std::vector<quint32> pids() const;
    /// Whether more than one process could ever have held the socket.
    bool wasShared(quint32 inode) const { return m_shared.contains(inode); }
    int reusedPids() const { return m_reusedPids; }
    /// Whether the system lets process ids be chosen.
    bool canReusePids() const { return m_canAim; }
    /// Tells processes of the same id apart.
    int serialOf(quint32 pid) const;

private:
    struct Member
    {
        Agent agent;
        std::map<int, quint32> sockets; ///< inodes by descriptor
        std::vector<int> files;
    };

    Member &anyMember() { return m_members[m_random.bounded(quint32(m_members.size()))]; }

    static void keep(Member &member, const AgentReply &reply);
    void listen(Member &member);
    void connect(Member &member);

    std::map<int, quint32>::iterator anySocket(Member &member);
    void closeOne(Member &member);
    void move(Member &member);
    void pass(Member &member);
    void fork(Member &member);

    /// Ends a process, keeping a few alive.
    void end(Member &member);
    void replaceByNamesake(Member &member);

    /// Closes a socket that is underway in a message, held by no process, or lets it arrive.
    void fly(Member &member);

    QRandomGenerator m_random;
    std::vector<Member> m_members;
    std::map<quint32, quint16> m_listeners; ///< ports by inode
    std::set<quint32> m_shared;
    std::array<int, 2> m_flight{}; ///< both ends of the Unix socket that messages travel on
    bool m_flying = false;
    bool m_canAim = false;
    int m_reusedPids = 0;
    std::map<quint32, int> m_serials; ///< by process id
};
