#include "app/lumetrawindow.h"

#include "sampling/connections.h"
#include "sampling/systemqueries.h"
#include "widgets/celltable.h"
#include "widgets/displaytext.h"

#include <QLabel>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 maxConnections = 5;

QString cellText(const QTableWidget &table, int row, int column, const QString &otherwise)
{
    const QTableWidgetItem *item = table.item(row, column);
    return item ? item->text() : otherwise;
}

QString onOff(bool on)
{
    return on ? u"On"_s : u"Off"_s;
}

} // namespace

void LumetraWindow::showDetails(int row)
{
    if (!appsTable || row < 0 || row >= appsTable->rowCount())
        return;

    const QString name = cellText(*appsTable, row, 0, u"System overview"_s).trimmed();
    infoHeading->setText(displayedName(name));

    const AppRule rule = ruleFor(rules, name);
    const auto found = std::find_if(samples.cbegin(), samples.cend(),
                                    [&name](const AppSample &s) { return s.name == name; });
    const AppSample sample = found != samples.cend() ? *found : AppSample{};

    // One call for all: a cell's text may itself look like a placeholder.
    QString details
        = u"PID: %1\nTCP: %2    UDP: %3\nDL: %4    UL: %5\nSockets: %6\nPriority: %7\n"
          "DL Limit: %8\nUL Limit: %9\nBlocked: %10"_s.arg(
              sample.pid == 0 ? u"-"_s : QString::number(sample.pid), QString::number(sample.tcp),
              QString::number(sample.udp), cellText(*appsTable, row, 1, u"0 B/s"_s),
              cellText(*appsTable, row, 2, u"0 B/s"_s), cellText(*appsTable, row, 7, u"0"_s),
              displayedName(rule.priority), onOff(rule.dlLimit), onOff(rule.ulLimit),
              rule.blocked ? u"Yes"_s : u"No"_s);
    if (!sample.path.isEmpty())
        details += "\nPath: "_L1 + displayedName(sample.path);

    if (sample.pid != 0) {
        const auto connections = connectionsForPid(*queries, sample.pid, maxConnections);
        if (!connections.isEmpty())
            details += "\n\nConnections:"_L1;
        for (const ConnectionEntry &entry : connections) {
            details += u"\n%1  %2 -> %3  %4"_s.arg(entry.protocol, entry.local, entry.remote,
                                                   entry.state);
        }
    }
    infoDetails->setText(details);
}
