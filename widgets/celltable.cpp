#include "widgets/celltable.h"

#include "widgets/celldelegate.h"
#include "widgets/checkboxclicks.h"
#include "widgets/slimscrollbar.h"

#include <QEvent>
#include <QHeaderView>

#include <algorithm>

CellTable::CellTable(const QStringList &headers)
    : QTableWidget(0, static_cast<int>(headers.size())),
      widths(static_cast<std::size_t>(headers.size())),
      delegate(new CellDelegate(this))
{
    setHorizontalHeaderLabels(headers);
    verticalHeader()->hide();
    setAlternatingRowColors(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::AllEditTriggers);
    setContextMenuPolicy(Qt::CustomContextMenu);
    horizontalHeader()->setStretchLastSection(false);
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    useSlimScrollBars(*this);
    new CheckBoxClicks(this);
}

void CellTable::reset()
{
    forgetWidths();
    QTableWidget::reset();
}

int CellTable::sizeHintForColumn(int column) const
{
    if (column < 0 || static_cast<std::size_t>(column) >= widths.size())
        return QTableWidget::sizeHintForColumn(column);
    std::optional<int> &width = widths[static_cast<std::size_t>(column)];
    if (!width)
        width = QTableWidget::sizeHintForColumn(column);
    return *width;
}

void CellTable::dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                            const QList<int> &roles)
{
    for (int column = topLeft.column(); column <= bottomRight.column(); ++column)
        widths.at(static_cast<std::size_t>(column)).reset();
    QTableWidget::dataChanged(topLeft, bottomRight, roles);
}

void CellTable::rowsAboutToBeRemoved(const QModelIndex &parent, int first, int last)
{
    forgetWidths();
    QTableWidget::rowsAboutToBeRemoved(parent, first, last);
}

void CellTable::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        forgetWidths();
    QTableWidget::changeEvent(event);
}

void CellTable::forgetWidths()
{
    std::ranges::fill(widths, std::nullopt);
}
