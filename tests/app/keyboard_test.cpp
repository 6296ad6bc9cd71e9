#include "tests/support/celleditor.h"
#include "tests/support/windowfixture.h"

#include <QComboBox>
#include <QMenu>
#include <QTableView>

using namespace Qt::StringLiterals;

namespace {

/// What tells the widget that has the focus from others.
QString focused()
{
    const QWidget *widget = QApplication::focusWidget();
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text();
    if (const auto *box = qobject_cast<const QComboBox *>(widget))
        return box->currentText();
    if (const auto *edit = qobject_cast<const QLineEdit *>(widget))
        return edit->placeholderText().isEmpty() ? edit->text() : edit->placeholderText();
    return widget ? widget->accessibleName() : QString();
}

void pressTab(Qt::Key key = Qt::Key_Tab)
{
    QTest::keyClick(QApplication::focusWidget(), key,
                    key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
}

/// The widgets that Tab leads to, from the one that has the focus until it comes round.
QStringList tabRound()
{
    QStringList round;
    const QWidget *first = QApplication::focusWidget();
    do {
        round.append(focused());
        pressTab();
    } while (QApplication::focusWidget() != first && round.size() < 100);
    return round;
}

/// What is seen of the widget now.
QImage picture(QWidget *widget)
{
    return widget->grab().toImage();
}

int differingPixels(const QImage &one, const QImage &other)
{
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += one.pixel(x, y) != other.pixel(x, y) ? 1 : 0;
    }
    return count;
}

/// An edit shows its cursor, everything else a frame.
int leastVisible(const QWidget *widget)
{
    return qobject_cast<const QLineEdit *>(widget) ? 10 : 40;
}

} // namespace

class KeyboardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setCursorFlashTime(0); }
    void init()
    {
        fixture = std::make_unique<WindowFixture>();
        for (quint32 pid = 1; pid <= 3; ++pid)
            fixture->system().addProcess(pid, u"app%1"_s.arg(pid), 1);
        fixture->open();
        fixture->tick();
        fixture->window().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&fixture->window()));
    }
    void cleanup() { fixture.reset(); }

    void tabFollowsTheEye_data()
    {
        const QStringList shell{u"-"_s,
                                u"[]"_s,
                                u"X"_s,
                                u"\u25C8    Dashboard"_s,
                                u"\u2263    Rules"_s,
                                u"\u2699    Settings"_s};
        QTest::addColumn<QString>("page");
        QTest::addColumn<QStringList>("round");
        QTest::newRow("Dashboard") << u"Dashboard"_s
                                   << shell
                + QStringList{
                    u"Balanced"_s,     u"Pause"_s,     u"Reset session"_s,   u"Search app..."_s,
                    u"Activity"_s,     u"Rule List"_s, u"Filter List"_s,     u"Application List"_s,
                    u"Network List"_s, u"Blocker"_s,   u"Priorities"_s,      u"All"_s,
                    u"Active"_s,       u"Limited"_s,   u"Blocked"_s,         u"High Priority"_s,
                    u"Dashboard"_s,    u"Details"_s,   u"Toggle DL Limit"_s, u"Toggle UL Limit"_s,
                    u"Toggle Block"_s};
        QTest::newRow("Rules Manager")
            << u"Rules Manager"_s << shell + QStringList{u"Filter rules..."_s, u"All"_s,
                                                         u"Blocked"_s,         u"Limited"_s,
                                                         u"Clear all rules"_s, u"Rules Manager"_s};
        QTest::newRow("Settings") << u"Settings"_s
                                  << shell
                + QStringList{u"Control Center"_s,
                              u"Balanced"_s,
                              u"100"_s,
                              u"1"_s,
                              u"GB"_s,
                              u"Launch minimized"_s,
                              u"Close to tray"_s,
                              u"Start paused"_s,
                              u"Show mini monitor"_s,
                              u"Enable alerts"_s,
                              u"80"_s,
                              u"95"_s,
                              u"Compact rows"_s,
                              u"Show This PC summary row"_s,
                              u"Remember rules"_s,
                              u"Tovan Network Monitor"_s,
                              u"Green"_s,
                              u"1000"_s,
                              u"100"_s,
                              u"5"_s,
                              u"Apply changes"_s,
                              u"Reset usage counters"_s,
                              u"Clear rule indicators"_s};
    }
    void tabFollowsTheEye()
    {
        QFETCH(QString, page);
        fixture->menuAction(page)->trigger();
        // The last cell of a row, from which Tab leaves.
        for (QTableWidget *table : {fixture->appsTable(), fixture->rulesTable()})
            table->selectionModel()->setCurrentIndex(table->model()->index(0, 7),
                                                     QItemSelectionModel::NoUpdate);
        fixture->button(u"-"_s)->setFocus(Qt::TabFocusReason);
        QTEST(tabRound(), "round");
    }

    void theFocusIsVisibleOnEveryControl_data()
    {
        QTest::addColumn<QString>("page");
        for (const auto *page : {"Dashboard", "Rules Manager", "Settings"})
            QTest::newRow(page) << QString::fromLatin1(page);
    }
    void theFocusIsVisibleOnEveryControl()
    {
        QFETCH(QString, page);
        fixture->menuAction(page)->trigger();
        fixture->button(u"-"_s)->setFocus(Qt::TabFocusReason);
        pressTab();
        QSet<const QWidget *> seen;
        QStringList unseen;
        while (!seen.contains(QApplication::focusWidget())) {
            QWidget *widget = QApplication::focusWidget();
            seen.insert(widget);
            if (widget->window() != &fixture->window() || qobject_cast<QTableView *>(widget)) {
                pressTab();
                continue;
            }
            const QString name = focused();
            const QImage with = picture(widget);
            // Without a key in between: a page must not scroll.
            widget->clearFocus();
            const QImage without = picture(widget);
            widget->setFocus(Qt::TabFocusReason);
            if (differingPixels(with, without) < leastVisible(widget))
                unseen.append(name);
            pressTab();
        }
        QCOMPARE(unseen, QStringList());
        QVERIFY(seen.size() > 5);
    }

    void tabLeavesATableAtTheEndOfARow()
    {
        QTableWidget *table = fixture->appsTable();
        QLineEdit *editor = clickIntoCell(table, 2, 7);
        QTest::keyClick(editor, Qt::Key_Tab);
        QCOMPARE(focused(), u"Details"_s);
        QVERIFY(!openEditor(table));
        QCOMPARE(table->currentRow(), 2);
    }

    void shiftTabLeavesATableAtTheBeginningOfARow()
    {
        QTableWidget *table = fixture->appsTable();
        QLineEdit *editor = clickIntoCell(table, 2, 0);
        QTest::keyClick(editor, Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(focused(), u"High Priority"_s);
        QVERIFY(!openEditor(table));
    }

    void tabLeavesATableWithoutEditorToo()
    {
        QTableWidget *table = fixture->appsTable();
        QTest::keyClick(clickIntoCell(table, 2, 7), Qt::Key_Escape);
        QCOMPARE(focused(), u"Dashboard"_s);
        pressTab();
        QCOMPARE(focused(), u"Details"_s);
    }

    void whatWasTypedInTheLastCellCountsWhenTabLeaves()
    {
        fixture->menuAction(u"Rules Manager"_s)->trigger();
        QTableWidget *table = fixture->rulesTable();
        QLineEdit *editor = clickIntoCell(table, 1, 1);
        QTest::keyClicks(editor, u"Low"_s);
        QTest::keyClick(editor, Qt::Key_Tab);
        QCOMPARE(table->item(1, 1)->text(), u"Low"_s);
    }

    void altLeadsToTheMenusAtTheTop()
    {
        pressTab();
        QTest::keyPress(QApplication::focusWidget(), Qt::Key_Alt, Qt::AltModifier);
        QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Alt);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QCOMPARE(menu->title(), u"Tools"_s);
        QTest::keyClick(menu, Qt::Key_Return);
        QCOMPARE(focused(), u"Search app..."_s);
    }

    void theMenuKeyOpensTheMenuOfTheRowThatHasTheFocus()
    {
        fixture->menuAction(u"Rules Manager"_s)->trigger();
        QTableWidget *table = fixture->rulesTable();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          WindowFixture::checkBoxCentre(table, 2, 4));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          WindowFixture::checkBoxCentre(table, 2, 4));
        QVERIFY(table->hasFocus());
        QString entry;
        QTimer::singleShot(0, this, [&entry] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            entry = menu->actions().first()->text();
            menu->actions().first()->trigger();
            menu->close();
        });
        // As the toolkit makes it of the key: in the middle of what the input is for.
        const QPoint place = table->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place, table->mapToGlobal(place));
        QApplication::sendEvent(table, &event);
        QCOMPARE(entry, u"Toggle Block"_s);
        QVERIFY(table->item(2, 4)->checkState() == Qt::Checked);
        QVERIFY(table->item(1, 4)->checkState() == Qt::Unchecked);
    }

    void theKeyboardStaysWhereARowLeftAFilteredView()
    {
        fixture->menuAction(u"Rules Manager"_s)->trigger();
        QTableWidget *table = fixture->rulesTable();
        for (int row = 0; row < 3; ++row)
            WindowFixture::clickCheckBox(table, row, 4);
        WindowFixture::click(pageButton(u"Blocked"_s));
        QCOMPARE(table->rowCount(), 3);
        table->setFocus(Qt::TabFocusReason);
        table->selectionModel()->setCurrentIndex(table->model()->index(1, 4),
                                                 QItemSelectionModel::NoUpdate);
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(table->rowCount(), 2);
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(table->currentColumn(), 4);
        QVERIFY(table->hasFocus());
        QVERIFY(table->selectionModel()->selectedIndexes().isEmpty());
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(table->rowCount(), 1);
        QCOMPARE(table->currentRow(), 0);
        QCOMPARE(table->item(0, 0)->text(), u"app1"_s);
    }

    void theKeyboardStaysInItsCellThroughATick()
    {
        fixture->menuAction(u"Rules Manager"_s)->trigger();
        QTableWidget *table = fixture->rulesTable();
        QTest::keyClick(clickIntoCell(table, 1, 5), Qt::Key_Escape);
        fixture->system().addProcess(9, u"aaa"_s, 1);
        fixture->tick();
        QCOMPARE(table->currentRow(), 2);
        QCOMPARE(table->currentColumn(), 5);
        QVERIFY(!openEditor(table));
    }

private:
    /// Other pages have buttons that read the same.
    QAbstractButton *pageButton(const QString &text)
    {
        const auto buttons = fixture->rulesTable()->parentWidget()->findChildren<QPushButton *>();
        for (QPushButton *button : buttons) {
            if (button->text() == text)
                return button;
        }
        qFatal("no such button");
    }

    std::unique_ptr<WindowFixture> fixture;
};

TOVAN_WINDOW_TEST(keyboard_test, KeyboardTest)
#include "keyboard_test.moc"
