#include "widgets/checkboxclicks.h"

#include "widgets/tablecells.h"

#include <QMouseEvent>
#include <QStyleOptionViewItem>
#include <QStyledItemDelegate>
#include <QTableWidget>

#include <utility>

namespace {

constexpr Qt::ItemFlags clickable = Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;

bool isClickable(const QTableWidgetItem *item)
{
    return item && (item->flags() & clickable) == clickable
        && item->data(Qt::CheckStateRole).isValid();
}

/// Opens up how a delegate describes a cell to the style.
struct CellDescription : QStyledItemDelegate
{
    using QStyledItemDelegate::initStyleOption;
};

} // namespace

CheckBoxClicks::CheckBoxClicks(QTableWidget *owner) : QObject(owner), table(owner)
{
    table->viewport()->installEventFilter(this);
}

bool CheckBoxClicks::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        return press(static_cast<const QMouseEvent &>(*event));
    case QEvent::MouseMove:
        return pressed.has_value(); // else the table would begin to select rows
    case QEvent::MouseButtonRelease:
        return release(static_cast<const QMouseEvent &>(*event));
    default:
        return QObject::eventFilter(watched, event);
    }
}

bool CheckBoxClicks::press(const QMouseEvent &event)
{
    pressed.reset();
    if (event.button() != Qt::LeftButton)
        return false;

    // An open editor commits when it loses the focus, and that may rebuild the table.
    table->setFocus(Qt::MouseFocusReason);

    const QPoint position = event.position().toPoint();
    const QTableWidgetItem *item = table->itemAt(position);
    if (!isClickable(item))
        return false;
    const Press box{applicationInRow(*table, item->row()), item->row(), item->column(),
                    indicatorRect(item->row(), item->column())};
    if (!box.indicator.contains(position))
        return false;

    pressed = box;
    selectCell(*table, box.row, box.column);
    return true;
}

bool CheckBoxClicks::release(const QMouseEvent &event)
{
    if (!pressed || event.button() != Qt::LeftButton)
        return false;

    const Press box = *std::exchange(pressed, std::nullopt);
    if (box.indicator.contains(event.position().toPoint()))
        toggle(box);
    return true;
}

void CheckBoxClicks::toggle(const Press &box)
{
    const int row = applicationInRow(*table, box.row) == box.application
        ? box.row
        : rowOfApplication(*table, box.application);
    QTableWidgetItem *item = table->item(row, box.column);
    if (isClickable(item))
        item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
}

QRect CheckBoxClicks::indicatorRect(int row, int column) const
{
    const QModelIndex index = table->model()->index(row, column);
    QStyleOptionViewItem option;
    option.initFrom(table);
    option.widget = table;
    option.rect = table->visualRect(index);
    option.showDecorationSelected = true; // rows are drawn from edge to edge
    option.displayAlignment = Qt::AlignLeft | Qt::AlignVCenter;
    CellDescription().initStyleOption(&option, index);
    return table->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, table);
}
