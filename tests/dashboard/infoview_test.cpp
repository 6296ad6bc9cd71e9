#include "tests/support/ellipsis.h"
#include "tests/support/windowfixture.h"

#include <QLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QtEndian>

#include <memory>

using namespace Qt::StringLiterals;

class InfoViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { fixture = std::make_unique<WindowFixture>(); }

    void cleanup() { fixture.reset(); }

    void beforeASelectionItAsksForOne()
    {
        open();
        QCOMPARE(heading()->text(), u"System overview"_s);
        QCOMPARE(details()->text(), u"Select an app to inspect its rules and connections."_s);
    }

    void anApplicationIsShownWithItsRuleAndConnections()
    {
        fixture->system().addProcess(42, u"browser"_s, 1, 1);
        TcpRow &row = fixture->system().tcp->front();
        row.localAddress = qToBigEndian(0xC0A80105U);
        row.localPort = qToBigEndian<quint16>(50000);
        row.remoteAddress = qToBigEndian(0x5DB8D822U);
        row.remotePort = qToBigEndian<quint16>(443);
        fixture->system().udp->front().localPort = qToBigEndian<quint16>(5353);
        open();
        select(u"browser"_s);
        QCOMPARE(heading()->text(), u"browser"_s);
        QCOMPARE(details()->text(),
                 u"PID: 42\n"
                 "TCP: 1    UDP: 1\n"
                 "DL: 0 B/s    UL: 0 B/s\n"
                 "Sockets: 2\n"
                 "Priority: Normal\n"
                 "DL Limit: Off\n"
                 "UL Limit: Off\n"
                 "Blocked: No\n"
                 "Path: /usr/bin/browser\n"
                 "\n"
                 "Connections:\n"
                 "TCP  192.168.1.5:50000 -> 93.184.216.34:443  Established\n"
                 "UDP  0.0.0.0:5353 -> -  Open"_s);
    }

    void theSystemRowShowsItsOwnTotals()
    {
        fixture->system().addProcess(42, u"browser"_s, 1);
        fixture->system().setCounters(0, 0);
        fixture->open();
        fixture->system().setCounters(2048, 1024);
        fixture->tick();
        select(u"This PC"_s);
        QCOMPARE(heading()->text(), u"This PC"_s);
        QCOMPARE(details()->text(),
                 u"PID: -\n"
                 "TCP: 0    UDP: 0\n"
                 "DL: 2.0 KB/s    UL: 1.0 KB/s\n"
                 "Sockets: 1\n"
                 "Priority: Normal\n"
                 "DL Limit: Off\n"
                 "UL Limit: Off\n"
                 "Blocked: No"_s);
    }

    void theRowsTextsAreTakenAsDisplayed()
    {
        fixture->system().addProcess(42, u"browser"_s, 1);
        open();
        const int row = WindowFixture::rowOf(fixture->appsTable(), u"browser"_s);
        fixture->appsTable()->item(row, 1)->setText(u"typed %1"_s);
        fixture->appsTable()->item(row, 7)->setText(u"%10"_s);
        select(u"browser"_s);
        QVERIFY(details()->text().contains(u"\nDL: typed %1    UL: 0 B/s\nSockets: %10\n"_s));
    }

    void aRuleIsShownWithoutItsLimitValues()
    {
        fixture->system().addProcess(42, u"browser"_s, 1);
        open();
        select(u"browser"_s);
        for (const auto &button : {u"Toggle DL Limit"_s, u"Toggle UL Limit"_s, u"Toggle Block"_s})
            WindowFixture::click(fixture->button(button));
        QVERIFY(details()->text().contains(u"\nPriority: Normal\n"
                                           "DL Limit: On\n"
                                           "UL Limit: On\n"
                                           "Blocked: Yes\n"
                                           "Path: "_s));
    }

    void theFirstOfSeveralProcessesStandsForTheProgram()
    {
        fixture->system().addProcess(42, u"worker"_s, 1);
        fixture->system().addProcess(43, u"worker"_s, 3);
        open();
        QTableWidget *table = fixture->appsTable();
        table->setCurrentCell(2, 0);
        QCOMPARE(table->item(2, 7)->text(), u"1"_s);
        // The row's own texts beside the first process's figures.
        QVERIFY(details()->text().startsWith(u"PID: 43\nTCP: 3    UDP: 0\n"_s));
        QVERIFY(details()->text().contains(u"\nSockets: 1\n"_s));
        QCOMPARE(connectionLines(), 3);
    }

    void withoutAReadablePathTheConnectionsAreStillListed()
    {
        fixture->system().addProcess(42, u"guarded"_s, 2);
        fixture->system().imagePaths.remove(42);
        open();
        select(u"guarded"_s);
        QVERIFY(!details()->text().contains(u"Path:"_s));
        QVERIFY(details()->text().contains(u"\nBlocked: No\n\nConnections:\n"_s));
        QCOMPARE(connectionLines(), 2);
    }

    void atMostFiveConnectionsAreListed()
    {
        fixture->system().addProcess(42, u"server"_s, 7, 2);
        open();
        select(u"server"_s);
        QCOMPARE(connectionLines(), 5);
        QVERIFY(!details()->text().contains(u"UDP  "_s));
    }

    void connectionsAreReadAfresh()
    {
        fixture->system().addProcess(42, u"server"_s, 2);
        open();
        fixture->system().tcp->front().state = 8;
        select(u"server"_s);
        QCOMPARE(details()->text().count(u"Close wait"_s), 1);
        fixture->system().tcp.reset();
        fixture->system().udp.reset();
        select(u"This PC"_s);
        select(u"server"_s);
        QVERIFY(!details()->text().contains(u"Connections:"_s));
    }

    void aTickLeavesTheDetailsAsTheyAre()
    {
        fixture->system().addProcess(42, u"server"_s, 2);
        open();
        select(u"server"_s);
        const QString before = details()->text();
        fixture->system().addProcess(42, u"server"_s, 3);
        fixture->tick();
        QCOMPARE(details()->text(), before);
    }

    void aProcessThatEndedIsShownByItsRowAlone()
    {
        fixture->system().addProcess(42, u"brief"_s, 2);
        fixture->system().addProcess(43, u"other"_s, 1);
        open();
        QTableWidget *table = fixture->appsTable();
        table->item(2, 0)->setText(u"nobody"_s);
        table->setCurrentCell(2, 0);
        QCOMPARE(heading()->text(), u"nobody"_s);
        QVERIFY(details()->text().startsWith(u"PID: -\nTCP: 0    UDP: 0\n"_s));
        // And one that ends between the tick and the selection has lost its connections only.
        fixture->system().removeProcess(42);
        select(u"brief"_s);
        QVERIFY(details()->text().startsWith(u"PID: 42\n"_s));
        QVERIFY(!details()->text().contains(u"Connections:"_s));
    }

    void aRowWithoutNameIsTheSystemOverview()
    {
        fixture->system().addProcess(42, u"brief"_s, 2);
        open();
        delete fixture->appsTable()->takeItem(1, 0);
        fixture->appsTable()->setCurrentCell(1, 1);
        QCOMPARE(heading()->text(), u"System overview"_s);
    }

    void clearingTheSelectionKeepsTheDetails()
    {
        fixture->system().addProcess(42, u"server"_s, 2);
        open();
        select(u"server"_s);
        const QString before = details()->text();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); // the cell's editor
        fixture->appsTable()->setCurrentItem(nullptr);
        QCOMPARE(fixture->appsTable()->currentRow(), -1);
        QCOMPARE(details()->text(), before);
        QCOMPARE(heading()->text(), u"server"_s);
    }

    void awkwardNamesAreShownInOneLine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        const auto same
            = [](const char *row, const QString &name) { QTest::newRow(row) << name << name; };
        same("mark-up", u"<b>x"_s);
        same("placeholders", u"%1 %2 %10"_s);
        same("right to left", u"\u05D0\u05D1"_s);
        same("very long", QString(3000, u'w'));
        QTest::newRow("line feed") << u"two\nlines"_s << u"two lines"_s;
        QTest::newRow("many line feeds")
            << u"a\n"_s.repeated(200) + u"b"_s << u"a "_s.repeated(200) + u"b"_s;
        QTest::newRow("turned around")
            << u"\u05D0\u05D1 \u202Etxt"_s << u"\u05D0\u05D1 <U+202E>txt"_s;
    }

    void awkwardNamesAreShownInOneLine()
    {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        fixture->system().addProcess(42, name, 1);
        open();
        const int height = fixture->window().height();
        select(name);
        QCoreApplication::processEvents();
        QCOMPARE(heading()->text(), shown);
        QCOMPARE(heading()->textFormat(), Qt::PlainText);
        QVERIFY(details()->text().contains(u"\nPath: /usr/bin/"_s + shown + u"\n\nConnections:"_s));
        QCOMPARE(details()->textFormat(), Qt::PlainText);
        QCOMPARE(fixture->window().height(), height);
        QCOMPARE(fixture->window().width(), 1180);
        QCOMPARE(heading()->parentWidget()->width(), 360);
        // Whatever stands below is still there to be clicked.
        auto *toggle = fixture->button(u"Toggle Block"_s);
        QVERIFY(!toggle->visibleRegion().isEmpty());
        QCOMPARE(toggle->visibleRegion().boundingRect(), toggle->rect());
    }

    void theBoxHasRoundCorners_data()
    {
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::newRow("left to right") << Qt::LeftToRight;
        QTest::newRow("right to left") << Qt::RightToLeft;
    }

    void theBoxHasRoundCorners()
    {
        QFETCH(Qt::LayoutDirection, direction);
        fixture->system().addProcess(42, u"server"_s, 5);
        open();
        select(u"server"_s);
        fixture->window().setLayoutDirection(direction);
        auto *box = fixture->find<QScrollArea>("infoScroll");
        QTRY_VERIFY(box->verticalScrollBar()->isVisible());

        // As those of a box that has nothing in it.
        QWidget ground;
        ground.setStyleSheet(u"QWidget { background: #0e1324; } "
                             "QFrame { background: #090d19; border: 1px solid #26324a; "
                             "border-radius: 6px; }"_s);
        QFrame empty(&ground);
        empty.resize(box->size());
        ground.resize(box->size());
        const QImage expected = ground.grab().toImage().convertToFormat(QImage::Format_RGB32);
        for (const int value : {0, box->verticalScrollBar()->maximum()}) {
            box->verticalScrollBar()->setValue(value);
            const QImage painted = box->parentWidget()
                                       ->grab(box->geometry())
                                       .toImage()
                                       .convertToFormat(QImage::Format_RGB32);
            constexpr int side = 7;
            for (const int x : {0, box->width() - side}) {
                for (const int y : {0, box->height() - side})
                    QCOMPARE(painted.copy(x, y, side, side), expected.copy(x, y, side, side));
            }
        }
    }

    void aHeadingThatDoesNotFitEndsInAnEllipsis()
    {
        const QString name = "a <b>"_L1 + QString(100, u'w');
        fixture->system().addProcess(42, name, 1);
        fixture->system().addProcess(43, u"server"_s, 1);
        open();
        select(name);
        QVERIFY(endsInEllipsis(*heading()));
        QVERIFY(toolTipOf(*heading()).contains(name.toHtmlEscaped()));
        select(u"server"_s);
        QVERIFY(!endsInEllipsis(*heading()));
        QCOMPARE(toolTipOf(*heading()), QString());
    }

private:
    void open()
    {
        fixture->open();
        fixture->tick();
    }

    void select(const QString &application)
    {
        QTableWidget *table = fixture->appsTable();
        const int row = WindowFixture::rowOf(table, application);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          table->visualItemRect(table->item(row, 0)).center());
    }

    QLabel *details() { return fixture->find<QScrollArea>("infoScroll")->findChild<QLabel *>(); }

    /// The label between "Info View" and "Details".
    QLabel *heading()
    {
        const QLayout *layout = fixture->findText<QLabel>(u"Info View"_s)->parentWidget()->layout();
        return qobject_cast<QLabel *>(layout->itemAt(1)->widget());
    }

    qsizetype connectionLines() { return details()->text().count(u" -> "_s); }

    std::unique_ptr<WindowFixture> fixture;
};

TOVAN_WINDOW_TEST(infoview_test, InfoViewTest)
#include "infoview_test.moc"
