// What one tick costs the window, beside the least that a table of this size can cost: a bare
// QTableWidget of the same size and style sheet, filled anew. The system's answers are scripted, so
// that nothing but the window is measured; the store is saved into memory, so that no disk is
// waited for.
#include "app/lumetrawindow.h"
#include "bench/report.h"
#include "bench/scriptedticks.h"
#include "shell/theme.h"

#include <QApplication>
#include <QHeaderView>
#include <QSettings>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

void fillBare(QTableWidget &table, int rows, int round)
{
    table.clearContents();
    table.setRowCount(rows);
    QSignalBlocker quietly(table.model());
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
    quietly.unblock();
    Q_EMIT table.model()->dataChanged(table.model()->index(0, 0),
                                      table.model()->index(rows - 1, 7));
}

struct Series
{
    Sample ticks;
    Sample bare;
};

Series measure(int processes, int rounds)
{
    QStringList applications;
    for (int i = 0; i < processes; ++i)
        applications.append(u"application-%1"_s.arg(i));
    scriptTick(applications, 0);
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

    Series series;
    for (int round = 1; round <= rounds; ++round) {
        scriptTick(applications, round);
        series.ticks.values.append(millisecondsOfTick(window));
        series.bare.values.append(
            millisecondsUntilSettled([&] { fillBare(*bare, processes + 1, round); }));
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
    return report.finish(QApplication::arguments().value(1));
}
