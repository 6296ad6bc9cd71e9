#include "rules/tableapplications.h"

#include <QTableWidget>

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
