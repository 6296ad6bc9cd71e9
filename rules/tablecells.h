#pragma once

#include <QAbstractItemView>
#include <QSignalBlocker>
#include <QString>

class QTableWidget;

/// While it lives, making a cell of the table current opens no editor and does not scroll: for
/// moves that are no wish to edit the cell.
class QuietCurrentCell
{
public:
    explicit QuietCurrentCell(QTableWidget &quieted);
    ~QuietCurrentCell();
    Q_DISABLE_COPY_MOVE(QuietCurrentCell)

private:
    QTableWidget &table;
    QAbstractItemView::EditTriggers editTriggers;
    bool autoScroll;
};

/// While it lives, the table's view does not hear of the cells that are put in; at its end it hears
/// of all of them at once. For each cell that it hears of it lays out all columns that follow their
/// contents, which takes time with the square of the rows.
class CellFilling
{
public:
    explicit CellFilling(QTableWidget &filled);
    ~CellFilling();
    Q_DISABLE_COPY_MOVE(CellFilling)

private:
    QTableWidget &table;
    QSignalBlocker modelBlocker;
};

/// Name of the application in a row: the first cell's text, trimmed; empty without an item there.
QString applicationInRow(const QTableWidget &table, int row);

/// First row of an application, -1 when there is none.
int rowOfApplication(const QTableWidget &table, const QString &application);

/// Makes a cell current and selects its row alone, without editing the cell.
void selectCell(QTableWidget &table, int row, int column);
