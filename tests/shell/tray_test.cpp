#include "tests/support/teststore.h"
#include "tests/support/windowfixture.h"

#include "shell/minispeedwidget.h"

#include <QMenu>
#include <QStackedWidget>
#include <QSystemTrayIcon>

using namespace Qt::StringLiterals;

namespace {

QMenu *trayMenu(WindowFixture &fixture)
{
    return fixture.window().findChild<QSystemTrayIcon *>()->contextMenu();
}

QAction *entry(const QMenu *menu, const QString &text)
{
    const auto actions = menu->actions();
    for (QAction *action : actions) {
        if (action->text() == text)
            return action;
    }
    qFatal("no tray entry \"%s\"", qPrintable(text));
}

QStringList entries(const QMenu *menu)
{
    QStringList texts;
    const auto actions = menu->actions();
    for (const QAction *action : actions)
        texts.append(action->isSeparator() ? u"-"_s : action->text());
    return texts;
}

} // namespace

class TrayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMenuHasItsEntriesInOrder()
    {
        WindowFixture fixture;
        fixture.open();
        QMenu *menu = trayMenu(fixture);
        QCOMPARE(
            entries(menu),
            (QStringList{u"Open Tovan"_s, u"Open Rules Manager"_s, u"-"_s, u"Pause monitoring"_s,
                         u"Show Mini monitor"_s, u"Profile"_s, u"-"_s, u"Exit"_s}));
        const QMenu *profiles = entry(menu, u"Profile"_s)->menu();
        QCOMPARE(entries(profiles),
                 (QStringList{u"Balanced"_s, u"Gaming"_s, u"Work"_s, u"Download"_s, u"Strict"_s}));
        QVERIFY(fixture.window().findChild<QSystemTrayIcon *>()->toolTip().isEmpty());
        QVERIFY(fixture.window().findChild<QSystemTrayIcon *>()->isVisible());
    }

    void openBringsTheHiddenWindowBack()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.window().close();
        QVERIFY(fixture.window().isHidden());
        entry(trayMenu(fixture), u"Open Tovan"_s)->trigger();
        QVERIFY(fixture.window().isVisible());
    }

    void openRulesManagerShowsItsPageAlsoFromHidden()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.window().close();
        fixture.rulesTable()->setRowCount(0);
        entry(trayMenu(fixture), u"Open Rules Manager"_s)->trigger();
        QVERIFY(fixture.window().isVisible());
        QCOMPARE(fixture.window().findChild<QStackedWidget *>()->currentIndex(), 1);
        QCOMPARE(fixture.rulesTable()->rowCount(), 1);
        QVERIFY(fixture.button(u"\u2263    Rules"_s)->isChecked());
        QVERIFY(!fixture.button(u"\u25C8    Dashboard"_s)->isChecked());
    }

    void clicksOnTheIconBringTheWindowBack_data()
    {
        QTest::addColumn<QSystemTrayIcon::ActivationReason>("reason");
        QTest::addColumn<bool>("shown");
        QTest::newRow("click") << QSystemTrayIcon::Trigger << true;
        QTest::newRow("double click") << QSystemTrayIcon::DoubleClick << true;
        QTest::newRow("menu") << QSystemTrayIcon::Context << false;
        QTest::newRow("middle click") << QSystemTrayIcon::MiddleClick << false;
        QTest::newRow("unknown") << QSystemTrayIcon::Unknown << false;
    }

    void clicksOnTheIconBringTheWindowBack()
    {
        QFETCH(QSystemTrayIcon::ActivationReason, reason);
        WindowFixture fixture;
        fixture.open();
        fixture.window().close();
        Q_EMIT fixture.window().findChild<QSystemTrayIcon *>()->activated(reason);
        QTEST(fixture.window().isVisible(), "shown");
    }

    void theMiniMonitorsEntrySwitchesEverythingTogether()
    {
        WindowFixture fixture;
        fixture.open();
        QAction *mini = entry(trayMenu(fixture), u"Show Mini monitor"_s);
        QVERIFY(mini->isCheckable());
        QVERIFY(!mini->isChecked());
        mini->trigger();
        QVERIFY(miniMonitor()->isVisible());
        QVERIFY(fixture.button(u"Show mini monitor"_s)->isChecked());
        QCOMPARE(WindowFixture::stored(u"miniWidgetEnabled"_s).toBool(), true);
        mini->trigger();
        QVERIFY(!miniMonitor()->isVisible());
        QVERIFY(!fixture.button(u"Show mini monitor"_s)->isChecked());
        QCOMPARE(WindowFixture::stored(u"miniWidgetEnabled"_s).toBool(), false);
    }

    void theMiniMonitorsEntryFollowsTheDashboardsToggle()
    {
        WindowFixture fixture;
        WindowFixture::store(u"miniWidgetEnabled"_s, true);
        fixture.open();
        QAction *mini = entry(trayMenu(fixture), u"Show Mini monitor"_s);
        QVERIFY(mini->isChecked());
        fixture.menuAction(u"Toggle Mini monitor"_s)->trigger();
        QVERIFY(!mini->isChecked());
    }

    void aProfileIsAppliedAndMarksNoEntry()
    {
        WindowFixture fixture;
        fixture.open();
        const QMenu *profiles = entry(trayMenu(fixture), u"Profile"_s)->menu();
        entry(profiles, u"Gaming"_s)->trigger();
        QCOMPARE(WindowFixture::stored(u"currentProfile"_s).toString(), u"Gaming"_s);
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Profile applied: Gaming"_s);
        const auto actions = profiles->actions();
        for (const QAction *action : actions)
            QVERIFY(!action->isCheckable() && !action->isChecked());
    }

    void exitFromHiddenSavesOnceThroughTheClose()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.window().close();
        removeStore();
        entry(trayMenu(fixture), u"Exit"_s)->trigger();
        QVERIFY(storeExists());
    }
};

TOVAN_WINDOW_TEST(tray_test, TrayTest)
#include "tray_test.moc"
