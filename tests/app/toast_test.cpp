#include "tests/support/ellipsis.h"
#include "tests/support/windowfixture.h"

using namespace Qt::StringLiterals;

class ToastTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aShortToastHasTheLeastSizeAndFloatsAtTheTopRight()
    {
        WindowFixture fixture;
        fixture.open();
        auto *toast = fixture.find<QFrame>("toast");
        QVERIFY(!toast->isVisible());
        WindowFixture::click(fixture.quickFilter(u"Active"_s));

        QVERIFY(toast->isVisible());
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Filter: Active"_s);
        QCOMPARE(toast->size(), QSize(230, 40));
        QCOMPARE(toast->pos(), QPoint(1180 - 230 - 24, 46));
        QCOMPARE(toast->parentWidget(), fixture.window().centralWidget());
    }

    void aLongTextIsCutAtTheGreatestWidth()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        fixture.system().addProcess(7, QString(200, u'w'), 1);
        fixture.tick();
        QCOMPARE(fixture.find<QFrame>("toast")->width(), 360);
        auto *text = fixture.find<QLabel>("toastText");
        QCOMPARE(text->wordWrap(), false);
        QCOMPARE(text->text(), "New network app: "_L1 + QString(200, u'w'));
        QVERIFY(endsInEllipsis(*text));
        QVERIFY(toolTipOf(*text).contains(text->text()));
    }

    void aTextThatFitsIsShownWhole()
    {
        WindowFixture fixture;
        fixture.open();
        WindowFixture::click(fixture.quickFilter(u"Limited"_s));
        auto *text = fixture.find<QLabel>("toastText");
        QVERIFY(!endsInEllipsis(*text));
        QCOMPARE(toolTipOf(*text), QString());
    }

    void lineBreaksDoNotMakeItHigher()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        fixture.system().addProcess(7, u"two\nlines\nor\nmore"_s, 1);
        fixture.tick();
        QCOMPARE(fixture.find<QFrame>("toast")->height(), 40);
    }

    void inANarrowWindowTheToastStaysTwelvePixelsFromTheLeft_data()
    {
        QTest::addColumn<int>("windowWidth");
        QTest::addColumn<int>("x");
        QTest::newRow("room on the left") << 300 << 46;
        QTest::newRow("too narrow") << 200 << 12;
    }

    void inANarrowWindowTheToastStaysTwelvePixelsFromTheLeft()
    {
        QFETCH(int, windowWidth);
        QFETCH(int, x);
        WindowFixture fixture;
        fixture.open();
        QWidget *central = fixture.window().centralWidget();
        central->resize(windowWidth, central->height());
        WindowFixture::click(fixture.quickFilter(u"Blocked"_s));
        QCOMPARE(fixture.find<QFrame>("toast")->x(), x);
    }

    void markupIsShownToTheLetter()
    {
        WindowFixture fixture;
        fixture.open();
        QCOMPARE(fixture.find<QLabel>("toastText")->textFormat(), Qt::PlainText);
        QCOMPARE(fixture.labelStarting(u"Ready"_s)->textFormat(), Qt::PlainText);
    }

    void theEarlierToastsEndHidesTheLaterOne()
    {
        WindowFixture fixture;
        fixture.open();
        auto *toast = fixture.find<QFrame>("toast");
        QElapsedTimer sinceFirst;
        sinceFirst.start();
        WindowFixture::click(fixture.quickFilter(u"Active"_s));
        QTRY_VERIFY_WITH_TIMEOUT(sinceFirst.elapsed() >= 1000, 2000);
        QVERIFY(toast->isVisible());

        WindowFixture::click(fixture.quickFilter(u"Limited"_s));
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Filter: Limited"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!toast->isVisible(), 5000);
        QVERIFY2(sinceFirst.elapsed() >= 2600, qPrintable(QString::number(sinceFirst.elapsed())));
        QVERIFY2(sinceFirst.elapsed() < 3700, qPrintable(QString::number(sinceFirst.elapsed())));
    }

    void aStatusMessageLastsUntilTheNextRefresh()
    {
        WindowFixture fixture;
        fixture.open();
        auto *status = fixture.labelStarting(u"Ready"_s);
        fixture.menuAction(u"About Tovan"_s)->trigger();
        QCOMPARE(status->text(), u"About opened in Info View"_s);
        fixture.tick();
        QCOMPARE(status->text(),
                 u"Applications: 0    Today: 0 B    Month: 0 B    Package: 100.0 GB"_s);
    }
};

TOVAN_WINDOW_TEST(toast_test, ToastTest)
#include "toast_test.moc"
