#include "tests/desktop/support/embeddingtray.h"
#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/windowlayout.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

// Of the embedded icon, on the screen.
constexpr QPoint markPosition(4, 18);

} // namespace

/// Trays that are there, come late, go and come back.
class TrayHostTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theIconIsInATrayThatIsThere();
    void theIconAppearsInATrayThatStartsLater();
    void theIconAppearsWhenAHostJoinsAWatcher();
    void theIconComesBackWithTheTray();
    void theIconIsEmbeddedInATrayThatIsThere();
    void theIconIsEmbeddedInATrayThatStartsLater();
    void theIconIsEmbeddedAgainInATrayThatComesBack();
    void aTrayOnTheBusIsPreferredToAnEmbeddingOne();
    void theProgramTicksWithoutAnyTray();
    void theProgramTicksWithoutASessionBus();
};

void TrayHostTest::theIconIsInATrayThatIsThere()
{
    Desktop desktop;
    NotifierTray tray(desktop.bus(u"tray"_s));
    Program program(desktop);
    program.start();
    QTRY_COMPARE(tray.icons().size(), 1);
    QVERIFY(program.ticks());
}

void TrayHostTest::theIconAppearsInATrayThatStartsLater()
{
    Desktop desktop;
    Program program(desktop);
    program.start();
    QVERIFY(program.ticks());
    NotifierTray tray(desktop.bus(u"tray"_s));
    QTRY_COMPARE(tray.icons().size(), 1);
    QVERIFY(program.ticks());
    QCOMPARE(tray.icons().size(), 1);
}

void TrayHostTest::theIconAppearsWhenAHostJoinsAWatcher()
{
    Desktop desktop;
    NotifierTray tray(desktop.bus(u"tray"_s), NotifierTray::NoHost);
    Program program(desktop);
    program.start();
    QVERIFY(program.ticks());
    QCOMPARE(tray.icons().size(), 0);
    tray.addHost();
    QTRY_COMPARE(tray.icons().size(), 1);
    QVERIFY(program.ticks());
}

void TrayHostTest::theIconComesBackWithTheTray()
{
    Desktop desktop;
    Program program(desktop);
    {
        NotifierTray tray(desktop.bus(u"tray"_s));
        program.start();
        QTRY_COMPARE(tray.icons().size(), 1);
    }
    QVERIFY(program.ticks());
    NotifierTray tray(desktop.bus(u"next tray"_s));
    QTRY_COMPARE(tray.icons().size(), 1);
    QCOMPARE(tray.menu().texts().constFirst(), u"Open Tovan"_s);
}

void TrayHostTest::theIconIsEmbeddedInATrayThatIsThere()
{
    Desktop desktop;
    const EmbeddingTray tray(desktop.display());
    Program program(desktop);
    program.start();
    QTRY_VERIFY(tray.hasIcon());
    QTRY_COMPARE(desktop.screen().colourAt(markPosition), markColour);
    QVERIFY(program.ticks());
}

void TrayHostTest::theIconIsEmbeddedInATrayThatStartsLater()
{
    Desktop desktop;
    Program program(desktop);
    program.start();
    QVERIFY(program.ticks());
    const EmbeddingTray tray(desktop.display());
    QTRY_VERIFY(tray.hasIcon());
    QTRY_COMPARE(desktop.screen().colourAt(markPosition), markColour);
}

void TrayHostTest::theIconIsEmbeddedAgainInATrayThatComesBack()
{
    Desktop desktop;
    Program program(desktop);
    {
        const EmbeddingTray tray(desktop.display());
        program.start();
        QTRY_VERIFY(tray.hasIcon());
    }
    QVERIFY(program.ticks());
    const EmbeddingTray tray(desktop.display());
    QTRY_VERIFY(tray.hasIcon());
    QTRY_COMPARE(desktop.screen().colourAt(markPosition), markColour);
    QVERIFY(program.ticks());
}

void TrayHostTest::aTrayOnTheBusIsPreferredToAnEmbeddingOne()
{
    Desktop desktop;
    const EmbeddingTray embedding(desktop.display());
    NotifierTray tray(desktop.bus(u"tray"_s));
    Program program(desktop);
    program.start();
    QTRY_COMPARE(tray.icons().size(), 1);
    QVERIFY(program.ticks());
    QVERIFY(!embedding.hasIcon());
}

void TrayHostTest::theProgramTicksWithoutAnyTray()
{
    Desktop desktop;
    Program program(desktop, [](AppSettings &settings) { settings.closeToTray = true; });
    program.start();
    QVERIFY(program.ticks());
    desktop.screen().askToClose(program.window().id);
    QTRY_VERIFY(!program.window().isShown());
    QVERIFY(program.ticks());
}

void TrayHostTest::theProgramTicksWithoutASessionBus()
{
    Desktop desktop(Desktop::NoBus);
    Program program(desktop);
    program.start();
    QVERIFY(program.ticks());
    const EmbeddingTray tray(desktop.display());
    QTRY_VERIFY(tray.hasIcon());
}

TOVAN_GUILESS_TEST(trayhost_test, TrayHostTest)
#include "trayhost_test.moc"
