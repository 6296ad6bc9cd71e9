#include "tests/desktop/support/windowlayout.h"
#include "tests/desktop/windows/startedprogram.h"
#include "tests/support/testmain.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace {

const QColor tableColour(0x0e, 0x13, 0x24); ///< of every other row
const QColor otherRowColour(0x11, 0x18, 0x2b);
const QColor textColour(0xe8, 0xee, 0xfc);
const QColor checkBoxColour(0x09, 0x0d, 0x19);
const QColor wordmarkColour(0xf4, 0xf7, 0xff);

// Places in the window.
constexpr QRect topWordmark(220, 40, 90, 40);
constexpr QRect sideWordmark(20, 56, 170, 70);
constexpr QRect appsTable(218, 250, 600, 520);
constexpr std::pair blockColumn(706, 753); ///< from left to right
constexpr QRect infoView(820, 250, 360, 250);
constexpr QPoint trayMark(-4, 4); ///< from an icon's middle into the left half of the mark

/// A copy of the helper that owns known sockets, where its path is short.
class SocketOwner
{
public:
    SocketOwner()
    {
        QDir().mkpath(u"C:/owner"_s);
        QFile::copy(QCoreApplication::applicationDirPath() + u"/tovan_socket_owner.exe"_s, path);
        process.start(path, QStringList());
        if (!process.waitForStarted() || !process.waitForReadyRead(patience))
            qFatal("no process owns sockets");
    }
    ~SocketOwner()
    {
        process.closeWriteChannel();
        process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(SocketOwner)

private:
    const QString path = u"C:/owner/owner.exe"_s;
    QProcess process;
};

/// Sends so many octets over the cable, as one packet; its headers have 42 more.
void sendOverCable(int octets)
{
    WSADATA data{};
    QCOMPARE(WSAStartup(MAKEWORD(1, 1), &data), 0);
    const SOCKET socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(9);
    address.sin_addr.s_addr = inet_addr("192.0.2.2");
    const QByteArray packet(octets, 'x');
    QCOMPARE(sendto(socket, packet.constData(), octets, 0,
                    reinterpret_cast<const sockaddr *>(&address), sizeof address),
             octets);
    closesocket(socket);
    WSACleanup();
}

void closeToTray(AppSettings &settings)
{
    settings.closeToTray = true;
}

/// Nothing but its end makes a program save that is paused.
void pauseOnLaunch(AppSettings &settings)
{
    settings.closeToTray = true;
    settings.pauseOnLaunch = true;
}

/// Whether the program is up, in its window or in the tray, and its store is gone.
bool startsAndLosesItsStore(StartedProgram &program, bool hidden)
{
    program.start();
    const bool isUp = program.isActive() && (!hidden || program.hides());
    StartedProgram::removeStore();
    return isUp;
}

} // namespace

/// The whole program, driven by mouse and keys.
class ProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theImagesAreDrawn();
    void aProcessWithSocketsIsListedWithItsPathAndIcon();
    void aRuleIsTickedWithAClick();
    void theRatesMoveWithTheTraffic();
    void theTrayHasIconMenuAndBalloon();
    void theCloseButtonHidesIntoTheTrayAndAClickBringsBack();
    void exitEndsTheProgram_data();
    void exitEndsTheProgram();
    void theEndOfTheSessionSavesAndEnds_data();
    void theEndOfTheSessionSavesAndEnds();
    void aSecondStartHasWhatWasStored();
    void aSecondProcessShowsTheFirstsWindow_data();
    void aSecondProcessShowsTheFirstsWindow();

private:
    /// Where the table shows the helper's name; its row is an even or an odd one.
    static QRect nameOfOwner(const StartedProgram &program)
    {
        const QRect area = appsTable.translated(program.geometry().topLeft());
        const QRect even = findOnScreen({u"owner.exe"_s, 12, textColour, tableColour}, area);
        return even.isEmpty() ? findOnScreen({u"owner.exe"_s, 12, textColour, otherRowColour}, area)
                              : even;
    }
    /// The check box in the row of the helper, below "Block".
    static QRect checkBoxOfOwner(const StartedProgram &program)
    {
        const QRect name = nameOfOwner(program);
        if (name.isEmpty())
            return {};
        const int left = program.geometry().left() + blockColumn.first;
        const int right = program.geometry().left() + blockColumn.second;
        return boundsOnScreen(checkBoxColour,
                              {QPoint(left, name.top()), QPoint(right, name.bottom())});
    }
    static bool miniReads(const StartedProgram &program, const QString &text)
    {
        return !findOnScreen({text, 15, QColor(0x80, 0xf8, 0xff), tableColour, QFont::Bold},
                             windowGeometry(program.mini()))
                    .isEmpty();
    }
};

void ProgramTest::initTestCase()
{
    QTRY_VERIFY(taskBar());
}

void ProgramTest::theImagesAreDrawn()
{
    StartedProgram program;
    program.start();
    QVERIFY(program.isActive());
    QVERIFY(program.ticks());
    for (const QRect &place : {topWordmark, sideWordmark}) {
        const QRect area = place.translated(program.geometry().topLeft());
        QTRY_VERIFY(boundsOnScreen(wordmarkColour, area).width() > area.width() / 2);
    }
}

void ProgramTest::aProcessWithSocketsIsListedWithItsPathAndIcon()
{
    const SocketOwner owner;
    StartedProgram program;
    program.start();
    QVERIFY(program.isActive());
    QTRY_VERIFY(!nameOfOwner(program).isEmpty());

    // Wine's icon for a program without one of its own is a white paper; the mark stands for a
    // program whose file is not known.
    const QRect name = nameOfOwner(program);
    const QRect icon(name.left() - 22, name.top() - 2, 18, 18);
    QVERIFY(!boundsOnScreen(Qt::white, icon).isEmpty());
    QVERIFY(boundsOnScreen(markColour, icon).isEmpty());

    const QRect details = infoView.translated(program.geometry().topLeft());
    QVERIFY(clickOnScreen(name.center(), [&details] {
        const ScreenText path{u"Path: C:\\owner\\owner.exe"_s, 12, textColour, checkBoxColour};
        return !findOnScreen(path, details).isEmpty();
    }));
}

void ProgramTest::aRuleIsTickedWithAClick()
{
    const SocketOwner owner;
    StartedProgram program;
    program.start();
    QVERIFY(program.isActive());
    QTRY_VERIFY(!checkBoxOfOwner(program).isEmpty());
    QVERIFY(clickOnScreen(checkBoxOfOwner(program).center(), [] {
        return StartedProgram::stored().rules.value(u"owner.exe"_s).blocked;
    }));
    QVERIFY(!StartedProgram::stored().rules.value(u"owner.exe"_s).dlLimit);
}

void ProgramTest::theRatesMoveWithTheTraffic()
{
    StartedProgram program([](AppSettings &settings) {
        settings.miniWidgetEnabled = true;
        settings.startMinimized = true; // Wine's desktop does not keep it above the window
        settings.refreshIntervalMs = 5000; // as long as the rates of one packet are shown
    });
    program.start();
    QTRY_VERIFY(program.mini());
    QVERIFY(program.ticks());
    QTRY_VERIFY(miniReads(program, u"DL 0 B/s"_s) && miniReads(program, u"UL 0 B/s"_s));
    // What one end of the cable sends the other one receives.
    sendOverCable(900);
    QTRY_VERIFY(miniReads(program, u"DL 942 B/s"_s) && miniReads(program, u"UL 942 B/s"_s));
    QTRY_VERIFY(miniReads(program, u"DL 0 B/s"_s) && miniReads(program, u"UL 0 B/s"_s));
    QTRY_COMPARE(StartedProgram::stored().usage.todayBytes, 1884U);
}

void ProgramTest::theTrayHasIconMenuAndBalloon()
{
    StartedProgram program(closeToTray);
    const auto hasMark = [] {
        return !boundsOnScreen(markColour, {lastTrayIcon() + trayMark, QSize(1, 1)}).isEmpty();
    };
    QTRY_VERIFY(!hasMark());
    program.start();
    QVERIFY(program.isActive());
    QTRY_VERIFY(hasMark());
    QVERIFY(program.choose({VK_ESCAPE}));
    QVERIFY(!trayHasBalloon());
    QVERIFY(program.hides());
    QTRY_VERIFY(trayHasBalloon());
}

void ProgramTest::theCloseButtonHidesIntoTheTrayAndAClickBringsBack()
{
    StartedProgram program(closeToTray);
    program.start();
    QVERIFY(program.isActive());
    for (int round = 0; round < 2; ++round) {
        QVERIFY(program.hides());
        QVERIFY(program.ticks());
        QVERIFY(!program.window());
        QVERIFY(clickOnScreen(lastTrayIcon(), [&] { return program.window() != nullptr; }));
        QVERIFY(program.isActive());
    }
    QVERIFY(program.storeIsWhole());
}

void ProgramTest::exitEndsTheProgram_data()
{
    QTest::addColumn<bool>("hidden");
    QTest::newRow("visible") << false;
    QTest::newRow("hidden") << true;
}

void ProgramTest::exitEndsTheProgram()
{
    QFETCH(bool, hidden);
    StartedProgram program(pauseOnLaunch);
    QVERIFY(startsAndLosesItsStore(program, hidden));
    QVERIFY(program.choose({VK_UP, VK_RETURN})); // the last entry
    QVERIFY(program.endsWell());
    QVERIFY(program.storeIsWhole());
}

void ProgramTest::theEndOfTheSessionSavesAndEnds_data()
{
    exitEndsTheProgram_data();
}

void ProgramTest::theEndOfTheSessionSavesAndEnds()
{
    QFETCH(bool, hidden);
    StartedProgram program(pauseOnLaunch);
    QVERIFY(startsAndLosesItsStore(program, hidden));
    // What the system sends to every window when somebody logs off.
    const auto send = [&program](UINT message, WPARAM wParam) {
        bool agreed = true;
        const auto windows = allWindows(program.pid());
        for (HWND window : windows) {
            DWORD_PTR result = 0;
            SendMessageTimeoutW(window, message, wParam, ENDSESSION_LOGOFF, SMTO_NORMAL, patience,
                                &result);
            agreed = agreed && (message != WM_QUERYENDSESSION || result);
        }
        return agreed;
    };
    QVERIFY(send(WM_QUERYENDSESSION, 0));
    QVERIFY(program.storeIsWhole());
    send(WM_ENDSESSION, TRUE);
    QVERIFY(program.endsWell());
    QVERIFY(program.storeIsWhole());
}

void ProgramTest::aSecondStartHasWhatWasStored()
{
    StartedProgram program;
    program.start();
    QVERIFY(program.isActive());
    QVERIFY(!program.mini());
    QVERIFY(program.choose({VK_UP, VK_UP, VK_UP, VK_RETURN})); // the third from below
    QTRY_VERIFY(program.mini());
    QVERIFY(program.choose({VK_UP, VK_RETURN}));
    QVERIFY(program.endsWell());
    const StoredState stored = StartedProgram::stored();

    program.start();
    QVERIFY(program.isActive());
    QTRY_VERIFY(program.mini());
    QVERIFY(program.ticks());
    QVERIFY(StartedProgram::stored().settings == stored.settings);
    QVERIFY(StartedProgram::stored().rules == stored.rules);
}

void ProgramTest::aSecondProcessShowsTheFirstsWindow_data()
{
    QTest::addColumn<bool>("hidden");
    QTest::newRow("minimised") << false;
    QTest::newRow("hidden") << true;
}

void ProgramTest::aSecondProcessShowsTheFirstsWindow()
{
    QFETCH(bool, hidden);
    StartedProgram program(closeToTray);
    program.start();
    QVERIFY(program.isActive());
    if (hidden) {
        QVERIFY(program.hides());
    } else {
        HWND window = program.window();
        ShowWindow(window, SW_MINIMIZE);
        QTRY_VERIFY(IsIconic(window));
    }
    QVERIFY(program.startAnotherToItsEnd());
    QVERIFY(program.isActive());
    QVERIFY(program.ticks());
    QVERIFY(program.storeIsWhole());
}

TOVAN_WIDGET_TEST(program_test, ProgramTest)
#include "program_test.moc"
