#include "rules/apprule.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

class AppRuleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTablesOwnRowsAreNoRuleTargets()
    {
        QVERIFY(!isRuleTarget(QString()));
        QVERIFY(!isRuleTarget(u"This PC"_s));
        QVERIFY(!isRuleTarget(u"No matching apps"_s));
        QVERIFY(!isRuleTarget(u"System overview"_s));
    }

    void anyOtherNameIsARuleTarget()
    {
        QVERIFY(isRuleTarget(u"this pc"_s));
        QVERIFY(isRuleTarget(u"This PC "_s));
        QVERIFY(isRuleTarget(u"No rules or active apps"_s));
        QVERIFY(isRuleTarget(u"<b>x</b>"_s));
    }

    void lookingARuleUpCreatesNone()
    {
        RuleMap rules;
        QCOMPARE(ruleFor(rules, u"app"_s), AppRule());
        QVERIFY(rules.isEmpty());
    }

    void blockIsInverted()
    {
        RuleMap rules;
        QCOMPARE(act(rules, u"block"_s), u"app blocked"_s);
        QVERIFY(rules.value(u"app"_s).blocked);
        QCOMPARE(act(rules, u"block"_s), u"app unblocked"_s);
        QVERIFY(!rules.value(u"app"_s).blocked);
    }

    void aLimitIsInvertedAndAnnounced()
    {
        RuleMap rules;
        QCOMPARE(act(rules, u"dl"_s), u"Download limit on for app"_s);
        QCOMPARE(act(rules, u"ul"_s), u"Upload limit on for app"_s);
        AppRule expected;
        expected.dlLimit = expected.ulLimit = true;
        expected.dlKbps = expected.ulKbps = 5;
        QCOMPARE(rules.value(u"app"_s), expected);

        QCOMPARE(act(rules, u"dl"_s), u"Download limit off for app"_s);
        QCOMPARE(act(rules, u"ul"_s), u"Upload limit off for app"_s);
        expected.dlLimit = expected.ulLimit = false;
        QCOMPARE(rules.value(u"app"_s), expected);
    }

    void aLimitKeepsTheValueThatItHas()
    {
        RuleMap rules;
        rules[u"app"_s].dlKbps = 300;
        rules[u"app"_s].ulKbps = 400;
        for (int i = 0; i < 3; ++i) {
            act(rules, u"dl"_s);
            act(rules, u"ul"_s);
            QCOMPARE(rules.value(u"app"_s).dlKbps, 300);
            QCOMPARE(rules.value(u"app"_s).ulKbps, 400);
        }
    }

    void aLimitBelowOneIsFilledWithTheDefault()
    {
        AppRule rule;
        rule.dlKbps = -3;
        setSwitch(rule, RuleSwitch::DlLimit, true, 7);
        QCOMPARE(rule.dlKbps, 7);
        setSwitch(rule, RuleSwitch::UlLimit, true, 9);
        QCOMPARE(rule.ulKbps, 9);
    }

    void aLimitThatIsSwitchedOffIsNotFilled()
    {
        AppRule rule;
        setSwitch(rule, RuleSwitch::DlLimit, false, 7);
        setSwitch(rule, RuleSwitch::UlLimit, false, 7);
        QCOMPARE(rule, AppRule());
    }

    void blockingTouchesNoLimit()
    {
        AppRule rule;
        setSwitch(rule, RuleSwitch::Blocked, true, 7);
        AppRule expected;
        expected.blocked = true;
        QCOMPARE(rule, expected);
    }

    void prioritiesAreSetAndAnnounced()
    {
        RuleMap rules;
        QCOMPARE(act(rules, u"high"_s), u"High priority: app"_s);
        QCOMPARE(rules.value(u"app"_s).priority, u"High"_s);
        QCOMPARE(act(rules, u"low"_s), u"Low priority: app"_s);
        QCOMPARE(rules.value(u"app"_s).priority, u"Low"_s);
        QCOMPARE(act(rules, u"normal"_s), u"Normal priority: app"_s);
        QCOMPARE(rules.value(u"app"_s).priority, u"Normal"_s);
    }

    void aRuleBackAtItsDefaultsStays()
    {
        RuleMap rules;
        act(rules, u"high"_s);
        act(rules, u"normal"_s);
        QVERIFY(rules.contains(u"app"_s));
    }

    void resetErasesTheRule()
    {
        RuleMap rules;
        act(rules, u"block"_s);
        QCOMPARE(act(rules, u"reset"_s), u"Rule reset: app"_s);
        QVERIFY(!rules.contains(u"app"_s));
    }

    void resetWithoutARuleLeavesNoneAndIsAnnounced()
    {
        RuleMap rules;
        QCOMPARE(act(rules, u"reset"_s), u"Rule reset: app"_s);
        QVERIFY(rules.isEmpty());
    }

    void anUnknownActionLeavesADefaultRuleUnannounced()
    {
        RuleMap rules;
        QCOMPARE(act(rules, u"Block"_s), QString());
        QCOMPARE(rules, RuleMap({{u"app"_s, AppRule()}}));
    }

    void namesThatLookLikePlaceholdersAreAnnouncedToTheLetter()
    {
        RuleMap rules;
        QCOMPARE(applyAction(rules, u"%2 %1"_s, u"block"_s, 5), u"%2 %1 blocked"_s);
        QCOMPARE(applyAction(rules, u"%1"_s, u"dl"_s, 5), u"Download limit on for %1"_s);
        QCOMPARE(applyAction(rules, u"%2"_s, u"high"_s, 5), u"High priority: %2"_s);
    }

    void namesInOtherLetterCaseAreOtherRules()
    {
        RuleMap rules;
        applyAction(rules, u"App"_s, u"block"_s, 5);
        QVERIFY(!ruleFor(rules, u"app"_s).blocked);
        applyAction(rules, u"app"_s, u"high"_s, 5);
        QCOMPARE(rules.keys(), QStringList({u"App"_s, u"app"_s}));
    }

    void aPriorityIsKeptAsTypedUnlessEmpty()
    {
        QCOMPARE(priorityFromText(u"  urgent \u202Eoh\t"_s), u"urgent \u202Eoh"_s);
        QCOMPARE(priorityFromText(u"high"_s), u"high"_s);
        QCOMPARE(priorityFromText(QString()), u"Normal"_s);
        QCOMPARE(priorityFromText(u" \t "_s), u"Normal"_s);
    }

    void aLimitIsReadLenientlyAndClamped_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("kbps");

        QTest::newRow("number") << u"300"_s << 300;
        QTest::newRow("low bound") << u"1"_s << 1;
        QTest::newRow("high bound") << u"100000"_s << 100000;
        QTest::newRow("above") << u"100001"_s << 100000;
        QTest::newRow("zero") << u"0"_s << 1;
        QTest::newRow("negative") << u"-20"_s << 1;
        QTest::newRow("letters") << u"fast"_s << 1;
        QTest::newRow("number with unit") << u"300 KB"_s << 1;
        QTest::newRow("fraction") << u"2.5"_s << 1;
        QTest::newRow("hexadecimal") << u"0x10"_s << 1;
        QTest::newRow("empty") << QString() << 1;
        QTest::newRow("too large for its type") << u"99999999999"_s << 1;
        QTest::newRow("blanks around") << u" 42 "_s << 42;
    }

    void aLimitIsReadLenientlyAndClamped()
    {
        QFETCH(QString, text);
        QTEST(limitFromText(text), "kbps");
    }

private:
    static QString act(RuleMap &rules, const QString &action)
    {
        return applyAction(rules, u"app"_s, action, 5);
    }
};

TOVAN_APPLESS_TEST(apprule_test, AppRuleTest)
#include "apprule_test.moc"
