#include "tests/rules/rulespagefixture.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

/// Cells of the Rules Manager that are edited and clicked while the program ticks.
class RulesEditingTest : public QObject, private RulesPageFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

    void aCellThatWasEditedBeforeATickOpensByOneClick()
    {
        retype(clickIntoCell(table, 1, Priority), u"Low"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, Priority), u"Low"_s);
        QTRY_VERIFY(!openEditor(table));
        fixture->tick();
        QVERIFY(clickIntoCell(table, 1, Priority));
    }

    void aLimitTypedOneKeyPerTickIsWhatWasTyped()
    {
        QLineEdit *editor = clickIntoCell(table, 1, DlKbps);
        QVERIFY(editor);
        QCOMPARE(editor->selectedText(), u"5"_s);
        for (const QChar digit : u"12345"_s) {
            QTest::keyClicks(openEditor(table), digit);
            fixture->tick();
            QVERIFY(openEditor(table));
            QVERIFY(openEditor(table)->hasFocus());
        }
        QCOMPARE(openEditor(table)->text(), u"12345"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, DlKbps), u"12345"_s);
        QVERIFY(!openEditor(table));
        fixture->tick();
        QCOMPARE(cell(u"app2"_s, DlKbps), u"12345"_s);
        QCOMPARE(cell(u"app2"_s, UlKbps), u"5"_s);
    }

    void keysFindTheFocusedEditorWithoutHelp()
    {
        clickIntoCell(table, 1, DlKbps);
        for (const QChar digit : u"678"_s) {
            // As the windowing system does: to whoever has the focus now.
            QTest::keyClicks(QApplication::focusWidget(), digit);
            fixture->tick();
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Enter);
        QTRY_COMPARE(cell(u"app2"_s, DlKbps), u"678"_s);
    }

    void cursorAndSelectionStayThroughATick_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("cursor");

        QTest::newRow("cursor at the start") << -1 << 0 << 0;
        QTest::newRow("cursor in the middle") << -1 << 0 << 3;
        QTest::newRow("cursor at the end") << -1 << 0 << 6;
        QTest::newRow("forward selection") << 1 << 3 << 4;
        QTest::newRow("backward selection") << 4 << -3 << 1;
        QTest::newRow("everything") << 0 << 6 << 6;
    }

    void cursorAndSelectionStayThroughATick()
    {
        QFETCH(int, start);
        QFETCH(int, length);
        QFETCH(int, cursor);

        QLineEdit *editor = clickIntoCell(table, 0, Priority);
        QCOMPARE(editor->text(), u"Normal"_s);
        if (start < 0)
            editor->setCursorPosition(cursor);
        else
            editor->setSelection(start, length);
        const QString selected = editor->selectedText();

        fixture->tick();
        editor = openEditor(table);
        QCOMPARE(editor->text(), u"Normal"_s);
        QCOMPARE(editor->cursorPosition(), cursor);
        QCOMPARE(editor->selectedText(), selected);
    }

    void whatWasTypedCanBeUndoneAfterATick()
    {
        QLineEdit *editor = clickIntoCell(table, 0, Priority);
        retype(editor, u"Low"_s);
        fixture->tick();
        QTest::keyClick(openEditor(table), Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(openEditor(table)->text() != u"Low"_s);
    }

    void theEditorMovesWithItsApplicationsRow()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->system().addProcess(9, u"aaa"_s, 1);
        fixture->tick();
        QCOMPARE(table->currentRow(), 2);
        QCOMPARE(openEditor(table)->text(), u"77"_s);
        QVERIFY(table->visualItemRect(table->item(2, DlKbps))
                    .contains(openEditor(table)->geometry().center()));
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
        QCOMPARE(cell(u"app1"_s, DlKbps), u"5"_s);
        QCOMPARE(cell(u"aaa"_s, DlKbps), u"5"_s);
    }

    void theEditedRowStaysSelectedThroughATick()
    {
        clickIntoCell(table, 1, DlKbps);
        fixture->tick();
        QVERIFY(table->selectionModel()->isRowSelected(1));
        QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
    }

    void theEditIsDroppedWhenTheApplicationIsGone()
    {
        QPointer<QLineEdit> editor = clickIntoCell(table, 1, DlKbps);
        retype(editor, u"77"_s);
        fixture->system().removeProcess(2);
        fixture->tick();
        QCOMPARE(table->rowCount(), 4);
        QVERIFY(!openEditor(table));
        QTRY_VERIFY(!editor);
        for (int row = 0; row < table->rowCount(); ++row)
            QCOMPARE(table->item(row, DlKbps)->text(), u"5"_s);
    }

    void theEditIsDroppedWhenTheApplicationIsFilteredAway()
    {
        clickCheckBox(u"app2"_s, Dl);
        WindowFixture::click(limitedButton());
        QCOMPARE(table->rowCount(), 1);
        retype(clickIntoCell(table, 0, Priority), u"Low"_s);
        // The other table takes the limit away.
        QTableWidget *apps = fixture->appsTable();
        apps->item(WindowFixture::rowOf(apps, u"app2"_s), 4)->setCheckState(Qt::Unchecked);
        QCOMPARE(WindowFixture::rowOf(table, u"app2"_s), -1);
        QVERIFY(!openEditor(table));
    }

    void thePlaceholderRowHasNoClaimToItsEditor()
    {
        for (quint32 pid = 1; pid <= 5; ++pid)
            fixture->system().removeProcess(pid);
        fixture->tick();
        QCOMPARE(WindowFixture::rowTexts(table, 0).first(), u"No rules or active apps"_s);
        QTest::keyClicks(clickIntoCell(table, 0, Application), u"x"_s);
        fixture->tick();
        QVERIFY(!openEditor(table));
        QCOMPARE(WindowFixture::rowTexts(table, 0).first(), u"No rules or active apps"_s);
    }

    void editingThePlaceholderRowMakesARuleOfItsName()
    {
        for (quint32 pid = 1; pid <= 5; ++pid)
            fixture->system().removeProcess(pid);
        fixture->tick();
        table->setCurrentCell(0, Priority);
        retype(openEditor(table), u"High"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(WindowFixture::rowTexts(table, 0),
                     QStringList({u"No rules or active apps"_s, u"High"_s, QString(), QString(),
                                  QString(), u"5"_s, u"5"_s, u"0"_s}));
        // By now it is an application like any other.
        QTest::keyClicks(clickIntoCell(table, 0, DlKbps), u"6"_s);
        fixture->tick();
        QVERIFY(openEditor(table));
    }

    void aCheckBoxPressedAcrossATickTakesEffect()
    {
        QTableWidget *viewed = table;
        const QPoint box = WindowFixture::checkBoxCentre(viewed, 1, Block);
        QTest::mousePress(viewed->viewport(), Qt::LeftButton, {}, box);
        fixture->system().addProcess(9, u"aaa"_s, 1);
        fixture->tick();
        QTest::mouseRelease(viewed->viewport(), Qt::LeftButton, {}, box);
        QCOMPARE(checked(Block), QStringList({u"app2"_s}));
        QVERIFY(!openEditor(table));
    }

    void aCheckBoxClickCommitsTheOpenEditorFirst()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->tick();
        clickCheckBox(u"app2"_s, Dl);
        QCOMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
        QCOMPARE(checked(Dl), QStringList({u"app2"_s}));
        QVERIFY(!openEditor(table));
    }

    void aChangeOfAnotherCellKeepsTheOpenEditor()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        table->item(3, Priority)->setText(u"Low"_s);
        QCOMPARE(cell(u"app4"_s, Priority), u"Low"_s);
        QVERIFY(openEditor(table));
        QCOMPARE(openEditor(table)->text(), u"77"_s);
        QCOMPARE(table->currentRow(), 1);
    }

    void columnsKeepTheirWidthsWhileAnEditorIsOpen()
    {
        clickIntoCell(table, 1, DlKbps);
        QCoreApplication::processEvents();
        const auto widths = columnWidths();
        const QRect geometry = openEditor(table)->geometry();
        for (const QChar digit : u"1234567"_s) {
            QTest::keyClicks(openEditor(table), digit);
            QCOMPARE(openEditor(table)->geometry(), geometry);
            fixture->tick();
            QCOMPARE(columnWidths(), widths);
            QCOMPARE(openEditor(table)->geometry(), geometry);
            QCoreApplication::processEvents();
            QCOMPARE(columnWidths(), widths);
            QCOMPARE(openEditor(table)->geometry(), geometry);
        }
    }

    void theEditorStaysInsideItsCell()
    {
        for (const int column : {Application, Priority, DlKbps, Sockets}) {
            QLineEdit *editor = clickIntoCell(table, 2, column);
            QVERIFY(editor);
            QTest::keyClicks(editor, u"a text that is longer than the cell"_s);
            const QRect rect = table->visualItemRect(table->item(2, column));
            QVERIFY2(rect.contains(editor->geometry()), qPrintable(QString::number(column)));
            QCOMPARE(editor->width(), rect.width());
            QTest::keyClick(editor, Qt::Key_Escape);
        }
    }

    void anEditorScrolledAwayByAReorderedTableComesIntoView()
    {
        retype(clickIntoCell(table, 0, DlKbps), u"77"_s);
        for (quint32 pid = 100; pid < 160; ++pid)
            fixture->system().addProcess(pid, u"aa%1"_s.arg(pid), 1);
        fixture->tick();
        QVERIFY(table->viewport()->rect().contains(openEditor(table)->geometry().center()));
        QCOMPARE(openEditor(table)->text(), u"77"_s);
    }

private:
    QAbstractButton *limitedButton()
    {
        const auto buttons = table->parentWidget()->findChildren<QPushButton *>();
        for (QPushButton *button : buttons) {
            if (button->text() == "Limited"_L1)
                return button;
        }
        qFatal("the page has no button \"Limited\"");
    }

    QList<int> columnWidths() const
    {
        QList<int> widths;
        for (int column = 0; column < table->columnCount(); ++column)
            widths.append(table->columnWidth(column));
        return widths;
    }
};

TOVAN_WINDOW_TEST(rulesediting_test, RulesEditingTest)
#include "rulesediting_test.moc"
