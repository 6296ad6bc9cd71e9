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

using namespace Qt::StringLiterals;

namespace {

/// Puts the eight cells of one application into a row.
void setRuleRow(QTableWidget &table, int row, const ListedRule &listed, int defaultLimitKbps)
{
    struct Cell
    {
        QString text;
        std::optional<bool> checked; ///< no value for a cell without check box
    };
    const AppRule &rule = listed.rule;
    const auto limitText = [defaultLimitKbps](int kbps) {
        return QString::number(kbps > 0 ? kbps : defaultLimitKbps);
    };
    const std::array cells{
        Cell{listed.name, {}},
        Cell{rule.priority, {}},
        Cell{{}, rule.dlLimit},
        Cell{{}, rule.ulLimit},
        Cell{{}, rule.blocked},
        Cell{limitText(rule.dlKbps), {}},
        Cell{limitText(rule.ulKbps), {}},
        Cell{QString::number(listed.sockets), {}},
    };
    int column = 0;
    for (const Cell &cell : cells) {
        auto *item = new QTableWidgetItem(cell.text);
        if (cell.checked) {
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
            item->setCheckState(*cell.checked ? Qt::Checked : Qt::Unchecked);
            item->setData(Qt::AccessibleTextRole, table.horizontalHeaderItem(column)->text());
        }
        if (column > 0)
            item->setTextAlignment(Qt::AlignCenter);
        table.setItem(row, column++, item);
    }
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
    RulesContents contents{listedRules(samples, rules, {rulesFilterMode, rulesFilterText}),
                           settings.defaultLimitKbps};
    // Most ticks find nothing new on a page that is not even shown. The rebuilding would drop what
    // is selected, and with it the editor, so it is done where something is.
    if (contents == rulesTableContents && !rulesTable->isVisible()
        && !rulesTable->selectionModel()->hasSelection() && !rulesTable->currentIndex().isValid())
        return;

    const QScopedValueRollback filling(fillingRulesTable, true);
    const auto inUse = std::ranges::find(contents.rows, rulesTable->nameInUse(), &ListedRule::name);
    rulesTable->setRows(
        static_cast<int>(std::max<qsizetype>(contents.rows.size(), 1)),
        inUse == contents.rows.end() ? -1 : static_cast<int>(inUse - contents.rows.begin()));
    {
        const CellFilling quietly(*rulesTable);
        if (contents.rows.isEmpty())
            rulesTable->setItem(0, 0, new QTableWidgetItem(u"No rules or active apps"_s));
        for (int row = 0; row < contents.rows.size(); ++row)
            setRuleRow(*rulesTable, row, contents.rows.at(row), contents.defaultLimitKbps);
    }
    rulesTableContents = std::move(contents);
}

void LumetraWindow::clearAllRules()
{
    rules.clear();
    refreshDashboard();
    saveSettings();
    announceStatus(u"All rules cleared"_s);
}
