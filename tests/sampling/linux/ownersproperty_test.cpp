#include "sampling/linux/netlinksocket.h"
#include "sampling/linux/socketowners.h"
#include "tests/sampling/linux/support/crowd.h"
#include "tests/sampling/linux/support/networknamespace.h"

#include <linux/netlink.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <QtTest>

#include <algorithm>
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

int ownersproperty_test(int argc, char *argv[])
{
    enterOwnNetwork();
    QCoreApplication app(argc, argv);
    OwnersPropertyTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "ownersproperty_test.moc"
