#pragma once

#include <QFont>
#include <QHash>
#include <QStyledItemDelegate>

class QTableWidget;

/// Shows and edits the cells of a table that is rebuilt while the user works in it. An editor, once
/// open, stays as it is whatever happens to the cells.
class CellDelegate : public QStyledItemDelegate
{
public:
    /// Becomes the table's delegate; owned by the table.
    explicit CellDelegate(QTableWidget *owner);

    /// Whether the cell has a check box and no text. There is nothing to edit in it: the keyboard
    /// goes through it, the space bar flips it.
    static bool isBareCheckBox(const QModelIndex &index);
    /// Whether an editor that is handed its cell's text keeps its own.
    void setKeepingText(bool keep) { keepingText = keep; }

    /// Where a cell is drawn, in the viewport and without the grid; empty for one that is not.
    QRect cellRect(const QModelIndex &index) const;
    /// Where a cell's check box is drawn, in the viewport; empty for a cell without one.
    QRect checkBoxRect(const QModelIndex &index) const;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
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
    /// Flips a check box upon the space bar. The mouse is CheckBoxClicks' alone.
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
    /// Shows a text that its cell cuts off as a tool tip.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

    static constexpr int widestClaim = 240;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    QSize measure(const QStyleOptionViewItem &option, const QModelIndex &index) const;
    /// Size of a check box, as the style draws it.
    QSize checkBoxSize() const;

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
    bool keepingText = false;
    mutable QHash<CellShape, QSize> measured; ///< for `measuredFont`
    mutable QFont measuredFont;
};
