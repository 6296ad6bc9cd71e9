#include "sampling/linux/linuxsystemqueries.h"
#include "sampling/linux/sockettable.h"
#include "tests/sampling/linux/support/agent.h"
#include "tests/sampling/linux/support/fakekernel.h"
#include "tests/sampling/linux/support/networknamespace.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <QtTest>

namespace {

/// Rows of the table at a local port in host byte order.
template <typename Row>
QList<Row> rowsAt(const std::optional<std::vector<Row>> &table, quint16 port)
{
    QList<Row> rows;
    if (!table)
        qFatal("no table");
    for (const Row &row : *table) {
        if (ntohs(row.localPort) == port)
            rows.append(row);
    }
    return rows;
}

/// State of the socket at `port` that is connected to `remotePort`; 0 when there is none.
quint32 stateOf(const std::optional<std::vector<TcpRow>> &table, quint16 port, quint16 remotePort)
{
    const QList<TcpRow> rows = rowsAt(table, port);
    for (const TcpRow &row : rows) {
        if (ntohs(row.remotePort) == remotePort)
            return row.state;
    }
    return 0;
}

const quint32 loopback = htonl(INADDR_LOOPBACK);

/// A dump's entry; on ::ffff:0.0.0.0 if it is of IPv6.
QByteArray entry(quint16 type, quint32 sequence, quint8 family, quint16 port)
{
    inet_diag_msg entry{};
    entry.idiag_family = family;
    entry.id.idiag_sport = port;
    if (family == AF_INET6)
        entry.id.idiag_src[2] = htonl(0xffff);
    return FakeKernel::message(type, sequence,
                               QByteArray(reinterpret_cast<const char *>(&entry), sizeof entry));
}

/// Local ports of what a TCP dump over `socket` brings.
QList<int> portsOfDump(NetlinkSocket &socket)
{
    QList<int> ports;
    const auto rows = dumpSockets(socket, IPPROTO_TCP);
    if (!rows)
        return {-1};
    for (const SocketRow &row : *rows)
        ports.append(row.localPort);
    return ports;
}

} // namespace

/// Sockets are told by their ports; in a network of the test's own there are no others.
class SocketTableTest : public QObject
{
    Q_OBJECT

public:
    explicit SocketTableTest(bool ownNetwork) : m_ownNetwork(ownNetwork) { }

private Q_SLOTS:
    void init() { m_queries.emplace(); }

    void withoutSocketsBothTablesAreEmptyAndNoFailure()
    {
        const auto tcp = m_queries->tcpTable();
        const auto udp = m_queries->udpTable();
        QVERIFY(tcp);
        QVERIFY(udp);
        if (m_ownNetwork) {
            QVERIFY(tcp->empty());
            QVERIFY(udp->empty());
        }
    }

    void aListenerHasNoRemoteEndpoint()
    {
        Agent agent;
        const AgentReply listener = agent.listenTcp();
        const auto rows = rowsAt(m_queries->tcpTable(), listener.port);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().pid, agent.pid());
        QCOMPARE(rows.first().localAddress, loopback);
        QCOMPARE(rows.first().localPort, htons(listener.port));
        QCOMPARE(rows.first().remoteAddress, 0U);
        QCOMPARE(rows.first().remotePort, 0);
        QCOMPARE(rows.first().state, 2U);
    }

    void bothEndsOfAConnectionAreRowsOfTheirOwners()
    {
        Agent server;
        Agent client;
        const AgentReply listener = server.listenTcp();
        const AgentReply connection = client.connectTcp(listener.port);
        server.accept(listener.descriptor);
        const auto table = m_queries->tcpTable();
        QCOMPARE(rowsAt(table, listener.port).size(), 2);

        const auto clientRows = rowsAt(table, connection.port);
        QCOMPARE(clientRows.size(), 1);
        QCOMPARE(clientRows.first().pid, client.pid());
        QCOMPARE(clientRows.first().remoteAddress, loopback);
        QCOMPARE(clientRows.first().remotePort, htons(listener.port));
        QCOMPARE(clientRows.first().state, 5U);
        QCOMPARE(stateOf(table, listener.port, connection.port), 5U);
        if (m_ownNetwork)
            QCOMPARE(table->size(), std::size_t(3));
    }

    void aConnectionThatNobodyAcceptedYetHasNoOwner()
    {
        Agent server;
        Agent client;
        const AgentReply listener = server.listenTcp();
        const AgentReply connection = client.connectTcp(listener.port);
        const auto rows = rowsAt(m_queries->tcpTable(), listener.port);
        QCOMPARE(rows.size(), 2);
        for (const TcpRow &row : rows)
            QCOMPARE(row.pid, ntohs(row.remotePort) == connection.port ? 0U : server.pid());
    }

    void onlyBoundUdpSocketsAreListed()
    {
        Agent agent;
        const AgentReply bound = agent.bindUdp();
        const FileDescriptor unbound(::socket(AF_INET, SOCK_DGRAM, 0));
        const auto table = m_queries->udpTable();
        const auto rows = rowsAt(table, bound.port);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().pid, agent.pid());
        QCOMPARE(rows.first().localAddress, loopback);
        if (m_ownNetwork)
            QCOMPARE(table->size(), std::size_t(1));
    }

    void aConnectedUdpSocketIsABoundOne()
    {
        const FileDescriptor peer = bindUdp(SocketKind::IPv4);
        const FileDescriptor socket = bindUdp(SocketKind::IPv4);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = loopback;
        address.sin_port = htons(portOf(peer.get()));
        QCOMPARE(
            ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address),
            0);
        const auto rows = rowsAt(m_queries->udpTable(), portOf(socket.get()));
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().pid, static_cast<quint32>(::getpid()));
    }

    void aDualStackListenerIsNeverShownButItsIPv4ConnectionsAre()
    {
        Agent server;
        Agent client;
        const AgentReply listener = server.listenTcp(SocketKind::DualStack);
        const AgentReply connection = client.connectTcp(listener.port);
        server.accept(listener.descriptor);
        const auto rows = rowsAt(m_queries->tcpTable(), listener.port);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().pid, server.pid());
        QCOMPARE(rows.first().localAddress, loopback);
        QCOMPARE(rows.first().remoteAddress, loopback);
        QCOMPARE(ntohs(rows.first().remotePort), connection.port);
        QCOMPARE(rows.first().state, 5U);
    }

    void anIPv6SocketOnAMappedAddressIsAnIPv4Row()
    {
        Agent agent;
        const AgentReply tcp = agent.listenTcp(SocketKind::Mapped);
        const AgentReply udp = agent.bindUdp(SocketKind::Mapped);
        const AgentReply connection = agent.connectTcp(tcp.port, SocketKind::Mapped);
        const auto table = m_queries->tcpTable();
        QCOMPARE(stateOf(table, tcp.port, 0), 2U);
        QCOMPARE(rowsAt(table, connection.port).size(), 1);
        QCOMPARE(rowsAt(table, connection.port).first().remoteAddress, loopback);
        const auto udpRows = rowsAt(m_queries->udpTable(), udp.port);
        QCOMPARE(udpRows.size(), 1);
        QCOMPARE(udpRows.first().localAddress, loopback);
    }

    void otherIPv6SocketsNeverAppear()
    {
        Agent agent;
        const AgentReply listener = agent.listenTcp(SocketKind::IPv6);
        const AgentReply connection = agent.connectTcp(listener.port, SocketKind::IPv6);
        const AgentReply udp = agent.bindUdp(SocketKind::IPv6);
        const AgentReply dualUdp = agent.bindUdp(SocketKind::DualStack);
        const auto tcpTable = m_queries->tcpTable();
        const auto udpTable = m_queries->udpTable();
        QVERIFY(rowsAt(tcpTable, listener.port).isEmpty());
        QVERIFY(rowsAt(tcpTable, connection.port).isEmpty());
        QVERIFY(rowsAt(udpTable, udp.port).isEmpty());
        QVERIFY(rowsAt(udpTable, dualUdp.port).isEmpty());
    }

    void oneDumpOfBothFamiliesHasIPv4First()
    {
        FakeKernel kernel;
        NetlinkSocket socket([&] {
            FileDescriptor peer = kernel.connectPeer();
            kernel.say(entry(TCPDIAG_GETSOCK, 1, AF_INET, 1)
                       + entry(TCPDIAG_GETSOCK, 1, AF_INET6, 2)
                       + entry(TCPDIAG_GETSOCK, 1, AF_INET, 3) + FakeKernel::done(1));
            return peer;
        });
        QCOMPARE(portsOfDump(socket), (QList{1, 3, 2}));
    }

    void aKernelWithoutTheOlderRequestIsAskedForEachFamily()
    {
        FakeKernel kernel;
        int openings = 0;
        NetlinkSocket socket([&] {
            FileDescriptor peer = kernel.connectPeer();
            if (++openings == 1) {
                kernel.say(entry(TCPDIAG_GETSOCK, 1, AF_INET, 7)
                           + FakeKernel::message(NLMSG_ERROR, 1, QByteArray(20, '\xff')));
            } else {
                kernel.say(entry(SOCK_DIAG_BY_FAMILY, 2, AF_INET, 1) + FakeKernel::done(2));
                kernel.say(entry(SOCK_DIAG_BY_FAMILY, 3, AF_INET6, 2) + FakeKernel::done(3));
            }
            return peer;
        });
        QCOMPARE(portsOfDump(socket), (QList{1, 2}));
    }

    void statesAreTranslatedFromTheKernelsNumbering()
    {
        // 10 listen, 1 established, and so on, in the kernel's order of 1 to 12.
        const QList<quint32> expected{5, 3, 4, 6, 7, 11, 1, 8, 10, 2, 9, 4};
        for (int i = 0; i < expected.size(); ++i)
            QCOMPARE(tcpTableState(static_cast<std::uint8_t>(i + 1)), expected.at(i));
        QCOMPARE(tcpTableState(0), 0U);
        QCOMPARE(tcpTableState(13), 0U);
        QCOMPARE(tcpTableState(255), 0U);
    }

    void aBoundSocketThatDoesNothingIsNoTcpRow()
    {
        const FileDescriptor bound = bindTcp(SocketKind::IPv4);
        QVERIFY(rowsAt(m_queries->tcpTable(), portOf(bound.get())).isEmpty());
    }

    void synSentIsSeen()
    {
        // A listener with a full queue answers no more.
        const FileDescriptor listener = listenTcp(SocketKind::IPv4, 0);
        const FileDescriptor queued = connectTcp(portOf(listener.get()));
        const FileDescriptor waiting(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = loopback;
        address.sin_port = htons(portOf(listener.get()));
        QCOMPARE(
            ::connect(waiting.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address),
            -1);
        QCOMPARE(errno, EINPROGRESS);
        QCOMPARE(stateOf(m_queries->tcpTable(), portOf(waiting.get()), portOf(listener.get())), 3U);
    }

    void synReceivedIsSeenAndHasNoOwner()
    {
        const FileDescriptor listener = listenTcp(SocketKind::IPv4);
        // The listener's side then waits for the first octet, not only for the handshake.
        const int seconds = 30;
        QCOMPARE(
            ::setsockopt(listener.get(), IPPROTO_TCP, TCP_DEFER_ACCEPT, &seconds, sizeof seconds),
            0);
        const FileDescriptor client = connectTcp(portOf(listener.get()));
        const auto table = m_queries->tcpTable();
        QCOMPARE(stateOf(table, portOf(listener.get()), portOf(client.get())), 4U);
        const auto rows = rowsAt(table, portOf(listener.get()));
        for (const TcpRow &row : rows)
            QCOMPARE(row.pid, row.state == 2 ? static_cast<quint32>(::getpid()) : 0U);
    }

    void finWait2AndCloseWaitAreSeen()
    {
        const auto [first, second] = connectedPair();
        ::shutdown(first.get(), SHUT_WR);
        const quint16 firstPort = portOf(first.get());
        const quint16 secondPort = portOf(second.get());
        QTRY_COMPARE(stateOf(m_queries->tcpTable(), firstPort, secondPort), 7U);
        QCOMPARE(stateOf(m_queries->tcpTable(), secondPort, firstPort), 8U);
    }

    void finWait1IsSeen()
    {
        const auto [first, second] = connectedPair();
        fillPeer(first);
        ::shutdown(first.get(), SHUT_WR);
        QCOMPARE(stateOf(m_queries->tcpTable(), portOf(first.get()), portOf(second.get())), 6U);
    }

    void lastAckIsSeen()
    {
        const auto [first, second] = connectedPair();
        const quint16 firstPort = portOf(first.get());
        const quint16 secondPort = portOf(second.get());
        fillPeer(second);
        ::shutdown(first.get(), SHUT_WR);
        QTRY_COMPARE(stateOf(m_queries->tcpTable(), secondPort, firstPort), 8U);
        ::shutdown(second.get(), SHUT_WR);
        QCOMPARE(stateOf(m_queries->tcpTable(), secondPort, firstPort), 10U);
    }

    void closingIsSeen()
    {
        const auto [first, second] = connectedPair();
        fillPeer(first);
        fillPeer(second);
        ::shutdown(first.get(), SHUT_WR);
        ::shutdown(second.get(), SHUT_WR);
        drain(first);
        QTRY_COMPARE(stateOf(m_queries->tcpTable(), portOf(first.get()), portOf(second.get())), 9U);
    }

    void timeWaitIsSeenAndHasNoOwner()
    {
        auto [first, second] = connectedPair();
        const quint16 firstPort = portOf(first.get());
        const quint16 secondPort = portOf(second.get());
        first.reset();
        QTRY_COMPARE(stateOf(m_queries->tcpTable(), secondPort, firstPort), 8U);
        second.reset();
        QTRY_COMPARE(stateOf(m_queries->tcpTable(), firstPort, secondPort), 11U);
        const auto rows = rowsAt(m_queries->tcpTable(), firstPort);
        for (const TcpRow &row : rows)
            QCOMPARE(row.pid, 0U);
    }

    void thousandsOfSocketsTakeSeveralDatagramsAndAreAllThere()
    {
        Agent agent;
        QSet<quint16> ports;
        for (int i = 0; i < 3000; ++i)
            ports.insert(agent.bindUdp().port);
        const auto table = m_queries->udpTable();
        QVERIFY(table);
        QSet<quint16> seen;
        for (const UdpRow &row : *table) {
            if (row.pid == agent.pid())
                seen.insert(ntohs(row.localPort));
        }
        QCOMPARE(seen, ports);
        if (m_ownNetwork)
            QCOMPARE(table->size(), std::size_t(ports.size()));
    }

private:
    bool m_ownNetwork = false;
    std::optional<LinuxSystemQueries> m_queries;
};

int sockettable_test(int argc, char *argv[])
{
    SocketTableTest test(enterOwnNetwork());
    QCoreApplication app(argc, argv);
    return QTest::qExec(&test, argc, argv);
}
#include "sockettable_test.moc"
