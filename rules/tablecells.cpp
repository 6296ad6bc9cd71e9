#include "rules/tablecells.h"

#include <QIcon>
#include <QTableWidget>

namespace {

/// Whether two cells, each of which may have no item, cannot be told apart by who sees them.
bool looksAlike(const QTableWidgetItem *left, const QTableWidgetItem *right)
{
    if (!left || !right)
        return left == right;
    const auto isSame = [left, right](int role) { return left->data(role) == right->data(role); };
    return isSame(Qt::DisplayRole) && left->flags() == right->flags() && isSame(Qt::CheckStateRole)
        && isSame(Qt::TextAlignmentRole) && isSame(Qt::BackgroundRole) && isSame(Qt::ForegroundRole)
        && left->icon().cacheKey() == right->icon().cacheKey();
}

} // namespace

QuietCurrentCell::QuietCurrentCell(QTableWidget &quieted)
    : table(quieted),
      editTriggers(table.editTriggers()),
      autoScroll(table.hasAutoScroll())
{
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setAutoScroll(false);
}

QuietCurrentCell::~QuietCurrentCell()
{
    table.setAutoScroll(autoScroll);
    table.setEditTriggers(editTriggers);
}

CellFilling::CellFilling(QTableWidget &filled)
    : table(filled),
      modelBlocker(filled.model()),
      oldColumns(static_cast<std::size_t>(filled.columnCount()))
{
    oldItems.reserve(static_cast<std::size_t>(table.rowCount()) * oldColumns);
    for (int row = 0; row < table.rowCount(); ++row) {
        for (int column = 0; column < table.columnCount(); ++column)
            oldItems.emplace_back(table.takeItem(row, column));
    }
}

CellFilling::~CellFilling()
{
    modelBlocker.unblock();
    QAbstractItemModel &model = *table.model();
    const std::vector<Rows> changes = changedRows();
    for (const Rows &rows : changes) {
        Q_EMIT model.dataChanged(model.index(rows.first, 0),
                                 model.index(rows.last, model.columnCount() - 1));
    }
}

std::vector<CellFilling::Rows> CellFilling::changedRows() const
{
    // More runs would cost more in layouts than the rows between them do in painting. The first is
    // most often the machine's row alone; the second takes in all that follow.
    constexpr std::size_t mostRuns = 2;
    const auto hasChanged = [this](int row) {
        for (int column = 0; column < table.columnCount(); ++column) {
            const auto old
                = static_cast<std::size_t>(row) * oldColumns + static_cast<std::size_t>(column);
            if (old >= oldItems.size() || !looksAlike(oldItems[old].get(), table.item(row, column)))
                return true;
        }
        return false;
    };
    std::vector<Rows> changes;
    for (int row = 0; row < table.rowCount(); ++row) {
        if (!hasChanged(row))
            continue;
        if (!changes.empty() && (changes.back().last == row - 1 || changes.size() == mostRuns))
            changes.back().last = row;
        else
            changes.push_back({row, row});
    }
    return changes;
}

QString applicationInRow(const QTableWidget &table, int row)
{
    const QTableWidgetItem *item = table.item(row, 0);
    return item ? item->text().trimmed() : QString();
}

int rowOfApplication(const QTableWidget &table, const QString &application)
{
    for (int row = 0; row < table.rowCount(); ++row) {
        if (applicationInRow(table, row) == application)
            return row;
    }
    return -1;
}

void selectCell(QTableWidget &table, int row, int column)
{
    const QuietCurrentCell quiet(table);
    table.setCurrentCell(row, column,
                         QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}
