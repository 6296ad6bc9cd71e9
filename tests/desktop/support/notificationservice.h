#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

/// A desktop's notification service (Desktop Notifications Specification 1.2).
class NotificationService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    /// Announces itself on the bus, until it is gone.
    explicit NotificationService(QDBusConnection bus);
    ~NotificationService() override;

    /// Titles of what was notified, the first one first.
    QStringList titles() const { return m_titles; }

public Q_SLOTS:
    Q_SCRIPTABLE uint Notify(const QString &program, uint replacedId, const QString &icon,
                             const QString &title, const QString &text, const QStringList &actions,
                             const QVariantMap &hints, int timeout);

private:
    QDBusConnection m_bus;
    QStringList m_titles;
};
