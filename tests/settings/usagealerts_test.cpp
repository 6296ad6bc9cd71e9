#include "tests/support/octets.h"
#include "tests/support/windowfixture.h"

#include <QCheckBox>

using namespace Qt::StringLiterals;

/// Usage alerts of the real window; a plan of 100 GB with its default levels.
class UsageAlertsTest : public QObject
{
    Q_OBJECT

    /// Lets one tick count that many bytes more.
    void use(quint64 bytes);
    /// The toast of that tick; empty when it raised none.
    QString toastOfTick(quint64 bytes);

    std::unique_ptr<WindowFixture> m_fixture;
    quint64 m_counter = 0;

private Q_SLOTS:
    void init();
    void cleanup();

    void theWarningIsRaisedAtExactlyItsLevel();
    void theCriticalAlertComesFirstAndTheWarningATickLater();
    void anAlertIsNotRaisedTwice();
    void alertsThatAreOffAreRaisedWhenTurnedOn();
    void theToastTellsTheLevelAndNotTheShare();
    void aPausedTickRaisesNothing();
    void aNewMonthAllowsTheAlertsAgain();
};

void UsageAlertsTest::init()
{
    m_counter = 0;
    m_fixture = std::make_unique<WindowFixture>();
}

void UsageAlertsTest::cleanup()
{
    m_fixture.reset();
}

void UsageAlertsTest::use(quint64 bytes)
{
    m_counter += bytes;
    m_fixture->system().setCounters(m_counter, 0);
    m_fixture->tick();
}

QString UsageAlertsTest::toastOfTick(quint64 bytes)
{
    m_fixture->find<QFrame>("toast")->hide();
    use(bytes);
    return m_fixture->toast();
}

void UsageAlertsTest::theWarningIsRaisedAtExactlyItsLevel()
{
    m_fixture->open();
    QCOMPARE(toastOfTick(85899345919), QString());
    QCOMPARE(toastOfTick(1), u"Warning usage: 80% reached"_s);
}

void UsageAlertsTest::theCriticalAlertComesFirstAndTheWarningATickLater()
{
    m_fixture->open();
    QCOMPARE(toastOfTick(96 * gigabyte), u"Critical usage: 95% reached"_s);
    QCOMPARE(toastOfTick(0), u"Warning usage: 80% reached"_s);
    QCOMPARE(toastOfTick(0), QString());
}

void UsageAlertsTest::anAlertIsNotRaisedTwice()
{
    m_fixture->open();
    QCOMPARE(toastOfTick(80 * gigabyte), u"Warning usage: 80% reached"_s);
    QCOMPARE(toastOfTick(1 * gigabyte), QString());
    QCOMPARE(toastOfTick(14 * gigabyte), u"Critical usage: 95% reached"_s);
    QCOMPARE(toastOfTick(50 * gigabyte), QString());
}

void UsageAlertsTest::alertsThatAreOffAreRaisedWhenTurnedOn()
{
    WindowFixture::store(u"notificationsEnabled"_s, false);
    m_fixture->open();
    QCOMPARE(toastOfTick(96 * gigabyte), QString());
    WindowFixture::click(m_fixture->setting<QCheckBox>(u"Enable alerts"_s));
    WindowFixture::click(m_fixture->button(u"Apply changes"_s));
    QCOMPARE(toastOfTick(0), u"Critical usage: 95% reached"_s);
    QCOMPARE(toastOfTick(0), u"Warning usage: 80% reached"_s);
}

void UsageAlertsTest::theToastTellsTheLevelAndNotTheShare()
{
    WindowFixture::store(u"notify80"_s, 10);
    WindowFixture::store(u"notify95"_s, 99);
    m_fixture->open();
    QCOMPARE(toastOfTick(50 * gigabyte), u"Warning usage: 10% reached"_s);
}

void UsageAlertsTest::aPausedTickRaisesNothing()
{
    m_fixture->open();
    WindowFixture::click(m_fixture->button(u"Pause"_s));
    QCOMPARE(toastOfTick(96 * gigabyte), QString());
    WindowFixture::click(m_fixture->button(u"Resume"_s));
    QCOMPARE(toastOfTick(0), u"Critical usage: 95% reached"_s);
}

void UsageAlertsTest::aNewMonthAllowsTheAlertsAgain()
{
    // What the last month used is no use of this one: the first tick starts it anew.
    WindowFixture::store(u"dayKey"_s, u"2001-02-03"_s);
    WindowFixture::store(u"monthKey"_s, u"2001-02"_s);
    WindowFixture::store(u"monthBytes"_s, 99 * gigabyte);
    m_fixture->open();
    QCOMPARE(toastOfTick(0), QString());
    QCOMPARE(toastOfTick(81 * gigabyte), u"Warning usage: 80% reached"_s);
}

TOVAN_WINDOW_TEST(usagealerts_test, UsageAlertsTest)
#include "usagealerts_test.moc"
