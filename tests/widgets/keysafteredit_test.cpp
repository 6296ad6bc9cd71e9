#include "tests/support/celleditor.h"
#include "tests/support/testmain.h"
#include "tests/support/windowfixture.h"
#include "widgets/celltable.h"

#include <QtTest>

using namespace Qt::StringLiterals;

/// Keys that arrive after the table has closed the editor that they were meant for.
class KeysAfterEditTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        table = std::make_unique<CellTable>(QStringList{u"Name"_s, u"Limit"_s, u"Block"_s});
        table->setRowCount(3);
        for (int row = 0; row < table->rowCount(); ++row) {
            table->setItem(row, 0, new QTableWidgetItem(u"application %1"_s.arg(row)));
            for (const int column : {1, 2}) {
                auto *item = new QTableWidgetItem(column == 1 ? u"5 KB/s"_s : QString());
                item->setCheckState(Qt::Unchecked);
                table->setItem(row, column, item);
            }
        }
        table->resize(600, 300);
        table->show();
        QVERIFY(QTest::qWaitForWindowActive(table.get()));
        typeAndDrop();
    }

    void cleanup() { table.reset(); }

    void whatIsTypedOnGoesNowhere()
    {
        typeOn(u" KB/s"_s);
        press(Qt::Key_Backspace);
        press(Qt::Key_Return);
        press(Qt::Key_Space);
        QCOMPARE(table->item(1, 1)->checkState(), Qt::Unchecked);
        QCOMPARE(table->item(1, 1)->text(), u"5 KB/s"_s);
        QVERIFY(!openEditor(table.get()));
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(table->currentColumn(), 1);
    }

    void theShiftOfACapitalIsNoKeyOfItsOwn()
    {
        press(Qt::Key_Shift);
        press(Qt::Key_Space);
        QCOMPARE(table->item(1, 1)->checkState(), Qt::Unchecked);
        typeOn(u"K"_s);
        QVERIFY(!openEditor(table.get()));
    }

    void whatAnInputMethodWritesOnGoesNowhere()
    {
        QInputMethodEvent written(u""_s, {});
        written.setCommitString(u"で"_s);
        QApplication::sendEvent(QApplication::focusWidget(), &written);
        QVERIFY(!openEditor(table.get()));
    }

    void anArrowIsMeantForTheTable()
    {
        press(Qt::Key_Down);
        QCOMPARE(table->currentRow(), 2);
        QVERIFY(openEditor(table.get()));
        QTest::keyClick(openEditor(table.get()), Qt::Key_Escape);
        press(Qt::Key_Space);
        QCOMPARE(table->item(2, 1)->checkState(), Qt::Checked);
    }

    void aClickIsMeantForTheTable()
    {
        const QRect cell = table->visualItemRect(table->item(2, 2));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell.topLeft() + QPoint(2, 2));
        QCOMPARE(table->currentRow(), 2);
        press(Qt::Key_Space);
        QCOMPARE(table->item(2, 2)->checkState(), Qt::Checked);
    }

    void aClickOnTheBoxIsMeantForTheTable()
    {
        const QPoint box = WindowFixture::checkBoxCentre(table.get(), 1, 1);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, box);
        QCOMPARE(table->item(1, 1)->checkState(), Qt::Checked);
        press(Qt::Key_Space);
        QCOMPARE(table->item(1, 1)->checkState(), Qt::Unchecked);
    }

    void aSecondLaterTheBlankFlipsTheBox()
    {
        QElapsedTimer sinceDropped;
        sinceDropped.start();
        const auto isFlipped = [this] {
            press(Qt::Key_Space);
            return table->item(1, 1)->checkState() == Qt::Checked;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isFlipped(), 5000);
        QVERIFY(sinceDropped.elapsed() > 900);
    }

    void anEditorThatTheUserClosesKeepsNothing()
    {
        press(Qt::Key_F2);
        QVERIFY(openEditor(table.get()));
        QTest::keyClick(openEditor(table.get()), Qt::Key_Escape);
        press(Qt::Key_Space);
        QCOMPARE(table->item(1, 1)->checkState(), Qt::Checked);
    }

private:
    void typeAndDrop()
    {
        table->setFocus();
        table->setCurrentCell(1, 1);
        retype(openEditor(table.get()), u"100"_s);
        table->dropEdit();
        QVERIFY(!openEditor(table.get()));
    }

    /// Keys reach whoever has the focus when they arrive.
    static void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    static void typeOn(const QString &text)
    {
        for (const QChar letter : text)
            QTest::keyClicks(QApplication::focusWidget(), letter);
    }

    std::unique_ptr<CellTable> table;
};

TOVAN_WIDGET_TEST(keysafteredit_test, KeysAfterEditTest)
#include "keysafteredit_test.moc"
