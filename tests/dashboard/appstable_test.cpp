#include "tests/support/paintings.h"
#include "tests/support/windowfixture.h"

#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace {

const QString noRate = u"0 B/s"_s;

/// Opens the window, and a tick brings it two applications, "alpha" with the more sockets, and
/// rates: 1.0 KB/s down, 2.0 KB/s up.
void openWithTwoApplications(WindowFixture &fixture)
{
    fixture.system().setCounters(0, 0);
    fixture.open();
    fixture.system().setCounters(1024, 2048);
    fixture.system().addProcess(1, u"alpha"_s, 5);
    fixture.system().addProcess(2, u"beta"_s, 3);
    fixture.tick();
}

/// Notes what a table paints.
class PaintedCells
{
public:
    explicit PaintedCells(QTableWidget *watched) : table(watched), paintings(*watched->viewport())
    {
        // What was to be painted before is none of it, nor what its painting then lays out.
        for (int i = 0; i < 2; ++i) {
            paintings.region = {};
            table->viewport()->update();
            if (!QTest::qWaitFor([this] { return !paintings.region.isEmpty(); }, patience))
                qFatal("the table is not painted");
        }
        paintings.region = {};
    }

    /// Rows of whose middle line some part was painted; the line between two belongs to both.
    QList<int> rows() const
    {
        QList<int> painted;
        for (int row = 0; row < table->rowCount(); ++row) {
            const int middle = table->rowViewportPosition(row) + table->rowHeight(row) / 2;
            if (paintings.region.intersects(QRect(0, middle, table->viewport()->width(), 1)))
                painted.append(row);
        }
        return painted;
    }

    /// Columns of which some part was painted, in any row.
    QList<int> columns() const
    {
        QList<int> painted;
        for (int column = 0; column < table->columnCount(); ++column) {
            const int middle
                = table->columnViewportPosition(column) + table->columnWidth(column) / 2;
            if (paintings.region.intersects(QRect(middle, 0, 1, table->viewport()->height())))
                painted.append(column);
        }
        return painted;
    }

private:
    QTableWidget *table;
    Paintings paintings;
};

} // namespace

class AppsTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutSamplesOnlyTheSystemRowIsThere()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        QCOMPARE(fixture.appsTable()->rowCount(), 1);
        QCOMPARE(WindowFixture::rowTexts(fixture.appsTable(), 0),
                 (QStringList{u"This PC"_s, noRate, noRate, u"Normal"_s, u"Off"_s, u"Off"_s,
                              u"Off"_s, u"0"_s}));
    }

    void withoutSamplesAndSystemRowThePlaceholderIsThere()
    {
        WindowFixture fixture;
        WindowFixture::store(u"showSystemRow"_s, false);
        fixture.open();
        fixture.tick();
        QCOMPARE(fixture.appsTable()->rowCount(), 1);
        QCOMPARE(WindowFixture::rowTexts(fixture.appsTable(), 0),
                 (QStringList{u"No matching apps"_s, noRate, noRate, u"Normal"_s, u"Off"_s,
                              u"Off"_s, u"Off"_s, u"0"_s}));
        QCOMPARE(fixture.labelStarting(u"Top app: "_s)->text(), u"Top app: waiting for activity"_s);
        auto *coral = fixture.find<QFrame>("summaryCoral");
        QCOMPARE(coral->findChild<QLabel *>(u"metricValue"_s)->text(), u"0"_s);
    }

    void theSystemRowCarriesTheRatesAndTheNumberOfApplications()
    {
        WindowFixture fixture;
        openWithTwoApplications(fixture);
        QTableWidget *table = fixture.appsTable();
        QCOMPARE(WindowFixture::rowTexts(table, 0),
                 (QStringList{u"This PC"_s, u"1.0 KB/s"_s, u"2.0 KB/s"_s, u"Normal"_s, u"Off"_s,
                              u"Off"_s, u"Off"_s, u"2"_s}));
        QCOMPARE(WindowFixture::rowTexts(table, 1),
                 (QStringList{u"  alpha"_s, noRate, noRate, u"Normal"_s, u"5 KB/s"_s, u"5 KB/s"_s,
                              u"Off"_s, u"5"_s}));
        QCOMPARE(WindowFixture::rowTexts(table, 2).mid(1, 2), (QStringList{noRate, noRate}));
    }

    void withoutSystemRowTheFirstShownRowCarriesTheRates()
    {
        WindowFixture fixture;
        WindowFixture::store(u"showSystemRow"_s, false);
        openWithTwoApplications(fixture);
        QTableWidget *table = fixture.appsTable();
        QCOMPARE(WindowFixture::rowTexts(table, 0).mid(0, 3),
                 (QStringList{u"  alpha"_s, u"1.0 KB/s"_s, u"2.0 KB/s"_s}));
        QCOMPARE(WindowFixture::rowTexts(table, 1).mid(1, 2), (QStringList{noRate, noRate}));

        // First shown, not first of all.
        QTest::keyClicks(fixture.find<QWidget>("classicTop")->findChild<QLineEdit *>(), u"beta"_s);
        QCOMPARE(table->rowCount(), 1);
        QCOMPARE(WindowFixture::rowTexts(table, 0).mid(0, 3),
                 (QStringList{u"  beta"_s, u"1.0 KB/s"_s, u"2.0 KB/s"_s}));
        QCOMPARE(fixture.labelStarting(u"Top app: "_s)->text(), u"Top app: alpha (5 sockets)"_s);
    }

    void theMostRowsAreKept_data()
    {
        QTest::addColumn<bool>("systemRow");
        QTest::addColumn<int>("rows");
        QTest::newRow("with the system row") << true << 11;
        QTest::newRow("without") << false << 10;
    }

    void theMostRowsAreKept()
    {
        QFETCH(bool, systemRow);
        WindowFixture fixture;
        WindowFixture::store(u"maxTableRows"_s, 10);
        WindowFixture::store(u"showSystemRow"_s, systemRow);
        for (quint32 pid = 1; pid <= 25; ++pid)
            fixture.system().addProcess(pid, u"app%1"_s.arg(pid, 2, 10, '0'_L1), 1);
        fixture.open();
        fixture.tick();
        QTEST(fixture.appsTable()->rowCount(), "rows");
        QCOMPARE(WindowFixture::rowOf(fixture.appsTable(), u"app10"_s), systemRow ? 10 : 9);
        auto *coral = fixture.find<QFrame>("summaryCoral");
        QCOMPARE(coral->findChild<QLabel *>(u"metricValue"_s)->text(), u"25"_s);
    }

    void theSessionLineRoundsThePercentHalfAwayFromZero()
    {
        WindowFixture fixture;
        WindowFixture::store(u"monthlyLimitBytes"_s, quint64(200 * 1024));
        fixture.system().setCounters(0, 0);
        fixture.open();
        fixture.system().setCounters(25 * 1024, 0);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"Session: "_s)->text(),
                 u"Session: 25.0 KB / Month: 25.0 KB (13%)"_s);
    }

    void everyItemIsMadeAnewByARefresh()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 5);
        fixture.open();
        fixture.tick();
        fixture.appsTable()->item(1, 3)->setData(Qt::UserRole, u"old"_s);
        fixture.tick();
        QVERIFY(!fixture.appsTable()->item(1, 3)->data(Qt::UserRole).isValid());
    }

    void currentCellHighlightAndScrollPositionStayThroughARefresh()
    {
        WindowFixture fixture;
        for (quint32 pid = 1; pid <= 60; ++pid)
            fixture.system().addProcess(pid, u"app%1"_s.arg(pid, 2, 10, '0'_L1), 1);
        fixture.open();
        fixture.tick();
        QTableWidget *table = fixture.appsTable();
        table->setCurrentCell(40, 2);
        table->verticalScrollBar()->setValue(30);
        QSignalSpy currentChanged(table, &QTableWidget::currentCellChanged);
        QLabel *details = fixture.labelStarting(u"PID: "_s);
        const QString shown = details->text();

        // The details are of the moment when the row was selected.
        fixture.system().addProcess(40, u"app40"_s, 9);
        for (int i = 0; i < 10; ++i)
            fixture.tick();
        QCOMPARE(table->currentRow(), 40);
        QCOMPARE(table->currentColumn(), 2);
        QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(table->selectionModel()->selectedRows().first().row(), 40);
        QCOMPARE(table->verticalScrollBar()->value(), 30);
        QCOMPARE(currentChanged.count(), 0);
        QCOMPARE(details->text(), shown);
    }

    void aCurrentRowThatGoesMakesAnotherOneCurrentWithoutEditingIt()
    {
        WindowFixture fixture;
        for (quint32 pid = 1; pid <= 5; ++pid)
            fixture.system().addProcess(pid, u"app%1"_s.arg(pid), 1);
        fixture.open();
        fixture.tick();
        QTableWidget *table = fixture.appsTable();
        table->setCurrentCell(5, 0);
        fixture.system().removeProcess(5);
        fixture.tick();
        QCOMPARE(table->rowCount(), 5);
        QCOMPARE(table->currentRow(), 4);
        QVERIFY(!table->isPersistentEditorOpen(table->currentItem()));
        QVERIFY(fixture.labelStarting(u"PID: "_s)->text().startsWith(u"PID: 4\n"_s));
    }

    void anEditedTextIsOverwrittenByTheNextRefresh()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        QTableWidget *table = fixture.appsTable();
        const QPoint cell = table->visualItemRect(table->item(1, 1)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell);
        auto *editor = qobject_cast<QLineEdit *>(table->viewport()->childAt(cell));
        QVERIFY(editor);
        QTest::keyClicks(editor, u"typed"_s);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(table->item(1, 1)->text(), u"typed"_s);
        fixture.tick();
        QCOMPARE(table->item(1, 1)->text(), noRate);
    }

    void anOpenEditorEndsWithTheRefresh()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        QTableWidget *table = fixture.appsTable();
        table->setCurrentCell(1, 1);
        QVERIFY(table->isPersistentEditorOpen(table->item(1, 1)));
        QTest::keyClicks(table->viewport()->findChild<QLineEdit *>(), u"typed"_s);
        fixture.tick();
        QVERIFY(!table->isPersistentEditorOpen(table->item(1, 1)));
        QCOMPARE(table->item(1, 1)->text(), noRate);
        QCOMPARE(table->currentRow(), 1);
    }

    void onlyRowsThatShowSomethingElseArePainted()
    {
        WindowFixture fixture;
        WindowFixture::store(u"refreshIntervalMs"_s, 10000);
        fixture.system().setCounters(0, 0);
        for (quint32 pid = 1; pid <= 6; ++pid)
            fixture.system().addProcess(pid, u"application-%1"_s.arg(pid), 60 - 9 * int(pid));
        fixture.open();
        fixture.system().setCounters(1024, 1024);
        fixture.tick();
        // Texts of the same width, or all columns would move.
        {
            const PaintedCells painted(fixture.appsTable());
            fixture.system().setCounters(1024 + 2048, 1024 + 3072);
            fixture.tick();
            QTRY_COMPARE(painted.rows(), QList{0});
        }
        {
            const PaintedCells painted(fixture.appsTable());
            fixture.system().setCounters(2 * (1024 + 2048), 2 * (1024 + 3072));
            fixture.system().addProcess(4, u"application-4"_s, 1);
            fixture.tick();
            QTRY_COMPARE(painted.rows(), (QList{0, 4}));
        }
        {
            const PaintedCells painted(fixture.appsTable());
            fixture.system().setCounters(0, 0);
            fixture.system().addProcess(3, u"application-3"_s, 1);
            fixture.system().addProcess(5, u"application-5"_s, 1);
            fixture.tick();
            QTRY_COMPARE(painted.rows(), (QList{0, 3, 4, 5}));
        }
    }

    void whatWasTypedIntoACellIsPaintedOver()
    {
        WindowFixture fixture;
        WindowFixture::store(u"refreshIntervalMs"_s, 10000);
        for (quint32 pid = 1; pid <= 3; ++pid)
            fixture.system().addProcess(pid, u"application-%1"_s.arg(pid), 9);
        fixture.open();
        fixture.tick();
        fixture.appsTable()->item(2, 3)->setText(u"typed"_s);
        const PaintedCells painted(fixture.appsTable());
        fixture.tick();
        QTRY_COMPARE(painted.rows(), QList{2});
        QCOMPARE(painted.columns(), QList{3});
    }

    void rowsAreAsHighAsDecidedOnEveryDesktop_data()
    {
        QTest::addColumn<int>("points");
        QTest::addColumn<bool>("compact");
        for (const int points : {9, 12, 16, 24}) {
            QTest::addRow("%d points", points) << points << false;
            QTest::addRow("%d points, compact", points) << points << true;
        }
    }

    void rowsAreAsHighAsDecidedOnEveryDesktop()
    {
        QFETCH(int, points);
        QFETCH(bool, compact);
        const QFont before = QApplication::font();
        const auto restore = qScopeGuard([&] { QApplication::setFont(before); });
        QFont font(before);
        font.setPointSize(points);
        QApplication::setFont(font);

        WindowFixture fixture;
        WindowFixture::store(u"compactMode"_s, compact);
        openWithTwoApplications(fixture);
        const int height = compact ? 22 : 30;
        QCOMPARE(linesBetweenRows(fixture.appsTable()), height);
        fixture.button(u"Apply changes"_s)->click();
        QCOMPARE(linesBetweenRows(fixture.appsTable()), height);
        fixture.setting<QCheckBox>(u"Compact rows"_s)->toggle();
        fixture.button(u"Apply changes"_s)->click();
        QCOMPARE(linesBetweenRows(fixture.appsTable()), compact ? 30 : 22);
    }

    void longNamesDoNotWidenTheWindow()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        fixture.system().addProcess(1, QString(3000, u'w'), 1);
        fixture.tick();
        fixture.appsTable()->setCurrentCell(1, 0);
        WindowFixture::click(fixture.button(u"Toggle Block"_s));
        QCoreApplication::processEvents();
        QCOMPARE(fixture.window().size(), QSize(1180, 800));
        QCOMPARE(fixture.window().centralWidget()->width(), 1180);
        QVERIFY(fixture.labelStarting(u"Applications: "_s)->width() <= 962);
    }

private:
    /// Distance of the painted lines below the first two rows, in pixels.
    static int linesBetweenRows(QTableWidget *table)
    {
        const QImage image = table->viewport()->grab().toImage();
        QList<int> lines;
        for (int y = 0; y < image.height() && lines.size() < 2; ++y) {
            if (image.pixelColor(2, y) == QColor(u"#26324a"_s))
                lines.append(y);
        }
        return lines.size() == 2 ? lines.last() - lines.first() : -1;
    }
};

TOVAN_WINDOW_TEST(appstable_test, AppsTableTest)
#include "appstable_test.moc"
