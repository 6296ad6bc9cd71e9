#pragma once

#include "tests/desktop/support/ownedprocess.h"
#include "tests/desktop/support/screen.h"

#include <QDBusConnection>
#include <QProcessEnvironment>
#include <QRect>
#include <QTemporaryDir>

#include <memory>
#include <optional>

/// A desktop of the test's own: an X server with a window manager, and a session bus.
class Desktop
{
public:
    enum Part {
        Everything,
        NoBus, ///< programs are told that there is no session bus
        NoWindowManager,
    };
    explicit Desktop(Part part = Everything, QSize screenSize = {1600, 1000});
    ~Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;

    Screen &screen() { return *m_screen; }
    /// A connection of the test to the session bus; each name is one connection.
    QDBusConnection bus(const QString &name);
    QString display() const { return m_environment.value(QStringLiteral("DISPLAY")); }
    /// What a program needs to be started on this desktop.
    QProcessEnvironment environment() const { return m_environment; }
    /// Runs xdotool with these arguments: pointer and keyboard of the desktop.
    void act(const QString &arguments) const { run(QStringLiteral("xdotool"), arguments); }
    /// Declares a part of the screen to be a monitor of that name. The first one takes the place of
    /// the one that is the whole screen.
    void addMonitor(const QString &name, QRect area, bool first = false) const;

private:
    /// Runs a program with these arguments, parted by blanks, to its end.
    void run(const QString &program, const QString &arguments) const;

    QTemporaryDir m_folder;
    OwnedProcess m_server;
    OwnedProcess m_manager;
    OwnedProcess m_bus;
    QString m_busAddress;
    QStringList m_connections; ///< of the test to the bus
    QProcessEnvironment m_environment;
    std::unique_ptr<Screen> m_screen;
};
