#include "widgets/celltable.h"

#include "widgets/celldelegate.h"
#include "widgets/checkboxclicks.h"
#include "widgets/slimheader.h"
#include "widgets/slimscrollbar.h"
#include "widgets/tablecells.h"

#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto pauseInTyping = 1s;

/// Whether a key writes or erases a text.
bool isTyping(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return true;
    default:
        return !event.text().isEmpty() && event.text().front().isPrint();
    }
}

/// Whether a key does nothing yet: it changes what the next one means.
bool isModifier(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_Multi_key:
        return true;
    default:
        return event.key() >= Qt::Key_Dead_Grave && event.key() <= Qt::Key_Dead_Longsolidusoverlay;
    }
}

} // namespace

CellTable::CellTable(const QStringList &headers)
    : QTableWidget(0, static_cast<int>(headers.size())),
      widths(static_cast<std::size_t>(headers.size())),
      header(new SlimHeader),
      delegate(new CellDelegate(this))
{
    setHorizontalHeader(header);
    setHorizontalHeaderLabels(headers);
    verticalHeader()->hide();
    setAlternatingRowColors(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::AllEditTriggers);
    setContextMenuPolicy(Qt::CustomContextMenu);
    header->setStretchLastSection(false);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    useSlimScrollBars(*this);
    new CheckBoxClicks(this, *delegate);
    viewport()->installEventFilter(this); // after the clicks, to hear of them first
    // Of rows that go no dataChanged() tells.
    connect(model(), &QAbstractItemModel::rowsRemoved, this, [this] {
        forgetWidths();
        if (rowCount() > 0)
            followContents();
    });
}

std::optional<QString> CellTable::nameInUse() const
{
    const QModelIndex cell = currentIndex();
    if (!cell.isValid() || (!indexWidget(cell) && !hasFocus()))
        return std::nullopt;
    return cell.siblingAtColumn(0).data().toString();
}

bool CellTable::isEditorAt(QPoint position) const
{
    const QWidget *editor = indexWidget(currentIndex());
    return editor && editor->geometry().contains(position);
}

bool CellTable::postpone(std::function<void()> rebuild)
{
    if (!isComposing && !isButtonDown)
        return false;
    postponed = std::move(rebuild);
    return true;
}

void CellTable::setRows(int rows, int rowInUse, const std::function<void(int shift)> &fill)
{
    const auto setFilledRows = [&](int shift) {
        setRowCount(std::max(rows, rowCount()));
        fill(shift);
        setRowCount(rows);
    };
    if (rowInUse < 0) {
        const int row = std::min(currentRow(), rows - 1);
        const int column = currentColumn();
        dropEdit();
        selectionModel()->clear();
        setFilledRows(0);
        if (hasFocus() && row >= 0) {
            const QuietCurrentCell quietly(*this);
            setCurrentCell(row, column, QItemSelectionModel::NoUpdate);
        }
        return;
    }

    const bool wasInView = isInView(currentIndex());
    // The row moves with its editor as rows come and go above it.
    const int shift = rowInUse - currentRow();
    if (shift > 0)
        model()->insertRows(0, shift);
    else if (shift < 0)
        model()->removeRows(0, -shift);
    setFilledRows(shift);

    const QModelIndex cell = currentIndex();
    selectionModel()->select(cell,
                             indexWidget(cell)
                                 ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                                 : QItemSelectionModel::Clear);
    if (wasInView && !isInView(cell))
        scrollTo(cell);
}

void CellTable::dropEdit()
{
    if (QWidget *editor = indexWidget(currentIndex())) {
        if (editor->hasFocus())
            typingOn.setRemainingTime(pauseInTyping);
        closeEditor(editor, QAbstractItemDelegate::RevertModelCache);
    }
}

void CellTable::setRowHeight(int height)
{
    // The least height of a header's sections follows the font and may lie above.
    verticalHeader()->setMinimumSectionSize(height);
    verticalHeader()->setDefaultSectionSize(height);
}

void CellTable::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    // The table may have been rebuilt upon what was typed, and the row have gone with its editor,
    // which is hidden then. The key still leads to another cell.
    const bool wasDropped = editor && editor->isHidden();
    const bool next = hint == QAbstractItemDelegate::EditNextItem;
    const bool leaves
        = (next || hint == QAbstractItemDelegate::EditPreviousItem) && isAtEndOfRow(next);
    QTableWidget::closeEditor(wasDropped ? nullptr : editor,
                              leaves ? QAbstractItemDelegate::NoHint : hint);
    if (leaves)
        focusNextPrevChild(next);
}

bool CellTable::focusNextPrevChild(bool next)
{
    // Past the toolkit's own answer for tables, which goes on in the next row.
    return isAtEndOfRow(next)
        ? QAbstractScrollArea::focusNextPrevChild(next) // NOLINT(bugprone-parent-virtual-call)
        : QTableWidget::focusNextPrevChild(next);
}

bool CellTable::isAtEndOfRow(bool next) const
{
    return currentColumn() == (next ? columnCount() - 1 : 0);
}

bool CellTable::isInView(const QModelIndex &index) const
{
    return viewport()->rect().intersects(visualRect(index));
}

void CellTable::reset()
{
    forgetWidths();
    QTableWidget::reset();
}

int CellTable::sizeHintForColumn(int column) const
{
    if (column < 0 || static_cast<std::size_t>(column) >= widths.size())
        return QTableWidget::sizeHintForColumn(column);
    std::optional<int> &width = widths[static_cast<std::size_t>(column)];
    if (!width)
        width = QTableWidget::sizeHintForColumn(column);
    return *width;
}

void CellTable::dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                            const QList<int> &roles)
{
    bool isAsWide = true;
    for (int column = topLeft.column(); column <= bottomRight.column(); ++column) {
        const std::optional<int> before
            = std::exchange(widths.at(static_cast<std::size_t>(column)), std::nullopt);
        // In a hidden table measuring takes longer than all else that is done here.
        if (header->sectionResizeMode(column) == QHeaderView::ResizeToContents)
            isAsWide = isAsWide && isVisible() && before && sizeHintForColumn(column) == before;
    }
    if (!isAsWide)
        followContents();
    delegate->setKeepingText(true);
    // The toolkit's rectangle reaches a pixel into the row and the column that follow, whose cells
    // would be painted as well.
    const bool updates = viewport()->updatesEnabled();
    viewport()->setAttribute(Qt::WA_UpdatesDisabled);
    QTableWidget::dataChanged(topLeft, bottomRight, roles);
    viewport()->setAttribute(Qt::WA_UpdatesDisabled, !updates);
    delegate->setKeepingText(false);
    if (isVisible())
        viewport()->update(delegate->cellRect(topLeft) | delegate->cellRect(bottomRight));
}

void CellTable::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        forgetWidths();
    QTableWidget::changeEvent(event);
}

void CellTable::keyPressEvent(QKeyEvent *event)
{
    if (!typingOn.hasExpired() && isTyping(*event)) {
        // A blank may be meant for a check box, when it is struck again and again.
        if (event->key() != Qt::Key_Space)
            typingOn.setRemainingTime(pauseInTyping);
        return;
    }
    if (!isModifier(*event))
        typingOn = {};
    QTableWidget::keyPressEvent(event);
}

void CellTable::inputMethodEvent(QInputMethodEvent *event)
{
    if (typingOn.hasExpired())
        QTableWidget::inputMethodEvent(event);
    else
        typingOn.setRemainingTime(pauseInTyping);
}

bool CellTable::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != viewport())
        noteUseOfEditor(*event);
    else if (event->type() == QEvent::MouseButtonPress)
        typingOn = {};
    return QTableWidget::eventFilter(watched, event);
}

void CellTable::noteUseOfEditor(const QEvent &event)
{
    switch (event.type()) {
    case QEvent::InputMethod:
        isComposing = !static_cast<const QInputMethodEvent &>(event).preeditString().isEmpty();
        break;
    case QEvent::MouseButtonPress:
        isButtonDown = true;
        break;
    case QEvent::MouseButtonRelease:
        isButtonDown = false;
        break;
    case QEvent::FocusOut:
    case QEvent::Hide:
        isComposing = isButtonDown = false;
        break;
    default:
        return;
    }
    // First the editor itself takes the event.
    QTimer::singleShot(0, this, [this] {
        if (postponed && !isComposing && !isButtonDown)
            std::exchange(postponed, nullptr)();
    });
}

void CellTable::mousePressEvent(QMouseEvent *event)
{
    std::optional<QuietCurrentCell> quietly;
    if (event->button() == Qt::RightButton)
        quietly.emplace(*this);
    // A press opens the editor of a cell that becomes the current one, or whose row is selected.
    // The current cell of a row that a refresh left unselected is to open as any other.
    const QModelIndex cell = indexAt(event->position().toPoint());
    if (!quietly && cell.isValid() && cell == currentIndex()
        && !selectionModel()->isSelected(cell)) {
        const QuietCurrentCell untilPressed(*this);
        selectionModel()->clearCurrentIndex();
    }
    QTableWidget::mousePressEvent(event);
}

QItemSelectionModel::SelectionFlags CellTable::selectionCommand(const QModelIndex &index,
                                                                const QEvent *event) const
{
    const auto *mouse = dynamic_cast<const QMouseEvent *>(event);
    if (mouse && mouse->button() == Qt::RightButton && !index.isValid())
        return QItemSelectionModel::NoUpdate;
    return QTableWidget::selectionCommand(index, event);
}

void CellTable::forgetWidths()
{
    std::ranges::fill(widths, std::nullopt);
}

void CellTable::followContents()
{
    if (isVisible())
        header->followContents();
}
