#include "widgets/celllayout.h"

#include <QFontMetricsF>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QtMath>

#include <algorithm>

namespace {

// The padding of the sheet's items.
constexpr int paddingAtSides = 6;
constexpr int paddingAbove = 4;
constexpr int gapAfterCheckBox = 4; ///< none after an icon: the names have blanks before them

QSize checkBoxOf(const QStyleOptionViewItem &cell, QSize checkBox)
{
    return cell.features.testFlag(QStyleOptionViewItem::HasCheckIndicator) ? checkBox : QSize();
}

QSize iconOf(const QStyleOptionViewItem &cell)
{
    return cell.features.testFlag(QStyleOptionViewItem::HasDecoration) ? cell.decorationSize
                                                                       : QSize();
}

} // namespace

CellLayout layOutCell(const QStyleOptionViewItem &cell, QSize checkBox)
{
    QRect rest = cell.rect.adjusted(paddingAtSides, 0, -paddingAtSides, 0);
    const auto takeFromStart = [&](QSize size, int gap) {
        if (size.isEmpty())
            return QRect();
        const QRect part
            = QStyle::alignedRect(cell.direction, Qt::AlignLeft | Qt::AlignVCenter, size, rest);
        const int taken = size.width() + gap;
        if (cell.direction == Qt::LeftToRight)
            rest.setLeft(rest.left() + taken);
        else
            rest.setRight(rest.right() - taken);
        return part;
    };
    CellLayout layout;
    layout.checkBox = takeFromStart(checkBoxOf(cell, checkBox), gapAfterCheckBox);
    layout.icon = takeFromStart(iconOf(cell), 0);
    layout.text = rest;
    return layout;
}

QSize sizeOfCell(const QStyleOptionViewItem &cell, QSize checkBox)
{
    const QSize box = checkBoxOf(cell, checkBox);
    const QSize icon = iconOf(cell);
    int width = std::max(box.width(), 0) + std::max(icon.width(), 0);
    // Letters take fractions of pixels; half a pixel less, and the text would be elided.
    if (!cell.text.isEmpty())
        width += (box.isEmpty() ? 0 : gapAfterCheckBox)
            + qCeil(QFontMetricsF(cell.fontMetrics).horizontalAdvance(cell.text));
    const int height = std::max({cell.fontMetrics.height(), box.height(), icon.height()});
    return QSize(width, height)
        .grownBy({paddingAtSides, paddingAbove, paddingAtSides, paddingAbove});
}
