#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/windowlayout.h"
#include "tests/support/testmain.h"

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
struct ClosingProgram
{
    explicit ClosingProgram(const std::function<void(AppSettings &)> &change)
        : program(desktop, change)
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

    /// Types into the cell of that rule's limit, and leaves the editor open.
    bool typeDownloadLimit(const QString &text)
    {
        const QPoint cell = program.window().geometry.topLeft() + firstDownloadLimit;
        const bool open = QTest::qWaitFor(
            [&] {
                program.click(firstDownloadLimit); // until the row is there
                return desktop.screen().colourAt(cell - QPoint(26, 8)) == editorColour;
            },
            patience);
        const QRect area(cell - QPoint(20, 8), QSize(40, 16));
        const QImage before = desktop.screen().picture(area);
        desktop.act(u"key ctrl+a type "_s + text);
        return open
            && QTest::qWaitFor([&] { return desktop.screen().picture(area) != before; }, patience);
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
    void closingTheMiniMonitorSwitchesItOff();
    void aSignalEndsTheProgramAsExitDoes_data();
    void aSignalEndsTheProgramAsExitDoes();
    void aSignalWhileACellIsEditedSavesIt();
    void aSignalWithAnOpenMenuEndsTheProgram();
    void aSignalAfterAnotherChangesNothing();
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
    ClosingProgram running([mini](AppSettings &settings) {
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
    ClosingProgram running([](AppSettings &settings) {
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
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = true; });
    running.program.click(fileMenu);
    QTRY_VERIFY(running.hasMenu());
    running.desktop.act(u"key Up Return"_s); // the last entry
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::theCloseButtonHidesIntoTheTrayEveryTime()
{
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = true; });
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
    ClosingProgram running([](AppSettings &settings) {
        settings.closeToTray = false;
        settings.miniWidgetEnabled = true;
    });
    running.program.click(closeButton);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aMinimisedWindowIsClosed()
{
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = false; });
    running.program.click(minimizeButton);
    QTRY_VERIFY(running.program.window().isMinimized());
    running.desktop.screen().askToClose(running.program.window().id);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aWindowWithAnOpenMenuIsClosed()
{
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = false; });
    running.openRule();
    running.program.click(firstRule, 3);
    QTRY_VERIFY(running.hasMenu());
    running.desktop.screen().askToClose(running.program.window().id);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::exitWithAnOpenMenuEndsTheProgram()
{
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = true; });
    running.openRule();
    running.program.click(firstRule, 3);
    QTRY_VERIFY(running.hasMenu());
    running.exit();
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aWindowWithAnOpenEditorIsClosed()
{
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = false; });
    running.openRule();
    QVERIFY(running.typeDownloadLimit(u"123"_s));
    running.desktop.screen().askToClose(running.program.window().id);
    QVERIFY(running.program.endsWell());
    QCOMPARE(running.program.stored().rules.value(u"application"_s).dlKbps, 123);
}

void ClosingTest::closingTheMiniMonitorEndsNothing()
{
    ClosingProgram running([](AppSettings &settings) {
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

void ClosingTest::closingTheMiniMonitorSwitchesItOff()
{
    ClosingProgram running([](AppSettings &settings) { settings.miniWidgetEnabled = true; });
    Program &program = running.program;
    QTRY_VERIFY(program.mini().isShown());
    // Not --sync: a busy window manager may still call it active that has just lost the keyboard.
    running.desktop.act(u"windowactivate %1"_s.arg(program.mini().id));
    QTRY_COMPARE(running.desktop.screen().focusedWindow(), program.mini().id);
    running.desktop.act(u"key alt+F4"_s);
    QTRY_VERIFY(!program.mini().isShown());
    QTRY_VERIFY(!program.stored().settings.miniWidgetEnabled);
    QTRY_COMPARE(running.tray.menu().child(u"Show Mini monitor"_s).checked, 0);
    running.tray.choose(running.tray.menu().child(u"Show Mini monitor"_s));
    QTRY_VERIFY(program.mini().isShown());
}

void ClosingTest::aSignalEndsTheProgramAsExitDoes_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("hidden");
    for (const auto &[name, signal] : {std::pair("SIGTERM", SIGTERM), std::pair("SIGINT", SIGINT),
                                       std::pair("SIGHUP", SIGHUP)}) {
        QTest::newRow(name) << signal << false;
        QTest::addRow("%s, hidden", name) << signal << true;
    }
}

void ClosingTest::aSignalEndsTheProgramAsExitDoes()
{
    QFETCH(int, signal);
    QFETCH(bool, hidden);
    // Nothing but its end makes a program save that is paused.
    ClosingProgram running([](AppSettings &settings) {
        settings.closeToTray = true;
        settings.pauseOnLaunch = true;
        settings.miniWidgetEnabled = true;
    });
    if (hidden)
        running.hide();
    running.program.removeStore();
    running.program.send(signal);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aSignalWhileACellIsEditedSavesIt()
{
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = true; });
    running.openRule();
    QVERIFY(running.typeDownloadLimit(u"123"_s));
    running.program.send(SIGTERM);
    QVERIFY(running.program.endsWell());
    QCOMPARE(running.program.stored().rules.value(u"application"_s).dlKbps, 123);
}

void ClosingTest::aSignalWithAnOpenMenuEndsTheProgram()
{
    ClosingProgram running([](AppSettings &settings) { settings.closeToTray = true; });
    running.program.click(fileMenu);
    QTRY_VERIFY(running.hasMenu());
    running.program.send(SIGINT);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void ClosingTest::aSignalAfterAnotherChangesNothing()
{
    ClosingProgram running([](AppSettings &settings) {
        settings.closeToTray = true;
        settings.pauseOnLaunch = true;
    });
    running.program.removeStore();
    for (const int signal : {SIGHUP, SIGHUP, SIGTERM, SIGTERM, SIGINT})
        running.program.send(signal);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

TOVAN_GUILESS_TEST(closing_test, ClosingTest)
#include "closing_test.moc"
