#pragma once

#include <QFont>
#include <QHash>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>

class QLineEdit;
class QTableWidget;
class QTableWidgetItem;

/// Shows and edits the cells of a table that is rebuilt while the user works in it.
///
/// A text is written when its editor has closed; the toolkit writes it while the editor closes,
/// and a table that is rebuilt upon the change would lose the editor, and with it what follows
/// upon the key that ended the edit. An editor that is still being typed in is carried over:
/// hold() before the rebuilding, restore() after it. So is the keyboard's place on a check box.
class CellDelegate : public QStyledItemDelegate
{
public:
    /// Becomes the table's delegate; owned by the table.
    explicit CellDelegate(QTableWidget *owner);

    /// Keeps what the user works in while the table is cleared. Returns the first cell's text of
    /// that row, a null text when there is nothing to keep.
    QString hold();
    /// Goes on in `row`, in the column it was: opens the held editor with its text, cursor,
    /// selection, what can be undone, and the focus if it had it; or makes the check box's cell
    /// current. Drops what was held when `row` is negative.
    void restore(int row);

    /// Remembers what it measured: a table that is rebuilt every second asks for the same few texts
    /// again and again. A text claims no more than `widestClaim` pixels, whatever was typed: a
    /// column as wide as it would push the others out of sight.
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QString displayText(const QVariant &value, const QLocale &locale) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;
    /// Shows a text that its cell cuts off as a tool tip.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

    static constexpr int widestClaim = 240;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    /// What is on its way from the old rows to the new ones.
    struct Held
    {
        QPointer<QLineEdit> editor; ///< null when the keyboard is on a check box
        int column = -1;
        int cursor = 0;
        int selectionStart = -1; ///< -1 without a selection
        int selectionLength = 0;
        QPointer<QWidget> focusElsewhere; ///< who has the window's focus if not the editor
    };

    QSize measure(const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void reopen(const Held &state, QTableWidgetItem *item);
    static void select(const Held &state);

    /// What the size of a cell depends on besides the font.
    struct CellShape
    {
        QString text;
        bool checkBox = false;
        bool icon = false;

        bool operator==(const CellShape &) const = default;
    };
    friend size_t qHash(const CellShape &shape, size_t seed = 0)
    {
        return qHashMulti(seed, shape.text, shape.checkBox, shape.icon);
    }

    QTableWidget *table;
    mutable QHash<CellShape, QSize> measured; ///< for `measuredFont`
    mutable QFont measuredFont;
    Held held;
    // The toolkit creates and destroys editors through constant operations.
    mutable QPointer<QLineEdit> openEditor;
    mutable QPersistentModelIndex openCell;
    mutable bool committing = false; ///< the closing editor's text is to be written
};
