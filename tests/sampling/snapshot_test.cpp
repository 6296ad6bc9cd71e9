#include "sampling/appsample.h"
#include "tests/support/scriptedsystem.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/// Answers like the scripted system, except that paths can be read from the second question on.
class LatePaths : public SystemQueries
{
public:
    explicit LatePaths(std::unique_ptr<SystemQueries> system) : inner(std::move(system)) { }

    std::optional<std::vector<InterfaceRow>> interfaceTable() override
    {
        return inner->interfaceTable();
    }
    std::optional<std::vector<TcpRow>> tcpTable() override { return inner->tcpTable(); }
    std::optional<std::vector<UdpRow>> udpTable() override { return inner->udpTable(); }
    std::string imagePath(std::uint32_t pid) override
    {
        return asked.contains(pid) ? inner->imagePath(pid) : (asked.insert(pid), std::string());
    }
    std::optional<std::string> processListName(std::uint32_t pid) override
    {
        return inner->processListName(pid);
    }

private:
    std::unique_ptr<SystemQueries> inner;
    QSet<quint32> asked;
};

QStringList names(const QList<AppSample> &samples)
{
    QStringList texts;
    for (const AppSample &sample : samples)
        texts.append(sample.name);
    return texts;
}

} // namespace

class SnapshotTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { system.reset(); }

    void noSocketsGiveNoSamples() { QVERIFY(snapshot().isEmpty()); }

    void socketsOfOneProcessAreCountedByProtocol()
    {
        system.addProcess(10, u"browser"_s, 3, 2);

        const QList<AppSample> expected{{u"browser"_s, u"/usr/bin/browser"_s, 10, 3, 2}};
        QCOMPARE(snapshot(), expected);
        QCOMPARE(snapshot().first().socketTotal(), 5);
    }

    void socketsInEveryTcpStateCount()
    {
        system.addProcess(10, u"server"_s, 12);
        for (std::size_t i = 0; i < 12; ++i)
            system.tcp->at(i).state = static_cast<std::uint32_t>(i + 1);

        QCOMPARE(snapshot().first().tcp, 12);
    }

    void aProcessWithUdpSocketsAloneIsListed()
    {
        system.addProcess(10, u"resolver"_s, 0, 1);

        const QList<AppSample> expected{{u"resolver"_s, u"/usr/bin/resolver"_s, 10, 0, 1}};
        QCOMPARE(snapshot(), expected);
    }

    void socketsOfProcessZeroAreNobodys()
    {
        system.addProcess(0, u"idle"_s, 2, 2);
        QVERIFY(snapshot().isEmpty());
    }

    void twoProcessesOfOneProgramAreTwoNeighbouringSamples()
    {
        system.addProcess(12, u"worker"_s, 2);
        system.addProcess(11, u"worker"_s, 1, 1);
        system.addProcess(13, u"agent"_s, 2);

        const QList<AppSample> samples = snapshot();
        QCOMPARE(names(samples), QStringList({u"agent"_s, u"worker"_s, u"worker"_s}));
        QVERIFY(samples.at(1).pid != samples.at(2).pid);
    }

    void mostSocketsComeFirstThenTheLowerCasedName()
    {
        system.addProcess(1, u"Zebra"_s, 1);
        system.addProcess(2, u"apple"_s, 1);
        system.addProcess(3, u"Mango"_s, 0, 1);
        system.addProcess(4, u"quiet"_s, 1, 2);
        system.addProcess(5, u"_tool"_s, 1);

        // '_' stands between the capitals and the small letters.
        QCOMPARE(names(snapshot()),
                 QStringList({u"quiet"_s, u"_tool"_s, u"apple"_s, u"Mango"_s, u"Zebra"_s}));
    }

    void loweredNamesAreComparedByCodeUnit()
    {
        // U+1F600 begins with the surrogate 0xD83D, which sorts before U+FF21's lower case.
        system.addProcess(1, QString(QChar(0xFF21)), 1);
        system.addProcess(2, u"\U0001F600"_s, 1);

        QCOMPARE(names(snapshot()), QStringList({u"\U0001F600"_s, QString(QChar(0xFF21))}));
    }

    void aPathThatIsReadOnlyOnceMoreGivesTheNameAlone()
    {
        system.addProcess(10, u"starter"_s, 1);
        LatePaths queries(makeSystemQueries());

        const QList<AppSample> expected{{u"starter"_s, QString(), 10, 1, 0}};
        QCOMPARE(takeSnapshot(queries), expected);
    }

    void aProcessWithoutReadablePathIsNamedByTheProcessList()
    {
        system.addProcess(4, u"System"_s, 1);
        system.imagePaths.remove(4);

        const QList<AppSample> expected{{u"System"_s, QString(), 4, 1, 0}};
        QCOMPARE(snapshot(), expected);
    }

    void aProcessThatIsNowhereIsNamedByItsId()
    {
        system.addProcess(4711, u"gone"_s, 1);
        system.imagePaths.clear();
        system.processNames.clear();

        const QList<AppSample> expected{{u"PID 4711"_s, QString(), 4711, 1, 0}};
        QCOMPARE(snapshot(), expected);
    }

    void aReadablePathIsAskedForOnce()
    {
        system.addProcess(8, u"late"_s, 1);
        system.addProcess(7, u"early"_s, 1, 1);
        snapshot();
        QCOMPARE(system.imagePathQuestions, QList<quint32>({7, 8}));
    }

    void aTableThatFailsCountsNothing()
    {
        system.addProcess(10, u"both"_s, 2, 3);
        system.addProcess(11, u"stream"_s, 2);
        system.tcp.reset();

        const QList<AppSample> datagrams{{u"both"_s, u"/usr/bin/both"_s, 10, 0, 3}};
        QCOMPARE(snapshot(), datagrams);
        system.udp.reset();
        QVERIFY(snapshot().isEmpty());
    }

    void namesThatAreNoUtf8AreStillNames()
    {
        system.addProcess(10, u"x"_s, 1);
        system.imagePaths.insert(10, "/opt/\xff\xfe tool\nname");

        const AppSample sample = snapshot().first();
        QCOMPARE(sample.name, u"\uFFFD\uFFFD tool\nname"_s);
        QCOMPARE(sample.path, u"/opt/\uFFFD\uFFFD tool\nname"_s);
    }

private:
    static QList<AppSample> snapshot() { return takeSnapshot(*makeSystemQueries()); }

    ScriptedSystem &system = ScriptedSystem::instance();
};

TOVAN_APPLESS_TEST(snapshot_test, SnapshotTest)
#include "snapshot_test.moc"
