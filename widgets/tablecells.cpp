#include "widgets/tablecells.h"

#include <QBrush>
#include <QTableWidget>
#include <QVariant>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <typeinfo>
#include <utility>

namespace {

constexpr Qt::Alignment centred = Qt::AlignCenter;

Qt::ItemFlags flags(const CellContent &content)
{
    static const Qt::ItemFlags usual = QTableWidgetItem().flags();
    return content.checked ? usual | Qt::ItemIsUserCheckable : usual;
}

bool isSame(const CellContent &left, const CellContent &right)
{
    return left.text == right.text && left.accessibleText == right.accessibleText
        && left.checked == right.checked && left.isCentred == right.isCentred
        && left.icon.cacheKey() == right.icon.cacheKey() && left.background == right.background
        && left.foreground == right.foreground;
}

} // namespace

QuietCurrentCell::QuietCurrentCell(QTableWidget &quieted)
    : table(quieted),
      editTriggers(table.editTriggers()),
      autoScroll(table.hasAutoScroll())
{
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setAutoScroll(false);
}

QuietCurrentCell::~QuietCurrentCell()
{
    table.setAutoScroll(autoScroll);
    table.setEditTriggers(editTriggers);
}

/// A cell that knows what it was made of, and whether anybody has written into it since.
class CellFilling::Item final : public QTableWidgetItem
{
public:
    explicit Item(const CellContent &content) : QTableWidgetItem(content.text), madeOf(content)
    {
        if (!content.accessibleText.isEmpty())
            setData(Qt::AccessibleTextRole, content.accessibleText);
        if (content.checked) {
            setFlags(::flags(content));
            setCheckState(*content.checked ? Qt::Checked : Qt::Unchecked);
        }
        if (content.isCentred)
            setTextAlignment(centred);
        if (!content.icon.isNull())
            setIcon(content.icon);
        if (content.background.isValid())
            setBackground(content.background);
        if (content.foreground.isValid())
            setForeground(content.foreground);
        isUntouched = true;
    }

    void setData(int role, const QVariant &value) override
    {
        isUntouched = false;
        QTableWidgetItem::setData(role, value);
    }

    const CellContent &content() const { return madeOf; }

    /// Whether who sees or hears a cell cannot tell it from a new one of this content.
    static bool shows(const QTableWidgetItem &item, const CellContent &content)
    {
        if (typeid(item) != typeid(Item))
            return false;
        const auto &cell = static_cast<const Item &>(item);
        return cell.isUntouched && cell.flags() == ::flags(content)
            && isSame(cell.content(), content);
    }

private:
    CellContent madeOf;
    bool isUntouched = false;
};

/// Makes items. Cells of a column often have one of a few contents; then what they show is shared.
class CellFilling::Items
{
public:
    explicit Items(int columns) : made(static_cast<std::size_t>(columns)) { }

    QTableWidgetItem *make(int column, const CellContent &content)
    {
        constexpr std::size_t few = 2;
        std::vector<Item> &ofColumn = made[static_cast<std::size_t>(column)];
        auto same = std::ranges::find_if(
            ofColumn, [&content](const Item &each) { return isSame(each.content(), content); });
        if (same == ofColumn.end()) {
            if (ofColumn.size() == few)
                ofColumn.erase(ofColumn.begin());
            same = ofColumn.insert(ofColumn.end(), Item(content));
        }
        return new Item(*same);
    }

private:
    std::vector<std::vector<Item>> made; ///< column by column, the newest last
};

CellFilling::CellFilling(QTableWidget &filled)
    : table(filled),
      modelBlocker(filled.model()),
      items(std::make_unique<Items>(filled.columnCount()))
{
    Q_ASSERT(!table.isSortingEnabled());
}

CellFilling::~CellFilling()
{
    modelBlocker.unblock();
    QAbstractItemModel &model = *table.model();
    for (const Cells &cells : changes) {
        Q_EMIT model.dataChanged(model.index(cells.firstRow, cells.firstColumn),
                                 model.index(cells.lastRow, cells.lastColumn));
    }
}

void CellFilling::set(int row, int column, const CellContent &content)
{
    const QTableWidgetItem *item = table.item(row, column);
    if (item && Item::shows(*item, content))
        return;
    table.setItem(row, column, items->make(column, content));
    note({row, row, column, column});
}

void CellFilling::clear(int row, int column)
{
    if (!table.item(row, column))
        return;
    delete table.takeItem(row, column);
    note({row, row, column, column});
}

void CellFilling::moveRows(const std::vector<int> &from)
{
    const int rows = static_cast<int>(from.size());
    Q_ASSERT(rows <= table.rowCount());
    const int columns = table.columnCount();
    const auto cell = [columns](int row, int column) {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns)
            + static_cast<std::size_t>(column);
    };
    std::vector<int> moving;
    for (int row = 0; row < rows; ++row) {
        if (from[static_cast<std::size_t>(row)] != row)
            moving.push_back(row);
    }
    if (moving.empty())
        return;

    std::vector<std::unique_ptr<QTableWidgetItem>> taken(cell(rows, 0));
    for (const int row : moving) {
        for (int column = 0; column < columns; ++column)
            taken[cell(row, column)].reset(table.takeItem(row, column));
    }
    for (const int row : moving) {
        const int source = from[static_cast<std::size_t>(row)];
        for (int column = 0; column < columns && source >= 0; ++column) {
            QTableWidgetItem *item = source < rows ? taken[cell(source, column)].release()
                                                   : table.takeItem(source, column);
            if (item)
                table.setItem(row, column, item);
        }
    }
    note({moving.front(), moving.back(), 0, table.columnCount() - 1});
}

void CellFilling::note(const Cells &cells)
{
    // More ranges would cost more in layouts than the cells between them do in painting. The first
    // is most often in the machine's row alone; the second takes in all that follow.
    constexpr std::size_t mostRanges = 2;
    if (changes.empty()
        || (changes.back().lastRow < cells.firstRow - 1 && changes.size() < mostRanges)) {
        changes.push_back(cells);
        return;
    }
    Cells &range = changes.back();
    range.firstRow = std::min(range.firstRow, cells.firstRow);
    range.lastRow = std::max(range.lastRow, cells.lastRow);
    range.firstColumn = std::min(range.firstColumn, cells.firstColumn);
    range.lastColumn = std::max(range.lastColumn, cells.lastColumn);
}

void selectCell(QTableWidget &table, int row, int column)
{
    const QuietCurrentCell quiet(table);
    table.setCurrentCell(row, column,
                         QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}
