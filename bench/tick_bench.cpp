// What one tick costs the window, beside the least that a table of this size can cost: a bare
// QTableWidget of the same size and style sheet, filled anew. The system's answers are scripted, so
// that nothing but the window is measured; the store is saved into memory, so that no disk is
// waited for.
#include "app/lumetrawindow.h"
#include "bench/report.h"
#include "shell/theme.h"
#include "tests/support/scriptedsystem.h"
#include "tests/support/windowfixture.h"
#include "widgets/tablecells.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTimerEvent>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/// Lets everything that a refresh left to the event loop happen: layouts, resizing, painting.
void settle()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

void script(int processes, int round)
{
    ScriptedSystem &system = ScriptedSystem::instance();
    system.reset();
    system.setCounters(quint64(round) * 123456, quint64(round) * 23456);
    for (int i = 0; i < processes; ++i) {
        // A few counts change every tick, as they do on a real desktop.
        system.addProcess(quint32(1000 + i), u"application-%1"_s.arg(i),
                          8 + (i % 10 == round % 10 ? 1 : 0), 2);
    }
}

void fillBare(QTableWidget &table, int rows, int round)
{
    table.clearContents();
    table.setRowCount(rows);
    const CellFilling quietly(table);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < 8; ++column) {
            auto *item = new QTableWidgetItem(
                column == 0 ? u"  application-%1"_s.arg(row)
                            : QString::number((row + column + round) % 12) + " KB/s"_L1);
            if (column > 0)
                item->setTextAlignment(Qt::AlignCenter);
            table.setItem(row, column, item);
        }
    }
}

struct Series
{
    Sample ticks;
    Sample bare;
};

Series measure(int processes, int rounds)
{
    script(processes, 0);
    LumetraWindow window;
    window.show();
    QWidget bareWindow;
    bareWindow.setObjectName("root"_L1);
    bareWindow.resize(602, 545);
    bareWindow.setStyleSheet(mainStyleSheet());
    auto *bare = new QTableWidget(0, 8, &bareWindow);
    bare->setGeometry(0, 0, 602, 545);
    bare->setAlternatingRowColors(true);
    bare->verticalHeader()->hide();
    bare->verticalHeader()->setDefaultSectionSize(30);
    bare->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    bare->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    bareWindow.show();
    settle();

    QTimer *timer = sampleTimer(window);
    Series series;
    QElapsedTimer clock;
    const auto milliseconds = [&clock] { return double(clock.nsecsElapsed()) / 1e6; };
    for (int round = 1; round <= rounds; ++round) {
        script(processes, round);
        clock.start();
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
        settle();
        series.ticks.values.append(milliseconds());

        clock.start();
        fillBare(*bare, processes + 1, round);
        settle();
        series.bare.values.append(milliseconds());
    }
    return series;
}

} // namespace

/// Argument: the file for the JSON.
int main(int argc, char *argv[])
{
    // In memory: the save waits for no disk.
    const QTemporaryDir directory(u"/dev/shm/tovan-bench-XXXXXX"_s);
    qputenv("XDG_CONFIG_HOME", directory.path().toUtf8());
    QCoreApplication::setApplicationName(u"Tovan Network Monitor"_s);
    QCoreApplication::setOrganizationName(u"Tovan"_s);
    QApplication app(argc, argv);
    {
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        store.setValue("maxTableRows", 1000);
        store.setValue("refreshIntervalMs", 10000);
    }
    constexpr int rounds = 61;
    constexpr int few = 150;
    constexpr int many = 1000;
    Report report;
    const auto add = [&report](int processes, const Series &series) {
        const QString load = u"%1 rows"_s.arg(processes);
        report.add(load, u"tick of the window"_s, series.ticks, u"ms"_s);
        report.add(load, u"bare table filled anew"_s, series.bare, u"ms"_s);
        report.addAgainst(load, u"tick / bare table"_s, ratios(series.ticks, series.bare), 1.5);
    };
    const Series small = measure(few, rounds);
    add(few, small);
    const Series large = measure(many, rounds);
    add(many, large);
    report.addAgainst(u"%1 rows"_s.arg(many), u"tick / tick of %1 rows"_s.arg(few),
                      ratios(large.ticks, small.ticks), double(many + 1) / (few + 1));
    report.print();
    const QString path = QApplication::arguments().value(1);
    if (!path.isEmpty() && !report.write(path)) {
        std::fprintf(stderr, "%s cannot be written\n", qPrintable(path));
        return 1;
    }
    return report.allMet() ? 0 : 3;
}
