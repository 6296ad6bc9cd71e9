#include "tests/desktop/support/program.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize screenSize(3900, 1900);
constexpr QRect firstMonitor(0, 0, 1400, 1900);
constexpr QRect secondMonitor(1400, 0, 2500, 1900); ///< has twice the pixels

// In logical pixels.
constexpr int windowWidth = 1180;
constexpr QSize miniSize(220, 92);
constexpr QRect imagesOfWindow(0, 34, 310, 95); ///< heads of sidebar and page
// On the screen.
constexpr QPoint windowPlace = secondMonitor.topLeft() + QPoint(20, 10);
constexpr QPoint miniPlace = secondMonitor.topLeft() + QPoint(20, 1680);

/// The program on a large screen. It is paused, so that it always shows the same.
struct ProgramOnScreens
{
    ProgramOnScreens()
        : program(desktop, [](AppSettings &settings) {
              settings.miniWidgetEnabled = true;
              settings.pauseOnLaunch = true;
          })
    {
        desktop.act(u"mousemove 0 0"_s);
    }

    void start(const QString &scaleFactors)
    {
        program.start({{u"QT_SCREEN_SCALE_FACTORS"_s, scaleFactors}});
        QVERIFY(QTest::qWaitFor(
            [this] { return desktop.screen().windows(program.pid()).size() == 2; }, patience));
    }

    ManagedWindow smallest()
    {
        auto windows = desktop.screen().windows(program.pid());
        std::ranges::sort(windows, {}, [](const auto &window) { return window.geometry.width(); });
        return windows.constFirst();
    }
    ManagedWindow largest()
    {
        auto windows = desktop.screen().windows(program.pid());
        std::ranges::sort(windows, {}, [](const auto &window) { return window.geometry.width(); });
        return windows.constLast();
    }

    /// Moves the windows to their places, until they are there in the size of these monitors.
    void moveWindows()
    {
        const auto move
            = [this](ManagedWindow (ProgramOnScreens::*window)(), QPoint place, int width) {
                  return QTest::qWaitFor(
                      [&] {
                          desktop.act(u"windowmove %1 %2 %3"_s.arg((this->*window)().id)
                                          .arg(place.x())
                                          .arg(place.y()));
                          const QRect geometry = (this->*window)().geometry;
                          return geometry.topLeft() == place && geometry.width() == 2 * width;
                      },
                      patience);
              };
        QVERIFY(move(&ProgramOnScreens::largest, windowPlace, windowWidth));
        QVERIFY(move(&ProgramOnScreens::smallest, miniPlace, miniSize.width()));
    }

    QImage images()
    {
        return desktop.screen().picture(
            {windowPlace + 2 * imagesOfWindow.topLeft(), 2 * imagesOfWindow.size()});
    }
    QImage mini() { return desktop.screen().picture({miniPlace, 2 * miniSize}); }
    QSize icon() { return desktop.screen().largestIcon(largest().id); }

    Desktop desktop{Desktop::Everything, screenSize};
    Program program;
};

} // namespace

/// Windows that come to a monitor with another ratio of device pixels to logical ones.
class ScreensTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void movedWindowsLookAsIfStartedThere();
};

void ScreensTest::movedWindowsLookAsIfStartedThere()
{
    ProgramOnScreens started;
    started.start(u"screen=2"_s);
    started.moveWindows();

    ProgramOnScreens moved;
    moved.desktop.addMonitor(u"first"_s, firstMonitor, true);
    moved.start(u"first=1;second=2"_s);
    moved.desktop.addMonitor(u"second"_s, secondMonitor);
    moved.moveWindows();

    QTRY_COMPARE(moved.images(), started.images());
    QTRY_COMPARE(moved.mini(), started.mini());
    QTRY_COMPARE(moved.icon(), started.icon());
}

TOVAN_GUILESS_TEST(screens_test, ScreensTest)
#include "screens_test.moc"
