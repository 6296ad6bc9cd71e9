#pragma once

#include <QList>
#include <QStringList>
#include <QTableWidget>

#include <optional>
#include <vector>

class CellDelegate;

/// A table of applications: whole rows are selected, every cell is edited at a touch, check boxes
/// take one click, and the first column has the room that the others leave.
class CellTable : public QTableWidget
{
public:
    /// Without rows; a column for each of the headers.
    explicit CellTable(const QStringList &headers);

    /// Shows and edits the cells; owned by the table.
    CellDelegate &cells() const { return *delegate; }

    void reset() override;

protected:
    /// Width that the column's cells ask for, in pixels. The header asks for that of every column
    /// whenever any cell changes; it is remembered until one of the column's own does.
    int sizeHintForColumn(int column) const override;
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                     const QList<int> &roles) override;
    void rowsAboutToBeRemoved(const QModelIndex &parent, int first, int last) override;
    void changeEvent(QEvent *event) override;

private:
    void forgetWidths();

    mutable std::vector<std::optional<int>> widths; ///< column by column
    CellDelegate *delegate;
};
