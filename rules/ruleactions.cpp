#include "app/lumetrawindow.h"

#include "rules/tableapplications.h"
#include "widgets/celltable.h"
#include "widgets/displaytext.h"
#include "widgets/tablecells.h"

#include <QLabel>

using namespace Qt::StringLiterals;

namespace {

/// The switch that a check box column shows, counted from the table's first such column.
std::optional<RuleSwitch> switchOfColumn(int column, int firstColumn)
{
    switch (column - firstColumn) {
    case 0:
        return RuleSwitch::DlLimit;
    case 1:
        return RuleSwitch::UlLimit;
    case 2:
        return RuleSwitch::Blocked;
    default:
        return std::nullopt;
    }
}

constexpr int appsFirstSwitch = 4; ///< "DL Limit", "UL Limit", "Block"
constexpr int rulesFirstSwitch = 2; ///< "DL", "UL", "Block"

} // namespace

void LumetraWindow::applyRuleAction(const QString &appName, const QString &action)
{
    if (!isRuleTarget(appName))
        return;

    const QString announcement = applyAction(rules, appName, action, settings.defaultLimitKbps);
    if (!announcement.isEmpty())
        showToast(announcement);
    refreshDashboard();
    saveSettings();
    const QString status = "Rule updated for "_L1 + displayedName(appName);
    if (announcement.isEmpty())
        announceStatus(status);
    else
        setStatus(status);
}

void LumetraWindow::toggleSelectedRowCheck(int column)
{
    if (!appsTable)
        return;
    const int row = appsTable->currentRow();
    if (!isRuleTarget(applicationInRow(*appsTable, row))) {
        announceStatus(u"Select an application row first."_s);
        return;
    }

    // The rule follows from the change of the check box.
    if (QTableWidgetItem *item = appsTable->item(row, column)) {
        item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
        showDetails(row);
    }
}

void LumetraWindow::appsTableItemChanged(QTableWidgetItem *item)
{
    if (fillingAppsTable || !item)
        return;
    const std::optional<RuleSwitch> which = switchOfColumn(item->column(), appsFirstSwitch);
    const int row = item->row();
    const QString appName = applicationInRow(*appsTable, row);
    if (!which || !isRuleTarget(appName))
        return;

    const bool checked = item->checkState() == Qt::Checked;
    setSwitch(rules[appName], *which, checked, settings.defaultLimitKbps);

    const QString text
        = u"%1 %2 for %3"_s.arg(appsTable->horizontalHeaderItem(item->column())->text(),
                                checked ? u"enabled"_s : u"disabled"_s, displayedName(appName));
    showToast(text);
    infoDetails->setText(text);
    showDetails(row);
    refreshRulesTable();
    saveSettings();
}

void LumetraWindow::rulesTableItemChanged(QTableWidgetItem *item)
{
    if (fillingRulesTable || !item)
        return;
    rulesTableContents.reset();
    const QString appName = applicationInRow(*rulesTable, item->row());
    if (!isRuleTarget(appName))
        return;

    // An edit of a column that holds no part of the rule leaves a rule as well.
    AppRule &rule = rules[appName];
    const int column = item->column();
    if (const auto which = switchOfColumn(column, rulesFirstSwitch))
        setSwitch(rule, *which, item->checkState() == Qt::Checked, settings.defaultLimitKbps);
    else if (column == 1)
        rule.priority = priorityFromText(item->text());
    else if (column == 5)
        rule.dlKbps = limitFromText(item->text());
    else if (column == 6)
        rule.ulKbps = limitFromText(item->text());

    // The refresh replaces every item. Whoever works in the table with the keyboard goes on from
    // the cell where he is.
    const QString currentName = applicationInRow(*rulesTable, rulesTable->currentRow());
    const int currentColumn = rulesTable->currentColumn();
    refreshDashboard();
    saveSettings();
    const int currentRow = rowOfApplication(*rulesTable, currentName);
    if (currentColumn >= 0 && currentRow >= 0)
        selectCell(*rulesTable, currentRow, currentColumn);
}
