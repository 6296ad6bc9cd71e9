#include "tests/support/celleditor.h"
#include "tests/support/windowfixture.h"
#include "widgets/celldelegate.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QTextDocumentFragment>
#include <QToolTip>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int priorityColumn = 1; // of the Rules Manager

/// Rests the pointer on a cell until the toolkit would ask for a tool tip.
void askForTip(QTableWidget *table, int row, int column)
{
    const QPoint at = table->visualItemRect(table->item(row, column)).center();
    QHelpEvent event(QEvent::ToolTip, at, table->viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(table->viewport(), &event);
}

} // namespace

/// Texts that are longer than their cell.
class CellTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { fixture = std::make_unique<WindowFixture>(); }

    void cleanup()
    {
        QToolTip::hideText();
        fixture.reset();
    }

    void aLongPriorityLeavesTheOtherColumnsInSight()
    {
        fixture->system().addProcess(1, u"alpha"_s, 1);
        fixture->open();
        fixture->tick();
        WindowFixture::click(fixture->button(u"\u2263    Rules"_s));
        QTableWidget *table = fixture->rulesTable();
        QLineEdit *editor = clickIntoCell(table, 0, priorityColumn);
        QVERIFY(editor);
        retype(editor, u"very "_s.repeated(100) + u"high"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(table->item(0, priorityColumn)->text(), u"very "_s.repeated(100) + u"high"_s);
        constexpr int gridLine = 1;
        QTRY_COMPARE(table->columnWidth(priorityColumn), CellDelegate::widestClaim + gridLine);
        QVERIFY(table->horizontalHeader()->length() <= table->viewport()->width());
    }

    void aNameThatIsCutShowsWholeAsAToolTip()
    {
        const QString name = u"a program with a name that is far too long for its column"_s;
        fixture->system().addProcess(1, name, 1);
        fixture->open();
        fixture->tick();
        askForTip(fixture->appsTable(), WindowFixture::rowOf(fixture->appsTable(), name), 0);
        QVERIFY(QToolTip::isVisible());
        QCOMPARE(QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText(), name);
        const QPalette colours = QToolTip::palette();
        QVERIFY(colours.color(QPalette::ToolTipBase).lightness() < 64);
        QVERIFY(colours.color(QPalette::ToolTipText).lightness() > 192);
    }

    void markUpInACutNameIsText()
    {
        const QString name = u"<b>bold<b> &amp; a name that is far too long for its column"_s;
        fixture->system().addProcess(1, name, 1);
        fixture->open();
        fixture->tick();
        askForTip(fixture->appsTable(), WindowFixture::rowOf(fixture->appsTable(), name), 0);
        QCOMPARE(QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText(), name);
    }

    void aNameThatFitsHasNoToolTip()
    {
        fixture->system().addProcess(1, u"ssh"_s, 1);
        fixture->open();
        fixture->tick();
        askForTip(fixture->appsTable(), WindowFixture::rowOf(fixture->appsTable(), u"ssh"_s), 0);
        QVERIFY(!QToolTip::isVisible());
    }

private:
    std::unique_ptr<WindowFixture> fixture;
};

TOVAN_WINDOW_TEST(celltext_test, CellTextTest)
#include "celltext_test.moc"
