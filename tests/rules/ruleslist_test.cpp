#include "rules/ruleslist.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

const RulesFilter everything{u"All"_s, {}};

AppSample sampleOf(const QString &name, qint32 tcp, qint32 udp = 0)
{
    AppSample sample;
    sample.name = name;
    sample.pid = 1;
    sample.tcp = tcp;
    sample.udp = udp;
    return sample;
}

AppRule ruleWith(bool AppRule::*flag)
{
    AppRule rule;
    rule.*flag = true;
    return rule;
}

QStringList names(const QList<ListedRule> &listed)
{
    QStringList texts;
    for (const ListedRule &row : listed)
        texts.append(row.name);
    return texts;
}

} // namespace

class RulesListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingSampledAndNoRuleIsNothing() { QVERIFY(listedRules({}, {}, everything).isEmpty()); }

    void aSampledApplicationIsListedWithTheDefaultRule()
    {
        const QList<ListedRule> expected{{u"app"_s, {}, 5}};
        QCOMPARE(listedRules({sampleOf(u"app"_s, 3, 2)}, {}, everything), expected);
    }

    void aRuleWhoseApplicationIsNotRunningHasNoSockets()
    {
        const AppRule rule = ruleWith(&AppRule::blocked);
        const QList<ListedRule> expected{{u"app"_s, rule, 0}};
        QCOMPARE(listedRules({}, {{u"app"_s, rule}}, everything), expected);
    }

    void anApplicationIsListedOnceWithTheSocketsOfItsFirstSample()
    {
        const QList<ListedRule> expected{{u"app"_s, ruleWith(&AppRule::dlLimit), 7}};
        QCOMPARE(listedRules({sampleOf(u"app"_s, 7), sampleOf(u"app"_s, 2)},
                             {{u"app"_s, ruleWith(&AppRule::dlLimit)}}, everything),
                 expected);
    }

    void rowsAreSortedByTheLowerCasedName()
    {
        const QList<AppSample> samples{sampleOf(u"zebra"_s, 9), sampleOf(u"Mango"_s, 1)};
        const RuleMap rules{{u"apple"_s, {}}, {u"_tool"_s, {}}, {u"Nut"_s, {}}};
        QCOMPARE(names(listedRules(samples, rules, everything)),
                 QStringList({u"_tool"_s, u"apple"_s, u"Mango"_s, u"Nut"_s, u"zebra"_s}));
    }

    void namesInOtherLetterCaseAreOtherRowsInASteadyOrder()
    {
        const QList<AppSample> samples{sampleOf(u"app"_s, 1), sampleOf(u"APP"_s, 1)};
        const QStringList expected{u"APP"_s, u"App"_s, u"app"_s};
        QCOMPARE(names(listedRules(samples, {{u"App"_s, {}}}, everything)), expected);
        QCOMPARE(names(listedRules({samples.at(1), samples.at(0)}, {{u"App"_s, {}}}, everything)),
                 expected);
    }

    void modesJudgeARuleByItsFlags_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QStringList>("shown");

        QTest::newRow("all") << u"All"_s
                             << QStringList{u"blocked"_s, u"down"_s, u"none"_s, u"sampled"_s,
                                            u"up"_s};
        QTest::newRow("blocked") << u"Blocked"_s << QStringList{u"blocked"_s};
        QTest::newRow("limited") << u"Limited"_s << QStringList{u"down"_s, u"up"_s};
        QTest::newRow("other letter case") << u"all"_s << QStringList{};
        QTest::newRow("unknown") << u"High"_s << QStringList{};
    }

    void modesJudgeARuleByItsFlags()
    {
        QFETCH(QString, mode);
        AppRule urgent;
        urgent.priority = u"High"_s;
        urgent.dlKbps = 9;
        const RuleMap rules{{u"blocked"_s, ruleWith(&AppRule::blocked)},
                            {u"down"_s, ruleWith(&AppRule::dlLimit)},
                            {u"up"_s, ruleWith(&AppRule::ulLimit)},
                            {u"none"_s, urgent}};
        QTEST(names(listedRules({sampleOf(u"sampled"_s, 1)}, rules, {mode, {}})), "shown");
    }

    void theTextIsAnyPartOfTheNameInAnyLetterCase()
    {
        const RuleMap rules{{u"FireFox"_s, {}}, {u"fox.*"_s, {}}, {u"dog"_s, {}}};
        QCOMPARE(names(listedRules({}, rules, {u"All"_s, u"FOX"_s})),
                 QStringList({u"FireFox"_s, u"fox.*"_s}));
        QCOMPARE(names(listedRules({}, rules, {u"All"_s, u".*"_s})), QStringList({u"fox.*"_s}));
        QCOMPARE(names(listedRules({}, rules, {u"Blocked"_s, u"fox"_s})), QStringList());
    }

    void rowsAreFoundAgainByTheirNames()
    {
        const auto rows = [](const QStringList &texts) {
            QList<ListedRule> listed;
            for (const QString &text : texts)
                listed.append({text, {}, static_cast<qint32>(listed.size())});
            return listed;
        };
        const auto before = rows({u"a"_s, u"b"_s, u"c"_s, u"d"_s});
        QCOMPARE(rowsBefore(before, before), std::vector({0, 1, 2, 3}));
        QCOMPARE(rowsBefore(before, rows({u"a"_s, u"c"_s, u"cc"_s, u"d"_s})),
                 std::vector({0, 2, -1, 3}));
        QCOMPARE(rowsBefore(before, rows({u"A"_s, u"a"_s})), std::vector({-1, 0}));
        QCOMPARE(rowsBefore({}, rows({u"a"_s})), std::vector({-1}));
        QCOMPARE(rowsBefore(before, {}), std::vector<int>());
    }
};

TOVAN_APPLESS_TEST(ruleslist_test, RulesListTest)
#include "ruleslist_test.moc"
