#pragma once

#include <QObject>
#include <QRect>
#include <QString>

#include <optional>

class CellDelegate;
class QMouseEvent;
class QTableWidget;

/// Makes every click on a check box of the table take effect, whatever happens to the table
/// between press and release.
///
/// The toolkit binds a click to the item under the pointer, which a refresh replaces, and opens an
/// editor in the cell. Here the press remembers the row by its name, the text of its first
/// cell, and the column; the release flips the box of the row of that name, wherever it then is. A
/// double click is two clicks; where the first one's row has made way for another, the second does
/// nothing. Everything else that does not begin on a check box stays the toolkit's.
class CheckBoxClicks : public QObject
{
public:
    /// Watches the table and is owned by it. The boxes are where this delegate of the table's draws
    /// them.
    CheckBoxClicks(QTableWidget *owner, const CellDelegate &painter);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// A check box that is held down.
    struct Press
    {
        QString name; ///< of its row
        int row = -1; ///< tried first: several rows may share a name
        int column = -1;
        QRect indicator; ///< in the viewport, where the release counts
    };

    bool press(const QMouseEvent &event);
    bool release(const QMouseEvent &event);
    void toggle(const Press &box);
    /// Row in which the pressed box now is, -1 when it is gone.
    int rowOf(const Press &box) const;

    QTableWidget *table;
    const CellDelegate &delegate;
    std::optional<Press> pressed;
    QString lastName; ///< of the row that was pressed last, wherever in it
};
