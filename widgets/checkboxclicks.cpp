#include "widgets/checkboxclicks.h"

#include "widgets/celldelegate.h"
#include "widgets/tablecells.h"

#include <QMouseEvent>
#include <QTableWidget>

#include <utility>

namespace {

constexpr Qt::ItemFlags clickable = Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;

bool isClickable(const QTableWidgetItem *item)
{
    return item && (item->flags() & clickable) == clickable
        && item->data(Qt::CheckStateRole).isValid();
}

/// What a row is found again by once the table was rebuilt: the text of its first cell.
QString nameOfRow(const QTableWidget &table, int row)
{
    return table.model()->index(row, 0).data().toString();
}

} // namespace

CheckBoxClicks::CheckBoxClicks(QTableWidget *owner, const CellDelegate &painter)
    : QObject(owner),
      table(owner),
      delegate(painter)
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
    const QString name = nameOfRow(*table, table->rowAt(position.y()));
    const bool meetsAnother = std::exchange(lastName, name) != name;
    if (event.type() == QEvent::MouseButtonDblClick && meetsAnother)
        return true;

    const QTableWidgetItem *item = table->itemAt(position);
    if (!isClickable(item))
        return false;
    const Press box{name, item->row(), item->column(),
                    delegate.checkBoxRect(table->indexFromItem(item))};
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
    QTableWidgetItem *item = table->item(rowOf(box), box.column);
    if (isClickable(item))
        item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
}

int CheckBoxClicks::rowOf(const Press &box) const
{
    if (nameOfRow(*table, box.row) == box.name)
        return box.row;
    const QModelIndexList found = table->model()->match(
        table->model()->index(0, 0), Qt::DisplayRole, box.name, 1, Qt::MatchExactly);
    return found.isEmpty() ? -1 : found.first().row();
}
