#include "widgets/celldelegate.h"

#include "widgets/checkindicator.h"
#include "widgets/tablecells.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTableWidget>
#include <QToolTip>

#include <utility>

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

bool isBareCheckBox(const QModelIndex &index)
{
    return index.data(Qt::CheckStateRole).isValid() && index.data().toString().isEmpty();
}

} // namespace

CellDelegate::CellDelegate(QTableWidget *owner) : QStyledItemDelegate(owner), table(owner)
{
    table->setItemDelegate(this);
    table->setWordWrap(false); // a row has one line, and a long text is cut at its end
}

QString CellDelegate::hold()
{
    const QModelIndex cell = openEditor ? QModelIndex(openCell) : table->currentIndex();
    if (!openEditor && (!isBareCheckBox(cell) || !table->hasFocus()))
        return {};

    held.column = cell.column();
    if (openEditor) {
        QWidget *focus = openEditor->window()->focusWidget();
        held.editor = openEditor;
        held.cursor = openEditor->cursorPosition();
        held.selectionStart = openEditor->selectionStart();
        held.selectionLength = static_cast<int>(openEditor->selectionLength());
        held.focusElsewhere = focus == openEditor ? nullptr : focus;

        // What comes is no end of the edit, and the focus has to wait nearby: the toolkit would
        // hand it to the next widget of the page when the editor is hidden.
        openEditor->removeEventFilter(this);
        if (focus == openEditor)
            table->setFocus(Qt::OtherFocusReason);
    }
    const QString rowText = cell.siblingAtColumn(0).data().toString();
    return rowText.isNull() ? u""_s : rowText;
}

void CellDelegate::restore(int row)
{
    const Held state = std::exchange(held, {});
    QTableWidgetItem *item = table->item(row, state.column);
    if (state.editor && item) {
        reopen(state, item);
    } else if (state.editor) {
        state.editor->deleteLater();
    } else if (item) {
        const QuietCurrentCell quiet(*table);
        table->setCurrentItem(item, QItemSelectionModel::NoUpdate);
    }
}

void CellDelegate::reopen(const Held &state, QTableWidgetItem *item)
{
    const QRect view = table->viewport()->rect();
    const bool wasVisible = view.intersects(state.editor->geometry());
    selectCell(*table, item->row(), item->column());
    if (wasVisible && !view.intersects(table->visualItemRect(item)))
        table->scrollToItem(item);

    held.editor = state.editor;
    table->editItem(item);
    held = {};
    if (openEditor != state.editor) {
        state.editor->deleteLater();
        return;
    }

    select(state);
    if (state.focusElsewhere) {
        openEditor->removeEventFilter(this);
        state.focusElsewhere->setFocus(Qt::OtherFocusReason);
        openEditor->installEventFilter(this);
    }
}

void CellDelegate::select(const Held &state)
{
    if (state.selectionStart < 0) {
        state.editor->setCursorPosition(state.cursor);
        return;
    }
    // The cursor stands at the end that the selection was drawn to.
    const bool backwards = state.cursor == state.selectionStart;
    state.editor->setSelection(backwards ? state.selectionStart + state.selectionLength
                                         : state.selectionStart,
                               backwards ? -state.selectionLength : state.selectionLength);
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
    if (known == measured.constEnd())
        known = measured.insert(shape, QStyledItemDelegate::sizeHint(option, index));
    return *known;
}

QString CellDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    // File names may hold line feeds; a row has one line.
    QString text = QStyledItemDelegate::displayText(value, locale);
    for (const char16_t separator : {u'\n', u'\r', u'\u2028', u'\u2029'})
        text.replace(QChar(separator), QChar(QChar::Space));
    return text;
}

QWidget *CellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem & /*option*/,
                                    const QModelIndex &index) const
{
    // A bare check box has no text to edit: the keyboard goes through it, the space bar flips it.
    if (isBareCheckBox(index))
        return nullptr;

    openCell = index;
    openEditor = held.editor;
    if (!openEditor) {
        openEditor = new QLineEdit(parent);
        // The window's sheet draws fields taller than a row. The editor stays inside its cell,
        // where it covers no neighbour's check box.
        openEditor->setStyleSheet(u"min-height:0; padding:0 2px; border-radius:0;"_s);
        openEditor->setAlignment(Qt::Alignment::fromInt(index.data(Qt::TextAlignmentRole).toInt()));
    }
    return openEditor;
}

void CellDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const
{
    // All of the cell but a check box or an icon, not only where its text is drawn.
    QStyledItemDelegate::updateEditorGeometry(editor, option, index);
    QRect cell = option.rect;
    if (index.data(Qt::CheckStateRole).isValid() || index.data(Qt::DecorationRole).isValid()) {
        if (option.direction == Qt::LeftToRight)
            cell.setLeft(editor->geometry().left());
        else
            cell.setRight(editor->geometry().right());
    }
    editor->setGeometry(cell);
}

void CellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (editor != held.editor)
        QStyledItemDelegate::setEditorData(editor, index);
}

void CellDelegate::setModelData(QWidget *editor, QAbstractItemModel * /*model*/,
                                const QModelIndex & /*index*/) const
{
    // Clearing the table has the toolkit commit whatever is open.
    committing = editor == openEditor && editor != held.editor;
}

void CellDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    openEditor.clear();
    openCell = QPersistentModelIndex();
    if (editor == held.editor)
        return;
    if (std::exchange(committing, false))
        QStyledItemDelegate::setModelData(editor, table->model(), index);
    QStyledItemDelegate::destroyEditor(editor, index);
}

bool CellDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                             const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid()
        || measure(option, index).width() <= option.rect.width())
        return QStyledItemDelegate::helpEvent(event, view, option, index);

    constexpr qsizetype longestTip = 500; // characters
    const QString text = index.data().toString().trimmed().left(longestTip);
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
    // The table would look up the next cell first and have the editor commit then, which may
    // rebuild the table and leave it with no cell at all. Events also come from an editor that is
    // being destroyed and is no QLineEdit any more; none of them is of a key.
    if (event->type() == QEvent::KeyPress && object == openEditor
        && leavesEditor(static_cast<const QKeyEvent &>(*event)))
        table->setFocus(Qt::OtherFocusReason);
    return QStyledItemDelegate::eventFilter(object, event);
}
