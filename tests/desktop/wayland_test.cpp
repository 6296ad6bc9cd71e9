#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/windowlayout.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

constexpr int screenHeight = 1000;
// Colours that only one thing on the screen has: the sidebar, and the mini monitor's rates.
const QColor sidebarColour(0x10, 0x18, 0x27);
const QColor miniColour(0x80, 0xf8, 0xff);
// Places in the window, whose sidebar begins below the title bar.
constexpr int titleBarHeight = 34;
constexpr int sidebarHeight = 766;
constexpr QPoint onTitleBar(300, 17);

/// The program on a Wayland compositor, which shows its screen on an X server and is given that
/// one's pointer.
struct WaylandProgram
{
    explicit WaylandProgram(bool withMini = false)
        : program(desktop, [withMini](AppSettings &settings) {
              settings.closeToTray = true;
              settings.miniWidgetEnabled = withMini;
          })
    {
        QProcessEnvironment environment = desktop.environment();
        environment.insert(u"XDG_RUNTIME_DIR"_s, folder.path());
        compositor.setProcessEnvironment(environment);
        // Nothing fades in or out: what is seen is there.
        QFile configuration(folder.filePath(u"weston.ini"_s));
        QVERIFY(configuration.open(QIODevice::WriteOnly));
        configuration.write(
            "[shell]\nstartup-animation=none\nclose-animation=none\npanel-position=none\n");
        configuration.close();
        compositor.start(u"weston"_s,
                         {u"--backend=x11-backend.so"_s, u"--use-pixman"_s, u"--width=1600"_s,
                          u"--height=1000"_s, u"--config="_s + configuration.fileName(),
                          u"--idle-time=0"_s, u"--socket=wayland-test"_s, u"--log=/dev/null"_s});
        QTRY_VERIFY(QFile::exists(folder.filePath(u"wayland-test"_s)));

        program.start({{u"QT_QPA_PLATFORM"_s, u"wayland"_s},
                       {u"WAYLAND_DISPLAY"_s, u"wayland-test"_s},
                       {u"XDG_RUNTIME_DIR"_s, folder.path()},
                       {u"DISPLAY"_s, QString()}});
        QTRY_COMPARE(tray.icons().size(), 1);
        QTRY_VERIFY(isShown());
    }

    bool isShown() { return desktop.screen().boundsOf(sidebarColour).height() >= sidebarHeight; }
    /// Top left of the window on the screen.
    QPoint position()
    {
        return desktop.screen().boundsOf(sidebarColour).topLeft() - QPoint(0, titleBarHeight);
    }
    /// Moves the pointer there. The compositor learns of it by the second event at the earliest.
    void sendPointer(QPoint to)
    {
        desktop.act(u"mousemove %1 %2 mousemove %3 %2"_s.arg(to.x() - 1).arg(to.y()).arg(to.x()));
    }
    /// Moves the pointer there and waits until the compositor shows it.
    void movePointer(QPoint to)
    {
        const QRect around(to, QSize(12, 12));
        const QImage before = desktop.screen().picture(around);
        QVERIFY(QTest::qWaitFor(
            [&] {
                // The compositor's own pointer moves by the same distances. Both are at one place
                // once they have met in a corner.
                desktop.act(u"mousemove 1599 999 mousemove 0 0"_s);
                sendPointer(to);
                return desktop.screen().picture(around) != before;
            },
            patience));
    }
    void click(QPoint place, const QString &how = u"click 1"_s)
    {
        movePointer(position() + place);
        desktop.act(how);
    }
    /// Presses, and moves until `done` says that what is dragged has followed.
    bool drag(QPoint from, QPoint by, const std::function<bool()> &done)
    {
        movePointer(from);
        desktop.act(u"mousedown 1"_s);
        // The first moves make the program hand the drag to the compositor, which then needs one.
        const QPoint to = from + by;
        const bool followed = QTest::qWaitFor(
            [&] {
                sendPointer(to);
                return done();
            },
            patience);
        desktop.act(u"mouseup 1"_s);
        return followed;
    }
    void hide()
    {
        click(closeButton);
        QTRY_VERIFY(!isShown());
    }

    Desktop desktop{Desktop::NoWindowManager};
    QTemporaryDir folder;
    OwnedProcess compositor;
    NotifierTray tray{desktop.bus(u"tray"_s)};
    Program program;
};

} // namespace

/// The program on Wayland, where it cannot place its windows itself.
class WaylandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCompositorDragsTheWindow();
    void theCompositorDragsTheMiniMonitor();
    void theWindowIsMaximisedAndRestored();
    void theWindowHidesInTheTrayAndComesBack();
    void aSecondStartBringsItBack();
    void exitEndsTheProgram_data();
    void exitEndsTheProgram();
    void aSignalEndsTheProgram();
};

void WaylandTest::theCompositorDragsTheWindow()
{
    WaylandProgram running;
    // The second drag shows that the first one has ended for the program too.
    for (const QPoint by : {QPoint(60, 40), QPoint(-30, 20)}) {
        const QPoint before = running.position();
        QVERIFY(running.drag(before + onTitleBar, by,
                             [&] { return running.position() == before + by; }));
    }
    running.click(rulesButton);
    // The pointer covers what is below and to the right of where it clicked.
    QTRY_COMPARE(running.desktop.screen().colourAt(running.position() + rulesButton - QPoint(6, 6)),
                 checkedColour);
}

void WaylandTest::theCompositorDragsTheMiniMonitor()
{
    WaylandProgram running(true);
    const auto mini
        = [&running] { return running.desktop.screen().boundsOf(miniColour).topLeft(); };
    QTRY_VERIFY(!running.desktop.screen().boundsOf(miniColour).isEmpty());
    running.hide(); // the compositor may have put the window over it
    const QPoint before = mini();
    const QPoint by(44, 66);
    QVERIFY(running.drag(before + QPoint(100, 10), by, [&] { return mini() == before + by; }));
}

void WaylandTest::theWindowIsMaximisedAndRestored()
{
    WaylandProgram running;
    const QRect before = running.desktop.screen().boundsOf(sidebarColour);
    running.click(maximizeButton);
    QTRY_COMPARE(running.desktop.screen().boundsOf(sidebarColour).height(),
                 screenHeight - titleBarHeight);
    const QPoint at = running.position() + onTitleBar;
    running.desktop.act(u"mousemove %1 %2 click --repeat 2 --delay 20 1"_s.arg(at.x()).arg(at.y()));
    QTRY_COMPARE(running.desktop.screen().boundsOf(sidebarColour), before);
}

void WaylandTest::theWindowHidesInTheTrayAndComesBack()
{
    WaylandProgram running;
    running.hide();
    QVERIFY(running.program.ticks());
    running.tray.click(u"Activate"_s);
    QTRY_VERIFY(running.isShown());
    QVERIFY(running.program.ticks());
}

void WaylandTest::aSecondStartBringsItBack()
{
    WaylandProgram running;
    running.hide();
    const auto second
        = running.program.startAnother({{u"XDG_ACTIVATION_TOKEN"_s, u"of a launcher"_s}});
    QVERIFY(endsSilently(*second));
    QTRY_VERIFY(running.isShown());
    QVERIFY(running.program.ticks());
}

void WaylandTest::exitEndsTheProgram_data()
{
    QTest::addColumn<bool>("hidden");
    QTest::newRow("visible") << false;
    QTest::newRow("hidden") << true;
}

void WaylandTest::exitEndsTheProgram()
{
    QFETCH(bool, hidden);
    WaylandProgram running(true);
    if (hidden)
        running.hide();
    running.tray.choose(running.tray.menu().child(u"Exit"_s));
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void WaylandTest::aSignalEndsTheProgram()
{
    WaylandProgram running;
    QVERIFY(running.program.ticks());
    running.program.removeStore();
    running.program.send(SIGTERM);
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

TOVAN_GUILESS_TEST(wayland_test, WaylandTest)
#include "wayland_test.moc"
