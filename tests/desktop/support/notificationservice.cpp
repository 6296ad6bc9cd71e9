#include "tests/desktop/support/notificationservice.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString notificationService = u"org.freedesktop.Notifications"_s;
const QString notificationPath = u"/org/freedesktop/Notifications"_s;

} // namespace

NotificationService::NotificationService(QDBusConnection bus) : m_bus(std::move(bus))
{
    if (!m_bus.registerObject(notificationPath, this, QDBusConnection::ExportScriptableContents)
        || !m_bus.registerService(notificationService))
        qFatal("the notification service cannot be announced");
}

NotificationService::~NotificationService()
{
    m_bus.unregisterService(notificationService);
    m_bus.unregisterObject(notificationPath);
}

uint NotificationService::Notify(const QString & /*program*/, uint /*replacedId*/,
                                 const QString & /*icon*/, const QString &title,
                                 const QString & /*text*/, const QStringList & /*actions*/,
                                 const QVariantMap & /*hints*/, int /*timeout*/)
{
    m_titles.append(title);
    return static_cast<uint>(m_titles.size());
}
