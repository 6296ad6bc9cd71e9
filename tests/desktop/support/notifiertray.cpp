#include "tests/desktop/support/notifiertray.h"

#include "tests/support/patience.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QtEndian>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;
const QString itemInterface = u"org.kde.StatusNotifierItem"_s;
const QString itemPath = u"/StatusNotifierItem"_s;
const QString menuInterface = u"com.canonical.dbusmenu"_s;

TrayEntry readEntry(const QDBusArgument &layout)
{
    TrayEntry entry;
    QVariantMap properties;
    QVariantList children;
    layout.beginStructure();
    layout >> entry.id >> properties >> children;
    layout.endStructure();

    entry.text = properties.value(u"type"_s) == u"separator"_s
        ? u"-"_s
        : properties.value(u"label"_s).toString();
    if (properties.contains(u"toggle-type"_s))
        entry.checked = properties.value(u"toggle-state"_s).toInt();
    for (const QVariant &child : std::as_const(children))
        entry.children.append(readEntry(child.value<QDBusArgument>()));
    return entry;
}

} // namespace

const TrayEntry &TrayEntry::child(const QString &name) const
{
    for (const TrayEntry &entry : children) {
        if (entry.text == name)
            return entry;
    }
    qFatal("no tray entry \"%s\"", qPrintable(name));
}

QStringList TrayEntry::texts() const
{
    QStringList texts;
    for (const TrayEntry &entry : children)
        texts.append(entry.text);
    return texts;
}

NotifierTray::NotifierTray(QDBusConnection bus, Part part)
    : m_bus(std::move(bus)),
      m_hasHost(part == Everything)
{
    auto *gone = new QDBusServiceWatcher(u"org.kde.StatusNotifierItem*"_s, m_bus,
                                         QDBusServiceWatcher::WatchForUnregistration, this);
    connect(gone, &QDBusServiceWatcher::serviceUnregistered, this,
            [this](const QString &service) { m_icons.removeAll(service); });
    if (!m_bus.registerObject(watcherPath, this,
                              QDBusConnection::ExportScriptableContents
                                  | QDBusConnection::ExportAllProperties)
        || !m_bus.registerService(watcherService))
        qFatal("the tray cannot be announced");
}

NotifierTray::~NotifierTray()
{
    m_bus.unregisterService(watcherService);
    m_bus.unregisterObject(watcherPath);
}

void NotifierTray::addHost()
{
    m_hasHost = true;
    Q_EMIT StatusNotifierHostRegistered();
}

void NotifierTray::RegisterStatusNotifierItem(const QString &service)
{
    if (!m_icons.contains(service))
        m_icons.append(service);
}

QVariantList NotifierTray::ask(const QString &path, const QString &interface, const QString &method,
                               const QVariantList &arguments)
{
    auto question = QDBusMessage::createMethodCall(m_icons.value(0), path, interface, method);
    question.setArguments(arguments);
    const QDBusPendingCallWatcher answer(m_bus.asyncCall(question));
    if (!QTest::qWaitFor([&answer] { return answer.isFinished(); }, patience))
        qFatal("%s is not answered", qPrintable(method));
    if (answer.isError())
        qFatal("%s: %s", qPrintable(method), qPrintable(answer.error().message()));
    return answer.reply().arguments();
}

QVariant NotifierTray::iconProperty(const QString &name)
{
    return ask(itemPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {itemInterface, name})
        .at(0)
        .value<QDBusVariant>()
        .variant();
}

QString NotifierTray::toolTip()
{
    // A structure of icon name, pictures, title and text.
    const auto toolTip = iconProperty(u"ToolTip"_s).value<QDBusArgument>();
    QString iconName;
    QString title;
    QString text;
    toolTip.beginStructure();
    toolTip >> iconName;
    toolTip.asVariant();
    toolTip >> title >> text;
    toolTip.endStructure();
    return iconName + title + text;
}

QColor NotifierTray::iconColour(int size, QPoint position)
{
    // Pictures of several sizes: width, height, and pixels in network byte order.
    const auto pictures = iconProperty(u"IconPixmap"_s).value<QDBusArgument>();
    QColor colour;
    pictures.beginArray();
    while (!pictures.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray pixels;
        pictures.beginStructure();
        pictures >> width >> height >> pixels;
        pictures.endStructure();
        if (width == size && height == size) {
            const int pixel = position.y() * width + position.x();
            colour = QColor::fromRgba(
                qFromBigEndian<quint32>(pixels.constData() + qsizetype{4} * pixel));
        }
    }
    pictures.endArray();
    return colour;
}

void NotifierTray::click(const QString &method)
{
    ask(itemPath, itemInterface, method, {0, 0});
}

TrayEntry NotifierTray::menu()
{
    const QString path = iconProperty(u"Menu"_s).value<QDBusObjectPath>().path();
    const QVariantList layout = ask(path, menuInterface, u"GetLayout"_s, {0, -1, QStringList()});
    return readEntry(layout.at(1).value<QDBusArgument>());
}

void NotifierTray::choose(const TrayEntry &entry)
{
    const QString path = iconProperty(u"Menu"_s).value<QDBusObjectPath>().path();
    const auto none = QVariant::fromValue(QDBusVariant(0));
    ask(path, menuInterface, u"Event"_s, {entry.id, u"clicked"_s, none, 0U});
}
