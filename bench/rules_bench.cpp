// What thousands of rules cost the window: a tick on each of the two pages that show applications,
// and a key in the Rules Manager's search. The system's answers are scripted, so that nothing but
// the window is measured; what is saved goes into memory, so that no disk is waited for.
#include "app/lumetrawindow.h"
#include "bench/report.h"
#include "bench/scriptedticks.h"
#include "settings/settingsstore.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLockFile>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int processes = 1000;

/// Names of applications, of which every second one is found by the letter "v".
QStringList applicationNames(int count)
{
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append((i % 2 == 0 ? u"application-%1"_s : u"service-%1"_s).arg(i));
    return names;
}

/// A store that has a rule for each of the applications and nothing else of note.
void storeRulesFor(const QStringList &applications)
{
    StoredState state = emptyState(QDate::currentDate());
    state.settings.maxTableRows = 1000;
    state.settings.refreshIntervalMs = 10000; // the ticks are the benchmark's
    for (int i = 0; i < applications.size(); ++i)
        state.rules.insert(applications.at(i),
                           {i % 3 == 0, i % 5 == 0, i % 7 == 0, u"High"_s, 100 + i, 50});
    QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
    store.clear();
    writeStore(store, state);
}

/// The only widget of this type that reads so to those who hear the window.
template <typename Widget> Widget &named(const QWidget &window, const QString &name)
{
    const auto widgets = window.findChildren<Widget *>();
    const auto found = std::ranges::find(widgets, name, &QWidget::accessibleName);
    if (found == widgets.end()) {
        std::fprintf(stderr, "there is no \"%s\"\n", qPrintable(name));
        std::exit(1);
    }
    return **found;
}

/// What a key takes that is struck in the field until the window shows what follows from it.
double millisecondsOfKey(QLineEdit &field, Qt::Key key, const QString &text = {})
{
    return millisecondsUntilSettled([&] {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&field, &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&field, &release);
    });
}

void requireRows(const QTableWidget &table, int expected)
{
    if (table.rowCount() == expected)
        return;
    std::fprintf(stderr, "%d rows instead of %d\n", table.rowCount(), expected);
    std::exit(1);
}

struct Series
{
    int rules = 0;
    Sample saved = {}; ///< ticks that save, on the Dashboard; all others do not
    Sample dashboard = {};
    Sample rulesManager = {};
    Sample typed = {}; ///< keys that leave half of the rows
    Sample erased = {}; ///< keys that bring them all back
};

Series measure(int rules)
{
    const QStringList applications = applicationNames(rules);
    const QStringList running = applications.first(processes);
    storeRulesFor(applications);
    int round = 0;
    scriptTick(running, round);
    LumetraWindow window;
    window.show();
    settle();
    const auto tick = [&] {
        scriptTick(running, ++round);
        return millisecondsOfTick(window);
    };

    constexpr int saves = 9;
    constexpr int rounds = 31;
    Series series{rules};
    tick();
    while (series.saved.values.size() < saves)
        series.saved.values.append(tick());

    // As long as another program holds the store, nothing is saved, and nobody waits for it.
    QLockFile inUse(QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).fileName() + ".lock"_L1);
    if (!inUse.lock()) {
        std::fputs("the store cannot be locked\n", stderr);
        std::exit(1);
    }
    tick();
    while (series.dashboard.values.size() < rounds)
        series.dashboard.values.append(tick());

    named<QPushButton>(window, u"Rules"_s).click();
    settle();
    const auto &table = named<QTableWidget>(window, u"Rules Manager"_s);
    auto &search = named<QLineEdit>(window, u"Filter rules..."_s);
    requireRows(table, rules);
    while (series.rulesManager.values.size() < rounds) {
        series.rulesManager.values.append(tick());
        series.typed.values.append(millisecondsOfKey(search, Qt::Key_V, u"v"_s));
        requireRows(table, rules / 2);
        series.erased.values.append(millisecondsOfKey(search, Qt::Key_Backspace));
        requireRows(table, rules);
    }
    return series;
}

} // namespace

/// Argument: the file for the JSON.
int main(int argc, char *argv[])
{
    const QTemporaryDir directory(u"/dev/shm/tovan-bench-XXXXXX"_s);
    qputenv("XDG_CONFIG_HOME", directory.path().toUtf8());
    QCoreApplication::setApplicationName(u"Tovan Network Monitor"_s);
    QCoreApplication::setOrganizationName(u"Tovan"_s);
    const QApplication app(argc, argv);

    struct Figure
    {
        QString name;
        Sample Series::*sample;
        double bar; ///< milliseconds
    };
    const QList<Figure> figures{{u"tick on the Dashboard"_s, &Series::dashboard, 30},
                                {u"tick on the Rules Manager"_s, &Series::rulesManager, 60},
                                {u"key typed into its search"_s, &Series::typed, 60},
                                {u"key erased there"_s, &Series::erased, 60}};
    const Series few = measure(1000);
    const Series many = measure(10000);
    const auto load = [](const Series &series) { return u"%1 rules"_s.arg(series.rules); };
    Report report;
    for (const Figure &figure : figures)
        report.add(load(few), figure.name, few.*figure.sample, u"ms"_s);
    report.add(load(few), u"tick on the Dashboard that saves"_s, few.saved, u"ms"_s);
    for (const Figure &figure : figures) {
        report.addAgainst(load(many), figure.name, many.*figure.sample, figure.bar, true, u"ms"_s);
        // No faster than the rows.
        report.addAgainst(load(many), figure.name + u" / that of %1"_s.arg(few.rules),
                          ratios(many.*figure.sample, few.*figure.sample),
                          double(many.rules) / few.rules);
    }
    report.add(load(many), u"tick on the Dashboard that saves"_s, many.saved, u"ms"_s);
    return report.finish(QApplication::arguments().value(1));
}
