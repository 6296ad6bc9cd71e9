#include "tests/desktop/support/notifiertray.h"
#include "tests/desktop/support/program.h"
#include "tests/desktop/support/windowlayout.h"
#include "tests/support/testmain.h"
#include "tests/support/xcbrequests.h"

#include <QtTest>

#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

void closeToTray(AppSettings &settings)
{
    settings.closeToTray = true;
}

/// The program on a desktop that has no tray.
struct FirstProgram
{
    FirstProgram() : program(desktop, closeToTray)
    {
        program.start();
        QVERIFY(program.isActive());
    }

    void hide()
    {
        program.click(closeButton);
        QTRY_VERIFY(!program.window().isShown());
    }

    Desktop desktop;
    Program program;
};

/// Whether a process has the socket on which it is asked to show its window, proc(5).
bool canBeAsked(qint64 pid)
{
    QFile table(u"/proc/net/unix"_s);
    if (!table.open(QIODevice::ReadOnly))
        return false;
    QStringList sockets;
    const QByteArrayList lines = table.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.contains(" @tovan-network-monitor-"))
            sockets.append(
                u"socket:[%1]"_s.arg(QString::fromLatin1(line.simplified().split(' ').at(6))));
    }
    const QDir descriptors(u"/proc/%1/fd"_s.arg(pid));
    const QStringList names
        = descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    return std::ranges::any_of(names, [&](const QString &name) {
        char target[64]{};
        const QByteArray path = QFile::encodeName(descriptors.filePath(name));
        return ::readlink(path.constData(), target, sizeof target - 1) > 0
            && sockets.contains(QString::fromLatin1(target));
    });
}

/// What programs on the screen tell the starter of programs.
class StartupMessages
{
public:
    explicit StartupMessages(Screen &screen) : m_screen(screen)
    {
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(screen.connection(), screen.root(), XCB_CW_EVENT_MASK,
                                     &events);
        xcb_flush(screen.connection());
    }

    /// All of it up to now, each message closed by a NUL.
    QByteArray text()
    {
        while (true) {
            const XcbReply<xcb_generic_event_t> event(xcb_poll_for_event(m_screen.connection()));
            if (!event)
                return m_text;
            const auto *message = reinterpret_cast<xcb_client_message_event_t *>(event.get());
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE
                && (message->type == m_screen.atom("_NET_STARTUP_INFO_BEGIN")
                    || message->type == m_screen.atom("_NET_STARTUP_INFO"))) {
                const QByteArray part(reinterpret_cast<const char *>(message->data.data8), 20);
                m_text += part;
            }
        }
    }

private:
    Screen &m_screen;
    QByteArray m_text;
};

} // namespace

/// A start while the program runs already.
class SecondStartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstWindowComesToTheFront_data();
    void theFirstWindowComesToTheFront();
    void aWindowHiddenWithoutATrayComesBackAsItWas();
    void rulesOfTheFirstStay();
    void aStoppedProcessIsPassedOver();
    void whoPassedItOverAnswersWhenItIsGone();
    void aKilledProcessIsNone();
    void ofTwentyStartsAtOnceOneStays();
    void otherStoresAreApart();
    void theStartOfALauncherComesToItsEnd();
};

void SecondStartTest::theFirstWindowComesToTheFront_data()
{
    QTest::addColumn<QString>("state");
    QTest::newRow("behind another one") << u"behind"_s;
    QTest::newRow("hidden") << u"hidden"_s;
    QTest::newRow("minimised") << u"minimised"_s;
    QTest::newRow("in front already") << u"front"_s;
}

void SecondStartTest::theFirstWindowComesToTheFront()
{
    QFETCH(QString, state);
    FirstProgram running;
    Program other(running.desktop);
    if (state == u"hidden"_s) {
        running.hide();
    } else if (state == u"minimised"_s) {
        running.program.click(minimizeButton);
        QTRY_VERIFY(running.program.window().isMinimized());
    } else if (state == u"behind"_s) {
        other.start();
        QVERIFY(other.isActive());
    }

    const auto second = running.program.startAnother();
    QVERIFY(endsSilently(*second));
    QVERIFY(running.program.isActive());
    QVERIFY(running.program.ticks());
}

void SecondStartTest::aWindowHiddenWithoutATrayComesBackAsItWas()
{
    FirstProgram running;
    const auto isOnRulesPage = [&running] {
        const QPoint at = running.program.window().geometry.topLeft() + rulesButton;
        return running.desktop.screen().colourAt(at - QPoint(6, 6)) == checkedColour;
    };
    running.program.click(rulesButton);
    QTRY_VERIFY(isOnRulesPage());
    for (int round = 0; round < 2; ++round) {
        running.hide();
        QVERIFY(endsSilently(*running.program.startAnother()));
        QVERIFY(running.program.isActive());
        QTRY_VERIFY(isOnRulesPage());
    }
}

void SecondStartTest::rulesOfTheFirstStay()
{
    FirstProgram running;
    QVERIFY(endsSilently(*running.program.startAnother()));
    QVERIFY(running.program.ticks());
    QVERIFY(running.program.storeIsWhole());
}

void SecondStartTest::aStoppedProcessIsPassedOver()
{
    FirstProgram running;
    running.hide();
    running.program.send(SIGSTOP);
    const auto second = running.program.startAnother();
    QTRY_VERIFY_WITH_TIMEOUT(!running.desktop.screen().windows(second->processId()).isEmpty(),
                             patience);
    running.program.send(SIGCONT);
    // It does not answer late what nobody waits for any more.
    QVERIFY(running.program.ticks());
    QVERIFY(!running.program.window().isShown());
}

void SecondStartTest::whoPassedItOverAnswersWhenItIsGone()
{
    FirstProgram running;
    running.program.send(SIGSTOP);
    const auto second = running.program.startAnother();
    QTRY_VERIFY_WITH_TIMEOUT(!running.desktop.screen().windows(second->processId()).isEmpty(),
                             patience);
    running.program.send(SIGKILL);
    QTRY_VERIFY(!running.program.isRunning());
    // It finds that out by itself, a few seconds later.
    QTRY_VERIFY(canBeAsked(second->processId()));
    QVERIFY(endsSilently(*running.program.startAnother()));
    QVERIFY(second->state() == QProcess::Running);
}

void SecondStartTest::aKilledProcessIsNone()
{
    FirstProgram running;
    running.program.send(SIGKILL);
    QTRY_VERIFY(!running.program.isRunning());
    running.program.start();
    QVERIFY(running.program.isActive());
    QVERIFY(running.program.ticks());
}

void SecondStartTest::ofTwentyStartsAtOnceOneStays()
{
    Desktop desktop;
    const Program program(desktop, closeToTray);
    std::vector<std::unique_ptr<OwnedProcess>> starts;
    for (int i = 0; i < 20; ++i)
        starts.push_back(program.startAnother());
    const auto running = [&starts] {
        return std::ranges::count_if(
            starts, [](const auto &start) { return start->state() == QProcess::Running; });
    };
    QTRY_COMPARE_WITH_TIMEOUT(running(), 1, 60000);
    for (const auto &start : starts) {
        if (start->state() == QProcess::Running)
            QTRY_COMPARE(desktop.screen().windows(start->processId()).size(), 1);
        else
            QVERIFY(endsSilently(*start));
    }
    QVERIFY(program.hasStore());
}

void SecondStartTest::otherStoresAreApart()
{
    FirstProgram running;
    Program other(running.desktop);
    other.start();
    QVERIFY(other.isActive());
    QVERIFY(running.program.isRunning());
    QVERIFY(running.program.window().isShown());
}

void SecondStartTest::theStartOfALauncherComesToItsEnd()
{
    FirstProgram running;
    Program other(running.desktop);
    other.start();
    QVERIFY(other.isActive());
    StartupMessages messages(running.desktop.screen());
    const auto second
        = running.program.startAnother({{u"DESKTOP_STARTUP_ID"_s, u"a \"launcher\"_TIME0"_s}});
    QVERIFY(endsSilently(*second));
    QVERIFY(running.program.isActive());
    using namespace std::string_view_literals;
    constexpr auto removal = "remove: ID=\"a \\\"launcher\\\"_TIME0\"\0"sv;
    QTRY_VERIFY2(messages.text().contains(QByteArrayView(removal)), messages.text().constData());
}

TOVAN_GUILESS_TEST(secondstart_test, SecondStartTest)
#include "secondstart_test.moc"
