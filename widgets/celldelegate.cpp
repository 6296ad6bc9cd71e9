#include "widgets/celldelegate.h"

#include "widgets/celllayout.h"
#include "widgets/cellpainting.h"
#include "widgets/checkindicator.h"
#include "widgets/displaytext.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTableWidget>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace {

/// Whether a key moves the table's current cell because a one-line editor has no use for it.
bool leavesEditor(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    case Qt::Key_Home:
    case Qt::Key_End:
        return event.modifiers().testFlag(Qt::ControlModifier);
    default:
        return false;
    }
}

} // namespace

CellDelegate::CellDelegate(QTableWidget *owner) : QStyledItemDelegate(owner), table(owner)
{
    table->setItemDelegate(this);
    table->setWordWrap(false); // a row has one line, and a long text is cut at its end
}

bool CellDelegate::isBareCheckBox(const QModelIndex &index)
{
    return index.data(Qt::CheckStateRole).isValid() && index.data().toString().isEmpty();
}

QRect CellDelegate::cellRect(const QModelIndex &index) const
{
    // From right to left the view draws a cell on the other side of its grid line, and does not
    // say.
    return table->visualRect(index).translated(table->showGrid() && table->isRightToLeft() ? 1 : 0,
                                               0);
}

QRect CellDelegate::checkBoxRect(const QModelIndex &index) const
{
    QStyleOptionViewItem cell;
    cell.initFrom(table);
    cell.rect = cellRect(index);
    initStyleOption(&cell, index);
    return layOutCell(cell, checkBoxSize()).checkBox;
}

QSize CellDelegate::checkBoxSize() const
{
    const QStyle *style = table->style();
    return {style->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, table),
            style->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, table)};
}

void CellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    paintCell(*painter, cell, layOutCell(cell, checkBoxSize()), *table->style());
}

QSize CellDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    return measure(option, index).boundedTo(QSize(widestClaim, QWIDGETSIZE_MAX));
}

QSize CellDelegate::measure(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    constexpr qsizetype mostRemembered = 4096;
    if (measuredFont != option.font || measured.size() >= mostRemembered) {
        measured.clear();
        measuredFont = option.font;
    }
    const CellShape shape{index.data(Qt::DisplayRole).toString(),
                          index.data(Qt::CheckStateRole).isValid(),
                          index.data(Qt::DecorationRole).isValid()};
    auto known = measured.constFind(shape);
    if (known == measured.constEnd()) {
        QStyleOptionViewItem cell(option);
        initStyleOption(&cell, index);
        known = measured.insert(shape, sizeOfCell(cell, checkBoxSize()));
    }
    return *known;
}

QString CellDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    return displayedName(QStyledItemDelegate::displayText(value, locale));
}

QWidget *CellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem & /*option*/,
                                    const QModelIndex &index) const
{
    if (isBareCheckBox(index))
        return nullptr;

    auto *editor = new QLineEdit(parent);
    editor->setAccessibleName(index.model()->headerData(index.column(), Qt::Horizontal).toString());
    // The window's sheet draws fields taller than a row. The editor stays inside its cell, where it
    // covers no neighbour's check box.
    editor->setStyleSheet(u"min-height:0; padding:0 2px; border-radius:0;"_s);
    editor->installEventFilter(table); // which waits for what is done in it
    // Its row's menu opens over it, as over every other cell.
    editor->setContextMenuPolicy(Qt::NoContextMenu);
    editor->setAlignment(Qt::Alignment::fromInt(index.data(Qt::TextAlignmentRole).toUInt()));
    return editor;
}

void CellDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const
{
    // All of the cell but a check box or an icon, not only where its text is drawn.
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    const CellLayout layout = layOutCell(cell, checkBoxSize());
    QRect place = cell.rect;
    if (layout.text.width() < 1)
        place = {};
    else if (cell.direction == Qt::LeftToRight && !(layout.checkBox | layout.icon).isEmpty())
        place.setLeft(layout.text.left());
    else if (!(layout.checkBox | layout.icon).isEmpty())
        place.setRight(layout.text.right());
    editor->setGeometry(place);
}

void CellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (!keepingText)
        QStyledItemDelegate::setEditorData(editor, index);
}

bool CellDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                               const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const bool isOfMouse = dynamic_cast<QMouseEvent *>(event) != nullptr;
    return !isOfMouse && QStyledItemDelegate::editorEvent(event, model, option, index);
}

bool CellDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                             const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid()
        || measure(option, index).width() <= option.rect.width())
        return QStyledItemDelegate::helpEvent(event, view, option, index);

    constexpr qsizetype longestTip = 500; // characters
    const QString text = displayedName(index.data().toString()).trimmed().left(longestTip);
    // As rich text it is wrapped; its own mark-up is none.
    QToolTip::showText(event->globalPos(), u"<p>"_s + text.toHtmlEscaped() + u"</p>"_s,
                       view->viewport(), option.rect);
    return true;
}

void CellDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (option->features.testFlag(QStyleOptionViewItem::HasCheckIndicator))
        setIndicatorColours(option->palette);
}

bool CellDelegate::eventFilter(QObject *object, QEvent *event)
{
    // The table would look up the next cell first and have the editor commit then, upon which that
    // cell may be another row's. So the edit ends now.
    if (event->type() == QEvent::KeyPress && leavesEditor(static_cast<const QKeyEvent &>(*event)))
        table->setFocus(Qt::OtherFocusReason);
    return QStyledItemDelegate::eventFilter(object, event);
}
