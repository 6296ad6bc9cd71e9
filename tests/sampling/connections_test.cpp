#include "sampling/connections.h"
#include "tests/support/scriptedsystem.h"
#include "tests/support/testmain.h"

#include <QtEndian>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 somePid = 42;

std::uint32_t address(quint32 hostOrder)
{
    return qToBigEndian(hostOrder);
}

std::uint16_t port(quint16 hostOrder)
{
    return qToBigEndian(hostOrder);
}

} // namespace

class ConnectionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { system.reset(); }

    void anEndpointIsTheDottedAddressAndThePort()
    {
        QCOMPARE(endpointText(address(0xC0A8010A), port(443)), u"192.168.1.10:443"_s);
        QCOMPARE(endpointText(address(0xFFFFFFFF), port(65535)), u"255.255.255.255:65535"_s);
        QCOMPARE(endpointText(0, 0), u"0.0.0.0:0"_s);
    }

    void everyTcpStateHasItsName_data()
    {
        QTest::addColumn<quint32>("state");
        QTest::addColumn<QString>("text");

        QTest::newRow("below") << 0U << u"Unknown"_s;
        QTest::newRow("closed") << 1U << u"Closed"_s;
        QTest::newRow("listen") << 2U << u"Listen"_s;
        QTest::newRow("syn sent") << 3U << u"Syn sent"_s;
        QTest::newRow("syn received") << 4U << u"Syn received"_s;
        QTest::newRow("established") << 5U << u"Established"_s;
        QTest::newRow("fin wait 1") << 6U << u"Fin wait 1"_s;
        QTest::newRow("fin wait 2") << 7U << u"Fin wait 2"_s;
        QTest::newRow("close wait") << 8U << u"Close wait"_s;
        QTest::newRow("closing") << 9U << u"Closing"_s;
        QTest::newRow("last ack") << 10U << u"Last ack"_s;
        QTest::newRow("time wait") << 11U << u"Time wait"_s;
        QTest::newRow("delete") << 12U << u"Delete"_s;
        QTest::newRow("above") << 13U << u"Unknown"_s;
        QTest::newRow("largest") << 0xFFFFFFFFU << u"Unknown"_s;
    }

    void everyTcpStateHasItsName()
    {
        QFETCH(quint32, state);
        QTEST(tcpStateText(state), "text");
    }

    void aListenerOnAllAddressesShowsWildcards()
    {
        addTcp(somePid, 8080, 2);

        const QList<ConnectionEntry> expected{
            {u"TCP"_s, u"0.0.0.0:8080"_s, u"0.0.0.0:0"_s, u"Listen"_s}};
        QCOMPARE(connections(somePid, 5), expected);
    }

    void aUdpSocketHasNoRemoteEndAndIsOpen()
    {
        UdpRow row;
        row.pid = somePid;
        row.localAddress = address(0x7F000001);
        row.localPort = port(53);
        system.udp = {row};

        const QList<ConnectionEntry> expected{{u"UDP"_s, u"127.0.0.1:53"_s, u"-"_s, u"Open"_s}};
        QCOMPARE(connections(somePid, 5), expected);
    }

    void entriesKeepTheTablesOrderTcpFirst()
    {
        addUdp(somePid, 9);
        addTcp(somePid, 300, 5);
        addTcp(7, 1, 5);
        addTcp(somePid, 200, 11);
        addTcp(somePid, 200, 11);

        QCOMPARE(
            locals(connections(somePid, 5)),
            QStringList({u"0.0.0.0:300"_s, u"0.0.0.0:200"_s, u"0.0.0.0:200"_s, u"0.0.0.0:9"_s}));
    }

    void theLimitIsSharedByBothProtocols()
    {
        for (quint16 i = 1; i <= 7; ++i)
            addTcp(somePid, i, 5);
        addUdp(somePid, 101);
        addUdp(somePid, 102);

        QCOMPARE(locals(connections(somePid, 5)),
                 QStringList({u"0.0.0.0:1"_s, u"0.0.0.0:2"_s, u"0.0.0.0:3"_s, u"0.0.0.0:4"_s,
                              u"0.0.0.0:5"_s}));
        QCOMPARE(connections(somePid, 8).size(), 8);
        QCOMPARE(connections(somePid, 8).last().protocol, u"UDP"_s);
        QCOMPARE(connections(somePid, 100).size(), 9);
    }

    void aLimitOfNothingGivesNothing()
    {
        addTcp(somePid, 1, 5);
        addUdp(somePid, 2);
        QVERIFY(connections(somePid, 0).isEmpty());
        QVERIFY(connections(somePid, -1).isEmpty());
    }

    void anUnknownProcessHasNoConnections()
    {
        addTcp(somePid, 1, 5);
        QVERIFY(connections(43, 5).isEmpty());
    }

    void aTableThatFailsContributesNothing()
    {
        addTcp(somePid, 1, 5);
        addUdp(somePid, 2);
        system.tcp.reset();
        QCOMPARE(locals(connections(somePid, 5)), QStringList({u"0.0.0.0:2"_s}));
        system.udp.reset();
        QVERIFY(connections(somePid, 5).isEmpty());
    }

private:
    void addTcp(quint32 owner, quint16 localPort, quint32 state)
    {
        TcpRow row;
        row.pid = owner;
        row.localPort = port(localPort);
        row.state = state;
        system.tcp->push_back(row);
    }

    void addUdp(quint32 owner, quint16 localPort)
    {
        UdpRow row;
        row.pid = owner;
        row.localPort = port(localPort);
        system.udp->push_back(row);
    }

    static QList<ConnectionEntry> connections(quint32 owner, qint32 maxCount)
    {
        return connectionsForPid(*makeSystemQueries(), owner, maxCount);
    }

    static QStringList locals(const QList<ConnectionEntry> &entries)
    {
        QStringList texts;
        for (const ConnectionEntry &entry : entries)
            texts.append(entry.local);
        return texts;
    }

    ScriptedSystem &system = ScriptedSystem::instance();
};

TOVAN_APPLESS_TEST(connections_test, ConnectionsTest)
#include "connections_test.moc"
