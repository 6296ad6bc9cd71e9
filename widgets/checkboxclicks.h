#pragma once

#include <QObject>
#include <QRect>
#include <QString>

#include <optional>

class QMouseEvent;
class QTableWidget;

/// Makes every click on a check box of the table take effect, whatever happens to the table
/// between press and release.
///
/// The toolkit binds a click to the item under the pointer, which a refresh replaces, and opens an
/// editor in the cell. Here the press remembers the application of the row (its first cell) and
/// the column; the release flips the box of that application, wherever its row then is. A double
/// click is two clicks. Everything that does not begin on a check box stays the toolkit's.
class CheckBoxClicks : public QObject
{
public:
    /// Watches the table and is owned by it.
    explicit CheckBoxClicks(QTableWidget *owner);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// A check box that is held down.
    struct Press
    {
        QString application;
        int row = -1; ///< told apart first: one program's processes share their name
        int column = -1;
        QRect indicator; ///< in the viewport, where the release counts
    };

    bool press(const QMouseEvent &event);
    bool release(const QMouseEvent &event);
    void toggle(const Press &box);
    QRect indicatorRect(int row, int column) const;

    QTableWidget *table;
    std::optional<Press> pressed;
};
