#include "sampling/linux/linuxsystemqueries.h"
#include "tests/sampling/linux/support/agent.h"
#include "tests/sampling/linux/support/descriptorlimit.h"
#include "tests/support/testmain.h"

#include <arpa/inet.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <QtTest>

#include <csignal>
#include <cstddef>

namespace {

/// As a limit it lets the process open no more files, whatever it closes meanwhile: those that it
/// began with have all descriptors below.
constexpr rlim_t standardFiles = STDERR_FILENO + 1;

quint32 ownerAt(const std::vector<TcpRow> &table, quint16 port)
{
    for (const TcpRow &row : table) {
        if (ntohs(row.localPort) == port)
            return row.pid;
    }
    return 0xffffffff;
}

/// Makes the kernel refuse new netlink sockets to the calling process, for good.
bool refuseNetlink()
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_socket, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AF_NETLINK, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

} // namespace

class SystemLimitsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutFreeDescriptorsEveryAnswerIsNothingAndTheNextTickTriesAgain()
    {
        const auto self = static_cast<std::uint32_t>(::getpid());
        const FileDescriptor listener = listenTcp(SocketKind::IPv4);
        LinuxSystemQueries queries;
        {
            const DescriptorLimit limit(standardFiles);
            QVERIFY(!queries.interfaceTable());
            QVERIFY(!queries.tcpTable());
            QVERIFY(!queries.udpTable());
            QVERIFY(!queries.processListName(self));
            QVERIFY2(!queries.imagePath(self).empty(), "reading a link takes no descriptor");
        }
        QVERIFY(queries.interfaceTable());
        const auto table = queries.tcpTable();
        QVERIFY(table);
        QCOMPARE(ownerAt(*table, portOf(listener.get())), self);
        QVERIFY(queries.udpTable());
        QVERIFY(queries.processListName(self));
    }

    void tablesGoOnWhenDescriptorsRunOutLater()
    {
        Agent agent;
        const AgentReply listener = agent.listenTcp();
        LinuxSystemQueries queries;
        QVERIFY(queries.interfaceTable());
        QVERIFY(queries.tcpTable());
        {
            const DescriptorLimit limit(standardFiles);
            QVERIFY(queries.interfaceTable());
            QVERIFY(queries.tcpTable());
        }
        QCOMPARE(ownerAt(*queries.tcpTable(), listener.port), agent.pid());
    }

    void aSocketFirstSeenWithoutFreeDescriptorsGetsItsOwnerOnTheNextTick()
    {
        Agent agent;
        Agent ending;
        ending.listenTcp();
        LinuxSystemQueries queries;
        QVERIFY(queries.tcpTable());
        const AgentReply listener = agent.listenTcp();
        // What is held open of this one is closed at the next table.
        QCOMPARE(::kill(static_cast<pid_t>(ending.pid()), SIGKILL), 0);
        QCOMPARE(::waitpid(static_cast<pid_t>(ending.pid()), nullptr, 0),
                 static_cast<pid_t>(ending.pid()));
        {
            const DescriptorLimit limit(standardFiles);
            const auto table = queries.tcpTable();
            QVERIFY(table);
            QCOMPARE(ownerAt(*table, listener.port), 0U);
        }
        QCOMPARE(ownerAt(*queries.tcpTable(), listener.port), agent.pid());
    }

    void refusedNetlinkSocketsAreFailedQueries()
    {
        // The refusal cannot be taken back: it is tried in a process of its own.
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            LinuxSystemQueries queries;
            const bool refused = refuseNetlink();
            const bool nothing = !queries.interfaceTable() && !queries.tcpTable()
                && !queries.udpTable() && !queries.interfaceTable();
            const bool processes = queries.processListName(static_cast<std::uint32_t>(::getpid()))
                && !queries.imagePath(static_cast<std::uint32_t>(::getpid())).empty();
            ::_exit(!refused ? 2 : (nothing && processes) ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }

    void aProcessMayEndBetweenTheTablesAndItsName()
    {
        Agent agent;
        const AgentReply listener = agent.listenTcp();
        LinuxSystemQueries queries;
        const auto table = queries.tcpTable();
        QVERIFY(table);
        const quint32 pid = ownerAt(*table, listener.port);
        QCOMPARE(pid, agent.pid());
        agent.kill();
        QCOMPARE(queries.imagePath(pid), std::string());
        QCOMPARE(queries.processListName(pid), std::nullopt);
    }
};

TOVAN_GUILESS_TEST(systemlimits_test, SystemLimitsTest)
#include "systemlimits_test.moc"
