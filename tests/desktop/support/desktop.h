#pragma once

#include "tests/desktop/support/ownedprocess.h"
#include "tests/desktop/support/screen.h"

#include <QDBusConnection>
#include <QProcessEnvironment>
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
    explicit Desktop(Part part = Everything);
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
    void act(const QString &arguments) const;

private:
    QTemporaryDir m_folder;
    OwnedProcess m_server;
    OwnedProcess m_manager;
    OwnedProcess m_bus;
    QString m_busAddress;
    QStringList m_connections; ///< of the test to the bus
    QProcessEnvironment m_environment;
    std::unique_ptr<Screen> m_screen;
};
