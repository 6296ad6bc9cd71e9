#pragma once

#include <QMutex>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
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

/// A desktop of the test's own: an X server and a session bus, on which a host for tray icons and a
/// notification service come and go. Construct it before the application object, which it then is
/// shown on.
class TestDesktop
{
public:
    TestDesktop();
    ~TestDesktop();
    TestDesktop(const TestDesktop &) = delete;
    TestDesktop &operator=(const TestDesktop &) = delete;

    /// Prepares the services; needs the application object.
    void connect();

    enum class Service { Tray, Notifications };
    /// Announces the service on the bus, or takes it away.
    static void start(Service service);
    static void stop(Service service);

    /// What was notified since the last call.
    QList<DesktopNotification> takeNotifications();

private:
    QTemporaryDir m_folder;
    QProcess m_server;
    QProcess m_bus;
    QThread m_thread;
    std::unique_ptr<DesktopServices> m_services;
};
