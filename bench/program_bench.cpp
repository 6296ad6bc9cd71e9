// The whole program as a user has it, on a desktop of the benchmark's own and beside the desktops'
// own system monitors: what it takes of the processor and of the memory, and how long it takes to
// appear. Every program runs alone, on the same display and the same load.
#include "bench/processoruse.h"
#include "bench/report.h"
#include "bench/surroundings.h"
#include "bench/writes.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <unistd.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint32_t windowColour = 0x101827; ///< the sidebar's, and the bare window's

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
    report.addAgainst(surroundingsName, u"resident memory in minute %1"_s.arg(minutes), lastMinute,
                      80, true, u"MiB"_s);
    report.addAgainst(surroundingsName, u"proportional memory in minute %1"_s.arg(minutes),
                      Sample{proportional.last(60)}, 30, true, u"MiB"_s);
    // In the first minute icons, fonts and the like are read for the first time.
    report.addAgainst(surroundingsName, u"growth after the first minute"_s,
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
    report.addAgainst(u"start"_s, u"start / bare window with one word"_s, ratios(own, text), 1.6);
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
    arguments.addPositionalArgument(
        u"section"_s, u"cpu, memory, start or writes; all without any."_s, u"[section...]"_s);
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
    if (wants(u"writes"_s))
        measureWrites(surroundings, report, arguments.value(rounds).toInt(),
                      arguments.value(seconds).toInt());
    return report.finish(positional.value(0));
}
