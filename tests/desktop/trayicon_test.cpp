#include "tests/desktop/support/embeddingtray.h"
#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/windowlayout.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/// The program with its icon in a tray on the session bus, hidden in it or not.
struct ProgramWithTray
{
    explicit ProgramWithTray(bool hidden = false)
        : program(desktop, [hidden](AppSettings &settings) {
              settings.closeToTray = true;
              settings.startMinimized = hidden;
          })
    {
        program.start();
        QTRY_COMPARE(tray.icons().size(), 1);
        QVERIFY(program.ticks());
        QTRY_COMPARE(program.window().isShown(), !hidden);
    }

    void choose(const QString &entry) { tray.choose(tray.menu().child(entry)); }

    Desktop desktop;
    NotifierTray tray{desktop.bus(u"tray"_s)};
    Program program;
};

/// The program hidden, with its icon embedded in a tray on the X server.
struct ProgramInEmbeddingTray
{
    ProgramInEmbeddingTray()
        : program(desktop, [](AppSettings &settings) { settings.startMinimized = true; })
    {
        program.start();
        QVERIFY(program.ticks());
        QTRY_VERIFY(tray.hasIcon());
        QVERIFY(!program.window().isShown());
    }

    void clickIcon(int button) { desktop.act(u"mousemove 12 12 click %1"_s.arg(button)); }
    /// Opens the icon's menu and presses keys that close it.
    void choose(const QString &keys)
    {
        clickIcon(3);
        QTRY_VERIFY(!desktop.screen().menu(program.pid()).isEmpty());
        desktop.act(u"key "_s + keys);
        QTRY_VERIFY(desktop.screen().menu(program.pid()).isEmpty());
    }

    Desktop desktop;
    const EmbeddingTray tray{desktop.display()};
    Program program;
};

} // namespace

/// The icon and its menu, as a desktop's tray gets and uses them.
class TrayIconTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTrayIsToldPictureAndMenuAndNothingElse();
    void theMenuHasItsEntriesInOrder();
    void openingBringsTheHiddenWindowBack_data();
    void openingBringsTheHiddenWindowBack();
    void otherClicksLeaveTheWindowHidden_data();
    void otherClicksLeaveTheWindowHidden();
    void openRulesManagerShowsItsPageAlsoFromHidden();
    void pauseStopsTheTicksAndIsNamedAnew();
    void theMiniMonitorFollowsItsEntry();
    void aProfileIsAppliedAndMarksNoEntry();
    void anEmbeddedIconOpensTheWindowByAClick();
    void anEmbeddedIconsMenuIsUsedWhileTheWindowIsHidden();
};

void TrayIconTest::theTrayIsToldPictureAndMenuAndNothingElse()
{
    ProgramWithTray running;
    NotifierTray &tray = running.tray;
    QCOMPARE(tray.iconColour(22, {4, 16}), markColour);
    QCOMPARE(tray.iconProperty(u"Status"_s).toString(), u"Active"_s);
    QCOMPARE(tray.toolTip(), QString());
}

void TrayIconTest::theMenuHasItsEntriesInOrder()
{
    ProgramWithTray running;
    const TrayEntry menu = running.tray.menu();
    QCOMPARE(menu.texts(),
             (QStringList{u"Open Tovan"_s, u"Open Rules Manager"_s, u"-"_s, u"Pause monitoring"_s,
                          u"Show Mini monitor"_s, u"Profile"_s, u"-"_s, u"Exit"_s}));
    for (const TrayEntry &entry : menu.children)
        QCOMPARE(entry.checked, entry.text == u"Show Mini monitor"_s ? 0 : -1);
    const TrayEntry &profiles = menu.child(u"Profile"_s);
    QCOMPARE(profiles.texts(),
             (QStringList{u"Balanced"_s, u"Gaming"_s, u"Work"_s, u"Download"_s, u"Strict"_s}));
    for (const TrayEntry &profile : profiles.children)
        QCOMPARE(profile.checked, -1);
}

void TrayIconTest::openingBringsTheHiddenWindowBack_data()
{
    QTest::addColumn<bool>("byClick");
    QTest::newRow("click") << true;
    QTest::newRow("entry") << false;
}

void TrayIconTest::openingBringsTheHiddenWindowBack()
{
    QFETCH(bool, byClick);
    ProgramWithTray running(true);
    if (byClick)
        running.tray.click(u"Activate"_s);
    else
        running.choose(u"Open Tovan"_s);
    QVERIFY(running.program.isActive());
}

void TrayIconTest::otherClicksLeaveTheWindowHidden_data()
{
    QTest::addColumn<QString>("method");
    QTest::newRow("middle") << u"SecondaryActivate"_s;
    QTest::newRow("right") << u"ContextMenu"_s;
}

void TrayIconTest::otherClicksLeaveTheWindowHidden()
{
    QFETCH(QString, method);
    ProgramWithTray running(true);
    running.tray.click(method);
    QVERIFY(running.program.ticks());
    QVERIFY(!running.program.window().isShown());
}

void TrayIconTest::openRulesManagerShowsItsPageAlsoFromHidden()
{
    ProgramWithTray running(true);
    running.choose(u"Open Rules Manager"_s);
    QVERIFY(running.program.isActive());
    QTRY_COMPARE(running.desktop.screen().colourAt(running.program.window().geometry.topLeft()
                                                   + rulesButton),
                 checkedColour);
}

void TrayIconTest::pauseStopsTheTicksAndIsNamedAnew()
{
    ProgramWithTray running;
    running.choose(u"Pause monitoring"_s);
    QTRY_COMPARE(running.tray.menu().texts().at(3), u"Resume monitoring"_s);
    running.program.removeStore();
    // The tick that comes next, several times over, saves nothing.
    QVERIFY(!QTest::qWaitFor([&running] { return running.program.hasStore(); }, 1000));
    running.choose(u"Resume monitoring"_s);
    QTRY_VERIFY(running.program.hasStore());
    QTRY_COMPARE(running.tray.menu().texts().at(3), u"Pause monitoring"_s);
}

void TrayIconTest::theMiniMonitorFollowsItsEntry()
{
    ProgramWithTray running;
    for (const bool shown : {true, false}) {
        running.choose(u"Show Mini monitor"_s);
        QTRY_COMPARE(running.program.mini().isShown(), shown);
        QTRY_COMPARE(running.tray.menu().child(u"Show Mini monitor"_s).checked, shown ? 1 : 0);
        QTRY_COMPARE(running.program.stored().settings.miniWidgetEnabled, shown);
    }
}

void TrayIconTest::aProfileIsAppliedAndMarksNoEntry()
{
    ProgramWithTray running;
    running.tray.choose(running.tray.menu().child(u"Profile"_s).child(u"Strict"_s));
    QTRY_COMPARE(running.program.stored().settings.currentProfile, u"Strict"_s);
    const TrayEntry menu = running.tray.menu();
    for (const TrayEntry &profile : menu.child(u"Profile"_s).children)
        QCOMPARE(profile.checked, -1);
}

void TrayIconTest::anEmbeddedIconOpensTheWindowByAClick()
{
    ProgramInEmbeddingTray running;
    running.clickIcon(1);
    QVERIFY(running.program.isActive());
}

void TrayIconTest::anEmbeddedIconsMenuIsUsedWhileTheWindowIsHidden()
{
    ProgramInEmbeddingTray running;
    running.choose(u"Escape"_s);
    QVERIFY(running.program.ticks());
    running.choose(u"Up Up Up Return"_s); // the third from below
    QTRY_VERIFY(running.program.mini().isShown());
    QVERIFY(running.program.ticks());
    QVERIFY(!running.program.window().isShown());
    running.choose(u"Up Return"_s);
    QVERIFY(running.program.endsWell());
}

TOVAN_GUILESS_TEST(trayicon_test, TrayIconTest)
#include "trayicon_test.moc"
