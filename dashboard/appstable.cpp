#include "app/lumetrawindow.h"

#include "app/formatting.h"
#include "dashboard/appsfilter.h"
#include "widgets/celltable.h"
#include "widgets/displaytext.h"
#include "widgets/tablecells.h"

#include <QLabel>
#include <QScopedValueRollback>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

void setLabelText(QLabel *label, const QString &text)
{
    if (label)
        label->setText(text);
}

/// Writes the value of a summary card, which screen readers say after the card's title.
void setCardValue(QLabel *label, const QString &value)
{
    if (!label || label->text() == value)
        return;
    label->setText(value);
    QWidget *card = label->parentWidget();
    card->setAccessibleName(card->findChild<QLabel *>(u"appMeta"_s)->text() + u' ' + value);
}

} // namespace

void LumetraWindow::refreshDashboard()
{
    const QString downRate = formatRate(traffic.currentDownBytes);
    const QString upRate = formatRate(traffic.currentUpBytes);
    setLabelText(rateLabel, "DL "_L1 + downRate + "    UL "_L1 + upRate);
    setCardValue(downloadValue, downRate);
    setCardValue(uploadValue, upRate);
    setCardValue(activeAppsValue, QString::number(samples.size()));
    setCardValue(monthValue, formatBytes(usage.monthBytes));

    if (appsTable)
        refreshAppsTable();
    refreshRulesTable();

    setLabelText(sessionLabel,
                 "Session: "_L1 + formatBytes(traffic.sessionBytes) + " / Month: "_L1
                     + formatBytes(usage.monthBytes) + " ("_L1
                     + QString::number(usedPercent(usage.monthBytes, settings.monthlyLimitBytes))
                     + "%)"_L1);
    setLabelText(peakLabel,
                 "Peak: "_L1 + formatRate(traffic.peakDownBytes) + " down | "_L1
                     + formatRate(traffic.peakUpBytes) + " up"_L1);
    setLabelText(topAppLabel,
                 samples.isEmpty() ? u"Top app: waiting for activity"_s
                                   : "Top app: "_L1 + displayedName(samples.first().name) + " ("_L1
                         + QString::number(samples.first().socketTotal()) + " sockets)"_L1);
    setStatus(u"Applications: %1    Today: %2    Month: %3    Package: %4"_s.arg(
        QString::number(samples.size()), formatBytes(usage.todayBytes),
        formatBytes(usage.monthBytes), formatBytes(settings.monthlyLimitBytes)));
    refreshSettingsSummary();
}

void LumetraWindow::refreshAppsTable()
{
    if (appsTable->postpone([this] { refreshAppsTable(); }))
        return;
    const QScopedValueRollback filling(fillingAppsTable, true);
    // An edit in a cell lasts until the next refresh, and so does the editor it is made in.
    appsTable->dropEdit();

    const QList<AppSample> shown
        = shownSamples(samples, rules, {currentTab, currentQuickFilter, searchText});
    const int appRows = static_cast<int>(std::min<qsizetype>(settings.maxTableRows, shown.size()));
    const int firstAppRow = settings.showSystemRow ? 1 : 0;
    const int rows = std::max(appRows + firstAppRow, 1);
    // New items take the old ones' places, which keeps the current cell, the highlight and the
    // scroll position where they are; rows that are left over go last.
    if (rows > appsTable->rowCount())
        appsTable->setRowCount(rows);
    fillAppsTable(shown.first(appRows));
    if (rows < appsTable->rowCount()) {
        // Where the current row goes another one becomes current, and that is no wish to edit it.
        const QuietCurrentCell quietly(*appsTable);
        appsTable->setRowCount(rows);
    }
}

void LumetraWindow::fillAppsTable(const QList<AppSample> &shown)
{
    CellFilling filling(*appsTable);
    const QString downRate = formatRate(traffic.currentDownBytes);
    const QString upRate = formatRate(traffic.currentUpBytes);
    const QString noRate = formatRate(0);
    if (settings.showSystemRow) {
        setAppRow(filling, 0, u"This PC"_s, downRate, upRate, u"Normal"_s, u"Off"_s, u"Off"_s,
                  u"Off"_s, QString::number(samples.size()), true);
    }

    const int firstAppRow = settings.showSystemRow ? 1 : 0;
    const QString defaultLimit = formatLimit(settings.defaultLimitKbps);
    for (int i = 0; i < shown.size(); ++i) {
        const AppSample &sample = shown.at(i);
        appPaths.insert(sample.name, sample.path);
        // Nobody counts octets per process: the machine's traffic stands on one row.
        const bool carriesRates = i == 0 && !settings.showSystemRow;
        setAppRow(filling, firstAppRow + i, "  "_L1 + sample.name, carriesRates ? downRate : noRate,
                  carriesRates ? upRate : noRate, u"Normal"_s, defaultLimit, defaultLimit, u"Off"_s,
                  QString::number(sample.socketTotal()), false);
    }

    if (!settings.showSystemRow && shown.isEmpty()) {
        setAppRow(filling, 0, u"No matching apps"_s, noRate, noRate, u"Normal"_s, u"Off"_s,
                  u"Off"_s, u"Off"_s, u"0"_s, false);
    }
}
