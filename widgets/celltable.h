#pragma once

#include <QDeadlineTimer>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTableWidget>

#include <functional>
#include <optional>
#include <vector>

class CellDelegate;
class SlimHeader;

/// A table whose rows are named by their first cell: whole rows are selected, every cell is edited
/// at a touch, check boxes take one click, and the first column has the room that the others leave.
///
/// It may be rebuilt at any time, also while a cell is edited and in answer to an edit: when the
/// toolkit writes the text the editor is still open, and moves with its row. The toolkit then
/// closes it, and last of all goes on to the cell that the key leads to.
class CellTable : public QTableWidget
{
public:
    /// Without rows; a column for each of the headers.
    explicit CellTable(const QStringList &headers);

    /// Name of the row in which the user is at work: an editor is open there, or the keyboard is on
    /// one of its cells.
    std::optional<QString> nameInUse() const;
    /// Whether an editor is open at this position of the viewport.
    bool isEditorAt(QPoint position) const;
    /// Puts a rebuilding of the table off while an editor is in the middle of something that would
    /// be cut: an input method composes in it, or a mouse button is held down. Returns whether it
    /// did; then `rebuild` is called once that has ended, the last one only.
    bool postpone(std::function<void()> rebuild);
    /// Gives the table this many rows, whose cells `fill` fills anew. The row in use becomes
    /// `rowInUse`, an open editor moving along as it is; nothing else stays current or selected.
    /// Where `rowInUse` is negative, what the user is at is dropped, and the keyboard goes on from
    /// the row that is where the user was. `fill` is told by how many rows the cells have moved
    /// down. Rows that are too many are still there then, the last ones, so that their cells can
    /// move into those that stay.
    void setRows(int rows, int rowInUse, const std::function<void(int shift)> &fill);
    /// Closes an open editor, as Escape does: nothing is written. Nor does what the user goes on
    /// typing count, until a key or a click that is meant for the table or a pause of a second.
    void dropEdit();
    /// Height of every row in pixels, whatever the desktop's font.
    void setRowHeight(int height);

    void reset() override;

protected:
    /// Width that the column's cells ask for, in pixels. The header asks for that of every column
    /// whenever any cell changes; it is remembered until one of the column's own does.
    int sizeHintForColumn(int column) const override;
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                     const QList<int> &roles) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    /// The right button asks for a menu. It makes its cell current and opens no editor there.
    void mousePressEvent(QMouseEvent *event) override;
    /// Nor does it change what is selected where there is no row.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event) const override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;
    /// Tab goes through the cells of a row and leaves the table at its end.
    bool focusNextPrevChild(bool next) override;

private:
    bool isInView(const QModelIndex &index) const;
    /// Whether the current cell is the last one of its row, or the first one on the way back.
    bool isAtEndOfRow(bool next) const;
    void noteUseOfEditor(const QEvent &event);
    void forgetWidths();
    /// Has the columns of a visible table follow their contents. Nobody sees how wide those of a
    /// hidden one are, and the toolkit lays them out before it paints what is shown again.
    void followContents();

    mutable std::vector<std::optional<int>> widths; ///< column by column
    bool isComposing = false;
    bool isButtonDown = false; ///< in the editor
    std::function<void()> postponed; ///< null when nothing was put off
    QDeadlineTimer typingOn; ///< as long as keys are still meant for a dropped editor
    SlimHeader *header;
    CellDelegate *delegate;
};
