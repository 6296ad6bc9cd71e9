#include "tests/support/windowfixture.h"

#include <QPushButton>
#include <QStackedWidget>

using namespace Qt::StringLiterals;

namespace {

/// Sends one mouse event as the window system would, with the pointer at a global position.
bool sendMouse(QWidget *widget, QEvent::Type type, QPointF global, Qt::MouseButton button,
               Qt::MouseButtons buttons)
{
    QMouseEvent event(type, widget->mapFromGlobal(global), global, button, buttons, {});
    return QCoreApplication::sendEvent(widget, &event) && event.isAccepted();
}

void press(QWidget *widget, QPointF global, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(widget, QEvent::MouseButtonPress, global, button, button);
}

void moveTo(QWidget *widget, QPointF global)
{
    sendMouse(widget, QEvent::MouseMove, global, Qt::NoButton, Qt::LeftButton);
}

void release(QWidget *widget, QPointF global, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(widget, QEvent::MouseButtonRelease, global, button, Qt::NoButton);
}

QStringList checkedNavigation(const QMainWindow &window)
{
    QStringList checked;
    const auto buttons = window.findChildren<QPushButton *>();
    for (const QPushButton *button : buttons) {
        if (button->property("class") == u"nav"_s && button->isChecked())
            checked.append(button->text());
    }
    return checked;
}

QPushButton *navigation(const QMainWindow &window, const QString &label)
{
    const auto buttons = window.findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->property("class") == u"nav"_s && button->text().endsWith(label))
            return button;
    }
    qFatal("no navigation button \"%s\"", qPrintable(label));
}

const QString dashboardText = u"\u25C8    Dashboard"_s;
const QString rulesText = u"\u2263    Rules"_s;
const QString settingsText = u"\u2699    Settings"_s;

} // namespace

class WindowShellTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theShellHasItsParts()
    {
        WindowFixture fixture;
        fixture.open();
        QCOMPARE(fixture.window().centralWidget()->objectName(), u"root"_s);
        QCOMPARE(fixture.find<QFrame>("titleBar")->height(), 34);
        QCOMPARE(fixture.find<QFrame>("sidebar")->width(), 218);
        QCOMPARE(fixture.find<QLabel>("logoWordmark")->size(), QSize(154, 62));
        QVERIFY(!fixture.find<QLabel>("logoWordmark")->pixmap().isNull());
        QCOMPARE(fixture.window().findChildren<QLabel *>(u"sidebarFoot"_s).size(), 3);
        auto *pages = fixture.window().findChild<QStackedWidget *>();
        QCOMPARE(pages->count(), 3);
        QCOMPARE(pages->currentIndex(), 0);
        QCOMPARE(checkedNavigation(fixture.window()), QStringList{dashboardText});
        QCOMPARE(navigation(fixture.window(), u"Rules"_s)->text(), rulesText);
        QCOMPARE(navigation(fixture.window(), u"Settings"_s)->text(), settingsText);
    }

    void theCaptionIsTheStoredTitleFromTheStart()
    {
        WindowFixture fixture;
        WindowFixture::store(u"windowTitleText"_s, u"<b>Mine</b>"_s);
        fixture.open();
        QCOMPARE(fixture.find<QLabel>("titleBarText")->text(), u"<b>Mine</b>"_s);
        QCOMPARE(fixture.find<QLabel>("titleBarText")->textFormat(), Qt::PlainText);
        QCOMPARE(fixture.window().windowTitle(), u"Tovan Network Monitor"_s);
    }

    void aLongTitleIsCutInsteadOfWideningTheWindow()
    {
        WindowFixture fixture;
        WindowFixture::store(u"windowTitleText"_s, QString(2000, u'w'));
        fixture.open();
        QCOMPARE(fixture.window().size(), QSize(1180, 800));
        auto *closeButton = fixture.find<QPushButton>("windowButtonClose");
        QVERIFY(closeButton->mapTo(&fixture.window(), closeButton->rect().topRight()).x() < 1180);
    }

    void theFootTextWrapsInsideTheSidebar()
    {
        WindowFixture fixture;
        fixture.open();
        auto *foot = fixture.labelStarting(u"Limits, blocking"_s);
        QVERIFY(foot->wordWrap());
        QVERIFY(foot->height() >= foot->heightForWidth(foot->width()));
    }

    void everyWayToAPageChecksExactlyItsButton()
    {
        WindowFixture fixture;
        fixture.open();
        const auto *pages = fixture.window().findChild<QStackedWidget *>();
        const std::array labels{u"Dashboard"_s, u"Rules"_s, u"Settings"_s};
        const std::array entries{u"Dashboard"_s, u"Rules Manager"_s, u"Settings"_s};
        const std::array texts{dashboardText, rulesText, settingsText};
        for (const std::size_t page : {1U, 2U, 0U, 2U, 1U, 0U}) {
            WindowFixture::click(navigation(fixture.window(), labels.at(page)));
            QCOMPARE(pages->currentIndex(), int(page));
            QCOMPARE(checkedNavigation(fixture.window()), QStringList{texts.at(page)});
        }
        for (const std::size_t page : {1U, 2U, 0U}) {
            fixture.menuAction(entries.at(page))->trigger();
            QCOMPARE(pages->currentIndex(), int(page));
            QCOMPARE(checkedNavigation(fixture.window()), QStringList{texts.at(page)});
        }
    }

    void clickingThePageThatIsShownLeavesItsButtonChecked()
    {
        WindowFixture fixture;
        fixture.open();
        WindowFixture::click(navigation(fixture.window(), u"Dashboard"_s));
        QCOMPARE(checkedNavigation(fixture.window()), QStringList{dashboardText});
    }

    void rulesRefreshesItsTableEveryTime()
    {
        WindowFixture fixture;
        fixture.open();
        for (int i = 0; i < 2; ++i) {
            fixture.rulesTable()->setRowCount(0);
            WindowFixture::click(navigation(fixture.window(), u"Rules"_s));
            QCOMPARE(fixture.rulesTable()->rowCount(), 1);
        }
    }

    void theTitleBarDragsTheWindow_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("bar") << u"titleBar"_s;
        QTest::newRow("text") << u"titleBarText"_s;
    }

    void theTitleBarDragsTheWindow()
    {
        QFETCH(QString, name);
        WindowFixture fixture;
        fixture.open();
        auto *handle = fixture.window().findChild<QWidget *>(name);
        fixture.window().move(100, 100);
        press(handle, {150.0, 110.0});
        // Fractions are rounded away from zero at the half.
        moveTo(handle, {170.5, 140.4});
        QCOMPARE(fixture.window().pos(), QPoint(121, 130));
        release(handle, {170.0, 140.0});
        moveTo(handle, {300.0, 300.0});
        QCOMPARE(fixture.window().pos(), QPoint(121, 130));
    }

    void theRightButtonStartsNoDragButEndsOne()
    {
        WindowFixture fixture;
        fixture.open();
        auto *bar = fixture.find<QFrame>("titleBar");
        fixture.window().move(100, 100);
        press(bar, {150, 110}, Qt::RightButton);
        moveTo(bar, {170, 140});
        QCOMPARE(fixture.window().pos(), QPoint(100, 100));
        press(bar, {150, 110});
        release(bar, {150, 110}, Qt::RightButton);
        moveTo(bar, {170, 140});
        QCOMPARE(fixture.window().pos(), QPoint(100, 100));
    }

    void theTopOfTheWindowItselfDragsIt_data()
    {
        QTest::addColumn<int>("y");
        QTest::addColumn<bool>("drags");
        QTest::newRow("title bar's height") << 34 << true;
        QTest::newRow("below") << 35 << false;
    }

    void theTopOfTheWindowItselfDragsIt()
    {
        QFETCH(int, y);
        QFETCH(bool, drags);
        WindowFixture fixture;
        fixture.open();
        LumetraWindow &window = fixture.window();
        window.move(100, 100);
        press(&window, QPointF(400, 100 + y));
        moveTo(&window, QPointF(410, 120 + y));
        QCOMPARE(window.pos(), drags ? QPoint(110, 120) : QPoint(100, 100));
        release(&window, QPointF(410, 120 + y));
        moveTo(&window, QPointF(500, 500));
        QCOMPARE(window.pos(), drags ? QPoint(110, 120) : QPoint(100, 100));
    }

    void aMaximisedWindowIsNotDragged()
    {
        WindowFixture fixture;
        fixture.open();
        LumetraWindow &window = fixture.window();
        auto *bar = fixture.find<QFrame>("titleBar");
        window.showMaximized();
        const QRect geometry = window.geometry();
        press(bar, {150, 10});
        moveTo(bar, {300, 200});
        QVERIFY(window.isMaximized());
        QCOMPARE(window.geometry(), geometry);
        release(bar, {300, 200});
    }

    void aDoubleClickOnBarOrTextMaximisesAndRestores()
    {
        WindowFixture fixture;
        fixture.open();
        LumetraWindow &window = fixture.window();
        for (const char *name : {"titleBar", "titleBarText"}) {
            auto *widget = fixture.find<QWidget>(name);
            QTest::mouseDClick(widget, Qt::LeftButton, {}, {5, 5});
            QVERIFY(window.isMaximized());
            QTest::mouseDClick(widget, Qt::RightButton, {}, {5, 5});
            QVERIFY(!window.isMaximized());
        }
    }

    void theWindowButtonsMinimiseMaximiseAndRestore()
    {
        WindowFixture fixture;
        fixture.open();
        LumetraWindow &window = fixture.window();
        WindowFixture::click(fixture.button(u"[]"_s));
        QVERIFY(window.isMaximized());
        WindowFixture::click(fixture.button(u"[]"_s));
        QVERIFY(!window.isMaximized());
        WindowFixture::click(fixture.button(u"-"_s));
        QVERIFY(window.isMinimized());
    }
};

TOVAN_WINDOW_TEST(windowshell_test, WindowShellTest)
#include "windowshell_test.moc"
