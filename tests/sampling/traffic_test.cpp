#include "sampling/traffic.h"
#include "tests/support/scriptedsystem.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

InterfaceRow row(const char *description, quint64 in, quint64 out)
{
    InterfaceRow result;
    result.up = true;
    result.description = description;
    result.inOctets = in;
    result.outOctets = out;
    return result;
}

} // namespace

class TrafficTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ScriptedSystem::instance().reset(); }

    void onlyInterfacesThatAreUpAndNotTheLoopbackAreSummed()
    {
        InterfaceRow loopback = row("lo", 1, 1);
        loopback.loopback = true;
        InterfaceRow down = row("eth1", 10, 10);
        down.up = false;
        ScriptedSystem::instance().interfaces
            = {loopback, row("eth0", 100, 200), down, row("tun0", 1000, 2000)};
        const auto queries = makeSystemQueries();
        InterfaceList list;
        QCOMPARE(readInterfaceTotals(*queries, &list), (InterfaceTotals{1100, 2200}));
        QCOMPARE(list, (InterfaceList{{u"eth0"_s, 300}, {u"tun0"_s, 3000}}));
    }

    void anAliasIsPreferredToTheDescription()
    {
        InterfaceRow named = row("eth0", 1, 2);
        named.alias = "Café uplink";
        ScriptedSystem::instance().interfaces = {named};
        InterfaceList list;
        readInterfaceTotals(*makeSystemQueries(), &list);
        QCOMPARE(list, (InterfaceList{{u"Café uplink"_s, 3}}));
    }

    void theListMayBeAbsent()
    {
        ScriptedSystem::instance().interfaces = {row("eth0", 7, 9)};
        QCOMPARE(readInterfaceTotals(*makeSystemQueries()), (InterfaceTotals{7, 9}));
    }

    void anUnreadableTableGivesZerosAndLeavesTheList()
    {
        ScriptedSystem::instance().interfaces = std::nullopt;
        InterfaceList list{{u"eth0"_s, 5}};
        QCOMPARE(readInterfaceTotals(*makeSystemQueries(), &list), InterfaceTotals{});
        QCOMPARE(list, (InterfaceList{{u"eth0"_s, 5}}));
    }

    void anEmptyTableEmptiesTheList()
    {
        InterfaceList list{{u"eth0"_s, 5}};
        QCOMPARE(readInterfaceTotals(*makeSystemQueries(), &list), InterfaceTotals{});
        QVERIFY(list.isEmpty());
    }

    void sumsWrapAt64Bits()
    {
        ScriptedSystem::instance().interfaces
            = {row("eth0", std::numeric_limits<quint64>::max(), 0), row("eth1", 3, 0)};
        QCOMPARE(readInterfaceTotals(*makeSystemQueries()).inBytes, quint64(2));
    }

    void growthCountsFromTheBaseline()
    {
        TrafficCounters counters;
        setBaseline(counters, {1000, 500});
        QCOMPARE(advance(counters, {1300, 600}), quint64(400));
        QCOMPARE(counters.currentDownBytes, quint64(300));
        QCOMPARE(counters.currentUpBytes, quint64(100));
        QCOMPARE(counters.currentInBytes, quint64(1300));
        QCOMPARE(counters.previousOutBytes, quint64(600));
        QCOMPARE(counters.sessionBytes, quint64(400));
    }

    void aCounterThatShrinksGivesZeroAndBecomesTheNewBaseline()
    {
        TrafficCounters counters;
        setBaseline(counters, {1000, 1000});
        QCOMPARE(advance(counters, {10, 1500}), quint64(500));
        QCOMPARE(counters.currentDownBytes, quint64(0));
        QCOMPARE(advance(counters, {30, 1500}), quint64(20));
    }

    void peaksKeepTheLargestTickOfEachDirection()
    {
        TrafficCounters counters;
        advance(counters, {100, 10});
        advance(counters, {150, 90});
        QCOMPARE(counters.peakDownBytes, quint64(100));
        QCOMPARE(counters.peakUpBytes, quint64(80));
    }

    void theFortyNinthTickPushesOutTheFirst()
    {
        TrafficCounters counters;
        quint64 in = 0;
        for (quint64 tick = 1; tick <= 48; ++tick)
            advance(counters, {in += tick, 0});
        QCOMPARE(counters.history.size(), 48);
        QCOMPARE(counters.history.first(), quint64(1));
        advance(counters, {in += 49, 0});
        QCOMPARE(counters.history.size(), 48);
        QCOMPARE(counters.history.first(), quint64(2));
        QCOMPARE(counters.history.last(), quint64(49));
    }

    void aResetForgetsTheSessionAndKeepsTheBaseline()
    {
        TrafficCounters counters;
        advance(counters, {100, 50});
        resetSession(counters);
        QCOMPARE(counters.sessionBytes, quint64(0));
        QCOMPARE(counters.peakDownBytes, quint64(0));
        QCOMPARE(counters.peakUpBytes, quint64(0));
        QVERIFY(counters.history.isEmpty());
        QCOMPARE(counters.currentDownBytes, quint64(100));
        QCOMPARE(counters.currentUpBytes, quint64(50));
        advance(counters, {101, 50});
        QCOMPARE(counters.history, QList<quint64>{1});
    }
};

TOVAN_APPLESS_TEST(traffic_test, TrafficTest)
#include "traffic_test.moc"
