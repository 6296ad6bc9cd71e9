#include "tests/support/teststore.h"
#include "tests/support/windowfixture.h"

#include "shell/minispeedwidget.h"

#include <QMenu>
#include <QPushButton>
#include <QSystemTrayIcon>

using namespace Qt::StringLiterals;

class LifecycleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowIsFramelessWithItsSizes()
    {
        WindowFixture fixture;
        fixture.open();
        QCOMPARE(fixture.window().windowTitle(), u"Tovan Network Monitor"_s);
        QVERIFY(fixture.window().windowFlags().testFlag(Qt::FramelessWindowHint));
        QCOMPARE(fixture.window().windowFlags() & Qt::WindowType_Mask, Qt::Window);
        QCOMPARE(fixture.window().minimumSize(), QSize(1180, 780));
        QCOMPARE(fixture.window().size(), QSize(1180, 800));
        QVERIFY(!fixture.window().windowIcon().pixmap(16, 16).isNull());
    }

    void theTimerRunsAtTheStoredIntervalAndTicksOnlyAfterIt()
    {
        WindowFixture fixture;
        WindowFixture::store(u"refreshIntervalMs"_s, 750);
        fixture.system().addProcess(10, u"alpha"_s, 1);
        fixture.open();
        const QTimer *timer = sampleTimer(fixture.window());
        QCOMPARE(timer->interval(), 750);
        QVERIFY(timer->isActive());
        QVERIFY(!timer->isSingleShot());
        QCOMPARE(fixture.appsTable()->rowCount(), 0);
        QTRY_COMPARE(fixture.appsTable()->rowCount(), 2);
    }

    void aMinimisedStartEndsHiddenWithTheMiniMonitorShown()
    {
        WindowFixture fixture;
        WindowFixture::store(u"startMinimized"_s, true);
        WindowFixture::store(u"miniWidgetEnabled"_s, true);
        LumetraWindow window;
        window.show();
        QVERIFY(window.isVisible());
        QTRY_VERIFY(window.isHidden());
        QVERIFY(miniMonitor()->isVisible());
    }

    void theMiniMonitorStartsBesideTheWindowsTopRight()
    {
        WindowFixture fixture;
        WindowFixture::store(u"miniWidgetEnabled"_s, true);
        fixture.open();
        const LumetraWindow &window = fixture.window();
        QVERIFY(miniMonitor()->isVisible());
        QCOMPARE(miniMonitor()->pos(), QPoint(window.width() - 250, 70));
    }

    void aPausedStartLeavesTheButtonAloneUntilItIsPressed()
    {
        WindowFixture fixture;
        WindowFixture::store(u"pauseOnLaunch"_s, true);
        fixture.system().addProcess(10, u"alpha"_s, 1);
        fixture.open();
        auto *button = static_cast<QPushButton *>(fixture.button(u"Pause"_s));
        fixture.tick();
        QCOMPARE(fixture.appsTable()->rowCount(), 0);

        // Sampling is paused already: the first press resumes it.
        WindowFixture::click(button);
        QCOMPARE(button->text(), u"Pause"_s);
        QCOMPARE(fixture.labelStarting(u"Monitoring resumed"_s)->text(), u"Monitoring resumed"_s);
        fixture.tick();
        QCOMPARE(fixture.appsTable()->rowCount(), 2);
    }

    void pausingChangesTheTextsAndTheButtonsColours()
    {
        WindowFixture fixture;
        fixture.open();
        auto *button = static_cast<QPushButton *>(fixture.button(u"Pause"_s));
        auto *status = fixture.labelStarting(u"Ready"_s);
        auto *trayMenu = fixture.window().findChild<QSystemTrayIcon *>()->contextMenu();
        QAction *trayAction = trayMenu->actions().at(3);
        QCOMPARE(trayAction->text(), u"Pause monitoring"_s);

        WindowFixture::click(button);
        QCOMPARE(button->text(), u"Resume"_s);
        QCOMPARE(button->styleSheet(),
                 u"background:#3b1218; color:#fecdd3; border:1px solid #7f1d1d;"_s);
        QCOMPARE(trayAction->text(), u"Resume monitoring"_s);
        QCOMPARE(status->text(), u"Monitoring paused"_s);

        // The same operation, and its entry keeps its text in both states.
        QAction *fileEntry = fixture.menuAction(u"Pause monitoring"_s);
        fileEntry->trigger();
        QCOMPARE(fileEntry->text(), u"Pause monitoring"_s);
        QCOMPARE(button->text(), u"Pause"_s);
        QCOMPARE(button->styleSheet(), QString());
        QCOMPARE(trayAction->text(), u"Pause monitoring"_s);
        QCOMPARE(status->text(), u"Monitoring resumed"_s);
        QVERIFY(!fixture.find<QFrame>("toast")->isVisible());
    }

    void aResetZeroesTheSessionAtOnceAndKeepsTheRates()
    {
        WindowFixture fixture;
        fixture.system().setCounters(1000, 1000);
        fixture.open();
        fixture.system().setCounters(4072, 2024);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"Session: "_s)->text(),
                 u"Session: 4.0 KB / Month: 4.0 KB (0%)"_s);
        QCOMPARE(fixture.labelStarting(u"Peak: "_s)->text(),
                 u"Peak: 3.0 KB/s down | 1.0 KB/s up"_s);

        WindowFixture::click(fixture.button(u"Reset session"_s));
        QCOMPARE(fixture.labelStarting(u"Session: "_s)->text(),
                 u"Session: 0 B / Month: 4.0 KB (0%)"_s);
        QCOMPARE(fixture.labelStarting(u"Peak: "_s)->text(), u"Peak: 0 B/s down | 0 B/s up"_s);
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Session counters reset"_s);
        QCOMPARE(fixture.labelStarting(u"DL "_s)->text(), u"DL 3.0 KB/s    UL 1.0 KB/s"_s);
    }

    void aResetWhilePausedStaysAtZeroUntilMonitoringResumes()
    {
        WindowFixture fixture;
        fixture.system().setCounters(0, 0);
        fixture.open();
        fixture.system().setCounters(2048, 0);
        fixture.tick();
        WindowFixture::click(fixture.button(u"Pause"_s));
        WindowFixture::click(fixture.button(u"Reset session"_s));
        fixture.system().setCounters(4096, 0);
        fixture.tick();
        QVERIFY(fixture.labelStarting(u"Session: "_s)->text().startsWith(u"Session: 0 B /"_s));
        WindowFixture::click(fixture.button(u"Resume"_s));
        fixture.tick();
        QVERIFY(fixture.labelStarting(u"Session: "_s)->text().startsWith(u"Session: 2.0 KB /"_s));
    }

    void closingHidesEveryTimeWhileItGoesToTheTray()
    {
        WindowFixture fixture;
        fixture.open();
        QAbstractButton *closeButton = fixture.find<QPushButton>("windowButtonClose");
        for (int i = 0; i < 2; ++i) {
            WindowFixture::click(closeButton);
            QVERIFY(fixture.window().isHidden());
            fixture.system().addProcess(static_cast<quint32>(10 + i), u"alpha"_s, 1);
            fixture.tick();
            QCOMPARE(fixture.appsTable()->rowCount(), i + 2);
            fixture.window().show();
        }
    }

    void closingReallyClosesWithoutTheTray()
    {
        WindowFixture fixture;
        WindowFixture::store(u"closeToTray"_s, false);
        fixture.open();
        removeStore();
        QVERIFY(fixture.window().close());
        QVERIFY(storeExists());
    }

    void exitClosesWhateverTheTraySettingSays()
    {
        WindowFixture fixture;
        fixture.open();
        removeStore();
        fixture.menuAction(u"Exit"_s)->trigger();
        QVERIFY(fixture.window().isHidden());
        QVERIFY(storeExists());
    }

    void anUnreadableBaselineMakesTheFirstTickTheWholeCounters()
    {
        WindowFixture fixture;
        fixture.system().interfaces = std::nullopt;
        fixture.open();
        fixture.system().setCounters(5 * 1024, 3 * 1024);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"DL "_s)->text(), u"DL 5.0 KB/s    UL 3.0 KB/s"_s);
    }

    void theFirstTickMeasuresFromTheStartOnly()
    {
        WindowFixture fixture;
        fixture.system().setCounters(1 << 30, 1 << 30);
        fixture.open();
        fixture.system().setCounters((1 << 30) + 1024, (1 << 30) + 2048);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"DL "_s)->text(), u"DL 1.0 KB/s    UL 2.0 KB/s"_s);
    }
};

TOVAN_WINDOW_TEST(lifecycle_test, LifecycleTest)
#include "lifecycle_test.moc"
