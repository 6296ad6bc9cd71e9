#include "shell/minispeedwidget.h"

#include "tests/support/windowfixture.h"

using namespace Qt::StringLiterals;

namespace {

QStringList rates(const MiniSpeedWidget &mini)
{
    QStringList texts;
    const auto labels = mini.findChildren<QLabel *>(u"miniRate"_s);
    for (const QLabel *label : labels)
        texts.append(label->text());
    return texts;
}

void sendMouse(QWidget &widget, QEvent::Type type, QPointF global, Qt::MouseButton button)
{
    const bool released = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, widget.mapFromGlobal(global), global,
                      type == QEvent::MouseMove ? Qt::NoButton : button,
                      released ? Qt::NoButton : Qt::MouseButtons(button), {});
    QCoreApplication::sendEvent(&widget, &event);
}

} // namespace

class MiniSpeedWidgetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itIsASmallToolWindowThatStaysOnTop()
    {
        const MiniSpeedWidget mini;
        QCOMPARE(mini.size(), QSize(220, 92));
        QCOMPARE(mini.windowFlags() & Qt::WindowType_Mask, Qt::Tool);
        QVERIFY(mini.windowFlags().testFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint));
        QVERIFY(mini.testAttribute(Qt::WA_TranslucentBackground));
        QCOMPARE(mini.parent(), nullptr);
        QCOMPARE(mini.findChild<QFrame *>(u"miniShell"_s)->geometry(), QRect(0, 0, 220, 92));
        QCOMPARE(mini.findChild<QLabel *>(u"miniTitle"_s)->text(), u"Tovan Mini"_s);
    }

    void itsShapeIsWhatItPaintsAndNoMore()
    {
        MiniSpeedWidget mini;
        mini.show();
        QImage image(mini.size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        mini.clearMask(); // which would hide what lies outside
        mini.render(&image, {}, {}, QWidget::DrawChildren);
        const QRegion shape = MiniSpeedWidget().mask();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QPoint pixel(x, y);
                if (image.pixelColor(pixel).alpha() > 0)
                    QVERIFY2(shape.contains(pixel), qPrintable(u"%1, %2"_s.arg(x).arg(y)));
            }
        }
        for (const QPoint corner : {QPoint(0, 0), {219, 0}, {0, 91}, {219, 91}})
            QVERIFY(!shape.contains(corner + (mini.rect().center() - corner) / 64));
    }

    void beforeTheFirstTickTheRatesAreZero()
    {
        const MiniSpeedWidget mini;
        QCOMPARE(rates(mini), (QStringList{u"DL 0 B/s"_s, u"UL 0 B/s"_s}));
    }

    void ratesAreTheBytesOfATick()
    {
        MiniSpeedWidget mini;
        mini.setRates(1536, 5 * 1024 * 1024);
        QCOMPARE(rates(mini), (QStringList{u"DL 1.5 KB/s"_s, u"UL 5.0 MB/s"_s}));
    }

    void theLongestRatesFit()
    {
        MiniSpeedWidget mini;
        mini.setRates(1024ULL * 1024 - 1, 1024ULL * 1024 - 1);
        mini.show();
        const auto labels = mini.findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            QVERIFY(label->width() >= label->sizeHint().width());
            QVERIFY(label->height() >= label->minimumSizeHint().height());
        }
    }

    void theLeftButtonDragsItAlsoOffTheScreen()
    {
        MiniSpeedWidget mini;
        mini.show();
        mini.move(100, 100);
        sendMouse(mini, QEvent::MouseButtonPress, {110, 120}, Qt::LeftButton);
        sendMouse(mini, QEvent::MouseMove, {-290.5, -280.4}, Qt::LeftButton);
        QCOMPARE(mini.pos(), QPoint(-301, -300));
        sendMouse(mini, QEvent::MouseButtonRelease, {-290, -280}, Qt::LeftButton);
        sendMouse(mini, QEvent::MouseMove, {300, 300}, Qt::LeftButton);
        QCOMPARE(mini.pos(), QPoint(-301, -300));
    }

    void theRightButtonDoesNothing()
    {
        MiniSpeedWidget mini;
        mini.show();
        mini.move(100, 100);
        sendMouse(mini, QEvent::MouseButtonPress, {110, 120}, Qt::RightButton);
        sendMouse(mini, QEvent::MouseMove, {210, 220}, Qt::RightButton);
        QCOMPARE(mini.pos(), QPoint(100, 100));
    }

    void switchedOffAndOnItComesBackWhereItWasDragged()
    {
        WindowFixture fixture;
        fixture.open();
        QAction *toggle = fixture.menuAction(u"Toggle Mini monitor"_s);
        toggle->trigger();
        MiniSpeedWidget *mini = miniMonitor();
        QVERIFY(mini->isVisible());
        mini->move(333, 222);
        toggle->trigger();
        QVERIFY(!mini->isVisible());
        toggle->trigger();
        QVERIFY(mini->isVisible());
        QCOMPARE(mini->pos(), QPoint(333, 222));
    }

    void closedByTheUserItIsSwitchedOff()
    {
        WindowFixture fixture;
        WindowFixture::store(u"miniWidgetEnabled"_s, true);
        fixture.open();
        QVERIFY(fixture.button(u"Show mini monitor"_s)->isChecked());
        QCloseEvent event;
        QSpontaneKeyEvent::setSpontaneous(&event); // as one is that a window manager asks for
        QApplication::instance()->notify(miniMonitor(), &event);
        QVERIFY(!fixture.button(u"Show mini monitor"_s)->isChecked());
        QCOMPARE(WindowFixture::stored(u"miniWidgetEnabled"_s).toBool(), false);
    }

    void closedByTheProgramItStaysOn()
    {
        WindowFixture fixture;
        WindowFixture::store(u"miniWidgetEnabled"_s, true);
        fixture.open();
        QVERIFY(miniMonitor()->close());
        fixture.tick();
        QVERIFY(fixture.button(u"Show mini monitor"_s)->isChecked());
        QCOMPARE(WindowFixture::stored(u"miniWidgetEnabled"_s).toBool(), true);
    }
};

TOVAN_WINDOW_TEST(minispeedwidget_test, MiniSpeedWidgetTest)
#include "minispeedwidget_test.moc"
