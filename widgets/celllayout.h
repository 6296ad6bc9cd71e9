#pragma once

#include <QRect>
#include <QSize>

class QStyleOptionViewItem;

/// Where the parts of a table's cell are, in the coordinates of its rectangle: check box, icon and
/// text in the order of reading. A part that the cell does not have is an empty rectangle.
struct CellLayout
{
    QRect checkBox;
    QRect icon;
    QRect text; ///< all that the other parts leave
};

/// Lays out a cell as its option describes it, with check boxes of this size. The styles are not
/// asked: under a style sheet they draw a check box at one place and tell another.
CellLayout layOutCell(const QStyleOptionViewItem &cell, QSize checkBox);

/// Size of a cell that shows all of its text, in pixels.
QSize sizeOfCell(const QStyleOptionViewItem &cell, QSize checkBox);
