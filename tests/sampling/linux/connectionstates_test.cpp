#include "sampling/connections.h"
#include "sampling/linux/linuxsystemqueries.h"
#include "tests/sampling/linux/support/networknamespace.h"
#include "tests/sampling/linux/support/sockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QtTest>

#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

sockaddr_in loopbackAddress(quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

int connectTo(const FileDescriptor &socket, quint16 port)
{
    const sockaddr_in address = loopbackAddress(port);
    return ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address);
}

QString line(const ConnectionEntry &entry)
{
    return QStringList{entry.protocol, entry.local, entry.remote, entry.state}.join(u'|');
}

/// What the program lists, as sorted lines.
QStringList listed(qint32 maxCount = std::numeric_limits<qint32>::max())
{
    LinuxSystemQueries queries;
    QStringList lines;
    for (const auto &entry : connectionsForPid(queries, static_cast<quint32>(::getpid()), maxCount))
        lines.append(line(entry));
    lines.sort();
    return lines;
}

/// A line of ss(8) in the program's words.
QString translated(const QString &ssLine)
{
    static const QMap<QString, QString> states{
        {u"LISTEN"_s, u"Listen"_s},         {u"ESTAB"_s, u"Established"_s},
        {u"SYN-SENT"_s, u"Syn sent"_s},     {u"FIN-WAIT-1"_s, u"Fin wait 1"_s},
        {u"FIN-WAIT-2"_s, u"Fin wait 2"_s}, {u"CLOSE-WAIT"_s, u"Close wait"_s},
        {u"CLOSING"_s, u"Closing"_s},       {u"LAST-ACK"_s, u"Last ack"_s},
        {u"TIME-WAIT"_s, u"Time wait"_s},   {u"SYN-RECV"_s, u"Syn received"_s},
    };
    // Netid State Recv-Q Send-Q Local:Port Peer:Port Process
    const QStringList fields = ssLine.simplified().split(u' ');
    ConnectionEntry entry;
    entry.protocol = fields.at(0).toUpper();
    entry.local = fields.at(4);
    if (entry.protocol == "UDP"_L1) {
        entry.remote = u"-"_s;
        entry.state = u"Open"_s;
    } else {
        entry.remote = fields.at(5);
        entry.remote.replace(u":*"_s, u":0"_s);
        entry.state = states.value(fields.at(1), fields.at(1));
    }
    return line(entry);
}

/// What ss(8) lists of this process, as sorted lines.
QStringList listedBySs()
{
    QProcess ss;
    ss.start(u"ss"_s, {u"-4tuanpH"_s});
    if (!ss.waitForFinished() || ss.exitCode() != 0)
        qFatal("ss cannot be run");
    const QString owner = u"pid=%1,"_s.arg(::getpid());
    QStringList lines;
    for (const QString &ssLine : QString::fromUtf8(ss.readAllStandardOutput()).split(u'\n')) {
        if (ssLine.contains(owner))
            lines.append(translated(ssLine));
    }
    lines.sort();
    return lines;
}

QString endpointOf(const FileDescriptor &socket)
{
    return u"127.0.0.1:%1"_s.arg(portOf(socket.get()));
}

} // namespace

/// The connection texts of this very process, beside those of ss(8).
class ConnectionStatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        sockets.clear();
        QTRY_COMPARE(listed(), QStringList());
    }

    void aListener()
    {
        const FileDescriptor &listener = keep(listenTcp(SocketKind::IPv4));
        compare({{u"TCP"_s, endpointOf(listener), u"0.0.0.0:0"_s, u"Listen"_s}});
    }

    void aListenerOnAllAddresses()
    {
        const FileDescriptor &listener = keep(openTcpSocket(SocketKind::IPv4));
        sockaddr_in any{};
        any.sin_family = AF_INET;
        QCOMPARE(::bind(listener.get(), reinterpret_cast<const sockaddr *>(&any), sizeof any), 0);
        QCOMPARE(::listen(listener.get(), 1), 0);
        compare(
            {{u"TCP"_s, u"0.0.0.0:%1"_s.arg(portOf(listener.get())), u"0.0.0.0:0"_s, u"Listen"_s}});
    }

    void bothEndsOfAnEstablishedConnection()
    {
        const auto [first, second] = keepPair();
        compare({{u"TCP"_s, endpointOf(first), endpointOf(second), u"Established"_s},
                 {u"TCP"_s, endpointOf(second), endpointOf(first), u"Established"_s}});
    }

    void synSent()
    {
        // A listener with a full queue answers no more.
        const FileDescriptor &listener = keep(listenTcp(SocketKind::IPv4, 0));
        const quint16 port = portOf(listener.get());
        const FileDescriptor &queued = keep(connectTcp(port));
        const FileDescriptor &waiting
            = keep(FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)));
        QCOMPARE(connectTo(waiting, port), -1);
        compare({{u"TCP"_s, endpointOf(listener), u"0.0.0.0:0"_s, u"Listen"_s},
                 {u"TCP"_s, endpointOf(queued), endpointOf(listener), u"Established"_s},
                 {u"TCP"_s, endpointOf(waiting), endpointOf(listener), u"Syn sent"_s}});
    }

    void finWait1()
    {
        const auto [first, second] = keepPair();
        fillPeer(first);
        ::shutdown(first.get(), SHUT_WR);
        compare({{u"TCP"_s, endpointOf(first), endpointOf(second), u"Fin wait 1"_s},
                 {u"TCP"_s, endpointOf(second), endpointOf(first), u"Established"_s}});
    }

    void finWait2AndCloseWait()
    {
        const auto [first, second] = keepPair();
        ::shutdown(first.get(), SHUT_WR);
        compare({{u"TCP"_s, endpointOf(first), endpointOf(second), u"Fin wait 2"_s},
                 {u"TCP"_s, endpointOf(second), endpointOf(first), u"Close wait"_s}});
    }

    void lastAck()
    {
        const auto [first, second] = keepPair();
        fillPeer(second);
        ::shutdown(first.get(), SHUT_WR);
        compare({{u"TCP"_s, endpointOf(first), endpointOf(second), u"Fin wait 2"_s},
                 {u"TCP"_s, endpointOf(second), endpointOf(first), u"Close wait"_s}});
        ::shutdown(second.get(), SHUT_WR);
        compare({{u"TCP"_s, endpointOf(first), endpointOf(second), u"Fin wait 2"_s},
                 {u"TCP"_s, endpointOf(second), endpointOf(first), u"Last ack"_s}});
    }

    void closing()
    {
        const auto [first, second] = keepPair();
        fillPeer(first);
        fillPeer(second);
        ::shutdown(first.get(), SHUT_WR);
        ::shutdown(second.get(), SHUT_WR);
        drain(first);
        const QString closingEnd
            = line({u"TCP"_s, endpointOf(first), endpointOf(second), u"Closing"_s});
        QTRY_VERIFY(listed().contains(closingEnd));
        QCOMPARE(listed(), listedBySs());
    }

    void timeWaitIsNobodys()
    {
        const auto [first, second] = keepPair();
        const quint16 port = portOf(first.get());
        ::shutdown(first.get(), SHUT_WR);
        ::shutdown(second.get(), SHUT_WR);
        sockets.clear();
        QTRY_COMPARE(listed(), QStringList());
        LinuxSystemQueries queries;
        QStringList unowned;
        for (const auto &entry : connectionsForPid(queries, 0, 1000)) {
            if (entry.local.endsWith(u":%1"_s.arg(port)))
                unowned.append(entry.state);
        }
        QCOMPARE(unowned, QStringList({u"Time wait"_s}));
    }

    void udpSockets()
    {
        const FileDescriptor &bound = keep(bindUdp(SocketKind::IPv4));
        const FileDescriptor &connected = keep(bindUdp(SocketKind::IPv4));
        QCOMPARE(connectTo(connected, portOf(bound.get())), 0);
        compare({{u"UDP"_s, endpointOf(bound), u"-"_s, u"Open"_s},
                 {u"UDP"_s, endpointOf(connected), u"-"_s, u"Open"_s}});
    }

    void aDualStackSocketsIPv4ConnectionAndNoOtherIPv6Socket()
    {
        const FileDescriptor &dual = keep(listenTcp(SocketKind::DualStack));
        keep(listenTcp(SocketKind::IPv6));
        const FileDescriptor &client = keep(connectTcp(portOf(dual.get())));
        const FileDescriptor &server = keep(acceptTcp(dual));
        QStringList expected{
            line({u"TCP"_s, endpointOf(client), endpointOf(server), u"Established"_s}),
            line({u"TCP"_s, endpointOf(server), endpointOf(client), u"Established"_s})};
        expected.sort();
        QTRY_COMPARE(listed(), expected);
    }

    void theLimitKeepsUdpOutBehindTcp()
    {
        for (int i = 0; i < 7; ++i)
            keep(listenTcp(SocketKind::IPv4));
        keep(bindUdp(SocketKind::IPv4));
        QCOMPARE(listed().size(), 8);
        const QStringList five = listed(5);
        QCOMPARE(five.size(), 5);
        for (const QString &entry : five)
            QVERIFY(entry.startsWith(u"TCP|"_s));
    }

private:
    const FileDescriptor &keep(FileDescriptor socket)
    {
        return *sockets.emplace_back(std::make_unique<FileDescriptor>(std::move(socket)));
    }

    std::pair<const FileDescriptor &, const FileDescriptor &> keepPair()
    {
        auto [first, second] = connectedPair();
        return {keep(std::move(first)), keep(std::move(second))};
    }

    static void compare(const QList<ConnectionEntry> &entries)
    {
        QStringList expected;
        for (const ConnectionEntry &entry : entries)
            expected.append(line(entry));
        expected.sort();
        QTRY_COMPARE(listed(), expected);
        QCOMPARE(listedBySs(), expected);
    }

    std::vector<std::unique_ptr<FileDescriptor>> sockets; ///< open until the test's end
};

int connectionstates_test(int argc, char *argv[])
{
    // Elsewhere this process's sockets are told by their owner just as well.
    enterOwnNetwork();
    QCoreApplication app(argc, argv);
    ConnectionStatesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "connectionstates_test.moc"
