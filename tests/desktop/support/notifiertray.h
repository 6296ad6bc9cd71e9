#pragma once

#include <QColor>
#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>

/// One entry of a menu as it is told over the bus.
struct TrayEntry
{
    int id = 0;
    QString text; ///< "-" for a separator
    int checked = -1; ///< 0 or 1; -1 when it cannot be checked
    QList<TrayEntry> children;

    /// The entry of this text in this menu, which must have one.
    const TrayEntry &child(const QString &name) const;
    QStringList texts() const;
};

/// A tray of the StatusNotifierItem kind: the watcher that icons register at, and their host.
/// Speaks com.canonical.dbusmenu to the icons' menus.
class NotifierTray : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    enum Part {
        Everything,
        NoHost, ///< nothing shows icons until addHost()
    };
    /// Announces itself on the bus, until it is gone.
    explicit NotifierTray(QDBusConnection bus, Part part = Everything);
    ~NotifierTray() override;

    void addHost();

    bool hasHost() const { return m_hasHost; }
    int protocolVersion() const { return 0; }

    /// Names of the icons on the bus.
    QStringList icons() const { return m_icons; }
    /// One property of the first icon; invalid when it has none.
    QVariant iconProperty(const QString &name);
    /// All texts of the first icon's tool tip, run together.
    QString toolTip();
    /// Colour of the first icon's picture of that size; invalid when there is none.
    QColor iconColour(int size, QPoint position);
    /// Clicks the first icon: "Activate", "SecondaryActivate" or "ContextMenu".
    void click(const QString &method);
    /// The first icon's menu, read anew.
    TrayEntry menu();
    /// Chooses an entry of that menu.
    void choose(const TrayEntry &entry);

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &service);

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierHostRegistered();

private:
    /// Asks an icon and answers the bus meanwhile.
    QVariantList ask(const QString &path, const QString &interface, const QString &method,
                     const QVariantList &arguments);

    QDBusConnection m_bus;
    bool m_hasHost;
    QStringList m_icons;
};
