// The whole program as a user has it, on a desktop of the benchmark's own and beside the desktops'
// own system monitors: what it takes of the processor and of the memory, and how long it takes to
// appear. Every program runs alone, on the same display and the same load.
#include "bench/loads.h"
#include "bench/programs.h"
#include "bench/report.h"
#include "bench/screen.h"
#include "bench/traffic.h"
#include "tests/support/testdesktop.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint32_t windowColour = 0x101827; ///< the sidebar's, and the bare window's
constexpr int settlingSeconds = 10;

const QString loadName = u"desktop"_s;

/// Everything that the programs find.
class Surroundings
{
public:
    Surroundings()
        : m_home(QDir::tempPath() + "/tovan-bench-XXXXXX"_L1),
          m_programs(QCoreApplication::applicationDirPath() + "/load-XXXXXX"_L1)
    {
        qputenv("XDG_RUNTIME_DIR", m_home.path().toLocal8Bit());
        m_desktop.connect();
        TestDesktop::start(TestDesktop::Service::Tray);
        TestDesktop::start(TestDesktop::Service::Notifications);
        m_manager.emplace(u"openbox"_s, m_home.path());
        m_screen.emplace();
        m_load.emplace(LoadShape{"desktop", 150, 8, 2, 60}, m_programs.path().toStdString());
        m_besides = runningProcesses();
    }

    Screen &screen() { return *m_screen; }
    /// A folder for the settings of one program.
    QString home(const QString &program) const
    {
        return m_home.filePath(program.section(u'/', -1));
    }
    /// The processes that are no part of what is measured.
    const QSet<pid_t> &besides() const { return m_besides; }

private:
    QTemporaryDir m_home;
    QTemporaryDir m_programs;
    TestDesktop m_desktop;
    std::optional<Program> m_manager;
    std::optional<Screen> m_screen;
    std::optional<Load> m_load;
    Traffic m_traffic;
    QSet<pid_t> m_besides;
};

/// Lets the traffic flow meanwhile.
void pass(qint64 milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

QString monitorPath()
{
    return QCoreApplication::applicationDirPath() + "/tovan-network-monitor"_L1;
}

/// What one program takes over one period after another.
struct Use
{
    QString name;
    QString path;
    bool hidden = false;
    Sample processor = {}; ///< milliseconds a second
    Sample server = {}; ///< the display's, likewise
    Sample resident = {}; ///< MiB
};

void measureUse(Surroundings &surroundings, Use &use, int seconds)
{
    Program program(use.path, surroundings.home(use.path));
    Screen &screen = surroundings.screen();
    const xcb_window_t window = screen.awaitWindow(program.pid());
    if (use.hidden)
        screen.closeWindow(window);
    pass(settlingSeconds * qint64{1000});

    const auto ownTime = [&] { return processorMillisecondsBesides(surroundings.besides()); };
    const auto serverTime = [&] { return processorMillisecondsOf(screen.server()); };
    QElapsedTimer clock;
    const double own = ownTime();
    const double server = serverTime();
    clock.start();
    pass(seconds * qint64{1000});
    const double elapsed = double(clock.nsecsElapsed()) / 1e9;
    use.processor.values.append((ownTime() - own) / elapsed);
    use.server.values.append((serverTime() - server) / elapsed);
    use.resident.values.append(memoryUseOf(program.pid()).resident / 1024);
    program.requireRunning();
}

void measureProcessor(Surroundings &surroundings, Report &report, int rounds, int seconds)
{
    Use shown{u"shown"_s, monitorPath()};
    Use hidden{u"hidden"_s, monitorPath(), true};
    Use gnome{u"gnome-system-monitor"_s, u"gnome-system-monitor"_s};
    Use xfce{u"xfce4-taskmanager"_s, u"xfce4-taskmanager"_s};
    const std::array uses{&shown, &hidden, &gnome, &xfce};
    for (int round = 0; round < rounds; ++round) {
        for (Use *use : uses)
            measureUse(surroundings, *use, seconds);
    }
    for (const Use *use : uses) {
        report.add(loadName, "processor, "_L1 + use->name, use->processor, u"ms/s"_s);
        report.add(loadName, "processor of the display, "_L1 + use->name, use->server, u"ms/s"_s);
        report.add(loadName, "resident memory, "_L1 + use->name, use->resident, u"MiB"_s);
    }
    for (const Use *use : {&shown, &hidden}) {
        for (const Use *other : {&gnome, &xfce}) {
            report.addAgainst(loadName, use->name + " / "_L1 + other->name,
                              ratios(use->processor, other->processor), 1);
        }
    }
    report.addAgainst(loadName, u"hidden / shown"_s, ratios(hidden.processor, shown.processor),
                      0.5);
}

/// Growth of values taken a second apart, as the least squares have it, for each minute.
double growthAMinute(const QList<double> &values)
{
    const auto count = double(values.size());
    double weighted = 0;
    double weights = 0;
    for (qsizetype i = 0; i < values.size(); ++i) {
        const double fromMiddle = double(i) - (count - 1) / 2;
        weighted += fromMiddle * values.at(i);
        weights += fromMiddle * fromMiddle;
    }
    return weights > 0 ? 60 * weighted / weights : 0;
}

void measureMemory(Surroundings &surroundings, Report &report, int minutes)
{
    Program program(monitorPath(), surroundings.home(u"memory"_s));
    surroundings.screen().awaitWindow(program.pid());
    QList<double> resident;
    QList<double> proportional;
    for (int second = 0; second < minutes * 60; ++second) {
        pass(1000);
        const MemoryUse use = memoryUseOf(program.pid());
        resident.append(use.resident);
        proportional.append(use.proportional / 1024);
    }
    program.requireRunning();

    Sample lastMinute;
    for (const double kibibytes : resident.last(60))
        lastMinute.values.append(kibibytes / 1024);
    report.addAgainst(loadName, u"resident memory in minute %1"_s.arg(minutes), lastMinute, 80,
                      true, u"MiB"_s);
    report.add(loadName, u"proportional memory in minute %1"_s.arg(minutes),
               Sample{proportional.last(60)}, u"MiB"_s);
    // In the first minute icons, fonts and the like are read for the first time.
    report.addAgainst(loadName, u"growth after the first minute"_s,
                      Sample{{growthAMinute(resident.sliced(60))}}, 16, true, u"KiB/m"_s);
}

/// From the start of the process until its window is seen.
double millisecondsToAppear(Surroundings &surroundings, const QString &path,
                            const QStringList &arguments = {})
{
    Screen &screen = surroundings.screen();
    screen.awaitNoColour(windowColour);
    QElapsedTimer clock;
    clock.start();
    const Program program(path, surroundings.home(path), arguments);
    screen.awaitColour(windowColour);
    return double(clock.nsecsElapsed()) / 1e6;
}

void measureStart(Surroundings &surroundings, Report &report, int starts)
{
    const QString bareWindow = QCoreApplication::applicationDirPath() + "/bare_window"_L1;
    Sample own;
    Sample bare;
    Sample text;
    // The first of each reads from the disk and is not counted.
    for (int start = 0; start <= starts; ++start) {
        const double ownTime = millisecondsToAppear(surroundings, monitorPath());
        const double bareTime = millisecondsToAppear(surroundings, bareWindow);
        const double textTime = millisecondsToAppear(surroundings, bareWindow, {u"Text"_s});
        if (start == 0)
            continue;
        own.values.append(ownTime);
        bare.values.append(bareTime);
        text.values.append(textTime);
    }
    report.add(u"start"_s, u"start to painted window"_s, own, u"ms"_s);
    report.add(u"start"_s, u"bare window"_s, bare, u"ms"_s);
    report.add(u"start"_s, u"bare window with one word"_s, text, u"ms"_s);
    report.addAgainst(u"start"_s, u"start / bare window"_s, ratios(own, bare), 2);
    report.add(u"start"_s, u"start / bare window with one word"_s, ratios(own, text), u"x"_s);
}

} // namespace

int main(int argc, char *argv[])
{
    holdIfAsked(argc, argv);
    // The first process of a namespace is only reached by signals that it handles.
    for (const int signal : {SIGINT, SIGTERM})
        std::signal(signal, [](int number) { ::_exit(128 + number); });
    const QCoreApplication application(argc, argv);
    QCommandLineParser arguments;
    const QCommandLineOption rounds(u"rounds"_s, u"Periods for each program."_s, u"n"_s, u"3"_s);
    const QCommandLineOption seconds(u"seconds"_s, u"Length of a period."_s, u"s"_s, u"60"_s);
    const QCommandLineOption minutes(u"minutes"_s, u"Length of the memory's run, 2 or more."_s,
                                     u"m"_s, u"10"_s);
    const QCommandLineOption starts(u"starts"_s, u"Starts of each program."_s, u"n"_s, u"21"_s);
    arguments.addOptions({rounds, seconds, minutes, starts});
    arguments.addHelpOption();
    arguments.addPositionalArgument(u"file"_s, u"Where the JSON goes."_s);
    arguments.addPositionalArgument(u"section"_s, u"cpu, memory or start; all without any."_s,
                                    u"[section...]"_s);
    arguments.process(application);
    const QStringList positional = arguments.positionalArguments();
    const auto wants = [sections = positional.mid(1)](const QString &section) {
        return sections.isEmpty() || sections.contains(section);
    };

    enterBenchNetwork();
    Surroundings surroundings;
    Report report;
    if (wants(u"start"_s))
        measureStart(surroundings, report, arguments.value(starts).toInt());
    report.print();
    if (wants(u"cpu"_s))
        measureProcessor(surroundings, report, arguments.value(rounds).toInt(),
                         arguments.value(seconds).toInt());
    report.print();
    if (wants(u"memory"_s))
        measureMemory(surroundings, report, arguments.value(minutes).toInt());
    report.print();
    const QString path = positional.value(0);
    if (!path.isEmpty() && !report.write(path)) {
        std::fprintf(stderr, "%s cannot be written\n", qPrintable(path));
        return 1;
    }
    return report.allMet() ? 0 : 3;
}
