#include "widgets/cellpainting.h"

#include "widgets/celllayout.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionViewItem>

namespace {

void drawCheckBox(QPainter &painter, const QStyleOptionViewItem &cell, const QRect &place,
                  const QStyle &style)
{
    QStyleOptionViewItem box(cell);
    box.rect = place;
    box.state.setFlag(QStyle::State_HasFocus, false);
    box.state |= cell.checkState == Qt::Checked ? QStyle::State_On : QStyle::State_Off;
    style.drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, &painter, cell.widget);
}

void drawIcon(QPainter &painter, const QStyleOptionViewItem &cell, const QRect &place)
{
    QIcon::Mode mode = QIcon::Normal;
    if (!cell.state.testFlag(QStyle::State_Enabled))
        mode = QIcon::Disabled;
    else if (cell.state.testFlag(QStyle::State_Selected))
        mode = QIcon::Selected;
    cell.icon.paint(&painter, place, Qt::AlignCenter, mode);
}

void drawText(QPainter &painter, const QStyleOptionViewItem &cell, const QRect &place)
{
    QPalette::ColorGroup group = QPalette::Disabled;
    if (cell.state.testFlag(QStyle::State_Enabled))
        group = cell.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    const bool isSelected = cell.state.testFlag(QStyle::State_Selected);
    painter.setPen(
        cell.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text));
    painter.setFont(cell.font);
    painter.setLayoutDirection(cell.direction);
    const auto alignment = QStyle::visualAlignment(cell.direction, cell.displayAlignment);
    painter.drawText(place, static_cast<int>(alignment) | Qt::TextSingleLine,
                     cell.fontMetrics.elidedText(cell.text, cell.textElideMode, place.width()));
}

void drawFocus(QPainter &painter, const QStyleOptionViewItem &cell, const QStyle &style)
{
    QStyleOptionFocusRect frame;
    frame.QStyleOption::operator=(cell);
    frame.state |= QStyle::State_KeyboardFocusChange | QStyle::State_Item;
    frame.backgroundColor = cell.palette.color(
        cell.state.testFlag(QStyle::State_Selected) ? QPalette::Highlight : QPalette::Window);
    style.drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, cell.widget);
}

} // namespace

void paintCell(QPainter &painter, const QStyleOptionViewItem &cell, const CellLayout &layout,
               const QStyle &style)
{
    painter.save();
    painter.setClipRect(cell.rect, Qt::IntersectClip);
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, &painter, cell.widget);
    // The frame of some styles is filled, so the rest comes over it.
    if (cell.state.testFlag(QStyle::State_HasFocus))
        drawFocus(painter, cell, style);
    if (!layout.checkBox.isEmpty())
        drawCheckBox(painter, cell, layout.checkBox, style);
    if (!layout.icon.isEmpty())
        drawIcon(painter, cell, layout.icon);
    drawText(painter, cell, layout.text);
    painter.restore();
}
