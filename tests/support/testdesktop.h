#pragma once

#include <QMutex>
#include <QProcess>
#include <QString>
#include <QThread>

#include <memory>

class DesktopServices;

/// One call of Notify (Desktop Notifications Specification 1.2).
struct DesktopNotification
{
    QString icon; ///< name of the icon
    QString title;
    QString text;
    int timeout = 0; ///< milliseconds

    bool operator==(const DesktopNotification &) const = default;
};

/// A desktop of the test's own: an X server, a session bus, and on it a host for tray icons and a
/// notification service. Construct it before the application object, which it then is shown on.
class TestDesktop
{
public:
    TestDesktop();
    ~TestDesktop();
    TestDesktop(const TestDesktop &) = delete;
    TestDesktop &operator=(const TestDesktop &) = delete;

    /// Announces the services on the bus; needs the application object.
    void startServices();

    /// What was notified since the last call.
    QList<DesktopNotification> takeNotifications();

private:
    QProcess m_server;
    QProcess m_bus;
    QThread m_thread;
    std::unique_ptr<DesktopServices> m_services;
};
