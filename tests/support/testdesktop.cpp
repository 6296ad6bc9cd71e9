#include "tests/support/testdesktop.h"

#include "tests/support/sessionbus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;
const QString notificationService = u"org.freedesktop.Notifications"_s;
const QString notificationPath = u"/org/freedesktop/Notifications"_s;
const QString connectionName = u"desktop services"_s;

QString busName(TestDesktop::Service service)
{
    return service == TestDesktop::Service::Tray ? watcherService : notificationService;
}

/// Starts a process and returns the first line that it prints.
QByteArray startAndReadLine(QProcess &process, const QString &program, const QStringList &arguments)
{
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(20000))
            qFatal("%s does not answer", qPrintable(program));
    }
    return process.readLine().trimmed();
}

void endProcess(QProcess &process)
{
    process.terminate();
    process.waitForFinished();
}

} // namespace

/// Answers as a desktop does. Lives in a thread of its own: the toolkit waits for some answers in
/// the thread that asks.
class DesktopServices : public QDBusVirtualObject
{
public:
    QString introspect(const QString &path) const override
    {
        if (path != watcherPath)
            return {};
        return uR"(<interface name="org.kde.StatusNotifierWatcher">
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
</interface>)"_s;
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == "Get"_L1) {
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
            return true;
        }
        if (message.member() == "RegisterStatusNotifierItem"_L1) {
            connection.send(message.createReply());
            return true;
        }
        if (message.member() != "Notify"_L1)
            return false;
        const auto arguments = message.arguments();
        const QMutexLocker locker(&m_mutex);
        m_notifications.append({arguments.at(2).toString(), arguments.at(3).toString(),
                                arguments.at(4).toString(), arguments.at(7).toInt()});
        connection.send(message.createReply(static_cast<uint>(++m_lastId)));
        return true;
    }

    QList<DesktopNotification> take()
    {
        const QMutexLocker locker(&m_mutex);
        return std::exchange(m_notifications, {});
    }

private:
    QMutex m_mutex;
    QList<DesktopNotification> m_notifications;
    int m_lastId = 0;
};

TestDesktop::TestDesktop()
{
    const QByteArray display = startAndReadLine(m_server, u"Xvfb"_s,
                                                {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s,
                                                 u"1280x900x24"_s, u"-nolisten"_s, u"tcp"_s});
    const QByteArray bus = startAndReadLine(m_bus, u"dbus-daemon"_s,
                                            sessionBusArguments(m_folder.filePath(u"bus.conf"_s)));
    qputenv("DISPLAY", ':' + display);
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
    qputenv("QT_QPA_PLATFORM", "xcb");
}

TestDesktop::~TestDesktop()
{
    QDBusConnection::disconnectFromBus(connectionName);
    m_thread.quit();
    m_thread.wait();
    m_services.reset();
    endProcess(m_bus);
    endProcess(m_server);
}

void TestDesktop::connect()
{
    auto connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    m_services = std::make_unique<DesktopServices>();
    m_services->moveToThread(&m_thread);
    m_thread.start();
    if (!connection.registerVirtualObject(watcherPath, m_services.get())
        || !connection.registerVirtualObject(notificationPath, m_services.get()))
        qFatal("the services cannot be reached");
}

void TestDesktop::start(Service service)
{
    if (!QDBusConnection(connectionName).registerService(busName(service)))
        qFatal("the service cannot be announced");
}

void TestDesktop::stop(Service service)
{
    QDBusConnection(connectionName).unregisterService(busName(service));
}

QList<DesktopNotification> TestDesktop::takeNotifications()
{
    return m_services->take();
}
