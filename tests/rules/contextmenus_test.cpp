#include "tests/rules/bothtablesfixture.h"
#include "tests/support/celleditor.h"

#include <QMenu>

#include <functional>

using namespace Qt::StringLiterals;

/// The menus of both tables, opened by real context-menu events and served while they are modal.
class ContextMenusTest : public QObject, private BothTablesFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

    void theApplicationsTablesMenuIsAsDecided()
    {
        QStringList entries;
        QVERIFY(rightClick(apps, u"app2"_s, [&](QMenu &menu) { entries = texts(menu); }));
        QCOMPARE(
            entries,
            QStringList({u"Toggle Block"_s, u"Toggle Download Limit"_s, u"Toggle Upload Limit"_s,
                         u"-"_s, u"High Priority"_s, u"Normal Priority"_s, u"Low Priority"_s,
                         u"-"_s, u"Open Rules Manager"_s, u"Reset App Rule"_s}));
    }

    void theRulesTablesMenuIsAsDecided()
    {
        showRules();
        QStringList entries;
        QVERIFY(rightClick(rules, u"app2"_s, [&](QMenu &menu) { entries = texts(menu); }));
        QCOMPARE(
            entries,
            QStringList({u"Toggle Block"_s, u"Toggle Download Limit"_s, u"Toggle Upload Limit"_s,
                         u"-"_s, u"High Priority"_s, u"Reset App Rule"_s}));
    }

    void theMenuOpensAtThePointerAndIsGoneAfterwards()
    {
        QPointer<QMenu> seen;
        QPoint corner;
        const QPoint position = cellCentre(apps, u"app2"_s);
        QVERIFY(rightClick(apps, u"app2"_s, [&](QMenu &menu) {
            seen = &menu;
            corner = menu.pos();
            QCOMPARE(menu.parentWidget(), &fixture->window());
        }));
        QCOMPARE(corner, apps->viewport()->mapToGlobal(position));
        QVERIFY(!seen);
    }

    void theRowIsSelectedAndNoEditorOpens_data() { onBothPages(); }

    void theRowIsSelectedAndNoEditorOpens()
    {
        QFETCH(bool, onRulesPage);
        if (onRulesPage)
            showRules();
        QTableWidget *table = onRulesPage ? rules : apps;
        const int row = WindowFixture::rowOf(table, u"app3"_s);
        QVERIFY(rightClick(table, u"app3"_s, [&](QMenu &) {
            QVERIFY(table->selectionModel()->isRowSelected(row));
            QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
            QVERIFY(!openEditor(table));
        }));
        QVERIFY(!openEditor(table));
    }

    void everyEntryDoesWhatItSays_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("announced");
        QTest::newRow("block") << u"Toggle Block"_s << u"app2 blocked"_s;
        QTest::newRow("download") << u"Toggle Download Limit"_s << u"Download limit on for app2"_s;
        QTest::newRow("upload") << u"Toggle Upload Limit"_s << u"Upload limit on for app2"_s;
        QTest::newRow("high") << u"High Priority"_s << u"High priority: app2"_s;
        QTest::newRow("normal") << u"Normal Priority"_s << u"Normal priority: app2"_s;
        QTest::newRow("low") << u"Low Priority"_s << u"Low priority: app2"_s;
        QTest::newRow("reset") << u"Reset App Rule"_s << u"Rule reset: app2"_s;
    }

    void everyEntryDoesWhatItSays()
    {
        QFETCH(QString, entry);
        QFETCH(QString, announced);
        QVERIFY(choose(apps, u"app2"_s, entry));
        QCOMPARE(toast()->text(), announced);
        QCOMPARE(fixture->labelStarting(u"Rule updated"_s)->text(), u"Rule updated for app2"_s);
        fixture->tick();
        QVERIFY(fixture->labelStarting(u"Applications: "_s));
    }

    void anActionShowsInBothTablesAtOnce()
    {
        QVERIFY(choose(apps, u"app2"_s, u"Toggle Block"_s));
        QVERIFY(choose(apps, u"app2"_s, u"Low Priority"_s));
        QCOMPARE(cell(apps, u"app2"_s, 6), u"On"_s);
        QCOMPARE(cell(apps, u"app2"_s, 3), u"Low"_s);
        QCOMPARE(cell(rules, u"app2"_s, 1), u"Low"_s);
        QCOMPARE(cell(rules, u"app1"_s, 1), u"Normal"_s);
        QVERIFY(choose(apps, u"app2"_s, u"Reset App Rule"_s));
        QCOMPARE(cell(apps, u"app2"_s, 6), u"Off"_s);
        QCOMPARE(cell(rules, u"app2"_s, 1), u"Normal"_s);
    }

    void theRulesTablesEntriesActToo()
    {
        showRules();
        QVERIFY(choose(rules, u"app4"_s, u"High Priority"_s));
        QCOMPARE(cell(rules, u"app4"_s, 1), u"High"_s);
        QCOMPARE(toast()->text(), u"High priority: app4"_s);
        QVERIFY(choose(rules, u"app4"_s, u"Reset App Rule"_s));
        QCOMPARE(cell(rules, u"app4"_s, 1), u"Normal"_s);
    }

    void openRulesManagerTurnsThePage()
    {
        QVERIFY(choose(apps, u"app2"_s, u"Open Rules Manager"_s));
        QVERIFY(rules->isVisible());
        QVERIFY(fixture->button(u"\u2263    Rules"_s)->isChecked());
        QVERIFY(!fixture->button(u"\u25C8    Dashboard"_s)->isChecked());
    }

    void ticksGoOnWhileTheMenuIsOpenAndItsApplicationStays_data() { onBothPages(); }

    void ticksGoOnWhileTheMenuIsOpenAndItsApplicationStays()
    {
        QFETCH(bool, onRulesPage);
        if (onRulesPage)
            showRules();
        QTableWidget *table = onRulesPage ? rules : apps;
        const int row = WindowFixture::rowOf(table, u"app2"_s);
        QVERIFY(rightClick(table, u"app2"_s, [&](QMenu &menu) {
            // The first in both orders: most sockets and the first name.
            fixture->system().addProcess(9, u"aaa"_s, 9);
            fixture->tick();
            QCOMPARE(WindowFixture::rowOf(table, u"app2"_s), row + 1);
            QVERIFY(menu.isVisible());
            trigger(menu, u"Toggle Block"_s);
        }));
        QCOMPARE(toast()->text(), u"app2 blocked"_s);
        QCOMPARE(cell(apps, u"app2"_s, 6), u"On"_s);
        QCOMPARE(cell(apps, u"app1"_s, 6), u"Off"_s);
    }

    void anApplicationThatEndsWhileTheMenuIsOpenStillGetsItsRule()
    {
        QVERIFY(rightClick(apps, u"app2"_s, [&](QMenu &menu) {
            fixture->system().removeProcess(2);
            fixture->tick();
            trigger(menu, u"Toggle Block"_s);
        }));
        QCOMPARE(WindowFixture::rowOf(apps, u"app2"_s), -1);
        QCOMPARE(rules->item(WindowFixture::rowOf(rules, u"app2"_s), 4)->checkState(), Qt::Checked);
    }

    void escapeChangesNothing()
    {
        QVERIFY(rightClick(apps, u"app2"_s,
                           [](QMenu &menu) { QTest::keyClick(&menu, Qt::Key_Escape); }));
        QCOMPARE(cell(apps, u"app2"_s, 6), u"Off"_s);
        QVERIFY(fixture->labelStarting(u"Applications: "_s));
    }

    void belowTheLastRowNothingHappens()
    {
        apps->setCurrentCell(2, 0);
        const QPoint below(20, apps->viewport()->height() - 4);
        QVERIFY(apps->rowAt(below.y()) < 0);
        QVERIFY(!openMenuAt(apps, below, [](QMenu &) {}));
        QCOMPARE(apps->currentRow(), 2);
        QVERIFY(apps->selectionModel()->isRowSelected(2));
    }

    void theSystemRowIsSelectedAndGetsNoMenu()
    {
        apps->setCurrentCell(2, 0);
        QVERIFY(!rightClick(apps, u"This PC"_s, [](QMenu &) {}));
        QCOMPARE(apps->currentRow(), 0);
        QVERIFY(apps->selectionModel()->isRowSelected(0));
    }

    void theRulesPlaceholderRowGetsAMenuAndARule()
    {
        for (quint32 pid = 1; pid <= 4; ++pid)
            fixture->system().removeProcess(pid);
        fixture->tick();
        showRules();
        const auto placeholder = u"No rules or active apps"_s;
        QVERIFY(choose(rules, placeholder, u"Toggle Block"_s));
        QCOMPARE(toast()->text(), placeholder + u" blocked"_s);
        QCOMPARE(rules->item(0, 4)->checkState(), Qt::Checked);
        QVERIFY(choose(rules, placeholder, u"Reset App Rule"_s));
        QVERIFY(!rules->item(0, 4));
    }

    void anOpenEditorIsCommittedBeforeTheMenu()
    {
        showRules();
        retype(clickIntoCell(rules, 1, 5), u"77"_s);
        QVERIFY(choose(rules, u"app2"_s, u"Toggle Download Limit"_s));
        QCOMPARE(cell(rules, u"app2"_s, 5), u"77"_s);
        QCOMPARE(rules->item(1, 2)->checkState(), Qt::Checked);
    }

    void overAnOpenEditorTheMenuOpensAndTheEditorStays_data() { onBothPages(); }

    void overAnOpenEditorTheMenuOpensAndTheEditorStays()
    {
        QFETCH(bool, onRulesPage);
        if (onRulesPage)
            showRules();
        QTableWidget *table = onRulesPage ? rules : apps;
        fixture->menuAction(u"Pause monitoring"_s)->trigger(); // a tick closes the dashboard's
        const int row = WindowFixture::rowOf(table, u"app3"_s);
        QLineEdit *editor = clickIntoCell(table, row, 0);
        retype(editor, u"typed"_s);
        QVERIFY(rightClick(table, u"app3"_s, [&](QMenu &menu) {
            QCOMPARE(texts(menu).first(), u"Toggle Block"_s);
            QCOMPARE(openEditor(table), editor);
            QVERIFY(table->selectionModel()->isRowSelected(row));
        }));
        QCOMPARE(openEditor(table), editor);
        QCOMPARE(editor->text(), u"typed"_s);
        QCOMPARE(table->item(row, 0)->text().trimmed(), u"app3"_s);
    }

    void anEntryActsWhileTheEditorStays()
    {
        showRules();
        QLineEdit *editor = clickIntoCell(rules, 1, 0);
        retype(editor, u"typed"_s);
        QVERIFY(rightClick(rules, u"app2"_s, [&](QMenu &menu) {
            fixture->tick();
            QVERIFY(menu.isVisible());
            trigger(menu, u"Toggle Block"_s);
        }));
        QCOMPARE(toast()->text(), u"app2 blocked"_s);
        QCOMPARE(rules->item(1, 4)->checkState(), Qt::Checked);
        QCOMPARE(openEditor(rules), editor);
        QCOMPARE(editor->text(), u"typed"_s);
    }

    void theNextTickLeavesTheMenuOpen()
    {
        clickIntoCell(apps, WindowFixture::rowOf(apps, u"app2"_s), 0);
        QVERIFY(rightClick(apps, u"app2"_s, [&](QMenu &menu) {
            fixture->tick();
            QVERIFY(!openEditor(apps));
            QVERIFY(menu.isVisible());
            trigger(menu, u"Toggle Block"_s);
        }));
        QCOMPARE(toast()->text(), u"app2 blocked"_s);
    }

    void theKeyOfTheMenuServesTheEditorsRow()
    {
        showRules();
        QLineEdit *editor = clickIntoCell(rules, 1, 0);
        QStringList entries;
        QTimer::singleShot(0, rules, [&] {
            if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
                QCoreApplication::processEvents();
                entries = texts(*menu);
                menu->close();
            }
        });
        const QPoint middle = editor->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, middle, editor->mapToGlobal(middle));
        QApplication::sendEvent(editor, &event);
        QTRY_COMPARE(entries.value(0), u"Toggle Block"_s);
        QCOMPARE(openEditor(rules), editor);
    }

private:
    static void onBothPages()
    {
        QTest::addColumn<bool>("onRulesPage");
        QTest::newRow("applications") << false;
        QTest::newRow("rules") << true;
    }

    void showRules() { WindowFixture::click(fixture->button(u"\u2263    Rules"_s)); }

    static QPoint cellCentre(QTableWidget *table, const QString &application)
    {
        const int row = WindowFixture::rowOf(table, application);
        return table->visualItemRect(table->item(row, 0)).center();
    }

    /// Presses the right button over what lies there, an editor or the table itself, upon which the
    /// windowing system asks for a menu. While it is open, `inMenu` runs; then it is closed.
    /// Returns whether there was a menu of the window's, which has its own entries.
    static bool openMenuAt(QTableWidget *table, QPoint position,
                           const std::function<void(QMenu &)> &inMenu)
    {
        bool opened = false;
        QTimer::singleShot(0, table, [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu)
                return;
            const QPointer<QMenu> open = menu;
            QCoreApplication::processEvents(); // the windowing system's, about the new window
            opened = qobject_cast<QMainWindow *>(menu->parentWidget()) != nullptr;
            if (opened)
                inMenu(*menu);
            if (open)
                open->close();
        });
        QWidget *viewport = table->viewport();
        const QPoint onScreen = viewport->mapToGlobal(position);
        QWidget *under = viewport->childAt(position);
        if (!under)
            under = viewport;
        const QPoint inWidget = under->mapFromGlobal(onScreen);
        QTest::mousePress(under, Qt::RightButton, {}, inWidget);
        QContextMenuEvent event(QContextMenuEvent::Mouse, inWidget, onScreen);
        QApplication::sendEvent(under, &event);
        QTest::mouseRelease(viewport, Qt::RightButton, {}, position);
        // Without a menu the timer is still to come.
        QCoreApplication::processEvents();
        return opened;
    }

    static bool rightClick(QTableWidget *table, const QString &application,
                           const std::function<void(QMenu &)> &inMenu)
    {
        return openMenuAt(table, cellCentre(table, application), inMenu);
    }

    /// Clicks the entry of this text.
    static void trigger(QMenu &menu, const QString &entry)
    {
        const auto actions = menu.actions();
        for (QAction *action : actions) {
            if (action->text() != entry)
                continue;
            QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(action).center());
            return;
        }
        qFatal("the menu has no entry \"%s\"", qPrintable(entry));
    }

    static bool choose(QTableWidget *table, const QString &application, const QString &entry)
    {
        return rightClick(table, application, [&entry](QMenu &menu) { trigger(menu, entry); });
    }

    static QStringList texts(const QMenu &menu)
    {
        QStringList entries;
        for (const QAction *action : menu.actions())
            entries.append(action->isSeparator() ? u"-"_s : action->text());
        return entries;
    }

    static QString cell(const QTableWidget *table, const QString &application, int column)
    {
        return table->item(WindowFixture::rowOf(table, application), column)->text();
    }
};

TOVAN_WINDOW_TEST(contextmenus_test, ContextMenusTest)
#include "contextmenus_test.moc"
