#include "widgets/tablecells.h"

#include <QIcon>
#include <QTableWidget>

#include <algorithm>

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
    Q_ASSERT(!table.isSortingEnabled());
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
    for (const Cells &cells : changes()) {
        Q_EMIT model.dataChanged(model.index(cells.firstRow, cells.columns.first),
                                 model.index(cells.lastRow, cells.columns.last));
    }
}

CellFilling::Columns CellFilling::changedColumns(int row) const
{
    Columns changed{table.columnCount(), -1};
    for (int column = 0; column < table.columnCount(); ++column) {
        const auto place
            = static_cast<std::size_t>(row) * oldColumns + static_cast<std::size_t>(column);
        const QTableWidgetItem *old = place < oldItems.size() ? oldItems[place].get() : nullptr;
        if (looksAlike(old, table.item(row, column)))
            continue;
        changed.first = std::min(changed.first, column);
        changed.last = column;
    }
    return changed;
}

std::vector<CellFilling::Cells> CellFilling::changes() const
{
    // More ranges would cost more in layouts than the cells between them do in painting. The first
    // is most often in the machine's row alone; the second takes in all that follow.
    constexpr std::size_t mostRanges = 2;
    std::vector<Cells> ranges;
    for (int row = 0; row < table.rowCount(); ++row) {
        const Columns columns = changedColumns(row);
        if (columns.last < columns.first)
            continue;
        if (ranges.empty() || (ranges.back().lastRow != row - 1 && ranges.size() < mostRanges)) {
            ranges.push_back({row, row, columns});
            continue;
        }
        Cells &range = ranges.back();
        range.lastRow = row;
        range.columns.first = std::min(range.columns.first, columns.first);
        range.columns.last = std::max(range.columns.last, columns.last);
    }
    return ranges;
}

void selectCell(QTableWidget &table, int row, int column)
{
    const QuietCurrentCell quiet(table);
    table.setCurrentCell(row, column,
                         QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}
