#include "tests/support/celleditor.h"
#include "tests/support/testmain.h"
#include "widgets/celltable.h"
#include "widgets/tablecells.h"

#include <QHeaderView>
#include <QtTest>

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

/// Counts how often a widget is painted.
class Paintings : public QObject
{
public:
    explicit Paintings(QWidget &widget) { widget.installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return QObject::eventFilter(receiver, event);
    }
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
        const Paintings ofCells(*table->viewport());
        const Paintings ofHeader(*table->horizontalHeader()->viewport());
        fill(*table, {u"b"_s, u"a middling text"_s});
        QTRY_COMPARE(ofCells.count, 1);
        QTest::qWait(0);
        QCOMPARE(ofHeader.count, 0);

        fill(*table, {u"b"_s, u"a text that is longer than before"_s});
        QTRY_VERIFY(ofHeader.count > 0);
    }

    void aTableMayEndWhileItIsEdited()
    {
        table->setFocus();
        table->editItem(table->item(0, changingColumn));
        QVERIFY(openEditor(table.get()));
        table.reset();
    }

private:
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
