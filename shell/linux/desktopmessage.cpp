#include "shell/desktopmessage.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace {

// Desktop Notifications Specification 1.2
const QString notificationService = u"org.freedesktop.Notifications"_s;
const QString notificationPath = u"/org/freedesktop/Notifications"_s;

} // namespace

void offerToNotificationService(QObject *context, const DesktopMessage &message,
                                std::function<void()> refused)
{
    const bool warning = message.kind == DesktopMessage::Kind::Warning;
    constexpr uint replacesNone = 0;
    constexpr uchar normalUrgency = 1;
    constexpr uchar criticalUrgency = 2;
    auto call = QDBusMessage::createMethodCall(notificationService, notificationPath,
                                               notificationService, u"Notify"_s);
    call << QGuiApplication::applicationDisplayName() << replacesNone
         << (warning ? u"dialog-warning"_s : u"dialog-information"_s) << message.title
         << message.text << QStringList()
         << QVariantMap{{u"urgency"_s,
                         QVariant::fromValue(warning ? criticalUrgency : normalUrgency)}}
         << message.milliseconds;
    // Also starts a service that is not there but can be. Without a bus the answer is an error.
    auto *answer
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), context);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, context,
                     [answer, refused = std::move(refused)] {
                         answer->deleteLater();
                         if (answer->isError())
                             refused();
                     });
}

void whenNotificationServiceComes(QObject *context, std::function<void()> callback)
{
    auto *watcher = new QDBusServiceWatcher(notificationService, QDBusConnection::sessionBus(),
                                            QDBusServiceWatcher::WatchForRegistration, context);
    QObject::connect(watcher, &QDBusServiceWatcher::serviceRegistered, context,
                     [callback = std::move(callback)] { callback(); });
}
