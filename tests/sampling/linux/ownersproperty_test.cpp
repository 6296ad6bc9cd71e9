#include "sampling/linux/netlinksocket.h"
#include "sampling/linux/socketowners.h"
#include "tests/sampling/linux/support/agent.h"
#include "tests/sampling/linux/support/networknamespace.h"

#include <fcntl.h>
#include <linux/netlink.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <QtTest>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <set>

namespace {

using Holders = std::map<quint32, std::set<quint32>>;

/// Who holds which socket, by a plain walk through the open files of `pids`.
Holders freshWalk(const std::vector<quint32> &pids)
{
    Holders holders;
    for (const quint32 pid : pids) {
        std::error_code error;
        const auto folder = "/proc/" + std::to_string(pid) + "/fd";
        for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
            const auto target = std::filesystem::read_symlink(entry.path(), error).string();
            if (target.starts_with("socket:["))
                holders[static_cast<quint32>(std::stoul(target.substr(8)))].insert(pid);
        }
    }
    return holders;
}

/// Lets the next process have this id; false where the system does not allow it.
bool aimAtPid(quint32 pid)
{
    const FileDescriptor file(::open("/proc/sys/kernel/ns_last_pid", O_WRONLY | O_CLOEXEC));
    const std::string text = std::to_string(pid - 1);
    return file
        && ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

/// Processes that do at random all that moves sockets about.
class Crowd
{
public:
    explicit Crowd(quint32 seed) : m_random(seed)
    {
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, m_flight.data()) != 0)
            qFatal("socketpair failed");
        for (int i = 0; i < 4; ++i)
            m_members.emplace_back();
    }
    ~Crowd()
    {
        ::close(m_flight[0]);
        ::close(m_flight[1]);
    }
    Crowd(const Crowd &) = delete;
    Crowd &operator=(const Crowd &) = delete;

    void step()
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

    std::vector<quint32> pids() const
    {
        std::vector<quint32> pids{static_cast<quint32>(::getpid())};
        for (const Member &member : m_members)
            pids.push_back(member.agent.pid());
        return pids;
    }
    /// Whether more than one process could ever have held the socket.
    bool wasShared(quint32 inode) const { return m_shared.contains(inode); }
    int reusedPids() const { return m_reusedPids; }
    /// Whether the system lets process ids be chosen.
    bool canReusePids() const { return m_canAim; }
    /// Tells processes of the same id apart.
    int serialOf(quint32 pid) const
    {
        const auto serial = m_serials.find(pid);
        return serial == m_serials.end() ? 0 : serial->second;
    }

private:
    struct Member
    {
        Agent agent;
        std::map<int, quint32> sockets; ///< inodes by descriptor
        std::vector<int> files;
    };

    Member &anyMember() { return m_members[m_random.bounded(quint32(m_members.size()))]; }

    static void keep(Member &member, const AgentReply &reply)
    {
        member.sockets[reply.descriptor] = reply.inode;
    }

    void listen(Member &member)
    {
        const AgentReply reply = member.agent.listenTcp();
        keep(member, reply);
        m_listeners[reply.inode] = reply.port;
    }

    void connect(Member &member)
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

    std::map<int, quint32>::iterator anySocket(Member &member)
    {
        if (member.sockets.empty())
            return member.sockets.end();
        return std::next(member.sockets.begin(), m_random.bounded(int(member.sockets.size())));
    }

    void closeOne(Member &member)
    {
        const auto socket = anySocket(member);
        if (socket == member.sockets.end())
            return;
        member.agent.close(socket->first);
        member.sockets.erase(socket);
    }

    void move(Member &member)
    {
        const auto socket = anySocket(member);
        const int target = m_random.bounded(200, 400);
        if (socket == member.sockets.end() || member.sockets.contains(target))
            return;
        member.agent.moveDescriptor(socket->first, target);
        member.sockets[target] = socket->second;
        member.sockets.erase(socket);
    }

    void pass(Member &member)
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

    void fork(Member &member)
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

    /// Ends a process, keeping a few alive.
    void end(Member &member)
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

    void replaceByNamesake(Member &member)
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

    /// Closes a socket that is underway in a message, held by no process, or lets it arrive.
    void fly(Member &member)
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

/// Holds the answers of one table against fresh walks, tick by tick.
class Judge
{
public:
    void compare(const std::vector<SocketRow> &sockets, const std::vector<quint32> &owners,
                 const Holders &holders, const Crowd &crowd)
    {
        std::map<quint32, Record> records;
        for (std::size_t i = 0; i < sockets.size(); ++i) {
            const quint32 inode = sockets[i].inode;
            const quint32 owner = owners[i];
            const auto held = holders.find(inode);
            if (inode == 0) {
                QCOMPARE(owner, 0U);
                continue;
            }
            // Of another program's sockets, where the network is not the test's own, nothing is
            // known.
            if (held == holders.end() && !crowd.wasShared(inode))
                continue;
            Record record = m_records.contains(inode) ? m_records.at(inode) : Record{};
            const bool right = held == holders.end() ? owner == 0 : held->second.contains(owner);
            if (!crowd.wasShared(inode)) {
                QVERIFY2(right, qPrintable(describe(inode, owner)));
            }
            if (record.right && record.owner != 0 && record.serial == crowd.serialOf(record.owner)
                && held != holders.end() && held->second.contains(record.owner))
                QVERIFY2(owner == record.owner, "an owner that still holds its socket stays");
            record.wrongTicks = right || owner == 0 ? 0 : record.wrongTicks + 1;
            record.missingTicks = right || owner != 0 ? 0 : record.missingTicks + 1;
            // The tick that finds an owner out is the first one after its wrong ticks.
            QVERIFY2(record.wrongTicks < int(SocketOwners::recheckPeriod),
                     qPrintable(describe(inode, owner)));
            QVERIFY2(record.missingTicks < int(SocketOwners::retryPeriod),
                     qPrintable(describe(inode, owner)));
            longestWrong = std::max(longestWrong, record.wrongTicks);
            longestMissing = std::max(longestMissing, record.missingTicks);
            comparisons += 1;
            record.owner = owner;
            record.serial = crowd.serialOf(owner);
            record.right = right;
            records.emplace(inode, record);
        }
        m_records = std::move(records);
    }

    int longestWrong = 0;
    int longestMissing = 0;
    int comparisons = 0;

private:
    struct Record
    {
        quint32 owner = 0;
        int serial = 0;
        bool right = false;
        int wrongTicks = 0; ///< in a row, with an owner that does not hold the socket
        int missingTicks = 0; ///< in a row, without an owner though there is a holder
    };

    static QString describe(quint32 inode, quint32 owner)
    {
        return QStringLiteral("socket %1 is said to be held by %2").arg(inode).arg(owner);
    }

    std::map<quint32, Record> m_records;
};

} // namespace

class OwnersPropertyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rememberedOwnersAreThoseOfAFreshWalkWithinTheStatedTicks_data()
    {
        QTest::addColumn<quint32>("seed");
        for (const quint32 seed : {1U, 20U, 300U, 4000U})
            QTest::addRow("seed %u", seed) << seed;
    }

    void rememberedOwnersAreThoseOfAFreshWalkWithinTheStatedTicks()
    {
        QFETCH(quint32, seed);
        constexpr int ticks = 1200;
        Crowd crowd(seed);
        QRandomGenerator pace(seed);
        NetlinkSocket diag([] { return openNetlinkSocket(NETLINK_SOCK_DIAG); });
        SocketOwners owners("/proc");
        Judge tcpJudge;
        Judge udpJudge;
        for (int tick = 0; tick < ticks; ++tick) {
            for (int steps = pace.bounded(4); steps > 0; --steps)
                crowd.step();
            const auto tcp = dumpSockets(diag, IPPROTO_TCP);
            QVERIFY(tcp);
            const auto tcpOwners = owners.owners(SocketOwners::Table::Tcp, *tcp);
            const auto udp = dumpSockets(diag, IPPROTO_UDP);
            QVERIFY(udp);
            const auto udpOwners = owners.owners(SocketOwners::Table::Udp, *udp);
            const Holders holders = freshWalk(crowd.pids());
            tcpJudge.compare(*tcp, tcpOwners, holders, crowd);
            udpJudge.compare(*udp, udpOwners, holders, crowd);
            if (QTest::currentTestFailed()) {
                qWarning("at tick %d", tick);
                return;
            }
        }
        QCOMPARE_GT(tcpJudge.comparisons, 1000);
        QCOMPARE_GT(udpJudge.comparisons, 100);
        // The random walk is worth something only if it does go where owners are wrong for a while.
        QCOMPARE_GT(tcpJudge.longestWrong, 0);
        qInfo("wrong for at most %d ticks, missing for at most %d, %d process ids reused",
              std::max(tcpJudge.longestWrong, udpJudge.longestWrong),
              std::max(tcpJudge.longestMissing, udpJudge.longestMissing), crowd.reusedPids());
        if (crowd.canReusePids())
            QCOMPARE_GT(crowd.reusedPids(), 0);
    }
};

int main(int argc, char *argv[])
{
    enterOwnNetwork();
    QCoreApplication app(argc, argv);
    OwnersPropertyTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "ownersproperty_test.moc"
