#include "rules/tablecells.h"

#include <QTableWidget>

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

CellFilling::CellFilling(QTableWidget &filled) : table(filled), modelBlocker(filled.model()) { }

CellFilling::~CellFilling()
{
    modelBlocker.unblock();
    QAbstractItemModel &model = *table.model();
    if (model.rowCount() > 0) {
        Q_EMIT model.dataChanged(model.index(0, 0),
                                 model.index(model.rowCount() - 1, model.columnCount() - 1));
    }
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
