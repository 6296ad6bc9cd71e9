#include "tests/rules/bothtablesfixture.h"
#include "tests/support/paintedcheckbox.h"
#include "tests/support/testmain.h"

using namespace Qt::StringLiterals;

/// Clicks on the check boxes of both tables, at the edges of what is painted, on every screen and
/// with every font that people have.
class CheckBoxPlaceTest : public QObject, private BothTablesFixture
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        clear();
        QApplication::setLayoutDirection(Qt::LeftToRight);
        QApplication::setFont(font);
    }

    void aClickOnThePaintedBoxAndNoOtherTicks_data()
    {
        QTest::addColumn<int>("points");
        QTest::addColumn<Qt::LayoutDirection>("direction");
        for (int points = 9; points <= 16; ++points) {
            QTest::addRow("%d points", points) << points << Qt::LeftToRight;
            QTest::addRow("%d points, right to left", points) << points << Qt::RightToLeft;
        }
    }

    void aClickOnThePaintedBoxAndNoOtherTicks()
    {
        QFETCH(int, points);
        QFETCH(Qt::LayoutDirection, direction);
        QFont sized(font);
        sized.setPointSize(points);
        QApplication::setFont(sized);
        QApplication::setLayoutDirection(direction);
        prepare();

        for (const qreal ratio : {1.0, 1.25, 1.5, 2.0}) {
            for (const int column : {4, 5, 6})
                clickAround(apps, column, ratio);
        }
        WindowFixture::click(fixture->button(u"\u2263    Rules"_s));
        for (const qreal ratio : {1.0, 1.25, 1.5, 2.0}) {
            for (const int column : {2, 3, 4})
                clickAround(rules, column, ratio);
        }
    }

private:
    /// Clicks just inside and just outside the four corners of the box that is painted.
    void clickAround(QTableWidget *table, int column, qreal ratio)
    {
        const int row = WindowFixture::rowOf(table, u"app2"_s);
        table->scrollTo(table->model()->index(row, column));
        const QRectF box = paintedCheckBox(table, row, column, ratio);
        QVERIFY(box.width() >= 12 && box.width() <= 24);
        QVERIFY(qAbs(box.width() - box.height()) <= 1);

        const int left = qCeil(box.left());
        const int right = qFloor(box.right()) - 1;
        const int top = qCeil(box.top());
        const int bottom = qFloor(box.bottom()) - 1;
        for (const QPoint inside :
             {QPoint(left, top), QPoint(right, top), QPoint(left, bottom), QPoint(right, bottom)})
            QVERIFY2(ticks(table, row, column, inside), qPrintable(describe(inside, box)));
        for (const QPoint outside : {QPoint(left - 2, top), QPoint(right + 2, top)})
            QVERIFY2(!ticks(table, row, column, outside), qPrintable(describe(outside, box)));
    }

    /// Whether a click flips the cell's check box.
    static bool ticks(QTableWidget *table, int row, int column, QPoint position)
    {
        const auto state = [&] { return table->item(row, column)->checkState(); };
        const Qt::CheckState before = state();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, position);
        return state() != before;
    }

    static QString describe(QPoint clicked, const QRectF &box)
    {
        return u"clicked at %1, %2; painted from %3, %4 to %5, %6"_s.arg(clicked.x())
            .arg(clicked.y())
            .arg(box.left())
            .arg(box.top())
            .arg(box.right())
            .arg(box.bottom());
    }

    const QFont font = QApplication::font();
};

TOVAN_WINDOW_TEST(checkboxplace_test, CheckBoxPlaceTest)
#include "checkboxplace_test.moc"
