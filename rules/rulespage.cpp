#include "app/lumetrawindow.h"

#include "rules/ruleslist.h"
#include "widgets/badge.h"
#include "widgets/celltable.h"
#include "widgets/namedwidgets.h"
#include "widgets/tablecells.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Puts the eight cells of one application into a row.
void setRuleRow(CellFilling &filling, const QTableWidget &table, int row, const ListedRule &listed,
                int defaultLimitKbps)
{
    const AppRule &rule = listed.rule;
    const auto limitText = [defaultLimitKbps](int kbps) {
        return QString::number(kbps > 0 ? kbps : defaultLimitKbps);
    };
    std::array cells{
        CellContent{listed.name},
        CellContent{rule.priority},
        CellContent{.checked = rule.dlLimit},
        CellContent{.checked = rule.ulLimit},
        CellContent{.checked = rule.blocked},
        CellContent{limitText(rule.dlKbps)},
        CellContent{limitText(rule.ulKbps)},
        CellContent{QString::number(listed.sockets)},
    };
    int column = 0;
    for (CellContent &cell : cells) {
        cell.isCentred = column > 0;
        if (cell.checked)
            cell.accessibleText = table.horizontalHeaderItem(column)->text();
        filling.set(row, column++, cell);
    }
}

/// Leaves the one row of a table without applications.
void setPlaceholderRow(CellFilling &filling, const QTableWidget &table)
{
    filling.set(0, 0, {u"No rules or active apps"_s});
    for (int column = 1; column < table.columnCount(); ++column)
        filling.clear(0, column);
}

/// Leads the cells that the table of these contents had, and that have moved down by `shift` since,
/// to the rows where their applications are now. Returns the row that each application had, or -1
/// where nothing of its row is left.
std::vector<int> keepRows(CellFilling &filling, const RulesContents &before,
                          const RulesContents &now, int shift)
{
    std::vector<int> rows = rowsBefore(before.rows, now.rows);
    std::vector<int> places;
    for (int &row : rows) {
        const int place = row + shift;
        if (row < 0 || place < 0)
            row = -1;
        places.push_back(row < 0 ? -1 : place);
    }
    filling.moveRows(places);
    return rows;
}

} // namespace

QWidget *LumetraWindow::buildRulesPage()
{
    auto *page = new QWidget;
    page->setObjectName("page"_L1);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(28, 22, 28, 24);
    layout->setSpacing(14);

    auto *header = new QHBoxLayout;
    auto *titles = new QVBoxLayout;
    titles->setSpacing(4);
    titles->addWidget(makeLabel(u"Rules Manager"_s, u"title"_s));
    titles->addWidget(
        makeLabel(u"Control app limits, blocking, and priority from one place."_s, u"subtitle"_s));
    header->addLayout(titles);
    header->addStretch();
    header->addWidget(makeBadge(u"Interactive"_s));
    layout->addLayout(header);

    auto *tools = new QHBoxLayout;
    auto *search = new QLineEdit;
    search->setObjectName("search"_L1);
    search->setPlaceholderText(u"Filter rules..."_s);
    search->setAccessibleName(search->placeholderText());
    connect(search, &QLineEdit::textChanged, this, [this](const QString &text) {
        rulesFilterText = text.trimmed();
        refreshRulesTable();
    });
    tools->addWidget(search, 1);
    const auto addButton = [tools](const QString &text) {
        QPushButton *button = makeActionButton(text);
        tools->addWidget(button);
        return button;
    };
    for (const QString &mode : {u"All"_s, u"Blocked"_s, u"Limited"_s}) {
        connect(addButton(mode), &QPushButton::clicked, this, [this, mode] {
            rulesFilterMode = mode;
            refreshRulesTable();
        });
    }
    connect(addButton(u"Clear all rules"_s), &QPushButton::clicked, this,
            [this] { clearAllRules(); });
    layout->addLayout(tools);

    buildRulesTable();
    layout->addWidget(rulesTable, 1);
    refreshRulesTable();
    return page;
}

void LumetraWindow::buildRulesTable()
{
    rulesTable = new CellTable({u"Application"_s, u"Priority"_s, u"DL"_s, u"UL"_s, u"Block"_s,
                                u"DL KB/s"_s, u"UL KB/s"_s, u"Sockets"_s});
    rulesTable->setAccessibleName(u"Rules Manager"_s);
    connect(rulesTable, &QTableWidget::customContextMenuRequested, this,
            [this](QPoint position) { showRulesTableMenu(position); });
    connect(rulesTable, &QTableWidget::itemChanged, this,
            [this](QTableWidgetItem *item) { rulesTableItemChanged(item); });
}

void LumetraWindow::refreshRulesTable()
{
    if (!rulesTable || rulesTable->postpone([this] { refreshRulesTable(); }))
        return;
    RulesContents contents{
        {samples, rules, {rulesFilterMode, rulesFilterText}}, {}, settings.defaultLimitKbps};
    contents.rows = rulesTableContents && rulesTableContents->sources == contents.sources
        ? rulesTableContents->rows
        : listedRules(samples, rules, contents.sources.filter);
    const QScopedValueRollback filling(fillingRulesTable, true);
    const auto inUse = std::ranges::find(contents.rows, rulesTable->nameInUse(), &ListedRule::name);
    rulesTable->setRows(
        static_cast<int>(std::max<qsizetype>(contents.rows.size(), 1)),
        inUse == contents.rows.end() ? -1 : static_cast<int>(inUse - contents.rows.begin()),
        [&](int shift) { fillRulesTable(contents, shift); });
    rulesTableContents = std::move(contents);
}

void LumetraWindow::fillRulesTable(const RulesContents &contents, int shift)
{
    CellFilling filling(*rulesTable);
    if (contents.rows.isEmpty()) {
        setPlaceholderRow(filling, *rulesTable);
        return;
    }
    // Of thousands of rules most have neither changed nor moved.
    std::vector<int> kept;
    if (rulesTableContents)
        kept = keepRows(filling, *rulesTableContents, contents, shift);
    const bool sameDefaults
        = rulesTableContents && rulesTableContents->defaultLimitKbps == contents.defaultLimitKbps;
    const auto isShown = [&](int row) {
        const int before = sameDefaults ? kept[static_cast<std::size_t>(row)] : -1;
        return before >= 0 && rulesTableContents->rows.at(before) == contents.rows.at(row);
    };
    for (int row = 0; row < contents.rows.size(); ++row) {
        if (!isShown(row))
            setRuleRow(filling, *rulesTable, row, contents.rows.at(row), contents.defaultLimitKbps);
    }
}

void LumetraWindow::clearAllRules()
{
    rules.clear();
    refreshDashboard();
    saveSettings();
    announceStatus(u"All rules cleared"_s);
}
