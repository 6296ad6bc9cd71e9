#include "tests/support/octets.h"
#include "tests/support/testdesktop.h"
#include "tests/support/windowfixture.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

using namespace Qt::StringLiterals;

namespace {

const DesktopNotification critical{u"dialog-warning"_s, u"Monthly data almost finished"_s,
                                   u"You have used 90% of your monthly package."_s, 4000};
const DesktopNotification warning{u"dialog-warning"_s, u"High internet usage"_s,
                                  u"You have used 70% of your monthly package."_s, 4000};
const DesktopNotification hidden{u"dialog-information"_s, u"Still watching your usage"_s,
                                 u"Tovan is running in the background."_s, 2500};

/// The window at the moment when it has raised both alerts, the critical one first.
void raiseAlerts(WindowFixture &fixture)
{
    WindowFixture::store(u"notify80"_s, 70);
    WindowFixture::store(u"notify95"_s, 90);
    fixture.open();
    fixture.system().setCounters(96 * gigabyte, 0);
    fixture.tick();
    fixture.tick();
    fixture.tick();
}

} // namespace

/// Usage alerts as a notification service gets them.
class AlertBalloonsTest : public QObject
{
    Q_OBJECT

    TestDesktop &m_desktop;

public:
    explicit AlertBalloonsTest(TestDesktop &desktop) : m_desktop(desktop) { }

private Q_SLOTS:
    // In this order: with the first tray the toolkit decides for its kind.
    void withoutATrayBothAlertsAreNotified();
    void withoutATrayAndAServiceTheLastAlertWaits_data();
    void withoutATrayAndAServiceTheLastAlertWaits();
    void bothAlertsAreNotifiedInTheirOrder();
    void noAlertIsNotifiedWhileAlertsAreOff();
    void cleanup();

private:
    /// Everything that is notified until this notification comes.
    QList<DesktopNotification> notificationsUpTo(const DesktopNotification &last);
};

void AlertBalloonsTest::cleanup()
{
    TestDesktop::stop(TestDesktop::Service::Tray);
    TestDesktop::stop(TestDesktop::Service::Notifications);
    m_desktop.takeNotifications();
}

QList<DesktopNotification> AlertBalloonsTest::notificationsUpTo(const DesktopNotification &last)
{
    QList<DesktopNotification> all;
    // Where it does not come the caller sees that it is missing.
    static_cast<void>(QTest::qWaitFor(
        [&] { return (all += m_desktop.takeNotifications()).contains(last); }, patience));
    return all;
}

void AlertBalloonsTest::withoutATrayBothAlertsAreNotified()
{
    TestDesktop::start(TestDesktop::Service::Notifications);
    WindowFixture fixture;
    raiseAlerts(fixture);
    QCOMPARE(notificationsUpTo(warning), (QList{critical, warning}));
}

void AlertBalloonsTest::withoutATrayAndAServiceTheLastAlertWaits_data()
{
    using enum TestDesktop::Service;
    QTest::addColumn<QList<TestDesktop::Service>>("starting");
    QTest::newRow("for a service") << QList{Notifications};
    QTest::newRow("for both") << QList{Tray, Notifications};
}

void AlertBalloonsTest::withoutATrayAndAServiceTheLastAlertWaits()
{
    QFETCH(QList<TestDesktop::Service>, starting);
    WindowFixture fixture;
    raiseAlerts(fixture);
    // The bus has refused both, once it answers what is asked after them.
    QVERIFY(!QDBusConnection::sessionBus().interface()->isServiceRegistered(u"any.service"_s));
    for (const TestDesktop::Service service : std::as_const(starting))
        TestDesktop::start(service);
    QCOMPARE(notificationsUpTo(warning), QList{warning});
    // What closing to the tray brings comes last and shows that nothing came before it.
    fixture.window().close();
    QCOMPARE(notificationsUpTo(hidden), QList{hidden});
}

void AlertBalloonsTest::bothAlertsAreNotifiedInTheirOrder()
{
    TestDesktop::start(TestDesktop::Service::Tray);
    TestDesktop::start(TestDesktop::Service::Notifications);
    WindowFixture fixture;
    raiseAlerts(fixture);
    QCOMPARE(notificationsUpTo(warning), (QList{critical, warning}));
}

void AlertBalloonsTest::noAlertIsNotifiedWhileAlertsAreOff()
{
    TestDesktop::start(TestDesktop::Service::Tray);
    TestDesktop::start(TestDesktop::Service::Notifications);
    WindowFixture fixture;
    WindowFixture::store(u"notificationsEnabled"_s, false);
    WindowFixture::store(u"closeToTray"_s, true);
    fixture.open();
    fixture.system().setCounters(96 * gigabyte, 0);
    fixture.tick();
    // The message that closing to the tray brings comes last and shows that none came before it.
    fixture.window().close();
    QCOMPARE(notificationsUpTo(hidden), QList{hidden});
}

int alertballoons_test(int argc, char *argv[])
{
    prepareTestProcess();
    TestDesktop desktop;
    const QApplication app(argc, argv);
    desktop.connect();
    AlertBalloonsTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}
#include "alertballoons_test.moc"
