#include "tests/rules/rulespagefixture.h"

using namespace Qt::StringLiterals;

/// The keys and clicks that end an edit in the Rules Manager and lead to the next cell.
class RulesKeysTest : public QObject, private RulesPageFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

    void escapeLeavesTheRuleAsItIs()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->tick();
        QTest::keyClick(openEditor(table), Qt::Key_Escape);
        QVERIFY(!openEditor(table));
        QCOMPARE(cell(u"app2"_s, DlKbps), u"5"_s);
        QCOMPARE(table->currentRow(), 1);
        QVERIFY(table->hasFocus());
    }

    void enterLeavesTheCellCurrentAndTheTableFocused()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->tick();
        QTest::keyClick(openEditor(table), Qt::Key_Enter);
        QTRY_COMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(table->currentColumn(), int(DlKbps));
        QVERIFY(!openEditor(table));
        QVERIFY(table->hasFocus());
        // And the arrow goes on from there.
        QTest::keyClick(table, Qt::Key_Down);
        QCOMPARE(table->currentRow(), 2);
        QCOMPARE(openEditor(table)->text(), u"5"_s);
    }

    void tabEditsTheNextCellAfterACommit()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Tab);
        QCOMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(table->currentColumn(), int(UlKbps));
        QVERIFY(openEditor(table) && openEditor(table)->hasFocus());
        retype(openEditor(table), u"88"_s);
        fixture->tick();
        QTest::keyClick(openEditor(table), Qt::Key_Tab);
        QCOMPARE(cell(u"app2"_s, UlKbps), u"88"_s);
        QCOMPARE(table->currentColumn(), int(Sockets));
    }

    void tabLeavesTheTableAtTheEndOfARow()
    {
        retype(clickIntoCell(table, 1, UlKbps), u"9"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Tab);
        QTest::keyClick(openEditor(table), Qt::Key_Tab);
        QCOMPARE(cell(u"app2"_s, UlKbps), u"9"_s);
        QCOMPARE(table->currentRow(), 1);
        QVERIFY(!openEditor(table));
        QVERIFY(!table->hasFocus());
    }

    void shiftTabEditsThePreviousCellAfterACommit()
    {
        retype(clickIntoCell(table, 1, UlKbps), u"77"_s);
        fixture->tick();
        QTest::keyClick(openEditor(table), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(cell(u"app2"_s, UlKbps), u"77"_s);
        QCOMPARE(table->currentColumn(), int(DlKbps));
        QVERIFY(openEditor(table) && openEditor(table)->hasFocus());
    }

    void tabWithoutAChangeEditsTheNextCell()
    {
        clickIntoCell(table, 1, DlKbps);
        fixture->tick();
        QTest::keyClick(openEditor(table), Qt::Key_Tab);
        QCOMPARE(table->currentColumn(), int(UlKbps));
        QVERIFY(openEditor(table));
    }

    void anArrowKeyCommitsAndEditsTheNextRow()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Down);
        QCOMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
        QCOMPARE(table->currentRow(), 2);
        QVERIFY(openEditor(table) && openEditor(table)->hasFocus());
        QCOMPARE(openEditor(table)->text(), u"5"_s);
        QVERIFY(table->visualItemRect(table->item(2, DlKbps))
                    .contains(openEditor(table)->geometry().center()));
        QTest::keyClick(openEditor(table), Qt::Key_Up);
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(openEditor(table)->text(), u"77"_s);
    }

    void theLastRowIsReachedFromAnEditor()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        QTest::keyClick(openEditor(table), Qt::Key_PageDown);
        QCOMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
        QCOMPARE(table->currentRow(), 4);
        retype(openEditor(table), u"78"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(cell(u"app5"_s, DlKbps), u"78"_s);
        QCOMPARE(table->currentRow(), 0);
        // Without a modifier the key is the editor's own.
        QTest::keyClick(openEditor(table), Qt::Key_Home);
        QCOMPARE(table->currentRow(), 0);
        QVERIFY(openEditor(table));
    }

    void aClickIntoAnotherCellCommits()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->tick();
        QLineEdit *editor = clickIntoCell(table, 3, UlKbps);
        QCOMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
        QVERIFY(editor && editor->hasFocus());
        QCOMPARE(table->currentRow(), 3);
        QCOMPARE(table->currentColumn(), int(UlKbps));
    }

    void aClickOutsideTheTableCommits()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->tick();
        WindowFixture::click(fixture->button(u"Clear all rules"_s)
                                 ->parentWidget()
                                 ->findChild<QLineEdit *>(u"search"_s));
        QVERIFY(!openEditor(table));
    }

    void turningToAnotherPageCommits()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->tick();
        fixture->menuAction(u"Dashboard"_s)->trigger();
        QCOMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
    }

    void closingTheWindowCommits()
    {
        retype(clickIntoCell(table, 1, DlKbps), u"77"_s);
        fixture->tick();
        fixture->window().close();
        QCOMPARE(cell(u"app2"_s, DlKbps), u"77"_s);
    }

    void theKeyboardGoesThroughTheCheckBoxes()
    {
        retype(clickIntoCell(table, 1, Priority), u"Low"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Tab);
        QCOMPARE(table->currentColumn(), int(Dl));
        QVERIFY(!openEditor(table));
        QVERIFY(table->hasFocus());
        fixture->system().addProcess(9, u"aaa"_s, 1);
        fixture->tick();
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(checked(Dl), QStringList({u"app2"_s}));
        fixture->tick();
        QVERIFY(table->selectionModel()->selectedIndexes().isEmpty());
        QTest::keyClick(table, Qt::Key_Tab);
        QTest::keyClick(table, Qt::Key_Tab);
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(checked(Block), QStringList({u"app2"_s}));
        QTest::keyClick(table, Qt::Key_Tab);
        QCOMPARE(table->currentColumn(), int(DlKbps));
        QVERIFY(openEditor(table) && openEditor(table)->hasFocus());
        QTest::keyClick(openEditor(table), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(table->currentColumn(), int(Block));
        QVERIFY(table->hasFocus());
    }

    void theSpaceBarTogglesTheCurrentBoxAgainAndAgain()
    {
        clickCheckBox(u"app3"_s, Ul);
        QCOMPARE(checked(Ul), QStringList({u"app3"_s}));
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(checked(Ul), QStringList());
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(checked(Ul), QStringList({u"app3"_s}));
    }
};

TOVAN_WINDOW_TEST(ruleskeys_test, RulesKeysTest)
#include "ruleskeys_test.moc"
