#include "tests/support/octets.h"
#include "tests/support/teststore.h"
#include "tests/support/windowfixture.h"

#include <QComboBox>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

QMap<QString, QVariant> storeContent()
{
    const QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
    QMap<QString, QVariant> values;
    const QStringList keys = store.allKeys();
    for (const QString &key : keys)
        values.insert(key, store.value(key));
    return values;
}

} // namespace

/// The real window on a store that it, or somebody else, wrote before.
class RestartTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowFixture> m_fixture;

private Q_SLOTS:
    void init();
    void cleanup();

    void aSecondStartFindsWhatTheFirstOneLeft();
    void aSecondStartSavesTheSameStore();
    void countersOfTheSameDayGoOnAfterARestart();
    void staleDaysAndMonthsStartAnewAtTheFirstTick();
    void aStaleStoreIsKeptUntilTheFirstTick();
    void anAlertIsRaisedAgainAfterARestart();
    void rulesAreRestoredWithRememberRulesOff();
    void everyUnpausedTickSaves();
    void closingSaves();
};

void RestartTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void RestartTest::cleanup()
{
    m_fixture.reset();
}

void RestartTest::aSecondStartFindsWhatTheFirstOneLeft()
{
    m_fixture->open();
    m_fixture->setting<QLineEdit>(u"Title"_s)->setText(u"Überwachung 😀"_s);
    m_fixture->setting<QLineEdit>(u"Refresh (ms)"_s)->setText(u"2500"_s);
    m_fixture->setting<QComboBox>(u"Accent"_s)->setCurrentText(u"Blue"_s);
    WindowFixture::click(m_fixture->button(u"Apply changes"_s));
    m_fixture->close();

    m_fixture->open();
    QCOMPARE(m_fixture->setting<QLineEdit>(u"Title"_s)->text(), u"Überwachung 😀"_s);
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), u"Überwachung 😀"_s);
    QCOMPARE(m_fixture->setting<QLineEdit>(u"Refresh (ms)"_s)->text(), u"2500"_s);
    QCOMPARE(m_fixture->setting<QComboBox>(u"Accent"_s)->currentText(), u"Blue"_s);
    QCOMPARE(sampleTimer(m_fixture->window())->interval(), 2500);
}

void RestartTest::aSecondStartSavesTheSameStore()
{
    WindowFixture::store(u"rules/size"_s, 2);
    WindowFixture::store(u"rules/1/app"_s, u"C:\\a/b 100% \"c\"\n😀"_s);
    WindowFixture::store(u"rules/1/priority"_s, u"High"_s);
    WindowFixture::store(u"rules/2/app"_s, u"curl"_s);
    m_fixture->open();
    m_fixture->tick();
    const auto first = storeContent();
    QVERIFY(first.contains(u"rules/2/app"_s));
    m_fixture->close();
    m_fixture->open();
    m_fixture->tick();
    QCOMPARE(storeContent(), first);
}

void RestartTest::countersOfTheSameDayGoOnAfterARestart()
{
    m_fixture->open();
    m_fixture->system().setCounters(3 * gigabyte, 0);
    m_fixture->tick();
    m_fixture->close();

    m_fixture->open();
    m_fixture->system().setCounters(4 * gigabyte, 1 * gigabyte);
    m_fixture->tick();
    QCOMPARE(WindowFixture::stored(u"todayBytes"_s).toULongLong(), 5 * gigabyte);
    QCOMPARE(WindowFixture::stored(u"monthBytes"_s).toULongLong(), 5 * gigabyte);
    QVERIFY(m_fixture->labelStarting(u"Session: 2.0 GB / Month: 5.0 GB (5%)"_s));
}

void RestartTest::staleDaysAndMonthsStartAnewAtTheFirstTick()
{
    WindowFixture::store(u"dayKey"_s, u"2001-02-03"_s);
    WindowFixture::store(u"monthKey"_s, u"2001-02"_s);
    WindowFixture::store(u"todayBytes"_s, 11 * gigabyte);
    WindowFixture::store(u"monthBytes"_s, 22 * gigabyte);
    m_fixture->open();
    m_fixture->system().setCounters(1 * gigabyte, 0);
    m_fixture->tick();
    QCOMPARE(WindowFixture::stored(u"todayBytes"_s).toULongLong(), 1 * gigabyte);
    QCOMPARE(WindowFixture::stored(u"monthBytes"_s).toULongLong(), 1 * gigabyte);
    QVERIFY(WindowFixture::stored(u"dayKey"_s) != u"2001-02-03"_s);
    QVERIFY(WindowFixture::stored(u"monthKey"_s) != u"2001-02"_s);
}

void RestartTest::aStaleStoreIsKeptUntilTheFirstTick()
{
    WindowFixture::store(u"dayKey"_s, u"2001-02-03"_s);
    WindowFixture::store(u"todayBytes"_s, 11 * gigabyte);
    m_fixture->open();
    WindowFixture::click(m_fixture->button(u"Apply changes"_s));
    QCOMPARE(WindowFixture::stored(u"dayKey"_s), u"2001-02-03"_s);
    QCOMPARE(WindowFixture::stored(u"todayBytes"_s).toULongLong(), 11 * gigabyte);
    QVERIFY(m_fixture->labelStarting(u"Applications: 0    Today: 11.0 GB    "_s));
}

void RestartTest::anAlertIsRaisedAgainAfterARestart()
{
    m_fixture->open();
    m_fixture->system().setCounters(85 * gigabyte, 0);
    m_fixture->tick();
    QCOMPARE(m_fixture->toast(), u"Warning usage: 80% reached"_s);
    m_fixture->close();
    m_fixture->open();
    m_fixture->tick();
    QCOMPARE(m_fixture->toast(), u"Warning usage: 80% reached"_s);
}

void RestartTest::rulesAreRestoredWithRememberRulesOff()
{
    WindowFixture::store(u"rememberRules"_s, false);
    WindowFixture::store(u"rules/size"_s, 1);
    WindowFixture::store(u"rules/1/app"_s, u"curl"_s);
    WindowFixture::store(u"rules/1/blocked"_s, true);
    for (int start = 0; start < 2; ++start) {
        m_fixture->open();
        m_fixture->tick();
        m_fixture->close();
    }
    QCOMPARE(WindowFixture::stored(u"rules/1/app"_s), u"curl"_s);
    QCOMPARE(WindowFixture::stored(u"rules/1/blocked"_s).toBool(), true);
    QCOMPARE(WindowFixture::stored(u"rememberRules"_s).toBool(), false);
}

void RestartTest::everyUnpausedTickSaves()
{
    m_fixture->open();
    for (int tick = 0; tick < 3; ++tick) {
        m_fixture->tick();
        QVERIFY(storeExists());
        removeStore();
    }
    WindowFixture::click(m_fixture->button(u"Pause"_s));
    m_fixture->tick();
    QVERIFY(!storeExists());
    WindowFixture::click(m_fixture->button(u"Resume"_s));
    m_fixture->tick();
    QVERIFY(storeExists());
}

void RestartTest::closingSaves()
{
    WindowFixture::store(u"closeToTray"_s, false);
    m_fixture->open();
    QVERIFY(storeExists());
    removeStore();
    m_fixture->window().close();
    QVERIFY(storeExists());
}

TOVAN_WINDOW_TEST(restart_test, RestartTest)
#include "restart_test.moc"
