#include "tests/support/celleditor.h"
#include "tests/support/paintings.h"
#include "tests/support/testmain.h"
#include "widgets/celltable.h"
#include "widgets/tablecells.h"

#include <QHeaderView>
#include <QStyledItemDelegate>
#include <QtTest>

#include <map>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int changingColumn = 1;

/// Fills the table anew as a refresh does: a row for each text.
void fill(CellTable &table, const QStringList &texts)
{
    const auto rows = static_cast<int>(texts.size());
    table.setRowCount(rows);
    CellFilling filling(table);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < table.columnCount(); ++column) {
            const QString text = column == changingColumn ? texts.at(row) : u"same"_s;
            filling.set(row, column, {text});
        }
    }
}

/// Notes which cells a table paints, and where.
class PaintedCells : public QStyledItemDelegate
{
public:
    explicit PaintedCells(QTableWidget &table) : own(table.itemDelegate())
    {
        table.setItemDelegate(this);
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        own->paint(painter, option, index);
        cells[{index.row(), index.column()}] = option.rect;
        firstWidths.try_emplace(index.column(), option.rect.width());
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return own->sizeHint(option, index);
    }

    mutable std::map<std::pair<int, int>, QRect> cells;
    mutable std::map<int, int> firstWidths; ///< of columns, at their first painting

private:
    QAbstractItemDelegate *own;
};

} // namespace

/// The widths of columns that follow their contents, and the end of a table.
class CellTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        table = std::make_unique<CellTable>(headers);
        table->resize(900, 300);
        table->show();
        QVERIFY(QTest::qWaitForWindowExposed(table.get()));
        fill(*table, {u"a"_s, u"a middling text"_s});
        awaitWidthOf({u"a"_s, u"a middling text"_s});
    }

    void cleanup() { table.reset(); }

    void aColumnFollowsATextThatBecomesLonger()
    {
        const QStringList texts{u"a"_s, u"a text that is longer than before"_s};
        fill(*table, texts);
        awaitWidthOf(texts);
    }

    void aColumnFollowsTextsThatBecomeShorter()
    {
        const QStringList texts{u"a"_s, u"b"_s};
        fill(*table, texts);
        awaitWidthOf(texts);
    }

    void aColumnFollowsACellOfItsOwn()
    {
        table->item(0, changingColumn)->setText(u"a text that is typed into a cell"_s);
        awaitWidthOf({u"a text that is typed into a cell"_s});
    }

    void aColumnFollowsTheEndOfItsWidestRow()
    {
        table->setRowCount(1);
        awaitWidthOf({u"a"_s});
    }

    void aColumnFollowsAClearedTable()
    {
        table->clearContents();
        awaitWidthOf({});
    }

    void columnsOfAHiddenTableFollowWhenItIsShown()
    {
        const QStringList longer{u"a"_s, u"a text that is longer than before"_s};
        table->hide();
        fill(*table, longer);
        table->show();
        awaitWidthOf(longer);

        table->hide();
        fill(*table, {u"a"_s});
        table->show();
        awaitWidthOf({u"a"_s});
    }

    void whatAHiddenTableShowsIsPaintedAtOnceWithTheRightWidths()
    {
        const QStringList longer{u"a"_s, u"a text that is longer than before"_s};
        const int width = widthOf(longer);
        awaitPainting();
        table->hide();
        fill(*table, longer);
        PaintedCells painted(*table);
        table->show();
        QTRY_VERIFY(!painted.cells.empty());
        QCOMPARE(painted.firstWidths.at(changingColumn), width - (table->showGrid() ? 1 : 0));
    }

    void aColumnFollowsTheFont()
    {
        const int before = table->columnWidth(changingColumn);
        QFont font = table->font();
        font.setPointSize(font.pointSize() * 2);
        table->setFont(font);
        QTRY_VERIFY(table->columnWidth(changingColumn) > before * 3 / 2);
    }

    void otherColumnsStayAsWideAsTheyAre()
    {
        const int before = table->columnWidth(2);
        fill(*table, {u"a text that is longer than before"_s});
        awaitWidthOf({u"a text that is longer than before"_s});
        QCOMPARE(table->columnWidth(2), before);
    }

    void theHeaderIsPaintedOnlyWhenAWidthChanges()
    {
        awaitPainting();
        const Paintings ofCells(*table->viewport());
        const Paintings ofHeader(*table->horizontalHeader()->viewport());
        fill(*table, {u"b"_s, u"a middling text"_s});
        QTRY_VERIFY(!ofCells.region.isEmpty());
        QTest::qWait(0);
        QVERIFY(ofHeader.region.isEmpty());

        fill(*table, {u"b"_s, u"a text that is longer than before"_s});
        QTRY_VERIFY(!ofHeader.region.isEmpty());
    }

    void onlyCellsThatChangeArePainted_data()
    {
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::newRow("left to right") << Qt::LeftToRight;
        QTest::newRow("right to left") << Qt::RightToLeft;
    }

    void onlyCellsThatChangeArePainted()
    {
        QFETCH(Qt::LayoutDirection, direction);
        table->setLayoutDirection(direction);
        PaintedCells painted(*table);
        awaitPainting();
        painted.cells.clear();

        const Paintings paintings(*table->viewport());
        {
            CellFilling filling(*table);
            filling.set(0, 0, {u"Same"_s});
            filling.set(0, changingColumn, {u"b"_s});
        }
        QTRY_VERIFY(!paintings.region.isEmpty());
        QCOMPARE(painted.cells.size(), 2U);
        for (const int column : {0, changingColumn}) {
            const QRect cell = painted.cells.at({0, column});
            QCOMPARE(paintings.region & cell, QRegion(cell));
        }
    }

    void aTableMayEndWhileItIsEdited()
    {
        table->setFocus();
        table->editItem(table->item(0, changingColumn));
        QVERIFY(openEditor(table.get()));
        table.reset();
    }

private:
    /// Waits until all that was to be painted is, and what that then has laid out.
    void awaitPainting()
    {
        for (int i = 0; i < 2; ++i) {
            const Paintings paintings(*table->horizontalHeader()->viewport());
            table->viewport()->update();
            table->horizontalHeader()->viewport()->update();
            QTRY_VERIFY(!paintings.region.isEmpty());
        }
    }

    void awaitWidthOf(const QStringList &texts)
    {
        const int width = widthOf(texts);
        QTRY_COMPARE(table->columnWidth(changingColumn), width);
    }

    /// Width of the column in a table that never showed anything else.
    static int widthOf(const QStringList &texts)
    {
        CellTable fresh(headers);
        fresh.resize(900, 300);
        fresh.show();
        fill(fresh, texts);
        // The header is done when a turn of the event loop changes nothing more.
        int width = -1;
        while (width != fresh.columnWidth(changingColumn)) {
            width = fresh.columnWidth(changingColumn);
            QTest::qWait(0);
        }
        return width;
    }

    static inline const QStringList headers{u"Name"_s, u"T"_s, u"O"_s};
    std::unique_ptr<CellTable> table;
};

TOVAN_WIDGET_TEST(celltable_test, CellTableTest)
#include "celltable_test.moc"
