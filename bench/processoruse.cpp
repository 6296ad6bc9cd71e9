#include "bench/processoruse.h"

#include "bench/report.h"
#include "bench/surroundings.h"

#include <QElapsedTimer>
#include <QSettings>

#include <array>

using namespace Qt::StringLiterals;

namespace {

/// What one program takes over one period after another.
struct Use
{
    QString name;
    QString path;
    QString home; ///< where its settings are
    bool hidden = false;
    Sample processor = {}; ///< milliseconds a second
    Sample server = {}; ///< the display's, likewise
    Sample wakeUps = {}; ///< a second
    Sample resident = {}; ///< MiB
};

void measureUse(Surroundings &surroundings, Use &use, int seconds)
{
    Program program(use.path, use.home);
    Screen &screen = surroundings.screen();
    const xcb_window_t window = screen.awaitWindow(program.pid());
    if (use.hidden)
        screen.closeWindow(window);
    settleDown();

    const auto ownTime = [&] { return processorMillisecondsBesides(surroundings.besides()); };
    const auto serverTime = [&] { return processorMillisecondsOf(screen.server()); };
    QElapsedTimer clock;
    const double own = ownTime();
    const double server = serverTime();
    const double wakeUps = voluntarySwitchesOf(program.pid());
    clock.start();
    pass(seconds * qint64{1000});
    const double elapsed = double(clock.nsecsElapsed()) / 1e9;
    use.processor.values.append((ownTime() - own) / elapsed);
    use.server.values.append((serverTime() - server) / elapsed);
    use.wakeUps.values.append((voluntarySwitchesOf(program.pid()) - wakeUps) / elapsed);
    use.resident.values.append(memoryUseOf(program.pid()).resident / 1024);
    program.requireRunning();
}

/// Settings of which only this is no default: three seconds between two ticks.
void storeLongInterval(const QString &home)
{
    QSettings store(home + "/config/Tovan/Tovan Network Monitor.conf"_L1, QSettings::NativeFormat);
    store.setValue("refreshIntervalMs", 3000);
}

} // namespace

void measureProcessor(Surroundings &surroundings, Report &report, int rounds, int seconds)
{
    const auto use = [&](const QString &name, const QString &path, bool isHidden = false) {
        return Use{name, path, surroundings.home(name), isHidden};
    };
    Use shown = use(u"shown"_s, monitorPath());
    Use hidden = use(u"hidden"_s, monitorPath(), true);
    Use seldom = use(u"shown, every 3 s"_s, monitorPath());
    Use gnome = use(u"gnome-system-monitor"_s, u"gnome-system-monitor"_s);
    Use xfce = use(u"xfce4-taskmanager"_s, u"xfce4-taskmanager"_s);
    storeLongInterval(seldom.home);
    const std::array uses{&shown, &hidden, &seldom, &gnome, &xfce};
    for (int round = 0; round < rounds; ++round) {
        for (Use *measured : uses)
            measureUse(surroundings, *measured, seconds);
    }
    for (const Use *measured : uses) {
        const auto add = [&](const char *figure, const Sample &sample, const QString &unit) {
            report.add(surroundingsName, QLatin1StringView(figure) + measured->name, sample, unit);
        };
        add("processor, ", measured->processor, u"ms/s"_s);
        add("processor of the display, ", measured->server, u"ms/s"_s);
        if (measured != &hidden)
            add("wake-ups, ", measured->wakeUps, u"1/s"_s);
        add("resident memory, ", measured->resident, u"MiB"_s);
    }
    // At the default interval one wake-up is the tick's; no more than two are anybody else's.
    report.addAgainst(surroundingsName, "wake-ups, "_L1 + hidden.name, hidden.wakeUps, 3, true,
                      u"1/s"_s);
    const auto compare = [&](const Use &own, const Use &other, double bar) {
        report.addAgainst(surroundingsName, own.name + " / "_L1 + other.name,
                          ratios(own.processor, other.processor), bar);
    };
    compare(shown, gnome, 0.75);
    compare(seldom, gnome, 0.35); // gnome-system-monitor's own interval
    compare(hidden, gnome, 0.4);
    compare(shown, xfce, 1);
    compare(hidden, xfce, 1);
    report.add(surroundingsName, u"hidden / shown"_s, ratios(hidden.processor, shown.processor),
               u"x"_s);
}
