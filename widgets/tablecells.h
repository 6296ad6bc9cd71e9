#pragma once

#include <QAbstractItemView>
#include <QSignalBlocker>
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

/// While it lives, the cells of a table that does not sort are empty, to be filled anew, and the
/// model is silent; at its end it says which cells show something else than before. For each change
/// that it hears of the view lays out all columns that follow their contents, which takes time with
/// the square of the rows; and it measures and paints what it hears of, which takes longer than all
/// else in a tick.
///
/// The silence hides nothing that the view would need meanwhile. From Qt 6.4 to 6.8
/// QTableWidget::takeItem() and setItem() exchange an item in its place and have the model say
/// dataChanged() of that cell and nothing else: rows, columns and persistent indexes stay. Only in
/// a table that sorts does setItem() move rows. And the view looks at the cells again in the event
/// loop, by when it has heard.
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

/// Makes a cell current and selects its row alone, without editing the cell.
void selectCell(QTableWidget &table, int row, int column);
