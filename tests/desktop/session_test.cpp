#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/sessionmanager.h"
#include "tests/desktop/support/windowlayout.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/// The program as a client of a session, hiding into the tray when its window is closed. It is
/// paused, so that it saves nothing but what the session's end or a close makes it save.
struct ProgramInSession
{
    explicit ProgramInSession(bool paused = true)
        : program(desktop, [paused](AppSettings &settings) {
              settings.closeToTray = true;
              settings.pauseOnLaunch = paused;
              settings.miniWidgetEnabled = true;
          })
    {
        program.start({{u"SESSION_MANAGER"_s, session.address()}});
        QTRY_VERIFY(session.hasClient());
        QVERIFY(program.isActive());
        QTRY_COMPARE(tray.icons().size(), 1);
    }

    void close()
    {
        desktop.screen().askToClose(program.window().id);
        QTRY_VERIFY(!program.window().isShown());
    }

    Desktop desktop;
    SessionManager session;
    NotifierTray tray{desktop.bus(u"tray"_s)};
    Program program;
};

} // namespace

/// The end of the desktop's session.
class SessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProgramSavesAndEndsWithTheSession_data();
    void theProgramSavesAndEndsWithTheSession();
    void nothingIsHiddenWhileTheSessionEnds();
    void aCancelledEndLeavesTheProgramAsItWas();
};

void SessionTest::theProgramSavesAndEndsWithTheSession_data()
{
    QTest::addColumn<QString>("state");
    QTest::newRow("visible") << u"visible"_s;
    QTest::newRow("hidden") << u"hidden"_s;
    QTest::newRow("minimised") << u"minimised"_s;
    QTest::newRow("with an open menu") << u"menu"_s;
}

void SessionTest::theProgramSavesAndEndsWithTheSession()
{
    QFETCH(QString, state);
    ProgramInSession running;
    if (state == u"hidden"_s) {
        running.close();
    } else if (state == u"minimised"_s) {
        running.program.click(minimizeButton);
        QTRY_VERIFY(running.program.window().isMinimized());
    } else if (state == u"menu"_s) {
        running.program.click(fileMenu);
        QTRY_VERIFY(!running.desktop.screen().menu(running.program.pid()).isEmpty());
    }

    running.program.removeStore();
    running.session.beginEnd();
    QTRY_VERIFY(running.session.isSaved());
    QVERIFY(!running.session.wasAsked());
    QVERIFY(running.program.storeIsWhole());
    running.session.completeEnd();
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

void SessionTest::nothingIsHiddenWhileTheSessionEnds()
{
    ProgramInSession running;
    running.session.beginEnd();
    QTRY_VERIFY(running.session.isSaved());
    QVERIFY(running.program.window().isShown());
    QVERIFY(running.program.mini().isShown());
}

void SessionTest::aCancelledEndLeavesTheProgramAsItWas()
{
    ProgramInSession running(false);
    running.session.beginEnd();
    QTRY_VERIFY(running.session.isSaved());
    running.session.cancelEnd();
    QVERIFY(running.program.ticks());

    running.close();
    QVERIFY(running.program.ticks());
    running.tray.click(u"Activate"_s);
    QVERIFY(running.program.isActive());

    // And the next end is one again.
    running.session.beginEnd();
    QTRY_VERIFY(running.session.isSaved());
    running.session.completeEnd();
    QVERIFY(running.program.endsWell());
    QVERIFY(running.program.storeIsWhole());
}

TOVAN_GUILESS_TEST(session_test, SessionTest)
#include "session_test.moc"
