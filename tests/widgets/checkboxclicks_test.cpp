#include "tests/support/testmain.h"
#include "tests/support/windowfixture.h"
#include "widgets/celldelegate.h"
#include "widgets/checkboxclicks.h"
#include "widgets/tablecells.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableWidget>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int checkColumn = 1;
constexpr int textColumn = 2;

} // namespace

/// A table as the program has them: whole rows, every edit trigger, items replaced by a refresh.
class CheckBoxClicksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        table = std::make_unique<QTableWidget>(0, 3);
        table->setStyleSheet(u"QTableWidget::item { padding: 4px 6px; }"_s);
        table->setSelectionBehavior(QAbstractItemView::SelectRows);
        table->setEditTriggers(QAbstractItemView::AllEditTriggers);
        table->resize(500, 300);
        new CheckBoxClicks(table.get(), *new CellDelegate(table.get()));
        refill({u"alpha"_s, u"beta"_s, u"gamma"_s});
        table->show();
        QVERIFY(QTest::qWaitForWindowActive(table.get()));
    }

    void cleanup() { table.reset(); }

    void oneClickTakesEffectOnARowThatIsNotSelected()
    {
        click(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
        click(1);
        QCOMPARE(checkedApplications(), QStringList());
    }

    void oneClickTakesEffectOnTheSelectedRow()
    {
        selectCell(*table, 1, textColumn);
        click(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
    }

    void theClickedRowIsSelectedAndItsCellCurrentWithoutAnEditor()
    {
        selectCell(*table, 0, 0);
        click(2);
        QCOMPARE(table->currentRow(), 2);
        QCOMPARE(table->currentColumn(), checkColumn);
        QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
        QVERIFY(table->selectionModel()->isRowSelected(2));
        QVERIFY(!editor());
        QVERIFY(table->editTriggers() == QAbstractItemView::AllEditTriggers);
    }

    void aClickOnThePartlyVisibleLastRowDoesNotScroll()
    {
        table->resize(500,
                      table->horizontalHeader()->height() + 2 * table->frameWidth()
                          + 2 * table->rowHeight(0) + table->rowHeight(0) * 3 / 4);
        click(2);
        QCOMPARE(table->verticalScrollBar()->value(), 0);
        QCOMPARE(checkedApplications(), QStringList({u"gamma"_s}));
    }

    void anOpenEditorInTheSameRowDoesNotSwallowTheClick()
    {
        table->setCurrentCell(1, textColumn);
        QVERIFY(editor());
        QTest::keyClicks(editor(), u"typed"_s);

        click(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
        QCOMPARE(table->item(1, textColumn)->text(), u"typed"_s);
        QTRY_VERIFY(!editor());
    }

    void anOpenEditorInTheCellItselfDoesNotSwallowTheClick()
    {
        table->setCurrentCell(1, checkColumn);
        QVERIFY(editor());
        click(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
        QTRY_VERIFY(!editor());
    }

    void aRefreshBetweenPressAndReleaseReplacesEveryItem()
    {
        press(1);
        replaceItems();
        release(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
    }

    void aRefreshBetweenPressAndReleaseClearsAndRefillsTheTable()
    {
        press(1);
        refill({u"alpha"_s, u"beta"_s, u"gamma"_s});
        release(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
    }

    void theClickFollowsItsApplicationToAnotherRow()
    {
        press(1);
        refill({u"new"_s, u"gamma"_s, u"alpha"_s, u"beta"_s});
        release(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
    }

    void ofTwoProcessesOfOneProgramTheClickedRowIsMeant()
    {
        refill({u"twin"_s, u"other"_s, u"twin"_s});
        press(2);
        replaceItems();
        release(2);
        QCOMPARE(table->item(0, checkColumn)->checkState(), Qt::Unchecked);
        QCOMPARE(table->item(2, checkColumn)->checkState(), Qt::Checked);
    }

    void nothingHappensWhenTheApplicationIsGone()
    {
        press(1);
        refill({u"alpha"_s, u"gamma"_s});
        release(1);
        QCOMPARE(checkedApplications(), QStringList());
    }

    void nothingHappensWhenTheCellHasLostItsCheckBox()
    {
        const QPoint place = box(1);
        press(1);
        table->setItem(1, checkColumn, new QTableWidgetItem(u"plain"_s));
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(checkedApplications(), QStringList());
    }

    void releasingBesideTheBoxCancels()
    {
        press(1);
        const QPoint beside = box(1) + QPoint(0, table->rowHeight(1));
        QTest::mouseMove(table->viewport(), beside);
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, beside);
        QCOMPARE(checkedApplications(), QStringList());
        QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
    }

    void aReleaseWithoutAPressOnABoxChangesNothing()
    {
        QTest::mousePress(table->viewport(), Qt::LeftButton, {}, cell(0, 0));
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, box(1));
        QCOMPARE(checkedApplications(), QStringList());
    }

    void aDoubleClickIsTwoClicks()
    {
        click(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, box(1));
        release(1);
        QCOMPARE(checkedApplications(), QStringList());
        QVERIFY(!editor());
    }

    void theSecondOfTwoClicksDoesNothingInAnotherRow()
    {
        const QPoint place = box(1);
        click(1);
        refill({u"alpha"_s, u"gamma"_s});
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(checkedApplications(), QStringList());
        QVERIFY(!editor());
    }

    void theSecondOfTwoClicksCountsWhereItsRowStayed()
    {
        click(1);
        refill({u"beta"_s, u"beta"_s, u"alpha"_s});
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, box(1));
        release(1);
        QCOMPARE(checkedApplications(), QStringList({u"beta"_s}));
    }

    void otherButtonsDoNotClickTheBox()
    {
        QTest::mouseClick(table->viewport(), Qt::RightButton, {}, box(1));
        QTest::mouseClick(table->viewport(), Qt::MiddleButton, {}, box(1));
        QCOMPARE(checkedApplications(), QStringList());
    }

    void aDisabledBoxStaysAsItIs()
    {
        QTableWidgetItem *item = table->item(1, checkColumn);
        item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
        click(1);
        QCOMPARE(checkedApplications(), QStringList());
    }

    void aClickOnTheTextStaysTheToolkits()
    {
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell(1, textColumn));
        QCOMPARE(checkedApplications(), QStringList());
        QCOMPARE(table->currentRow(), 1);
        QVERIFY(editor());
    }

    void theListenerMayRebuildTheTableAtOnce()
    {
        QStringList changed;
        connect(table.get(), &QTableWidget::itemChanged, this, [&](QTableWidgetItem *item) {
            changed.append(nameOfRow(item->row()));
            refill({u"beta"_s, u"alpha"_s});
        });
        click(1);
        QCOMPARE(changed, QStringList({u"beta"_s}));
        QCOMPARE(table->rowCount(), 2);
    }

private:
    void refill(const QStringList &applications)
    {
        const QSignalBlocker blocker(table.get());
        table->clearContents();
        table->setRowCount(static_cast<int>(applications.size()));
        for (int row = 0; row < table->rowCount(); ++row)
            setRow(row, applications.at(row));
    }

    void replaceItems()
    {
        const QSignalBlocker blocker(table.get());
        for (int row = 0; row < table->rowCount(); ++row)
            setRow(row, nameOfRow(row));
    }

    void setRow(int row, const QString &application)
    {
        table->setItem(row, 0, new QTableWidgetItem("  "_L1 + application));
        auto *item = new QTableWidgetItem(u"5 KB/s"_s);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
        item->setTextAlignment(Qt::AlignCenter);
        table->setItem(row, checkColumn, item);
        table->setItem(row, textColumn, new QTableWidgetItem(u"text"_s));
    }

    QString nameOfRow(int row) const { return table->item(row, 0)->text().trimmed(); }

    QPoint box(int row) const
    {
        return WindowFixture::checkBoxCentre(table.get(), row, checkColumn);
    }
    QPoint cell(int row, int column) const
    {
        return table->visualItemRect(table->item(row, column)).center();
    }
    void press(int row) { QTest::mousePress(table->viewport(), Qt::LeftButton, {}, box(row)); }
    void release(int row) { QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, box(row)); }
    void click(int row) { QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, box(row)); }

    /// The open editor; a closed one may still wait for its deletion.
    QLineEdit *editor() const
    {
        const auto editors = table->viewport()->findChildren<QLineEdit *>();
        for (QLineEdit *candidate : editors) {
            if (candidate->isVisible())
                return candidate;
        }
        return nullptr;
    }

    QStringList checkedApplications() const
    {
        QStringList applications;
        for (int row = 0; row < table->rowCount(); ++row) {
            if (table->item(row, checkColumn)->checkState() == Qt::Checked)
                applications.append(nameOfRow(row));
        }
        return applications;
    }

    std::unique_ptr<QTableWidget> table;
};

TOVAN_WIDGET_TEST(checkboxclicks_test, CheckBoxClicksTest)
#include "checkboxclicks_test.moc"
