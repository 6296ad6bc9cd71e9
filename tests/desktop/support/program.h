#pragma once

#include "settings/settingsstore.h"
#include "tests/desktop/support/desktop.h"

/// The program itself, with a settings store of its own, on a desktop of a test's.
class Program
{
public:
    /// Its store has a rule, and an interval between ticks as short as can be; `change` is what
    /// else differs from the defaults.
    explicit Program(
        Desktop &desktop, const std::function<void(AppSettings &)> &change = [](auto &) {});

    /// Starts it with the desktop's environment, and `more` of it.
    void start(const QHash<QString, QString> &more = {});
    /// Starts another process of it for the same store.
    std::unique_ptr<OwnedProcess> startAnother(const QHash<QString, QString> &more = {}) const;
    qint64 pid() const { return m_process.processId(); }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    /// Waits until it ends and tells whether it did so by itself and without an error.
    bool endsWell();
    void send(int signal) const;

    /// The window and the mini monitor; without an id when not on the screen.
    ManagedWindow window() const;
    ManagedWindow mini() const;
    /// Waits until the window is on the screen and has the keyboard.
    bool isActive() const;
    /// Clicks into the window, at a place relative to it.
    void click(QPoint place, int button = 1) const;

    /// Waits for the save of a tick that begins after this call.
    bool ticks();
    /// What its store holds now.
    StoredState stored() const;
    /// Whether the store has all that was written to it before the start, but for usage.
    bool storeIsWhole() const;
    void removeStore() { QFile::remove(storePath()); }
    bool hasStore() const { return QFile::exists(storePath()); }

private:
    QString storePath() const;
    ManagedWindow find(bool (*hasSize)(QSize)) const;

    Desktop &m_desktop;
    QTemporaryDir m_folder;
    StoredState m_seeded;
    OwnedProcess m_process;
};

/// Waits until a process ends and tells whether it did so by itself, without an error and without a
/// word.
bool endsSilently(OwnedProcess &process);
