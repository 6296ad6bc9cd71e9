#include "sampling/linux/socketowners.h"
#include "tests/sampling/linux/support/descriptorlimit.h"
#include "tests/sampling/linux/support/openwatch.h"
#include "tests/sampling/linux/support/processtree.h"
#include "tests/sampling/linux/support/unprivileged.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QtTest>

#include <numeric>

using namespace Qt::StringLiterals;

namespace {

using Table = SocketOwners::Table;
using Pids = QList<quint32>;

/// A process file system, the owners found in it, and which processes' files were searched.
class Machine
{
public:
    void addProcess(quint32 pid, quint64 startTime = 1000)
    {
        tree.addProcess(pid, "program", startTime);
        m_watch.add(pid, tree.path(pid, "fd"));
    }

    Pids ask(Table table, const QList<quint32> &inodes, uint uid = ::geteuid())
    {
        std::vector<SocketRow> sockets;
        for (const quint32 inode : inodes)
            sockets.push_back({.inode = inode, .uid = uid});
        const auto pids = owners.owners(table, sockets);
        return Pids(pids.begin(), pids.end());
    }
    Pids askTcp(const QList<quint32> &inodes) { return ask(Table::Tcp, inodes); }
    Pids askUdp(const QList<quint32> &inodes) { return ask(Table::Udp, inodes); }

    /// Processes whose files were searched since the last call.
    Pids searched() { return m_watch.opened(); }

    ProcessTree tree;
    SocketOwners owners{tree.root()};

private:
    OpenWatch m_watch;
};

/// Processes 10, 11, ... with `sockets` TCP sockets each, of inodes pid * 100 + 1 and up.
QList<quint32> populate(Machine &machine, quint32 processes, quint32 sockets)
{
    QList<quint32> inodes;
    for (quint32 pid = 10; pid < 10 + processes; ++pid) {
        machine.addProcess(pid);
        for (quint32 i = 1; i <= sockets; ++i) {
            machine.tree.setSocket(pid, 2 + i, pid * 100 + i);
            inodes.append(pid * 100 + i);
        }
    }
    return inodes;
}

qsizetype openDescriptors()
{
    return QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System | QDir::Dirs).size();
}

} // namespace

class RememberedOwnersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSteadyTableIsAnsweredWithoutASearch()
    {
        Machine machine;
        const QList<quint32> inodes = populate(machine, 5, 4);
        const Pids first = machine.askTcp(inodes);
        QCOMPARE(machine.searched(), (Pids{10, 11, 12, 13, 14}));
        for (int tick = 0; tick < 40; ++tick)
            QCOMPARE(machine.askTcp(inodes), first);
        QCOMPARE(machine.searched(), Pids{});
    }

    void bothTablesOfARoundTakeOneWalk()
    {
        Machine machine;
        QList<quint32> tcp = populate(machine, 5, 2);
        QList<quint32> udp;
        for (quint32 pid = 10; pid < 15; ++pid)
            udp.append(tcp.takeAt(static_cast<qsizetype>(pid - 10)));
        QVERIFY(!machine.askTcp(tcp).contains(0));
        QVERIFY(!machine.askUdp(udp).contains(0));
        QCOMPARE(machine.searched(), (Pids{10, 11, 12, 13, 14}));
        // As when the user looks at an application right after a tick.
        QVERIFY(!machine.askTcp(tcp).contains(0));
        QVERIFY(!machine.askUdp(udp).contains(0));
        QCOMPARE(machine.searched(), Pids{});
    }

    void theSecondTableGoesOnWhereTheFirstStopped()
    {
        Machine machine;
        populate(machine, 5, 2);
        QCOMPARE(machine.askTcp({1001, 1101}), (Pids{10, 11}));
        QCOMPARE(machine.searched(), (Pids{10, 11}));
        QCOMPARE(machine.askUdp({1002, 1301}), (Pids{10, 13}));
        QCOMPARE(machine.searched(), (Pids{12, 13}));
    }

    void aSocketAtTheNumberOfAClosedOneIsFoundWithoutASearch()
    {
        Machine machine;
        const QList<quint32> inodes = populate(machine, 5, 4);
        machine.askTcp(inodes);
        machine.searched();
        QList<quint32> after = inodes;
        for (quint32 pid = 10; pid < 15; ++pid) {
            machine.tree.setSocket(pid, 4, pid * 100 + 50);
            after.replace(after.indexOf(pid * 100 + 2), pid * 100 + 50);
        }
        QVERIFY(!machine.askTcp(after).contains(0));
        QCOMPARE(machine.searched(), Pids{});
    }

    void aNewSocketIsSearchedForAmongNewFilesOfOwnersFirst()
    {
        Machine machine;
        QList<quint32> inodes = populate(machine, 3, 2);
        machine.addProcess(5);
        machine.askTcp(inodes);
        machine.searched();
        machine.tree.setSocket(12, 30, 9999);
        // Looked at when the owner was found; only a search of everything looks again.
        machine.tree.setSocket(10, 3, 8888);
        QCOMPARE(machine.askTcp(inodes << 9999).last(), 12U);
        QVERIFY(!machine.searched().contains(5));
    }

    void aSocketAmongFilesThatWereThereIsFoundInTheEnd()
    {
        Machine machine;
        QList<quint32> inodes = populate(machine, 3, 2);
        machine.addProcess(5);
        machine.tree.setDescriptor(5, 7, "/dev/null");
        machine.tree.setDescriptor(11, 8, "/dev/null");
        machine.askTcp(inodes);
        machine.searched();
        machine.tree.setSocket(5, 7, 9998);
        machine.tree.setSocket(11, 8, 9999);
        const Pids pids = machine.askTcp(inodes << 9998 << 9999);
        QCOMPARE(pids.at(6), 5U);
        QCOMPARE(pids.at(7), 11U);
    }

    void theFirstHolderStaysTheOwner()
    {
        Machine machine;
        populate(machine, 3, 1);
        QCOMPARE(machine.askTcp({1201}), Pids{12});
        machine.tree.setSocket(10, 9, 1201);
        for (quint32 tick = 0; tick < 2 * SocketOwners::recheckPeriod; ++tick)
            QCOMPARE(machine.askTcp({1201}), Pids{12});
    }

    void anOwnerThatMovedItsSocketStaysTheOwner()
    {
        Machine machine;
        populate(machine, 3, 1);
        QCOMPARE(machine.askTcp({1201}), Pids{12});
        machine.tree.setSocket(10, 9, 1201);
        machine.tree.closeDescriptor(12, 3);
        machine.tree.setSocket(12, 40, 1201);
        for (quint32 tick = 0; tick < 2 * SocketOwners::recheckPeriod; ++tick)
            QCOMPARE(machine.askTcp({1201}), Pids{12});
    }

    void anOwnerThatMovedItsSocketStaysTheOwnerBesideOthersThatDid()
    {
        Machine machine;
        populate(machine, 3, 1);
        // The same tick looks both up again.
        const quint32 other = 1201 + SocketOwners::recheckPeriod;
        machine.tree.setSocket(11, 5, other);
        QCOMPARE(machine.askTcp({1201, other}), (Pids{12, 11}));
        machine.tree.setSocket(11, 9, 1201);
        machine.tree.setDescriptor(12, 3, "/dev/null");
        machine.tree.setSocket(12, 40, 1201);
        machine.tree.setDescriptor(11, 5, "/dev/null");
        machine.tree.setSocket(11, 41, other);
        for (quint32 tick = 0; tick < 2 * SocketOwners::recheckPeriod; ++tick)
            QCOMPARE(machine.askTcp({1201, other}), (Pids{12, 11}));
    }

    void anOwnerThatClosedASharedSocketIsSeenWithinTheRecheckPeriod()
    {
        for (quint32 inode = 5000; inode < 5000 + SocketOwners::recheckPeriod; ++inode) {
            Machine machine;
            populate(machine, 2, 0);
            machine.tree.setSocket(10, 5, inode);
            machine.tree.setSocket(11, 5, inode);
            QCOMPARE(machine.askTcp({inode}), Pids{10});
            // Another file at its place: the number of files tells nothing.
            machine.tree.setDescriptor(10, 5, "/dev/null");
            quint32 ticks = 1;
            while (machine.askTcp({inode}) == Pids{10} && ticks <= SocketOwners::recheckPeriod)
                ++ticks;
            QCOMPARE_LE(ticks, SocketOwners::recheckPeriod);
            QCOMPARE(machine.askTcp({inode}), Pids{11});
        }
    }

    void theEndOfAnOwnerIsSeenAtOnce()
    {
        Machine machine;
        populate(machine, 3, 1);
        machine.tree.setSocket(12, 9, 1001);
        QCOMPARE(machine.askTcp({1001, 1101}), (Pids{10, 11}));
        machine.tree.removeProcess(10);
        QCOMPARE(machine.askTcp({1001, 1101}), (Pids{12, 11}));
    }

    void aReusedProcessIdIsAnotherProcess()
    {
        Machine machine;
        populate(machine, 3, 1);
        machine.tree.setSocket(12, 9, 1001);
        QCOMPARE(machine.askTcp({1001}), Pids{10});
        machine.addProcess(10, 2000);
        QCOMPARE(machine.askTcp({1001}), Pids{12});
    }

    void aProcessIsKnownAgainByItsStartTime()
    {
        Machine machine;
        machine.addProcess(12);
        machine.tree.setSocket(12, 3, 1201);
        QCOMPARE(machine.askTcp({1201}), Pids{12});
        // The kernel drops folders from its cache and then numbers them anew.
        machine.addProcess(12);
        machine.tree.setSocket(12, 3, 1201);
        machine.addProcess(10);
        machine.tree.setSocket(10, 3, 1201);
        machine.searched();
        QCOMPARE(machine.askTcp({1201}), Pids{12});
        QCOMPARE(machine.searched(), Pids{});
    }

    /// Of 64 descriptors the folders of 16 processes and the links to their executables take 32.
    void withFewDescriptorsMostProcessesAreAskedByPath()
    {
        const DescriptorLimit limit(64);
        Machine machine;
        const QList<quint32> inodes = populate(machine, 30, 1);
        for (quint32 pid = 10; pid < 40; ++pid)
            machine.tree.setExecutable(pid, "/usr/bin/program");
        const Pids first = machine.askTcp(inodes);
        const auto held = openDescriptors();

        for (const quint32 ended : {10U, 39U}) {
            machine.tree.setSocket(20, 50 + ended, ended * 100 + 1);
            machine.tree.removeProcess(ended);
            QCOMPARE(machine.askTcp({ended * 100 + 1, 1501, 3501}), (Pids{20, 15, 35}));
        }
        machine.askTcp({});
        QCOMPARE(held - openDescriptors(), 32);
        QCOMPARE(machine.askTcp(inodes.mid(1, 28)), first.mid(1, 28));
        QCOMPARE(openDescriptors(), held);
    }

    void aStartTimeIsReadBehindAnyName()
    {
        Machine machine;
        const QByteArrayList names{"a b", "(x) S 1", ") 1 2 3 4 5 6 7 8", "", "\n"};
        for (const QByteArray &name : names) {
            machine.tree.addProcess(7, name, 123456789012);
            QCOMPARE(ProcessDirectory(machine.tree.root()).startTime(7), 123456789012U);
        }
    }

    void unplaceableSocketsAreRetriedSeldom()
    {
        Machine machine;
        populate(machine, 4, 1);
        QCOMPARE(machine.askTcp({777}), Pids{0});
        QCOMPARE(machine.searched().size(), 4);
        quint32 walks = 0;
        constexpr quint32 ticks = 4 * SocketOwners::retryPeriod;
        for (quint32 tick = 0; tick < ticks; ++tick) {
            QCOMPARE(machine.askTcp({777}), Pids{0});
            walks += machine.searched().isEmpty() ? 0 : 1;
        }
        QCOMPARE(walks, ticks / SocketOwners::retryPeriod);

        machine.tree.setSocket(11, 9, 777);
        quint32 waited = 1;
        while (machine.askTcp({777}) == Pids{0} && waited <= SocketOwners::retryPeriod)
            ++waited;
        QCOMPARE(machine.askTcp({777}), Pids{11});
    }

    void unplaceableSocketsAreLookedForInEveryNewProcessAndThereAlone()
    {
        Machine machine;
        populate(machine, 4, 1);
        QCOMPARE(machine.askTcp({777, 1001}), (Pids{0, 10}));
        machine.askTcp({777, 1001});
        machine.searched();
        machine.addProcess(50);
        machine.tree.setSocket(50, 3, 777);
        QCOMPARE(machine.askTcp({777, 1001}), (Pids{50, 10}));
        QCOMPARE(machine.searched(), Pids{50});
    }

    void aSocketOpenedBetweenTheTablesOfARoundIsFoundOnTheNextTick()
    {
        Machine machine;
        populate(machine, 3, 1);
        machine.askTcp({555, 1001});
        machine.tree.setSocket(10, 9, 777);
        QCOMPARE(machine.askUdp({777}), Pids{0});
        machine.askTcp({555, 1001});
        QCOMPARE(machine.askUdp({777}), Pids{10});
    }

    void afterASecondTableThatCameLateTheNextOneBeginsARoundHoweverSoon()
    {
        Machine machine;
        populate(machine, 3, 2);
        machine.askTcp({1001, 555});
        QTest::qSleep(20); // longer than a round takes, as on a machine that is busy
        machine.askUdp({1101, 556});
        machine.tree.setSocket(10, 9, 777);
        QCOMPARE(machine.askTcp({1001, 777}), (Pids{10, 10}));
    }

    void foreignSocketsCauseNoSearchWhereFilesAreRefused()
    {
        Machine machine;
        populate(machine, 10, 1);
        machine.tree.allowEveryone();
        for (quint32 pid = 11; pid < 20; ++pid)
            QVERIFY(QFile::setPermissions(QString::fromUtf8(machine.tree.path(pid, "fd")), {}));
        machine.tree.setSocket(10, 20, 5555);
        constexpr uint someoneElse = 4711;
        {
            const Unprivileged user;
            QCOMPARE(machine.ask(Table::Tcp, {1001, 1101}, someoneElse), (Pids{10, 0}));
            machine.searched();
            for (quint32 tick = 2; tick < SocketOwners::retryPeriod; ++tick) {
                // Every tick brings another one.
                QCOMPARE(machine.ask(Table::Tcp, {1001, 1101, 6000 + tick}, someoneElse),
                         (Pids{10, 0, 0}));
                QCOMPARE(machine.searched(), Pids{});
            }
            // The user's own are searched for all the same.
            QCOMPARE(machine.ask(Table::Tcp, {5555}), Pids{10});
            QVERIFY(!machine.searched().isEmpty());
        }
        for (quint32 pid = 11; pid < 20; ++pid)
            QFile::setPermissions(QString::fromUtf8(machine.tree.path(pid, "fd")),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void memoryIsBoundedByTheLastTables()
    {
        Machine machine;
        const QList<quint32> inodes = populate(machine, 150, 10);
        machine.askTcp(inodes);
        machine.askUdp({});
        const std::size_t size = machine.owners.heapSize();
        QCOMPARE_LT(size / static_cast<std::size_t>(inodes.size()), std::size_t(100));
        for (int tick = 0; tick < 100; ++tick) {
            machine.askTcp(inodes);
            machine.askUdp({});
        }
        QCOMPARE_LE(machine.owners.heapSize(), size);
        machine.askTcp({1001});
        machine.askUdp({});
        QCOMPARE_LT(machine.owners.heapSize(), size / 2);
    }

    void socketsThatLeftTheTableAreForgotten()
    {
        Machine machine;
        populate(machine, 2, 1);
        QCOMPARE(machine.askTcp({1101}), Pids{11});
        QCOMPARE(machine.askTcp({}), Pids{});
        machine.tree.setSocket(10, 9, 1101);
        QCOMPARE(machine.askTcp({1101}), Pids{10});
    }
};

TOVAN_GUILESS_TEST(rememberedowners_test, RememberedOwnersTest)
#include "rememberedowners_test.moc"
