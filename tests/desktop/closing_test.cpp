#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/windowlayout.h"

#include <QtTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

// Places in the window.
constexpr QPoint rulesFilter(527, 142);
constexpr QPoint firstRule(500, 218);
constexpr QPoint firstDownloadLimit(977, 218);
const QColor editorColour(0x09, 0x0d, 0x19);

/// A desktop with a tray, and the program on it with its icon there.
struct Running
{
    explicit Running(const std::function<void(AppSettings &)> &change) : program(desktop, change)
    {
        program.start();
        QTRY_COMPARE(tray.icons().size(), 1);
        QVERIFY(program.isActive());
    }

    /// Opens the rules page with the row of the seeded rule alone.
    void openRule()
    {
        program.click(rulesButton);
        program.click(rulesFilter);
        desktop.act(u"type application"_s);
    }

    bool hasMenu() { return !desktop.screen().menu(program.pid()).isEmpty(); }
    void hide()
    {
        desktop.screen().askToClose(program.window().id);
        QTRY_VERIFY(!program.window().isShown());
    }
    void exit() { tray.choose(tray.menu().child(u"Exit"_s)); }

    Desktop desktop;
    NotifierTray tray{desktop.bus(u"tray"_s)};
    Program program;
};

} // namespace

/// Every way in which the program ends, or does not.
class ClosingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exitEndsTheProgram_data();
    void exitEndsTheProgram();
    void exitSavesAlsoWhilePaused_data();
    void exitSavesAlsoWhilePaused();
    void theWindowsExitEndsTheProgram();
    void theCloseButtonHidesIntoTheTrayEveryTime();
    void theCloseButtonEndsTheProgramWithoutTheTray();
    void aMinimisedWindowIsClosed();
    void aWindowWithAnOpenMenuIsClosed();
    void exitWithAnOpenMenuEndsTheProgram();
    void aWindowWithAnOpenEditorIsClosed();
    void closingTheMiniMonitorEndsNothing();
    void aSignalEndsTheProgramAtOnce_data();
    void aSignalEndsTheProgramAtOnce();
};

void ClosingTest::exitEndsTheProgram_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("mini");
    for (const bool mini : {false, true}) {
        for (const char *state : {"visible", "hidden", "minimised", "maximised"}) {
            QTest::addRow("%s%s", state, mini ? " with the mini monitor" : "")
                << QString::fromLatin1(state) << mini;
        }
    }
}

void ClosingTest::exitEndsTheProgram()
{
    QFETCH(QString, state);
    QFETCH(bool, mini);
    Running running([mini](AppSettings &settings) {
        settings.closeToTray = true;
        settings.miniWidgetEnabled = mini;
    });
    Program &program = running.program;
    if (mini)
        QTRY_VERIFY(program.mini().isShown());
    if (state == u"hidden"_s) {
        running.hide();
    } else if (state == u"minimised"_s) {
        program.click(minimizeButton);
        QTRY_VERIFY(program.window().isMinimized());
    } else if (state == u"maximised"_s) {
        program.click(maximizeButton);
        QTRY_VERIFY(program.window().isMaximized());
    }
    running.exit();
    QVERIFY(program.endsWell());
    QVERIFY(program.storeIsWhole());
}

void ClosingTest::exitSavesAlsoWhilePaused_data()
{
    QTest::addColumn<bool>("hidden");
    QTest::newRow("visible") << false;
    QTest::newRow("hidden") << true;
}

void ClosingTest::exitSavesAlsoWhilePaused()
{
    QFETCH(bool, hidden);
    Running running([](AppSettings &settings) {
        settings.closeToTray = true;
        settings.pauseOnLaunch = true;
    });
    if (hidden)
        running.hide();
    running.program.removeStore();
    running.exit();
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::theWindowsExitEndsTheProgram()
{
    Running running([](AppSettings &settings) { settings.closeToTray = true; });
    running.program.click(fileMenu);
    QTRY_VERIFY(running.hasMenu());
    running.desktop.act(u"key Up Return"_s); // the last entry
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::theCloseButtonHidesIntoTheTrayEveryTime()
{
    Running running([](AppSettings &settings) { settings.closeToTray = true; });
    Program &program = running.program;
    for (int i = 0; i < 2; ++i) {
        program.click(closeButton);
        QTRY_VERIFY(!program.window().isShown());
        QVERIFY(program.ticks());
        running.tray.click(u"Activate"_s);
        QVERIFY(program.isActive());
    }
    QVERIFY(program.storeIsWhole());
}

void ClosingTest::theCloseButtonEndsTheProgramWithoutTheTray()
{
    Running running([](AppSettings &settings) {
        settings.closeToTray = false;
        settings.miniWidgetEnabled = true;
    });
    running.program.click(closeButton);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aMinimisedWindowIsClosed()
{
    Running running([](AppSettings &settings) { settings.closeToTray = false; });
    running.program.click(minimizeButton);
    QTRY_VERIFY(running.program.window().isMinimized());
    running.desktop.screen().askToClose(running.program.window().id);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aWindowWithAnOpenMenuIsClosed()
{
    Running running([](AppSettings &settings) { settings.closeToTray = false; });
    running.openRule();
    running.program.click(firstRule, 3);
    QTRY_VERIFY(running.hasMenu());
    running.desktop.screen().askToClose(running.program.window().id);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::exitWithAnOpenMenuEndsTheProgram()
{
    Running running([](AppSettings &settings) { settings.closeToTray = true; });
    running.openRule();
    running.program.click(firstRule, 3);
    QTRY_VERIFY(running.hasMenu());
    running.exit();
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aWindowWithAnOpenEditorIsClosed()
{
    Running running([](AppSettings &settings) { settings.closeToTray = false; });
    running.openRule();
    const QPoint cell = running.program.window().geometry.topLeft() + firstDownloadLimit;
    QVERIFY(QTest::qWaitFor([&] {
        running.program.click(firstDownloadLimit); // until the row is there
        return running.desktop.screen().colourAt(cell - QPoint(26, 8)) == editorColour;
    }));
    const QRect text(cell - QPoint(20, 8), QSize(40, 16));
    const QImage before = running.desktop.screen().picture(text);
    running.desktop.act(u"key ctrl+a type 123"_s);
    QTRY_VERIFY(running.desktop.screen().picture(text) != before);
    running.desktop.screen().askToClose(running.program.window().id);
    QVERIFY(running.program.endsWell());
    QCOMPARE(running.program.stored().rules.value(u"application"_s).dlKbps, 123);
}

void ClosingTest::closingTheMiniMonitorEndsNothing()
{
    Running running([](AppSettings &settings) {
        settings.closeToTray = true;
        settings.miniWidgetEnabled = true;
    });
    Program &program = running.program;
    program.click(closeButton);
    QTRY_VERIFY(!program.window().isShown());
    running.desktop.screen().askToClose(program.mini().id);
    QTRY_VERIFY(!program.mini().isShown());
    QVERIFY(program.ticks());
}

void ClosingTest::aSignalEndsTheProgramAtOnce_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("hidden");
    QTest::newRow("SIGTERM") << SIGTERM << false;
    QTest::newRow("SIGTERM, hidden") << SIGTERM << true;
    QTest::newRow("SIGINT") << SIGINT << false;
    QTest::newRow("SIGINT, hidden") << SIGINT << true;
}

void ClosingTest::aSignalEndsTheProgramAtOnce()
{
    QFETCH(int, signal);
    QFETCH(bool, hidden);
    Running running([](AppSettings &settings) { settings.closeToTray = true; });
    if (hidden)
        running.hide();
    QVERIFY(running.program.ticks());
    QVERIFY(running.program.isEndedBy(signal));
    QVERIFY(running.program.storeIsWhole());
}

QTEST_GUILESS_MAIN(ClosingTest)
#include "closing_test.moc"
