#include "tests/support/celleditor.h"
#include "tests/support/windowfixture.h"

#include <QPushButton>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

enum Column { Application, Priority, Dl, Ul, Block, DlKbps, UlKbps, Sockets };

} // namespace

/// The Rules Manager's cells, edited by keys and clicks while the program ticks.
class RulesEditingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // What the toolkit says when it loses track of an editor or an index.
        QTest::failOnWarning(QRegularExpression(u"^edit: |^Q(Abstract|Table|Line|Model)"_s));
        fixture = std::make_unique<WindowFixture>();
        for (quint32 pid = 1; pid <= 5; ++pid)
            fixture->system().addProcess(pid, u"app%1"_s.arg(pid), 1);
        fixture->open();
        fixture->tick();
        WindowFixture::click(fixture->button(u"\u2263    Rules"_s));
        table = fixture->rulesTable();
        QVERIFY(QTest::qWaitForWindowActive(&fixture->window()));
        QCOMPARE(table->rowCount(), 5);
    }

    void cleanup() { fixture.reset(); }

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

    void theEditorsOwnMenuStaysOpenThroughATick()
    {
        QLineEdit *editor = clickIntoCell(table, 0, Priority);
        QContextMenuEvent event(QContextMenuEvent::Mouse, editor->rect().center(),
                                editor->mapToGlobal(editor->rect().center()));
        QApplication::sendEvent(editor, &event);
        QPointer<QWidget> menu = QApplication::activePopupWidget();
        QVERIFY(menu);
        fixture->tick();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(menu && menu->isVisible());
        menu->close();
        QVERIFY(openEditor(table));
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

    void tabGoesOnInTheNextRow()
    {
        retype(clickIntoCell(table, 1, Sockets), u"9"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Tab);
        QCOMPARE(table->currentRow(), 2);
        QCOMPARE(table->currentColumn(), int(Application));
        QVERIFY(openEditor(table));
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

    void aNewNameInTheApplicationColumnMakesARule()
    {
        retype(clickIntoCell(table, 1, Application), u"aaa"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(table->rowCount(), 6);
        QCOMPARE(WindowFixture::rowTexts(table, 0),
                 QStringList({u"aaa"_s, u"Normal"_s, QString(), QString(), QString(), u"5"_s,
                              u"5"_s, u"0"_s}));
        QCOMPARE(WindowFixture::rowOf(table, u"app2"_s), 2);
    }

    void aNameThatIsNoRuleTargetMakesNoRule()
    {
        retype(clickIntoCell(table, 1, Application), u"This PC"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(table->item(1, Application)->text(), u"This PC"_s);
        fixture->tick();
        QCOMPARE(table->rowCount(), 5);
        QCOMPARE(WindowFixture::rowOf(table, u"This PC"_s), -1);
    }

    void limitsAreReadLenientlyAndClamped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("letters") << u"fast"_s << u"1"_s;
        QTest::newRow("above") << u"100001"_s << u"100000"_s;
        QTest::newRow("zero") << u"0"_s << u"1"_s;
        QTest::newRow("empty") << u""_s << u"1"_s;
        QTest::newRow("too large for its type") << u"99999999999"_s << u"1"_s;
    }

    void limitsAreReadLenientlyAndClamped()
    {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QLineEdit *editor = clickIntoCell(table, 1, UlKbps);
        retype(editor, typed);
        if (typed.isEmpty())
            QTest::keyClick(editor, Qt::Key_Backspace);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, UlKbps), shown);
    }

    void anEmptyPriorityIsNormalAndAnyWordIsKept()
    {
        retype(clickIntoCell(table, 1, Priority), u"  <b>urgent</b> %1 "_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, Priority), u"<b>urgent</b> %1"_s);
        retype(clickIntoCell(table, 1, Priority), u"   "_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, Priority), u"Normal"_s);
    }

    void switchingALimitOnFillsItsValueWithTheDefault()
    {
        // The shown default is no value of the rule's own until then.
        QVERIFY(!storedRules().contains(u"app2"_s));
        clickCheckBox(u"app2"_s, Dl);
        QCOMPARE(storedRules().value(u"app2"_s).toMap().value(u"dlKbps"_s).toInt(), 5);
        QCOMPARE(storedRules().value(u"app2"_s).toMap().value(u"ulKbps"_s).toInt(), 0);
        clickCheckBox(u"app2"_s, Block);
        QVERIFY(storedRules().value(u"app2"_s).toMap().value(u"blocked"_s).toBool());
    }

    void anEditSetsNeitherToastNorStatus()
    {
        const QString status = fixture->labelStarting(u"Applications: "_s)->text();
        auto *toast = fixture->find<QFrame>("toast");
        toast->hide();
        clickCheckBox(u"app2"_s, Dl);
        QVERIFY(toast->isHidden());
        QCOMPARE(fixture->labelStarting(u"Applications: "_s)->text(), status);
    }

private:
    QString cell(const QString &application, int column) const
    {
        return table->item(WindowFixture::rowOf(table, application), column)->text();
    }

    QStringList checked(int column) const
    {
        QStringList applications;
        for (int row = 0; row < table->rowCount(); ++row) {
            if (table->item(row, column)->checkState() == Qt::Checked)
                applications.append(table->item(row, Application)->text());
        }
        return applications;
    }

    void clickCheckBox(const QString &application, int column)
    {
        WindowFixture::clickCheckBox(table, WindowFixture::rowOf(table, application), column);
    }

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

    /// Stored rules by application, each with its fields by key.
    static QVariantMap storedRules()
    {
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        QVariantMap rules;
        const int count = store.beginReadArray(u"rules"_s);
        for (int i = 0; i < count; ++i) {
            store.setArrayIndex(i);
            QVariantMap fields;
            const auto keys = store.childKeys();
            for (const QString &key : keys)
                fields.insert(key, store.value(key));
            rules.insert(fields.value(u"app"_s).toString(), fields);
        }
        return rules;
    }

    std::unique_ptr<WindowFixture> fixture;
    QTableWidget *table = nullptr;
};

TOVAN_TEST_MAIN(RulesEditingTest)
#include "rulesediting_test.moc"
