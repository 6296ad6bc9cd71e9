#pragma once

#include <QAbstractItemView>
#include <QColor>
#include <QIcon>
#include <QSignalBlocker>
#include <QString>

#include <memory>
#include <optional>
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

/// All that a cell of a table shows and tells.
struct CellContent
{
    QString text = {};
    QString accessibleText = {}; ///< said in the text's place; empty where the text is said
    std::optional<bool> checked = {}; ///< no value for a cell without check box
    bool isCentred = false;
    QIcon icon = {};
    QColor background = {}; ///< invalid for the table's own
    QColor foreground = {}; ///< invalid for the table's own
};

/// While it lives, the cells of a table that does not sort are filled anew, and the model is
/// silent; at its end it says which cells show something else than before. For each change that it
/// hears of the view lays out all columns that follow their contents, which takes time with the
/// square of the rows; and it measures and paints what it hears of, which takes longer than all
/// else in a tick.
///
/// A cell that shows already what it is to show, and that nobody has written into, is left as it
/// is: to compare an item takes a fraction of what it takes to make one.
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

    void set(int row, int column, const CellContent &content);
    /// Leaves nothing in a cell.
    void clear(int row, int column);
    /// Gives each of the first rows the cells of another one, which may be itself: row i those of
    /// row `from[i]`, or none where that is negative. No row may be taken twice. What no row takes
    /// is gone; rows that `from` does not reach keep it, and say nothing of what was taken.
    void moveRows(const std::vector<int> &from);

private:
    struct Cells
    {
        int firstRow;
        int lastRow;
        int firstColumn;
        int lastColumn;
    };

    class Item;
    class Items;

    /// Adds cells to the few ranges that all changes are in.
    void note(const Cells &cells);

    QTableWidget &table;
    QSignalBlocker modelBlocker;
    std::vector<Cells> changes;
    std::unique_ptr<Items> items;
};

/// Makes a cell current and selects its row alone, without editing the cell.
void selectCell(QTableWidget &table, int row, int column);
