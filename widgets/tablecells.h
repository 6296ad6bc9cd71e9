#pragma once

#include <QAbstractItemView>
#include <QSignalBlocker>
#include <QString>
#include <QTableWidgetItem>

#include <memory>
#include <vector>

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

/// While it lives, the table's cells are empty, to be filled anew, and its view does not hear of
/// that; at its end the view hears of the cells that show something else than before. For each
/// change that it hears of it lays out all columns that follow their contents, which takes time
/// with the square of the rows; and it measures and paints what it hears of, which takes longer
/// than all else in a tick.
class CellFilling
{
public:
    explicit CellFilling(QTableWidget &filled);
    ~CellFilling();
    Q_DISABLE_COPY_MOVE(CellFilling)

private:
    struct Columns
    {
        int first;
        int last; ///< below `first` when there is none
    };
    struct Cells
    {
        int firstRow;
        int lastRow;
        Columns columns;
    };

    /// From the first to the last cell of a row that shows something else than before.
    Columns changedColumns(int row) const;
    /// The few ranges that all changes are in.
    std::vector<Cells> changes() const;

    QTableWidget &table;
    QSignalBlocker modelBlocker;
    std::size_t oldColumns;
    std::vector<std::unique_ptr<QTableWidgetItem>> oldItems; ///< row by row
};

/// Name of the application in a row: the first cell's text, trimmed; empty without an item there.
QString applicationInRow(const QTableWidget &table, int row);

/// First row of an application, -1 when there is none.
int rowOfApplication(const QTableWidget &table, const QString &application);

/// Makes a cell current and selects its row alone, without editing the cell.
void selectCell(QTableWidget &table, int row, int column);
