#include "tests/desktop/support/desktop.h"

#include "tests/support/sessionbus.h"

using namespace Qt::StringLiterals;

Desktop::Desktop(Part part, QSize screenSize)
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    const QByteArray displayNumber = m_server.startAndReadLine(
        u"Xvfb"_s,
        {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s,
         u"%1x%2x24"_s.arg(screenSize.width()).arg(screenSize.height()), u"-nolisten"_s, u"tcp"_s});
    m_environment.insert(u"DISPLAY"_s, u':' + QString::fromLatin1(displayNumber));
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    // Without an address the library would look for a bus elsewhere, or start one.
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"disabled:"_s);
    for (const QString &name : {u"XDG_CONFIG_HOME"_s, u"XDG_CACHE_HOME"_s, u"XDG_RUNTIME_DIR"_s})
        m_environment.insert(name, m_folder.path());
    for (const QString &name :
         {u"SESSION_MANAGER"_s, u"WAYLAND_DISPLAY"_s, u"XDG_CURRENT_DESKTOP"_s})
        m_environment.remove(name);

    if (part != NoWindowManager) {
        m_manager.setProcessEnvironment(m_environment);
        m_manager.startAndReadLine(u"openbox"_s,
                                   {u"--sm-disable"_s, u"--startup"_s, u"echo managing"_s});
    }
    if (part != NoBus) {
        m_busAddress = QString::fromLatin1(m_bus.startAndReadLine(
            u"dbus-daemon"_s, sessionBusArguments(m_folder.filePath(u"bus.conf"_s))));
        m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_busAddress);
    }
    m_screen = std::make_unique<Screen>(display());
}

Desktop::~Desktop()
{
    for (const QString &connection : std::as_const(m_connections))
        QDBusConnection::disconnectFromBus(connection);
}

QDBusConnection Desktop::bus(const QString &name)
{
    const QString connection = m_busAddress + name;
    if (!m_connections.contains(connection))
        m_connections.append(connection);
    return QDBusConnection::connectToBus(m_busAddress, connection);
}

void Desktop::addMonitor(const QString &name, QRect area, bool first) const
{
    // Sizes in millimetres do not matter; Xvfb has one output, which is called "screen".
    run(u"xrandr"_s,
        u"--setmonitor %1 %2/300x%3/200+%4+%5 %6"_s.arg(name)
            .arg(area.width())
            .arg(area.height())
            .arg(area.x())
            .arg(area.y())
            .arg(first ? u"screen"_s : u"none"_s));
}

void Desktop::run(const QString &program, const QString &arguments) const
{
    OwnedProcess process;
    process.setProcessEnvironment(m_environment);
    process.start(program, arguments.split(u' '));
    if (!process.waitForFinished(20000) || process.exitCode() != 0)
        qFatal("%s %s failed", qPrintable(program), qPrintable(arguments));
}
