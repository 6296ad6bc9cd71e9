#include "app/lumetrawindow.h"

#include "rules/tableapplications.h"
#include "widgets/celltable.h"
#include "widgets/tablecells.h"

#include <QMenu>

using namespace Qt::StringLiterals;

namespace {

/// Selects the row at a position of the viewport. Returns its application, an empty text where
/// there is no row.
QString selectApplicationAt(CellTable &table, QPoint position)
{
    if (table.isEditorAt(position)) {
        // The editor stays open under the menu, so its cell stays current.
        table.selectionModel()->select(
            table.currentIndex(), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        return applicationInRow(table, table.currentRow());
    }
    // What is typed into another cell's editor is committed.
    table.setFocus(Qt::MouseFocusReason);
    const int row = table.rowAt(position.y());
    if (row < 0)
        return {};
    const QuietCurrentCell quiet(table);
    table.selectRow(row);
    return applicationInRow(table, row);
}

} // namespace

void LumetraWindow::showAppsTableMenu(QPoint position)
{
    const QString name = selectApplicationAt(*appsTable, position);
    if (!isRuleTarget(name))
        return;

    // Ticks go on while the menu is open; the entries act on the application of this moment.
    QMenu menu(this);
    addRuleToggles(menu, name);
    addRuleAction(menu, u"High Priority"_s, name, u"high"_s);
    addRuleAction(menu, u"Normal Priority"_s, name, u"normal"_s);
    addRuleAction(menu, u"Low Priority"_s, name, u"low"_s);
    menu.addSeparator();
    menu.addAction(u"Open Rules Manager"_s, this, [this] { showRulesPage(); });
    addRuleAction(menu, u"Reset App Rule"_s, name, u"reset"_s);
    menu.exec(appsTable->viewport()->mapToGlobal(position));
}

void LumetraWindow::showRulesTableMenu(QPoint position)
{
    const QString name = selectApplicationAt(*rulesTable, position);
    if (!isRuleTarget(name))
        return;

    QMenu menu(this);
    addRuleToggles(menu, name);
    addRuleAction(menu, u"High Priority"_s, name, u"high"_s);
    addRuleAction(menu, u"Reset App Rule"_s, name, u"reset"_s);
    menu.exec(rulesTable->viewport()->mapToGlobal(position));
}

void LumetraWindow::addRuleToggles(QMenu &menu, const QString &appName)
{
    addRuleAction(menu, u"Toggle Block"_s, appName, u"block"_s);
    addRuleAction(menu, u"Toggle Download Limit"_s, appName, u"dl"_s);
    addRuleAction(menu, u"Toggle Upload Limit"_s, appName, u"ul"_s);
    menu.addSeparator();
}

void LumetraWindow::addRuleAction(QMenu &menu, const QString &text, const QString &appName,
                                  const QString &action)
{
    menu.addAction(text, this, [this, appName, action] { applyRuleAction(appName, action); });
}
