#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/windowlayout.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

constexpr QRect wholeScreen(0, 0, 1600, 1000);
// Places in the window.
constexpr QPoint titleText(60, 17);
constexpr QPoint titleBar(500, 17);
constexpr QPoint page(500, 400);

/// The program with its window and the mini monitor.
struct ManagedProgram
{
    ManagedProgram()
        : program(desktop, [](AppSettings &settings) {
              settings.closeToTray = true;
              settings.miniWidgetEnabled = true;
          })
    {
        program.start();
        QTRY_COMPARE(tray.icons().size(), 1);
        QVERIFY(program.isActive());
        QTRY_VERIFY(program.mini().isShown());
    }

    /// Drags with a button of the pointer, in two moves.
    void drag(QPoint from, QPoint by, int button = 1)
    {
        const QPoint half = from + by / 2;
        const QPoint to = from + by;
        desktop.act(u"mousemove %1 %2 mousedown %3 mousemove %4 %5 mousemove %6 %7 mouseup %3"_s
                        .arg(from.x())
                        .arg(from.y())
                        .arg(button)
                        .arg(half.x())
                        .arg(half.y())
                        .arg(to.x())
                        .arg(to.y()));
    }
    QPoint inWindow(QPoint place) const { return program.window().geometry.topLeft() + place; }
    void doubleClick(QPoint position)
    {
        desktop.act(
            u"mousemove %1 %2 click --repeat 2 --delay 20 1"_s.arg(position.x()).arg(position.y()));
    }
    /// Waits until the pointer's last events were handled: each is, once the next one is.
    void settle() { QVERIFY(program.ticks()); }
    void hide()
    {
        desktop.screen().askToClose(program.window().id);
        QTRY_COMPARE(program.window().id, xcb_window_t{XCB_WINDOW_NONE});
    }
    void choose(const QString &entry) { tray.choose(tray.menu().child(entry)); }

    Desktop desktop;
    NotifierTray tray{desktop.bus(u"tray"_s)};
    Program program;
};

} // namespace

/// The frameless windows under a window manager, by pointer.
class WindowManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTitleBarDragsTheWindow_data();
    void theTitleBarDragsTheWindow();
    void neitherTheRightButtonNorThePageDragsTheWindow();
    void aDoubleClickMaximisesAndRestores_data();
    void aDoubleClickMaximisesAndRestores();
    void aMaximisedWindowIsNotDragged();
    void theButtonsMinimiseMaximiseAndRestore();
    void theWindowComesBackFromTheTrayWhereItWas();
    void aMinimisedWindowComesBackFromTheTray();
    void theMiniMonitorIsDraggedAlsoOffTheScreen();
    void theMiniMonitorIsAboveAllAndInNoTaskbar();
    void theMiniMonitorComesBackWhereItWasDragged();
};

void WindowManagerTest::theTitleBarDragsTheWindow_data()
{
    QTest::addColumn<QPoint>("place");
    QTest::newRow("bar") << titleBar;
    QTest::newRow("text") << titleText;
}

void WindowManagerTest::theTitleBarDragsTheWindow()
{
    QFETCH(QPoint, place);
    ManagedProgram running;
    const QRect before = running.program.window().geometry;
    running.drag(running.inWindow(place), {-75, 41});
    QTRY_COMPARE(running.program.window().geometry, before.translated(-75, 41));
    running.desktop.act(u"mousemove 1200 900"_s);
    running.settle();
    QCOMPARE(running.program.window().geometry, before.translated(-75, 41));
}

void WindowManagerTest::neitherTheRightButtonNorThePageDragsTheWindow()
{
    ManagedProgram running;
    const QRect before = running.program.window().geometry;
    running.drag(running.inWindow(titleBar), {50, 50}, 3);
    running.drag(running.inWindow(page), {50, 50});
    running.settle();
    QCOMPARE(running.program.window().geometry, before);
}

void WindowManagerTest::aDoubleClickMaximisesAndRestores_data()
{
    theTitleBarDragsTheWindow_data();
}

void WindowManagerTest::aDoubleClickMaximisesAndRestores()
{
    QFETCH(QPoint, place);
    ManagedProgram running;
    const QRect before = running.program.window().geometry;
    running.doubleClick(running.inWindow(place));
    QTRY_VERIFY(running.program.window().isMaximized());
    QTRY_COMPARE(running.program.window().geometry, wholeScreen);
    running.doubleClick(running.inWindow(place));
    QTRY_VERIFY(!running.program.window().isMaximized());
    QTRY_COMPARE(running.program.window().geometry, before);
}

void WindowManagerTest::aMaximisedWindowIsNotDragged()
{
    ManagedProgram running;
    running.program.click(maximizeButton);
    QTRY_COMPARE(running.program.window().geometry, wholeScreen);
    running.drag(titleBar, {60, 60});
    running.settle();
    QVERIFY(running.program.window().isMaximized());
    QCOMPARE(running.program.window().geometry, wholeScreen);
}

void WindowManagerTest::theButtonsMinimiseMaximiseAndRestore()
{
    ManagedProgram running;
    const QRect before = running.program.window().geometry;
    running.program.click(maximizeButton);
    QTRY_COMPARE(running.program.window().geometry, wholeScreen);
    // The buttons keep their distance from the right edge.
    running.program.click(maximizeButton + QPoint(wholeScreen.width() - before.width(), 0));
    QTRY_COMPARE(running.program.window().geometry, before);
    QVERIFY(!running.program.window().isMaximized());

    running.program.click(minimizeButton);
    QTRY_VERIFY(running.program.window().isMinimized());
    QVERIFY(running.program.mini().isShown());
    running.desktop.act(u"windowactivate %1"_s.arg(running.program.window().id));
    QTRY_VERIFY(!running.program.window().isMinimized());
    QCOMPARE(running.program.window().geometry, before);
}

void WindowManagerTest::theWindowComesBackFromTheTrayWhereItWas()
{
    ManagedProgram running;
    const QRect before = running.program.window().geometry;
    running.drag(running.inWindow(titleBar), {-50, 30});
    QTRY_COMPARE(running.program.window().geometry, before.translated(-50, 30));
    running.hide();
    running.tray.click(u"Activate"_s);
    QVERIFY(running.program.isActive());
    QCOMPARE(running.program.window().geometry, before.translated(-50, 30));

    running.program.click(maximizeButton);
    QTRY_COMPARE(running.program.window().geometry, wholeScreen);
    running.hide();
    running.tray.click(u"Activate"_s);
    QVERIFY(running.program.isActive());
    QTRY_COMPARE(running.program.window().geometry, wholeScreen);
}

void WindowManagerTest::aMinimisedWindowComesBackFromTheTray()
{
    ManagedProgram running;
    running.program.click(minimizeButton);
    QTRY_VERIFY(running.program.window().isMinimized());
    running.tray.click(u"Activate"_s);
    QVERIFY(running.program.isActive());
    QVERIFY(running.program.window().isShown());

    running.program.click(minimizeButton);
    QTRY_VERIFY(running.program.window().isMinimized());
    running.hide();
    running.tray.click(u"Activate"_s);
    QVERIFY(running.program.isActive());
    QVERIFY(running.program.window().isShown());
}

void WindowManagerTest::theMiniMonitorIsDraggedAlsoOffTheScreen()
{
    ManagedProgram running;
    const QRect before = running.program.mini().geometry;
    running.drag(before.center(), {31, 77});
    QTRY_COMPARE(running.program.mini().geometry, before.translated(31, 77));
    running.drag(before.translated(31, 77).center(), {50, 50}, 3);
    running.settle();
    QCOMPARE(running.program.mini().geometry, before.translated(31, 77));

    // The window manager keeps a tenth of it on the screen.
    const QPoint held(before.left() + 31 + 5, before.top() + 77 + 40);
    running.drag(held, QPoint(1570, 990) - held);
    QTRY_COMPARE(running.program.mini().geometry.topLeft(), QPoint(1565, 950));
}

void WindowManagerTest::theMiniMonitorIsAboveAllAndInNoTaskbar()
{
    ManagedProgram running;
    QVERIFY(running.program.mini().states.contains(u"ABOVE"_s));
    QVERIFY(running.program.mini().types.contains(u"_NET_WM_WINDOW_TYPE_UTILITY"_s));
    // Without this some task bars show it all the same.
    QVERIFY(running.program.mini().states.contains(u"SKIP_TASKBAR"_s));
    running.program.click(maximizeButton);
    QTRY_COMPARE(running.program.window().geometry, wholeScreen);
    running.program.click(titleBar);
    QVERIFY(running.program.isActive());
    QCOMPARE(running.desktop.screen().windows(running.program.pid()).constLast().id,
             running.program.mini().id);
}

void WindowManagerTest::theMiniMonitorComesBackWhereItWasDragged()
{
    ManagedProgram running;
    const QRect before = running.program.mini().geometry;
    running.drag(before.center(), {-123, 45});
    QTRY_COMPARE(running.program.mini().geometry, before.translated(-123, 45));
    running.choose(u"Show Mini monitor"_s);
    QTRY_VERIFY(!running.program.mini().isShown());
    running.choose(u"Show Mini monitor"_s);
    QTRY_VERIFY(running.program.mini().isShown());
    QTRY_COMPARE(running.program.mini().geometry, before.translated(-123, 45));
    QTRY_VERIFY(running.program.mini().states.contains(u"ABOVE"_s));
    QVERIFY(running.program.mini().states.contains(u"SKIP_TASKBAR"_s));
}

TOVAN_GUILESS_TEST(windowmanager_test, WindowManagerTest)
#include "windowmanager_test.moc"
