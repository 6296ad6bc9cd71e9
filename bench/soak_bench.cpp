// One tick of the program's own window after the other, without a pause, on the real kernel:
// processes and their sockets come and go, an interface's counters grow, rules are there for some
// applications, and the window shows one page after the other. What the process holds may not grow.
#include "app/lumetrawindow.h"
#include "bench/loads.h"
#include "bench/resources.h"
#include "bench/soakguests.h"
#include "bench/traffic.h"
#include "settings/settingsstore.h"

#include <QApplication>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QTimerEvent>

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <span>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int ticksOfALine = 1000;
constexpr int ticksOfAPage = 100;

using Milliseconds = std::chrono::duration<double, std::milli>;

/// User and system time of this process, without that of its children.
Milliseconds processorTime()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto of = [](const timeval &time) {
        return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

/// What the ticks of one line came to.
struct Line
{
    Resources resources;
    double elapsed = 0; ///< milliseconds a tick
    double processor = 0; ///< likewise
};

/// A line's value that may not grow.
struct Bound
{
    const char *what;
    double (*valueOf)(const Line &line);
    bool largest; ///< of a quarter the largest value counts, not the middle one
    double growth; ///< how much more the last quarter may have than the first
    double factor; ///< and how many times as much
};

constexpr std::array bounds{
    // What 16 octets a tick come to between the middles of these quarters of a day.
    Bound{"resident memory, KiB", [](const Line &line) { return line.resources.resident; }, false,
          1024, 1},
    Bound{"descriptors", [](const Line &line) { return line.resources.descriptors; }, true, 0, 1},
    Bound{"resources on the X server",
          [](const Line &line) { return line.resources.serverResources; }, true, 0, 1},
    Bound{"pixmaps on the X server, KiB",
          [](const Line &line) { return line.resources.serverPixmaps; }, true, 0, 1},
    // A tick that gets slower has ever more to do. The machine itself is never as fast as before.
    Bound{"processor time of a tick, ms", [](const Line &line) { return line.processor; }, false, 0,
          1.5},
};

double valueOfQuarter(const Bound &bound, std::span<const Line> lines)
{
    std::vector<double> values;
    for (const Line &line : lines)
        values.push_back(bound.valueOf(line));
    std::ranges::sort(values);
    return bound.largest ? values.back() : values[values.size() / 2];
}

/// Says how the last quarter compares with the first; false where it has grown too much.
bool holds(const Bound &bound, std::span<const Line> lines)
{
    const std::size_t quarter = lines.size() / 4;
    const double first = valueOfQuarter(bound, lines.first(quarter));
    const double last = valueOfQuarter(bound, lines.last(quarter));
    const double most = std::max(first + bound.growth, first * bound.factor);
    const bool isMet = last <= most;
    std::printf("%s: %.4g in the first quarter, %.4g in the last, at most %.4g: %s\n", bound.what,
                first, last, most, isMet ? "met" : "NOT MET");
    return isMet;
}

/// A store with rules for some of the names that come and go.
void seedStore()
{
    StoredState state = emptyState(QDate::currentDate());
    state.settings.maxTableRows = 1000;
    state.settings.refreshIntervalMs = 10000; // the ticks are the benchmark's
    state.settings.miniWidgetEnabled = true;
    for (int i = 0; i < 20; ++i)
        state.rules.insert(QString::fromStdString(SoakGuests::nameOf(i)),
                           {true, i % 2 == 0, i % 3 == 0, u"High"_s, 100 + i, 50});
    QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
    writeStore(store, state);
}

/// The window as a user leaves it open.
class SoakedWindow
{
public:
    SoakedWindow()
    {
        m_window.show();
        settle();
        const auto timers = m_window.findChildren<QTimer *>(Qt::FindDirectChildrenOnly);
        m_timer = *std::ranges::find_if(timers, [](const QTimer *t) { return !t->isSingleShot(); });
        const auto buttons = m_window.findChildren<QPushButton *>();
        std::ranges::copy_if(buttons, std::back_inserter(m_pageButtons),
                             [](const QPushButton *b) { return b->property("class") == u"nav"_s; });
    }

    void tick()
    {
        QTimerEvent event(m_timer->timerId());
        QCoreApplication::sendEvent(m_timer, &event);
        settle();
    }
    void showNextPage()
    {
        m_page = (m_page + 1) % m_pageButtons.size();
        m_pageButtons.at(m_page)->click();
        settle();
    }
    /// Its window on the display.
    std::uint32_t id() const { return static_cast<std::uint32_t>(m_window.winId()); }

private:
    /// Lets everything that was left to the event loop happen: layouts, resizing, painting.
    static void settle()
    {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
    }

    LumetraWindow m_window;
    QTimer *m_timer = nullptr;
    QList<QPushButton *> m_pageButtons;
    qsizetype m_page = 0;
};

std::vector<Line> soak(SoakedWindow &window, SoakGuests &guests, int ticks)
{
    const bool isOnX = QGuiApplication::platformName() == "xcb"_L1;
    const ResourceWatch watch(isOnX ? window.id() : 0);
    std::vector<Line> lines;
    std::printf("%7s %9s %11s %11s %11s %9s %12s\n", "ticks", "Rss KiB", "descriptors",
                "X resources", "pixmaps KiB", "ms a tick", "processor ms");
    for (int done = 0; done < ticks;) {
        Milliseconds elapsed{};
        Milliseconds processor{};
        const int before = done;
        const int end = std::min(done + ticksOfALine, ticks);
        for (; done < end; ++done) {
            guests.step();
            if (done % ticksOfAPage == 0)
                window.showNextPage();
            const auto start = std::chrono::steady_clock::now();
            const Milliseconds used = processorTime();
            window.tick();
            processor += processorTime() - used;
            elapsed += std::chrono::steady_clock::now() - start;
        }
        const double count = done - before;
        Line line{watch.now(), elapsed.count() / count, processor.count() / count};
        line.resources.descriptors -= guests.descriptors();
        std::printf("%7d %9.0f %11.0f %11.0f %11.0f %9.2f %12.2f\n", done, line.resources.resident,
                    line.resources.descriptors, line.resources.serverResources,
                    line.resources.serverPixmaps, line.elapsed, line.processor);
        std::fflush(stdout);
        lines.push_back(line);
    }
    return lines;
}

} // namespace

/// Argument: how many ticks.
int main(int argc, char *argv[])
{
    enterBenchNetwork();
    // In memory: the save waits for no disk.
    const QTemporaryDir folder(u"/dev/shm/tovan-soak-XXXXXX"_s);
    qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
    QCoreApplication::setApplicationName(u"Tovan Network Monitor"_s);
    QCoreApplication::setOrganizationName(u"Tovan"_s);
    const QApplication application(argc, argv);
    const int ticks = QApplication::arguments().value(1).toInt();
    if (ticks < 4 * ticksOfALine) {
        std::fprintf(stderr, "soak_bench TICKS, %d or more\n", 4 * ticksOfALine);
        return 2;
    }

    seedStore();
    const Traffic traffic;
    const QTemporaryDir programs(QApplication::applicationDirPath() + u"/soak-XXXXXX"_s);
    SoakGuests guests((QApplication::applicationDirPath() + u"/soakguest"_s).toStdString(),
                      programs.path().toStdString());
    SoakedWindow window;
    const std::vector<Line> lines = soak(window, guests, ticks);

    const auto failures = std::ranges::count_if(
        bounds, [&lines](const Bound &bound) { return !holds(bound, lines); });
    return failures == 0 ? 0 : 3;
}
