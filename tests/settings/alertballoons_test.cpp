#include "tests/support/testdesktop.h"
#include "tests/support/windowfixture.h"

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 gigabyte = 1024ULL * 1024 * 1024;

} // namespace

/// Usage alerts as a notification service gets them.
class AlertBalloonsTest : public QObject
{
    Q_OBJECT

    TestDesktop &m_desktop;

public:
    explicit AlertBalloonsTest(TestDesktop &desktop) : m_desktop(desktop) { }

private Q_SLOTS:
    void bothAlertsAreNotifiedInTheirOrder();
    void noAlertIsNotifiedWhileAlertsAreOff();
};

void AlertBalloonsTest::bothAlertsAreNotifiedInTheirOrder()
{
    WindowFixture fixture;
    WindowFixture::store(u"notify80"_s, 70);
    WindowFixture::store(u"notify95"_s, 90);
    fixture.open();
    fixture.system().setCounters(96 * gigabyte, 0);
    fixture.tick();
    fixture.tick();
    fixture.tick();

    QList<DesktopNotification> notifications;
    QTRY_VERIFY((notifications += m_desktop.takeNotifications()).size() >= 2);
    const QList<DesktopNotification> expected{
        {u"dialog-warning"_s, u"Monthly data almost finished"_s,
         u"You have used 90% of your monthly package."_s, 4000},
        {u"dialog-warning"_s, u"High internet usage"_s,
         u"You have used 70% of your monthly package."_s, 4000},
    };
    QCOMPARE(notifications, expected);
}

void AlertBalloonsTest::noAlertIsNotifiedWhileAlertsAreOff()
{
    WindowFixture fixture;
    WindowFixture::store(u"notificationsEnabled"_s, false);
    WindowFixture::store(u"closeToTray"_s, true);
    fixture.open();
    fixture.system().setCounters(96 * gigabyte, 0);
    fixture.tick();
    // The message that closing to the tray brings comes last and shows that none came before it.
    fixture.window().close();
    QList<DesktopNotification> notifications;
    QTRY_VERIFY(!(notifications += m_desktop.takeNotifications()).isEmpty());
    const DesktopNotification expected{u"dialog-information"_s, u"Still watching your usage"_s,
                                       u"Tovan is running in the background."_s, 2500};
    QCOMPARE(notifications, QList{expected});
}

int main(int argc, char *argv[])
{
    prepareTestProcess();
    TestDesktop desktop;
    const QApplication app(argc, argv);
    desktop.startServices();
    AlertBalloonsTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}
#include "alertballoons_test.moc"
