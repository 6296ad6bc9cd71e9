#include "sampling/linux/interfacetable.h"
#include "sampling/linux/linuxsystemqueries.h"
#include "tests/sampling/linux/support/fakekernel.h"
#include "tests/sampling/linux/support/networknamespace.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

std::optional<InterfaceRow> find(const std::vector<InterfaceRow> &rows, const QString &name)
{
    for (const InterfaceRow &row : rows) {
        if (QString::fromStdString(row.description) == name)
            return row;
    }
    return std::nullopt;
}

struct Octets
{
    quint64 in = 0;
    quint64 out = 0;
};

/// The counters as the kernel's text table has them, in which the program itself never looks.
Octets octetsInTextTable(const QByteArray &name)
{
    QFile table(u"/proc/self/net/dev"_s);
    if (!table.open(QFile::ReadOnly))
        qFatal("/proc/self/net/dev cannot be read");
    const QByteArrayList lines = table.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const QByteArray trimmed = line.simplified();
        if (!trimmed.startsWith(name + ':'))
            continue;
        const QByteArrayList fields = trimmed.mid(name.size() + 1).simplified().split(' ');
        return {fields.at(0).toULongLong(), fields.at(8).toULongLong()};
    }
    qFatal("no interface %s", name.constData());
}

QByteArray attribute(quint16 type, const QByteArray &value)
{
    const nlattr header{static_cast<quint16>(NLA_HDRLEN + value.size()), type};
    QByteArray bytes(reinterpret_cast<const char *>(&header), sizeof header);
    bytes += value;
    return bytes.append((NLA_ALIGNTO - bytes.size() % NLA_ALIGNTO) % NLA_ALIGNTO, '\0');
}

QByteArray linkMessage(uint flags, const QByteArray &attributes, int index = 1)
{
    ifinfomsg link{};
    link.ifi_index = index;
    link.ifi_type = ARPHRD_ETHER;
    link.ifi_flags = flags;
    return FakeKernel::message(RTM_NEWLINK, 1,
                               QByteArray(reinterpret_cast<const char *>(&link), sizeof link)
                                   + attributes);
}

/// The table of a kernel that says `datagram`.
std::optional<std::vector<InterfaceRow>> tableOf(const QByteArray &datagram)
{
    FakeKernel kernel;
    NetlinkSocket socket([&] {
        FileDescriptor peer = kernel.connectPeer();
        kernel.say(datagram);
        kernel.say(FakeKernel::done(1));
        return peer;
    });
    return dumpInterfaces(socket);
}

} // namespace

/// Where the system allows no network of the test's own, what needs one is checked on the
/// interfaces that are there.
class InterfaceTableTest : public QObject
{
    Q_OBJECT

public:
    explicit InterfaceTableTest(bool ownNetwork) : m_ownNetwork(ownNetwork) { }

private Q_SLOTS:
    void initTestCase()
    {
        if (!m_ownNetwork)
            return;
        runIp({u"link"_s, u"add"_s, u"left"_s, u"type"_s, u"veth"_s, u"peer"_s, u"name"_s,
               u"right"_s});
        runIp({u"link"_s, u"set"_s, u"left"_s, u"alias"_s, u"Büro, 1. Stock"_s});
        runIp({u"link"_s, u"set"_s, u"left"_s, u"up"_s});
        runIp({u"link"_s, u"set"_s, u"right"_s, u"up"_s});
        runIp({u"address"_s, u"add"_s, u"192.0.2.1/24"_s, u"dev"_s, u"left"_s});
        runIp({u"link"_s, u"add"_s, u"idle"_s, u"type"_s, u"veth"_s});
    }

    void theLoopbackIsToldByItsType()
    {
        const auto rows = m_queries.interfaceTable();
        QVERIFY(rows);
        QCOMPARE(std::ranges::count_if(*rows, &InterfaceRow::loopback), 1);
        QVERIFY(find(*rows, u"lo"_s)->loopback);
    }

    void allInterfacesAreListedInTheKernelsOrder()
    {
        const auto rows = m_queries.interfaceTable();
        QVERIFY(rows);
        QStringList names;
        for (const InterfaceRow &row : *rows)
            names.append(QString::fromStdString(row.description));
        QStringList expected;
        const QByteArrayList lines = runIp({u"-br"_s, u"link"_s}).split('\n');
        for (const QByteArray &line : lines) {
            if (!line.isEmpty())
                expected.append(QString::fromUtf8(line.left(line.indexOf(' ')).split('@').first()));
        }
        QCOMPARE(names, expected);
    }

    void anAliasIsTheUsersNameInUtf8()
    {
        if (!m_ownNetwork)
            return;
        const auto rows = m_queries.interfaceTable();
        QVERIFY(rows);
        QCOMPARE(QString::fromStdString(find(*rows, u"left"_s)->alias), u"Büro, 1. Stock"_s);
        QCOMPARE(find(*rows, u"right"_s)->alias, std::string());
    }

    void anInterfaceIsUpByItsOperationalStateOrWithoutOneByItsFlags_data()
    {
        QTest::addColumn<int>("operationalState");
        QTest::addColumn<uint>("flags");
        QTest::addColumn<bool>("up");
        constexpr uint running = IFF_UP | IFF_RUNNING;
        QTest::newRow("up") << int{IF_OPER_UP} << running << true;
        QTest::newRow("up, whatever the flags") << int{IF_OPER_UP} << 0U << true;
        QTest::newRow("unknown, running") << int{IF_OPER_UNKNOWN} << running << true;
        QTest::newRow("unknown, no carrier") << int{IF_OPER_UNKNOWN} << uint{IFF_UP} << false;
        QTest::newRow("unknown, off") << int{IF_OPER_UNKNOWN} << uint{IFF_RUNNING} << false;
        QTest::newRow("not told, running") << -1 << running << true;
        QTest::newRow("down") << int{IF_OPER_DOWN} << running << false;
        QTest::newRow("lower layer down") << int{IF_OPER_LOWERLAYERDOWN} << running << false;
        QTest::newRow("dormant") << int{IF_OPER_DORMANT} << running << false;
        QTest::newRow("testing") << int{IF_OPER_TESTING} << running << false;
        QTest::newRow("not present") << int{IF_OPER_NOTPRESENT} << running << false;
    }

    void anInterfaceIsUpByItsOperationalStateOrWithoutOneByItsFlags()
    {
        QFETCH(int, operationalState);
        QFETCH(uint, flags);
        QByteArray attributes;
        if (operationalState >= 0)
            attributes
                = attribute(IFLA_OPERSTATE, QByteArray(1, static_cast<char>(operationalState)));
        const auto rows = tableOf(linkMessage(flags, attributes));
        QVERIFY(rows);
        QTEST(rows->front().up, "up");
    }

    void realInterfacesGoUpAndDown()
    {
        if (!m_ownNetwork)
            return;
        const auto rows = m_queries.interfaceTable();
        QVERIFY(rows);
        QVERIFY2(find(*rows, u"lo"_s)->up, "keeps no operational state, but runs");
        QVERIFY(find(*rows, u"left"_s)->up);
        QVERIFY2(!find(*rows, u"idle"_s)->up, "switched off");

        // The kernel takes carrier changes into the link's state a moment later.
        runIp({u"link"_s, u"set"_s, u"right"_s, u"down"_s});
        QTRY_VERIFY2(!isUp(u"left"_s), "lower layer down, though switched on");
        runIp({u"link"_s, u"set"_s, u"right"_s, u"up"_s});
        QTRY_VERIFY(isUp(u"left"_s));
    }

    void countersOfEveryWidthOfTheKernelsRecordAreRead()
    {
        rtnl_link_stats64 statistics{};
        statistics.rx_bytes = 0xffff'ffff'ffff'fff0;
        statistics.tx_bytes = 0x1'0000'0001;
        const QByteArray whole(reinterpret_cast<const char *>(&statistics), sizeof statistics);
        for (const QByteArray &record : {whole, whole.first(40), whole + QByteArray(24, '\1')}) {
            const auto rows = tableOf(linkMessage(0, attribute(IFLA_STATS64, record)));
            QVERIFY(rows);
            QCOMPARE(rows->front().inOctets, statistics.rx_bytes);
            QCOMPARE(rows->front().outOctets, statistics.tx_bytes);
        }
    }

    void aLinkWithoutAttributesIsARowOfNothing()
    {
        const auto rows = tableOf(linkMessage(0, {}));
        QVERIFY(rows);
        QCOMPARE(rows->size(), std::size_t(1));
        QVERIFY(!rows->front().up && !rows->front().loopback);
        QCOMPARE(rows->front().description, std::string());
    }

    void anInterfaceThatIsListedTwiceCountsOnce()
    {
        const auto named = [](const char *name, int index) {
            return linkMessage(0, attribute(IFLA_IFNAME, name), index);
        };
        const auto rows = tableOf(named("one", 1) + named("two", 2) + named("one", 1));
        QVERIFY(rows);
        QCOMPARE(rows->size(), std::size_t(2));
        QCOMPARE(rows->front().description, std::string("one"));
        QCOMPARE(rows->back().description, std::string("two"));
    }

    void aFailedDumpIsNoEmptyTable() { QVERIFY(!tableOf(QByteArray(16, '\0'))); }

    void octetsAreThoseOfRealTraffic()
    {
        if (!m_ownNetwork) {
            const auto rows = m_queries.interfaceTable();
            QVERIFY(rows);
            QCOMPARE_LE(find(*rows, u"lo"_s)->inOctets, octetsInTextTable("lo").in);
            return;
        }
        QTRY_VERIFY(isUp(u"left"_s));
        const auto before = m_queries.interfaceTable();
        QVERIFY(before);
        sendBroadcasts("left", 100, 1000);

        // 8 octets of UDP, 20 of IPv4, 14 of Ethernet header.
        constexpr quint64 sent = 100 * (1000 + 8 + 20 + 14);
        // The other end receives a moment after this one has sent.
        const quint64 received = find(*before, u"right"_s)->inOctets + sent;
        auto after = m_queries.interfaceTable();
        QTRY_VERIFY((after = m_queries.interfaceTable())
                    && find(*after, u"right"_s)->inOctets >= received);
        const auto left = find(*after, u"left"_s);
        const auto right = find(*after, u"right"_s);
        // Neighbour discovery may add its own few packets.
        QCOMPARE_GE(left->outOctets - find(*before, u"left"_s)->outOctets, sent);
        QCOMPARE_LT(left->outOctets - find(*before, u"left"_s)->outOctets, sent + 2000);
        QCOMPARE_LE(left->outOctets, octetsInTextTable("left").out);
        QCOMPARE_LE(right->inOctets, octetsInTextTable("right").in);
        QCOMPARE_LT(octetsInTextTable("right").in - right->inOctets, quint64(2000));
    }

    void aNewInterfaceIsInTheNextTable()
    {
        if (!m_ownNetwork)
            return;
        runIp({u"link"_s, u"add"_s, u"late"_s, u"type"_s, u"veth"_s});
        const auto with = m_queries.interfaceTable();
        runIp({u"link"_s, u"delete"_s, u"late"_s});
        const auto without = m_queries.interfaceTable();
        QVERIFY(with && find(*with, u"late"_s));
        QVERIFY(without && !find(*without, u"late"_s));
    }

private:
    /// Whether the interface is up at this moment.
    bool isUp(const QString &name)
    {
        const auto rows = m_queries.interfaceTable();
        return rows && find(*rows, name)->up;
    }

    bool m_ownNetwork = false;
    LinuxSystemQueries m_queries;
};

int interfacetable_test(int argc, char *argv[])
{
    InterfaceTableTest test(enterOwnNetwork());
    QCoreApplication app(argc, argv);
    return QTest::qExec(&test, argc, argv);
}
#include "interfacetable_test.moc"
