// What one tick costs the window, beside the least that a table of this size can cost: a bare
// QTableWidget of the same size and style sheet, filled anew. The system's answers are scripted, so
// that nothing but the window is measured; the store is saved into memory, so that no disk is
// waited for.
#include "app/lumetrawindow.h"
#include "rules/tablecells.h"
#include "shell/theme.h"
#include "tests/support/scriptedsystem.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTimerEvent>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

double median(QList<double> values)
{
    std::ranges::sort(values);
    return values.at(values.size() / 2);
}

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

} // namespace

int main(int argc, char *argv[])
{
    // In memory: the save waits for no disk.
    const QTemporaryDir directory(u"/dev/shm/tovan-bench-XXXXXX"_s);
    qputenv("XDG_CONFIG_HOME", directory.path().toUtf8());
    QCoreApplication::setApplicationName(u"Tovan Network Monitor"_s);
    QCoreApplication::setOrganizationName(u"Tovan"_s);
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const int processes = arguments.value(1, u"150"_s).toInt();
    const int rounds = arguments.value(2, u"60"_s).toInt();
    {
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        store.setValue("maxTableRows", 1000);
        store.setValue("refreshIntervalMs", 10000);
    }
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

    auto *timer = window.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QList<double> ticks;
    QList<double> bares;
    QElapsedTimer clock;
    for (int round = 1; round <= rounds; ++round) {
        script(processes, round);
        clock.start();
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
        settle();
        ticks.append(double(clock.nsecsElapsed()) / 1e6);

        clock.start();
        fillBare(*bare, processes + 1, round);
        settle();
        bares.append(double(clock.nsecsElapsed()) / 1e6);
    }
    std::printf("processes %d: tick %.2f ms, bare table %.2f ms, ratio %.2f\n", processes,
                median(ticks), median(bares), median(ticks) / median(bares));
    return 0;
}
