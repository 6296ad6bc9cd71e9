#pragma once

#include "settings/settingsstore.h"
#include "tests/desktop/windows/desktopscreen.h"

#include <QProcess>

#include <functional>
#include <memory>

/// The program itself, as a process on this desktop, with the store of this user: it is for users
/// who have nothing to lose (on-screen.sh makes one).
class StartedProgram
{
public:
    /// Its store has a rule, and an interval between ticks as short as can be; `change` is what
    /// else differs from the defaults.
    explicit StartedProgram(const std::function<void(AppSettings &)> &change = [](auto &) {});
    /// Ends it by force where it still runs.
    ~StartedProgram();
    Q_DISABLE_COPY_MOVE(StartedProgram)

    /// Starts it and waits until it ticks.
    void start();
    /// Starts another process of it, and waits until that has ended; whether it did so well.
    bool startAnotherToItsEnd() const;
    DWORD pid() const { return static_cast<DWORD>(m_process.processId()); }
    /// Waits until it ends and tells whether it did so by itself and without an error.
    bool endsWell();

    HWND window() const; ///< null while it is hidden
    HWND mini() const; ///< likewise
    HWND menu() const; ///< null when none is open
    QRect geometry() const { return windowGeometry(window()); }
    /// Waits until the window is on the screen and has the keyboard.
    bool isActive() const;
    /// Clicks the button that closes the window, and waits until it is hidden.
    bool hides() const;
    /// Opens the menu of its tray icon and presses keys that close it.
    bool choose(std::initializer_list<WORD> keys) const;

    /// Waits for the save of a tick that begins after this call.
    bool ticks();
    /// What its store holds now.
    static StoredState stored();
    /// Whether the store has all that was written to it before the start, but for usage.
    bool storeIsWhole() const;
    static void removeStore();

private:
    StoredState m_seeded;
    QProcess m_process;
};
