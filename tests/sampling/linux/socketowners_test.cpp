#include "sampling/linux/socketowners.h"
#include "tests/sampling/linux/support/agent.h"
#include "tests/sampling/linux/support/processtree.h"
#include "tests/sampling/linux/support/unprivileged.h"
#include "tests/support/testmain.h"

#include <sys/stat.h>

#include <QtTest>

namespace {

std::vector<SocketRow> socketsOf(const QList<quint32> &inodes)
{
    std::vector<SocketRow> sockets;
    for (const quint32 inode : inodes)
        sockets.push_back({.inode = inode, .uid = ::geteuid()});
    return sockets;
}

QList<quint32> askFor(SocketOwners &owners, const QList<quint32> &inodes)
{
    const auto pids = owners.owners(SocketOwners::Table::Tcp, socketsOf(inodes));
    return QList<quint32>(pids.begin(), pids.end());
}

} // namespace

class SocketOwnersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSocketBelongsToTheProcessWithItsInodeAmongItsFiles()
    {
        ProcessTree tree;
        tree.addProcess(7);
        tree.addProcess(30);
        tree.setDescriptor(7, 0, "/dev/null");
        tree.setSocket(7, 3, 1001);
        tree.setSocket(30, 5, 1002);
        tree.setSocket(30, 6, 4294967295);
        SocketOwners owners(tree.root());
        QCOMPARE(askFor(owners, {1002, 1001, 4294967295}), (QList<quint32>{30, 7, 30}));
    }

    void whatNobodyHoldsHasNoOwner()
    {
        ProcessTree tree;
        tree.addProcess(7);
        tree.setSocket(7, 3, 1001);
        SocketOwners owners(tree.root());
        QCOMPARE(askFor(owners, {1002, 1001}), (QList<quint32>{0, 7}));
    }

    void aSocketWithoutFileHasNoOwner()
    {
        ProcessTree tree;
        tree.addProcess(7);
        tree.setSocket(7, 3, 0);
        SocketOwners owners(tree.root());
        QCOMPARE(askFor(owners, {0}), QList<quint32>{0});
    }

    void onlySocketsCount()
    {
        ProcessTree tree;
        tree.addProcess(7);
        const QByteArrayList others{"pipe:[1001]",        "/tmp/socket:[1001]", "socket:[1001",
                                    "socket:[1001]x",     "socket:[]",          "socket:[10x01]",
                                    "socket:[-1001]",     "anon_inode:[1001]",  "socket:1001",
                                    "socket:[4294968297]"};
        for (qsizetype i = 0; i < others.size(); ++i)
            tree.setDescriptor(7, static_cast<quint32>(i), others.at(i));
        SocketOwners owners(tree.root());
        QCOMPARE(askFor(owners, {1001}), QList<quint32>{0});
    }

    void ofSeveralHoldersTheLowestProcessIdIsTheOwner()
    {
        ProcessTree tree;
        const QList<quint32> pids{900, 40, 1000, 300};
        for (const quint32 pid : pids) {
            tree.addProcess(pid);
            tree.setSocket(pid, 4, 1001);
        }
        SocketOwners owners(tree.root());
        QCOMPARE(askFor(owners, {1001}), QList<quint32>{40});
    }

    void whatIsNoProcessIsPassedOver()
    {
        ProcessTree tree;
        tree.addProcess(7);
        tree.setSocket(7, 3, 1001);
        const QDir root(QString::fromStdString(tree.root()));
        QVERIFY(root.mkpath(QStringLiteral("self/fd")));
        QVERIFY(root.mkpath(QStringLiteral("99999999999/fd")));
        QVERIFY(root.mkpath(QStringLiteral("8")));
        SocketOwners owners(tree.root());
        QCOMPARE(askFor(owners, {1001}), QList<quint32>{7});
    }

    void unreadableFilesOfAProcessHideItAlone()
    {
        ProcessTree tree;
        tree.addProcess(7);
        tree.setSocket(7, 3, 1001);
        tree.addProcess(8);
        tree.setSocket(8, 3, 1002);
        tree.allowEveryone();
        QCOMPARE(::chmod(tree.path(7, "fd").constData(), 0), 0);
        {
            const Unprivileged user;
            SocketOwners owners(tree.root());
            QCOMPARE(askFor(owners, {1001, 1002}), (QList<quint32>{0, 8}));
        }
        QCOMPARE(::chmod(tree.path(7, "fd").constData(), 0755), 0);
    }

    void withoutAProcessFileSystemNothingHasAnOwner()
    {
        SocketOwners owners("/nowhere");
        QCOMPARE(askFor(owners, {1001, 1002}), (QList<quint32>{0, 0}));
        QCOMPARE(askFor(owners, {}), QList<quint32>{});
    }

    void tenThousandProcessesAreNoLimit()
    {
        constexpr quint32 count = 10'000;
        ProcessTree tree;
        QList<quint32> inodes;
        QList<quint32> expected;
        for (quint32 pid = 1; pid <= count; ++pid) {
            tree.addProcess(pid);
            tree.setSocket(pid, 3, 500'000 + pid);
            inodes.append(500'000 + pid);
            expected.append(pid);
        }
        SocketOwners owners(tree.root());
        QCOMPARE(askFor(owners, inodes), expected);
    }

    void realProcessesOwnTheSocketsThatTheyHold()
    {
        Agent first;
        Agent second;
        const quint32 firstSocket = first.listenTcp().inode;
        const quint32 secondSocket = second.bindUdp().inode;
        SocketOwners owners("/proc");
        QCOMPARE(askFor(owners, {secondSocket, firstSocket}),
                 (QList<quint32>{second.pid(), first.pid()}));
    }

    void aProcessThatEndedOwnsNothing()
    {
        Agent first;
        Agent second;
        const AgentReply socket = first.listenTcp();
        SocketOwners owners("/proc");
        QCOMPARE(askFor(owners, {socket.inode}), QList<quint32>{first.pid()});
        first.passTo(second, socket.descriptor);
        first.kill();
        QCOMPARE(askFor(owners, {socket.inode}), QList<quint32>{second.pid()});
    }
};

TOVAN_GUILESS_TEST(socketowners_test, SocketOwnersTest)
#include "socketowners_test.moc"
