#include "tests/desktop/support/embeddingtray.h"
#include "tests/desktop/support/notificationservice.h"
#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

const QString hiddenTitle = u"Still watching your usage"_s;

/// The program on a desktop without a tray, hidden when its window is closed.
struct ProgramWithoutTray
{
    ProgramWithoutTray()
        : program(desktop, [](AppSettings &settings) { settings.closeToTray = true; })
    {
        program.start();
        QVERIFY(program.isActive());
        QVERIFY(program.ticks());
    }

    /// Closes the window, which raises a message, and waits until the program has gone on.
    void hide()
    {
        desktop.screen().askToClose(program.window().id);
        QTRY_VERIFY(!program.window().isShown());
        QVERIFY(program.ticks());
    }

    /// Where the toolkit's own balloon is on the screen; empty when there is none.
    QRect balloon() { return desktop.screen().toolTip(program.pid()); }

    Desktop desktop;
    Program program;
};

} // namespace

/// Messages of a program whose desktop has no tray, or none yet.
class MessagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutATrayTheNotificationServiceShowsThem();
    void withoutEitherTheyWaitForATrayOnTheBus();
    void withoutEitherTheyWaitForAnEmbeddingTray();
    void withoutEitherTheyWaitForANotificationService();
    void whenItsEmbeddingTrayIsGoneTheyWaitForTheNext();
    void withATrayTheyAreShownOnce();
};

void MessagesTest::withoutATrayTheNotificationServiceShowsThem()
{
    ProgramWithoutTray running;
    const NotificationService service(running.desktop.bus(u"notifications"_s));
    running.hide();
    QTRY_COMPARE(service.titles(), QStringList(hiddenTitle));

    // It is not shown once more by a tray that comes later.
    NotifierTray tray(running.desktop.bus(u"tray"_s));
    QTRY_COMPARE(tray.icons().size(), 1);
    QVERIFY(running.program.ticks());
    QCOMPARE(service.titles(), QStringList(hiddenTitle));
}

void MessagesTest::withoutEitherTheyWaitForATrayOnTheBus()
{
    ProgramWithoutTray running;
    running.hide();
    NotifierTray tray(running.desktop.bus(u"tray"_s));
    // Such a tray leaves messages to the notification service: the icon asks for attention.
    QTRY_COMPARE(tray.icons().size(), 1);
    QTRY_COMPARE(tray.iconProperty(u"Status"_s).toString(), u"NeedsAttention"_s);
}

void MessagesTest::withoutEitherTheyWaitForAnEmbeddingTray()
{
    ProgramWithoutTray running;
    running.hide();
    QVERIFY(running.balloon().isEmpty());
    const EmbeddingTray tray(running.desktop.display());
    QTRY_VERIFY(!running.balloon().isEmpty());
    // It points to the icon, which is in the screen's corner.
    QVERIFY(QRect(0, 0, 24, 48).contains(running.balloon().topLeft()));
}

void MessagesTest::withoutEitherTheyWaitForANotificationService()
{
    ProgramWithoutTray running;
    running.hide();
    const NotificationService service(running.desktop.bus(u"notifications"_s));
    QTRY_COMPARE(service.titles(), QStringList(hiddenTitle));
    QVERIFY(running.program.ticks());
    QCOMPARE(service.titles(), QStringList(hiddenTitle));
}

void MessagesTest::whenItsEmbeddingTrayIsGoneTheyWaitForTheNext()
{
    ProgramWithoutTray running;
    {
        const EmbeddingTray tray(running.desktop.display());
        QTRY_VERIFY(tray.hasIcon());
    }
    running.hide();
    QVERIFY(running.balloon().isEmpty());
    const EmbeddingTray tray(running.desktop.display());
    QTRY_VERIFY(!running.balloon().isEmpty());
}

void MessagesTest::withATrayTheyAreShownOnce()
{
    ProgramWithoutTray running;
    NotifierTray tray(running.desktop.bus(u"tray"_s));
    QTRY_COMPARE(tray.icons().size(), 1);
    const NotificationService service(running.desktop.bus(u"notifications"_s));
    running.hide();
    QTRY_COMPARE(service.titles(), QStringList(hiddenTitle));
    QVERIFY(running.program.ticks());
    QCOMPARE(service.titles(), QStringList(hiddenTitle));
}

TOVAN_GUILESS_TEST(messages_test, MessagesTest)
#include "messages_test.moc"
