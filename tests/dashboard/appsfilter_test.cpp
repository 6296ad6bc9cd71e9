#include "dashboard/appsfilter.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

AppSample sample(const QString &name, quint32 pid = 1, int tcp = 1)
{
    AppSample result;
    result.name = name;
    result.pid = pid;
    result.tcp = tcp;
    return result;
}

/// Rules of one application of each kind, named after it.
RuleMap someRules()
{
    RuleMap rules;
    rules[u"downlimited"_s].dlLimit = true;
    rules[u"uplimited"_s].ulLimit = true;
    rules[u"blocked"_s].blocked = true;
    rules[u"high"_s].priority = u"High"_s;
    rules[u"low"_s].priority = u"Low"_s;
    rules[u"neutral"_s] = AppRule();
    return rules;
}

QStringList shownNames(const AppsFilter &filter)
{
    QList<AppSample> samples;
    for (const QString &name : {u"plain"_s, u"neutral"_s, u"downlimited"_s, u"uplimited"_s,
                                u"blocked"_s, u"high"_s, u"low"_s})
        samples.append(sample(name));
    QStringList names;
    const auto shown = shownSamples(samples, someRules(), filter);
    for (const AppSample &each : shown)
        names.append(each.name);
    return names;
}

} // namespace

class AppsFilterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTabShows_data()
    {
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QStringList>("names");
        const QStringList all{u"plain"_s,   u"neutral"_s, u"downlimited"_s, u"uplimited"_s,
                              u"blocked"_s, u"high"_s,    u"low"_s};
        for (const char *tab :
             {"Activity", "Application List", "Filter List", "Network List", "Priorities"})
            QTest::newRow(tab) << QString::fromLatin1(tab) << all;
        QTest::newRow("Rule List: a priority alone is no rule")
            << u"Rule List"_s << QStringList{u"downlimited"_s, u"uplimited"_s, u"blocked"_s};
        QTest::newRow("Blocker") << u"Blocker"_s << QStringList{u"blocked"_s};
        QTest::newRow("other case") << u"activity"_s << QStringList();
        QTest::newRow("unknown") << u"Other"_s << QStringList();
    }

    void aTabShows()
    {
        QFETCH(QString, tab);
        QTEST(shownNames({tab, u"All"_s, QString()}), "names");
    }

    void aQuickFilterShows_data()
    {
        QTest::addColumn<QString>("quickFilter");
        QTest::addColumn<QStringList>("names");
        const QStringList all{u"plain"_s,   u"neutral"_s, u"downlimited"_s, u"uplimited"_s,
                              u"blocked"_s, u"high"_s,    u"low"_s};
        QTest::newRow("All") << u"All"_s << all;
        QTest::newRow("Active") << u"Active"_s << all;
        QTest::newRow("Limited") << u"Limited"_s << QStringList{u"downlimited"_s, u"uplimited"_s};
        QTest::newRow("Blocked") << u"Blocked"_s << QStringList{u"blocked"_s};
        QTest::newRow("High Priority") << u"High Priority"_s << QStringList{u"high"_s};
        QTest::newRow("unknown") << u"all"_s << QStringList();
    }

    void aQuickFilterShows()
    {
        QFETCH(QString, quickFilter);
        QTEST(shownNames({u"Activity"_s, quickFilter, QString()}), "names");
    }

    void activeHidesASampleWithoutSockets()
    {
        const AppsFilter active{u"Activity"_s, u"Active"_s, QString()};
        QVERIFY(!passes(active, sample(u"idle"_s, 1, 0), {}));
        AppSample udpOnly = sample(u"udp"_s, 1, 0);
        udpOnly.udp = 1;
        QVERIFY(passes(active, udpOnly, {}));
    }

    void theSearchLooksIntoNamesAndProcessIds()
    {
        const AppsFilter twelve{u"Activity"_s, u"All"_s, u"12"_s};
        QVERIFY(passes(twelve, sample(u"app12x"_s, 7), {}));
        QVERIFY(passes(twelve, sample(u"app"_s, 41234), {}));
        QVERIFY(!passes(twelve, sample(u"app"_s, 132), {}));
        AppSample byPath = sample(u"app"_s, 7);
        byPath.path = u"/opt/12/app"_s;
        QVERIFY(!passes(twelve, byPath, {}));
    }

    void theSearchIgnoresCase()
    {
        const AppsFilter capitals{u"Activity"_s, u"All"_s, u"FIRE"_s};
        QVERIFY(passes(capitals, sample(u"firebird"_s), {}));
        QVERIFY(!passes(capitals, sample(u"other"_s), {}));
    }

    void tabQuickFilterAndSearchMustAllLetPass()
    {
        RuleMap rules = someRules();
        rules[u"blocked"_s].priority = u"High"_s;
        QVERIFY(passes({u"Blocker"_s, u"High Priority"_s, u"lock"_s}, sample(u"blocked"_s), rules));
        QVERIFY(!passes({u"Blocker"_s, u"Limited"_s, u"lock"_s}, sample(u"blocked"_s), rules));
        QVERIFY(!passes({u"Blocker"_s, u"High Priority"_s, u"x"_s}, sample(u"blocked"_s), rules));
        QVERIFY(!passes({u"Rule List"_s, u"High Priority"_s, QString()}, sample(u"high"_s), rules));
    }

    void rulesAreFoundByTheExactName()
    {
        const AppsFilter blocker{u"Blocker"_s, u"All"_s, QString()};
        QVERIFY(passes(blocker, sample(u"blocked"_s), someRules()));
        QVERIFY(!passes(blocker, sample(u"Blocked"_s), someRules()));
    }

    void theOrderStays()
    {
        const QList<AppSample> samples{sample(u"b"_s, 2), sample(u"a"_s, 1), sample(u"c"_s, 3)};
        QCOMPARE(shownSamples(samples, {}, {u"Activity"_s, u"All"_s, QString()}), samples);
    }
};

TOVAN_APPLESS_TEST(appsfilter_test, AppsFilterTest)
#include "appsfilter_test.moc"
