#include "tests/support/celleditor.h"
#include "tests/support/testmain.h"
#include "widgets/celltable.h"
#include "widgets/tablecells.h"

#include <QtTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

enum Column { Name, Text, Box, Number };

/// Notes the events of an editor that whoever types in it, and whoever hears it read out, notices.
class Disturbances : public QObject
{
public:
    explicit Disturbances(QLineEdit *watched) { watched->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        const QList noticed{QEvent::FocusIn, QEvent::FocusOut, QEvent::Hide, QEvent::Show,
                            QEvent::ParentChange};
        if (noticed.contains(event->type()))
            events.append(event->type());
        return false;
    }

    QList<QEvent::Type> events;
};

} // namespace

/// A table that is rebuilt while a cell is edited, and in answer to the edit.
class CellEditingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // What the toolkit says when it loses track of an editor or an index.
        QTest::failOnWarning(QRegularExpression(u"^edit: |^Q(Abstract|Table|Line|Model|Item)"_s));
        table = std::make_unique<CellTable>(QStringList{u"Name"_s, u"T"_s, u"B"_s, u"N"_s});
        table->resize(600, 300);
        rebuild({u"alpha"_s, u"beta"_s, u"gamma"_s});
        table->show();
        QVERIFY(QTest::qWaitForWindowActive(table.get()));
        table->setFocus();
    }

    void cleanup() { table.reset(); }

    void anEditIsWrittenThenClosedThenLeft_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QStringList>("order");

        const QStringList stays{u"written"_s, u"closed"_s};
        const QStringList leaves{u"written"_s, u"closed"_s, u"left"_s};
        QTest::newRow("Enter") << int(Qt::Key_Enter) << stays;
        QTest::newRow("Tab") << int(Qt::Key_Tab) << leaves;
        QTest::newRow("Backtab") << int(Qt::Key_Backtab) << leaves;
        QTest::newRow("Down") << int(Qt::Key_Down) << leaves;
        QTest::newRow("Escape") << int(Qt::Key_Escape) << QStringList{u"closed"_s};
    }

    // The table may be rebuilt at the first of these, and relies on the others to come after.
    void anEditIsWrittenThenClosedThenLeft()
    {
        QFETCH(int, key);
        QFETCH(QStringList, order);

        QLineEdit *editor = editCell(1, Text);
        QStringList heard;
        connect(table.get(), &QTableWidget::itemChanged, this, [&](const QTableWidgetItem *item) {
            QCOMPARE(item, table->item(1, Text));
            QCOMPARE(openEditor(table.get()), editor);
            heard.append(u"written"_s);
        });
        connect(table.get(), &QTableWidget::currentCellChanged, this, [&] {
            QVERIFY(editor->isHidden());
            heard.append(u"left"_s);
        });
        const WhenHidden closed(editor, [&] {
            QVERIFY(!table->indexWidget(table->model()->index(1, Text)));
            heard.append(u"closed"_s);
        });
        QTest::keyClicks(editor, u"typed"_s);
        QTest::keyClick(editor, Qt::Key(key));
        QTRY_COMPARE(heard, order);
    }

    void anEditEndsWhenTheFocusGoes()
    {
        QLineEdit *editor = editCell(1, Text);
        QTest::keyClicks(editor, u"typed"_s);
        table->setFocus();
        QVERIFY(!openEditor(table.get()));
        QCOMPARE(table->item(1, Text)->text(), u"typed"_s);
    }

    void aRebuildingDoesNotDisturbTheEditor()
    {
        QLineEdit *editor = editCell(1, Text);
        QTest::keyClicks(editor, u"typed"_s);
        editor->setSelection(4, -2);
        const Disturbances disturbances(editor);
        rebuild({u"alpha"_s, u"beta"_s, u"gamma"_s}, u"other"_s);
        QCOMPARE(openEditor(table.get()), editor);
        QCOMPARE(editor->text(), u"typed"_s);
        QCOMPARE(editor->selectedText(), u"pe"_s);
        QCOMPARE(editor->cursorPosition(), 2);
        QCOMPARE(disturbances.events, QList<QEvent::Type>());
        QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(editor->text() != u"typed"_s);
    }

    void theEditorMovesWithItsRow_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::newRow("rows come above") << QStringList{u"a"_s, u"b"_s, u"alpha"_s, u"beta"_s};
        QTest::newRow("rows go above") << QStringList{u"beta"_s, u"gamma"_s};
        QTest::newRow("all others go") << QStringList{u"beta"_s};
        QTest::newRow("rows come below") << QStringList{u"alpha"_s, u"beta"_s, u"c"_s, u"d"_s};
        QTest::newRow("others stand above") << QStringList{u"x"_s, u"beta"_s, u"alpha"_s};
    }

    void theEditorMovesWithItsRow()
    {
        QFETCH(QStringList, names);

        QLineEdit *editor = editCell(1, Text);
        QTest::keyClicks(editor, u"typed"_s);
        const Disturbances disturbances(editor);
        rebuild(names);
        const auto row = static_cast<int>(names.indexOf(u"beta"_s));
        QCOMPARE(table->rowCount(), names.size());
        QCOMPARE(openEditor(table.get()), editor);
        QCOMPARE(disturbances.events, QList<QEvent::Type>());
        QCOMPARE(table->currentRow(), row);
        QCOMPARE(table->currentColumn(), int(Text));
        QCOMPARE(selectedRows(), QList{row});
        QVERIFY(
            table->visualItemRect(table->item(row, Text)).contains(editor->geometry().center()));
        QTest::keyClick(editor, Qt::Key_Tab);
        QCOMPARE(table->item(row, Text)->text(), u"typed"_s);
        QCOMPARE(table->currentRow(), row);
    }

    void whatIsTypedIsDroppedWithItsRow()
    {
        const QPointer<QLineEdit> editor = editCell(1, Text);
        QTest::keyClicks(editor, u"typed"_s);
        connect(table->model(), &QAbstractItemModel::dataChanged, this,
                [this] { QVERIFY(table->findItems(u"typed"_s, Qt::MatchExactly).isEmpty()); });
        rebuild({u"alpha"_s, u"gamma"_s, u"delta"_s});
        QVERIFY(!openEditor(table.get()));
        QVERIFY(table->hasFocus());
        // The keyboard goes on from where the row was.
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(selectedRows(), QList<int>());
        QTRY_VERIFY(!editor);
    }

    void anEditThatIsDroppedLeavesItsCellCurrent()
    {
        QTest::keyClicks(editCell(1, Text), u"typed"_s);
        table->dropEdit();
        QVERIFY(!openEditor(table.get()));
        QCOMPARE(table->item(1, Text)->text(), u"text"_s);
        QCOMPARE(table->currentRow(), 1);
        QVERIFY(table->hasFocus());
    }

    void theKeyboardStaysOnACheckBox()
    {
        selectCell(*table, 1, Box);
        rebuild({u"a"_s, u"alpha"_s, u"beta"_s});
        QCOMPARE(table->currentRow(), 2);
        QCOMPARE(table->currentColumn(), int(Box));
        QCOMPARE(selectedRows(), QList<int>());
    }

    void nothingElseStaysCurrentOrSelected()
    {
        selectCell(*table, 1, Text);
        table->clearFocus();
        rebuild({u"alpha"_s, u"beta"_s});
        QVERIFY(!table->currentIndex().isValid());
        QCOMPARE(selectedRows(), QList<int>());
        QVERIFY(!openEditor(table.get()));
    }

    void aRebuildingUponTheEditLeadsToTheNextCell()
    {
        rebuildUponEdits({u"a"_s, u"alpha"_s, u"beta"_s});
        QTest::keyClicks(editCell(1, Text), u"typed"_s);
        QTest::keyClick(openEditor(table.get()), Qt::Key_Tab);
        QCOMPARE(table->currentRow(), 2);
        QCOMPARE(table->currentColumn(), int(Box));
        QVERIFY(!openEditor(table.get()));
        QTest::keyClick(table.get(), Qt::Key_Tab);
        QCOMPARE(table->currentColumn(), int(Number));
        QVERIFY(openEditor(table.get()));
    }

    void aRowThatGoesUponItsOwnEditIsLeft_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Tab") << int(Qt::Key_Tab);
        QTest::newRow("Down") << int(Qt::Key_Down);
        QTest::newRow("Enter") << int(Qt::Key_Enter);
    }

    void aRowThatGoesUponItsOwnEditIsLeft()
    {
        QFETCH(int, key);

        rebuildUponEdits({u"alpha"_s, u"gamma"_s});
        const QPointer<QLineEdit> editor = editCell(1, Text);
        QTest::keyClicks(editor, u"typed"_s);
        QTest::keyClick(editor, Qt::Key(key));
        QTRY_VERIFY(!editor);
        QCOMPARE(table->rowCount(), 2);
        // The keyboard goes on from where the row was, here in the last one.
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(table->currentColumn(), key == Qt::Key_Tab ? int(Text) + 1 : int(Text));
    }

private:
    void rebuild(const QStringList &names, const QString &text = u"text"_s)
    {
        const QSignalBlocker quietly(table.get());
        const std::optional<QString> inUse = table->nameInUse();
        const auto fill = [&](int) {
            CellFilling filling(*table);
            for (int row = 0; row < names.size(); ++row) {
                filling.set(row, Name, {names.at(row)});
                filling.set(row, Text, {text});
                filling.set(row, Box, {.checked = false});
                filling.set(row, Number, {QString::number(row)});
            }
        };
        table->setRows(static_cast<int>(names.size()),
                       inUse ? static_cast<int>(names.indexOf(*inUse)) : -1, fill);
    }

    void rebuildUponEdits(const QStringList &names)
    {
        connect(table.get(), &QTableWidget::itemChanged, this, [this, names] { rebuild(names); });
    }

    QLineEdit *editCell(int row, int column)
    {
        table->setCurrentCell(row, column);
        return openEditor(table.get());
    }

    QList<int> selectedRows() const
    {
        QList<int> rows;
        const QModelIndexList indexes = table->selectionModel()->selectedRows();
        for (const QModelIndex &index : indexes)
            rows.append(index.row());
        return rows;
    }

    /// Calls back when a widget is hidden.
    class WhenHidden : public QObject
    {
    public:
        WhenHidden(QWidget *watched, std::function<void()> callback) : hidden(std::move(callback))
        {
            watched->installEventFilter(this);
        }

        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::Hide)
                hidden();
            return false;
        }

    private:
        std::function<void()> hidden;
    };

    std::unique_ptr<CellTable> table;
};

TOVAN_WIDGET_TEST(cellediting_test, CellEditingTest)
#include "cellediting_test.moc"
