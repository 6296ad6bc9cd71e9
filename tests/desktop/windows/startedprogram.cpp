#include "tests/desktop/windows/startedprogram.h"

#include "tests/desktop/support/windowlayout.h"
#include "tests/support/patience.h"

#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize miniSize(220, 92); // what tells the mini monitor from the window

QSettings openedStore()
{
    return QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s);
}

HWND findWindow(DWORD pid, bool mini)
{
    const auto windows = allWindows(pid);
    for (HWND window : windows) {
        const QSize size = windowGeometry(window).size();
        if (IsWindowVisible(window) && size.width() >= miniSize.width()
            && size.height() >= miniSize.height() && (size == miniSize) == mini
            && window != visibleWindow(pid, u"Popup"_s))
            return window;
    }
    return nullptr;
}

} // namespace

StartedProgram::StartedProgram(const std::function<void(AppSettings &)> &change)
{
    m_seeded.settings.refreshIntervalMs = numberSetting(&AppSettings::refreshIntervalMs).low;
    m_seeded.rules.insert(u"application"_s, {true, false, true, u"High"_s, 77, 88});
    change(m_seeded.settings);
    removeStore();
    auto store = openedStore();
    writeStore(store, m_seeded);
}

StartedProgram::~StartedProgram()
{
    m_process.kill();
    m_process.waitForFinished();
}

void StartedProgram::start()
{
    m_process.start(qEnvironmentVariable("TOVAN_PROGRAM"), QStringList());
    if (!m_process.waitForStarted())
        qFatal("the program does not start");
}

bool StartedProgram::startAnotherToItsEnd() const
{
    QProcess another;
    another.start(m_process.program(), QStringList());
    return another.waitForFinished(patience) && another.exitStatus() == QProcess::NormalExit
        && another.exitCode() == 0;
}

bool StartedProgram::endsWell()
{
    return QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, patience)
        && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

HWND StartedProgram::window() const
{
    return findWindow(pid(), false);
}

HWND StartedProgram::mini() const
{
    return findWindow(pid(), true);
}

HWND StartedProgram::menu() const
{
    return visibleWindow(pid(), u"Popup"_s);
}

bool StartedProgram::isActive() const
{
    constexpr QPoint titleBar(600, 17);
    const QColor titleBarColour(0x0e, 0x13, 0x24);
    return QTest::qWaitFor(
        [&] {
            return window() && GetForegroundWindow() == window()
                && !boundsOnScreen(titleBarColour, {geometry().topLeft() + titleBar, QSize(1, 1)})
                        .isEmpty();
        },
        patience);
}

bool StartedProgram::hides() const
{
    return clickOnScreen(geometry().topLeft() + closeButton, [this] { return !window(); });
}

bool StartedProgram::choose(std::initializer_list<WORD> keys) const
{
    if (!clickOnScreen(
            lastTrayIcon(), [this] { return menu() && hasKeyboard(pid()); }, Qt::RightButton))
        return false;
    pressKeys(keys);
    return QTest::qWaitFor([this] { return !menu(); }, patience);
}

bool StartedProgram::ticks()
{
    // The next save may belong to a tick that is under way.
    for (int save = 0; save < 2; ++save) {
        openedStore().remove(u"dayKey"_s);
        const auto isSaved = [] { return openedStore().contains(u"dayKey"_s); };
        if (!QTest::qWaitFor(isSaved, patience))
            return false;
    }
    return m_process.state() == QProcess::Running;
}

StoredState StartedProgram::stored()
{
    auto store = openedStore();
    return readStore(store, QDate());
}

bool StartedProgram::storeIsWhole() const
{
    const StoredState state = stored();
    return state.settings == m_seeded.settings && state.rules == m_seeded.rules;
}

void StartedProgram::removeStore()
{
    openedStore().clear();
}
