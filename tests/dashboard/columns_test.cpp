#include "tests/support/paintedcheckbox.h"
#include "tests/support/windowfixture.h"

#include <QHeaderView>

using namespace Qt::StringLiterals;

namespace {

/// Columns of an image from the first to the last that has a pixel of about this colour; -1 for
/// both when there is none.
struct Ink
{
    int first = -1;
    int last = -1;
};

Ink inkOf(const QImage &image, QColor colour)
{
    Ink ink;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            const QColor pixel = image.pixelColor(x, y);
            const int distance = qAbs(pixel.red() - colour.red())
                + qAbs(pixel.green() - colour.green()) + qAbs(pixel.blue() - colour.blue());
            if (distance > 250)
                continue;
            if (ink.first < 0)
                ink.first = x;
            ink.last = x;
        }
    }
    return ink;
}

} // namespace

/// The room that the columns beside the names take: what they show and the padding around it.
class ColumnsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void headersArePaddedBySixPixels()
    {
        WindowFixture fixture;
        open(fixture);
        const QHeaderView *header = fixture.appsTable()->horizontalHeader();
        const QImage image = header->viewport()->grab().toImage();
        for (const int column : {1, 2, 4, 5, 7}) { // the others have wider cells
            const QRect section(header->sectionViewportPosition(column), 0,
                                header->sectionSize(column), header->height());
            const Ink text = inkOf(image.copy(section), QColor(u"#c7d2fe"_s));
            const auto message = u"column %1 of %2 pixels has its text from %3 to %4"_s.arg(column)
                                     .arg(section.width())
                                     .arg(text.first)
                                     .arg(text.last);
            // A letter may stand a pixel or two within its place; the border is the last pixel.
            QVERIFY2(text.first >= 6 && text.first <= 8, qPrintable(message));
            const int blank = section.width() - 1 - 1 - text.last;
            QVERIFY2(blank >= 6 && blank <= 8, qPrintable(message));
        }
    }

    void checkBoxAndTextFillTheirColumn()
    {
        WindowFixture fixture;
        WindowFixture::store(u"defaultLimitKbps"_s, 100000);
        open(fixture);
        QTableWidget *table = fixture.appsTable();
        const QRect cell = table->visualItemRect(table->item(1, 4));
        const QRectF box = paintedCheckBox(table, 1, 4).translated(-cell.topLeft());
        const int boxEnd = qRound(box.right());
        QCOMPARE(qRound(box.left()), 6);
        const QImage image = table->viewport()->grab(cell).toImage();
        const Ink text = inkOf(image.copy(boxEnd, 0, image.width() - boxEnd, image.height()),
                               QColor(u"#e8eefc"_s));
        QVERIFY(text.first >= 3 && text.first <= 6);
        const int blank = image.width() - boxEnd - 1 - text.last;
        QVERIFY(blank >= 5 && blank <= 8);
    }

    void everyRateIsShownWhole()
    {
        WindowFixture fixture;
        open(fixture);
        QTableWidget *table = fixture.appsTable();
        QHeaderView *header = table->horizontalHeader();
        quint64 octets = 0;
        for (int kibibytes = 100; kibibytes < 200; kibibytes += 3) {
            octets += static_cast<quint64>(kibibytes) * 1024 + 700;
            fixture.system().setCounters(0, octets);
            fixture.tick();
            QCoreApplication::processEvents();
            const Ink shown = inkOf(pictureOfUploadRate(table), Qt::white);
            header->setSectionResizeMode(2, QHeaderView::Interactive);
            header->resizeSection(2, table->columnWidth(2) + 20);
            const Ink whole = inkOf(pictureOfUploadRate(table), Qt::white);
            header->setSectionResizeMode(2, QHeaderView::ResizeToContents);
            // Letters take fractions of pixels.
            const QString text = table->item(0, 2)->text();
            QVERIFY2(qAbs((shown.last - shown.first) - (whole.last - whole.first)) <= 1,
                     qPrintable(text));
        }
    }

    void theBlanksBeforeANameAreItsDistanceFromTheIcon()
    {
        WindowFixture fixture;
        open(fixture);
        QTableWidget *table = fixture.appsTable();
        const QRect cell = table->visualItemRect(table->item(1, 0));
        QCOMPARE(table->item(1, 0)->text(), u"  wineserver64"_s);
        const int iconEnd = 6 + table->style()->pixelMetric(QStyle::PM_SmallIconSize);
        const QImage image = table->viewport()->grab(cell).toImage();
        const Ink text = inkOf(image.copy(iconEnd, 0, image.width() - iconEnd, image.height()),
                               QColor(u"#e8eefc"_s));
        const int blanks = QFontMetrics(table->font()).horizontalAdvance(u"  "_s);
        QVERIFY(qAbs(text.first - blanks) <= 2);
    }

private:
    /// Of the whole machine's row.
    static QImage pictureOfUploadRate(const QTableWidget *table)
    {
        return table->viewport()->grab(table->visualItemRect(table->item(0, 2))).toImage();
    }

    static void open(WindowFixture &fixture)
    {
        fixture.open();
        fixture.window().resize(1180, 780);
        fixture.system().addProcess(1, u"wineserver64"_s, 9);
        fixture.tick();
        // The columns follow in a turn of the event loop.
        QCoreApplication::processEvents();
    }
};

TOVAN_WINDOW_TEST(columns_test, ColumnsTest)
#include "columns_test.moc"
