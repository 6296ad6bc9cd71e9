#include "settings/storedrules.h"
#include "tests/settings/storefixture.h"
#include "tests/support/testmain.h"

#include <QRandomGenerator>
#include <QSettings>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

AppRule randomRule(QRandomGenerator &random)
{
    const auto flag = [&random] { return random.bounded(2) == 1; };
    return {flag(), flag(), true, flag() ? u"High"_s : u"Low"_s, random.bounded(100), 7};
}

RuleMap randomRules(QRandomGenerator &random)
{
    RuleMap rules;
    const int count = random.bounded(8);
    for (int i = 0; i < count; ++i)
        rules.insert(QString(QChar(u'a' + random.bounded(10))), randomRule(random));
    return rules;
}

/// Whether each field is the one of `before` or of `after`.
bool isBetween(const AppRule &rule, const AppRule &before, const AppRule &after)
{
    const auto either = [&](auto AppRule::*field) {
        return rule.*field == before.*field || rule.*field == after.*field;
    };
    return either(&AppRule::dlLimit) && either(&AppRule::ulLimit) && either(&AppRule::blocked)
        && either(&AppRule::priority) && either(&AppRule::dlKbps) && either(&AppRule::ulKbps);
}

QMap<QString, QVariant> content(QSettings &store)
{
    QMap<QString, QVariant> values;
    const QStringList keys = store.allKeys();
    for (const QString &key : keys)
        values.insert(key, store.value(key));
    return values;
}

} // namespace

/// A save to a store that has each key changed at once, as a registry has, by a process that ends
/// after any of the changes.
class InterruptedSaveTest : public QObject, private StoreFixture
{
    Q_OBJECT

    /// A store of its own, on which the first `changes` changes of the save are made. Returns what
    /// all of them would have been.
    static int saveInterrupted(QSettings &store, const RuleMap &rules, int changes)
    {
        int made = 0;
        const auto mayGoOn = [&made, changes] { return made++ < changes; };
        const StoreWriter writer{[&](const QString &key, const QVariant &value) {
                                     if (mayGoOn())
                                         store.setValue(key, value);
                                 },
                                 [&](const QString &key) {
                                     if (mayGoOn())
                                         store.remove(key);
                                 }};
        writeRules(store, rules, writer);
        return made;
    }
    /// A store that holds these rules, in memory alone: there is no folder where a file is.
    std::unique_ptr<QSettings> storeOf(const RuleMap &rules)
    {
        auto store = std::make_unique<QSettings>(storeFile() + u"/%1"_s.arg(m_stores++),
                                                 QSettings::IniFormat);
        saveInterrupted(*store, rules, std::numeric_limits<int>::max());
        return store;
    }

    int m_stores = 0;

private Q_SLOTS:
    void init()
    {
        prepare();
        writeFile({});
    }
    void noRuleThatStaysIsEverMissing();
    void theStateAfterwardsIsTheSameAsOnAnEmptyStore_data();
    void theStateAfterwardsIsTheSameAsOnAnEmptyStore();
    void rulesInTheirPlacesAreWrittenOnce();
};

void InterruptedSaveTest::noRuleThatStaysIsEverMissing()
{
    QRandomGenerator random(20260201);
    for (int round = 0; round < 60; ++round) {
        const RuleMap before = randomRules(random);
        const RuleMap after = randomRules(random);
        const int changes = saveInterrupted(*storeOf(before), after, 0);
        for (int made = 0; made <= changes; ++made) {
            const auto store = storeOf(before);
            saveInterrupted(*store, after, made);
            const RuleMap found = readRules(*store, 5);
            for (const auto &[app, rule] : before.asKeyValueRange())
                QVERIFY2(!after.contains(app) || found.contains(app), qPrintable(app));
            for (const auto &[app, rule] : found.asKeyValueRange()) {
                const AppRule was = before.value(app, after.value(app));
                const AppRule willBe = after.value(app, before.value(app));
                QVERIFY2(before.contains(app) || after.contains(app), qPrintable(app));
                QVERIFY2(isBetween(rule, was, willBe), qPrintable(app));
            }
            if (made == changes)
                QCOMPARE(found, after);
            // The next save makes up for what this one has left behind.
            saveInterrupted(*store, after, std::numeric_limits<int>::max());
            QCOMPARE(content(*store), content(*storeOf(after)));
        }
    }
}

void InterruptedSaveTest::theStateAfterwardsIsTheSameAsOnAnEmptyStore_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("more elements") << QByteArray("size=3\n1\\app=a\n2\\app=b\n3\\app=c\n");
    QTest::newRow("holes") << QByteArray("size=9\n3\\app=a\n9\\app=b\n");
    QTest::newRow("a wrong size") << QByteArray("size=1\n1\\app=a\n2\\app=b\n7\\app=c\n");
    QTest::newRow("the largest size")
        << QByteArray("size=2147483647\n1\\app=b\n2147483647\\app=z\n");
    QTest::newRow("foreign keys") << QByteArray(
        "size=2\n1\\app=a\n1\\something=1\n1\\app\\below=1\n2\\3\\app=x\nother=1\nother\\app=2\n"
        "01\\app=y\n0\\app=z\n-1\\app=w\n");
}

void InterruptedSaveTest::theStateAfterwardsIsTheSameAsOnAnEmptyStore()
{
    QFETCH(QByteArray, before);
    for (const RuleMap &rules : {RuleMap(), RuleMap{{u"b"_s, blockedRule()}},
                                 RuleMap{{u"a"_s, blockedRule()}, {u"b"_s, blockedRule()}}}) {
        writeFile("[rules]\n" + before);
        {
            QSettings store(storeFile(), QSettings::IniFormat);
            saveInterrupted(store, rules, std::numeric_limits<int>::max());
            QCOMPARE(content(store), content(*storeOf(rules)));
        }
    }
}

void InterruptedSaveTest::rulesInTheirPlacesAreWrittenOnce()
{
    RuleMap rules{{u"a"_s, blockedRule()}, {u"b"_s, blockedRule()}};
    const auto store = storeOf(rules);
    rules[u"b"_s].dlKbps = 9;
    QCOMPARE(saveInterrupted(*store, rules, 0), 2 * 7 + 1);
}

TOVAN_GUILESS_TEST(interruptedsave_test, InterruptedSaveTest)
#include "interruptedsave_test.moc"
