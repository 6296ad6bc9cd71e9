#include "shell/linux/traywatch.h"

#include "shell/linux/xatom.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

template <typename T> struct Free
{
    void operator()(T *reply) const { std::free(reply); }
};
template <typename T> using Reply = std::unique_ptr<T, Free<T>>;

} // namespace

TrayWatch::TrayWatch(QObject *context, std::function<void()> callback)
    : QObject(context),
      m_callback(std::move(callback))
{
    if (auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        m_xServer = x11->connection();
        m_manager = internAtom(m_xServer, "MANAGER");
        m_selection = internAtom(m_xServer, "_NET_SYSTEM_TRAY_S0");
    }

    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        lookForSelection();
        return;
    }
    m_watcherService.setConnection(bus);
    m_watcherService.setWatchMode(QDBusServiceWatcher::WatchForRegistration);
    m_watcherService.addWatchedService(watcherService);
    connect(&m_watcherService, &QDBusServiceWatcher::serviceRegistered, this,
            [this] { askForHost(); });

    // A watcher may be there before its host. The bus needs a slot to call, which a timer has.
    m_askAgain.setSingleShot(true);
    m_askAgain.setInterval(0);
    connect(&m_askAgain, &QTimer::timeout, this, [this] { askForHost(); });
    bus.connect(watcherService, watcherPath, watcherService, u"StatusNotifierHostRegistered"_s,
                &m_askAgain, SLOT(start()));
    askForHost();
}

void TrayWatch::askForHost()
{
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                   u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherService << u"IsStatusNotifierHostRegistered"_s;
    auto *answer
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (reply.isValid() && reply.value().variant().toBool())
            trayIsReady();
        else
            lookForSelection();
    });
}

void TrayWatch::lookForSelection()
{
    if (!m_xServer)
        return;
    // The toolkit has selected the root window's structure events, which announcements come as.
    QCoreApplication::instance()->installNativeEventFilter(this);
    const auto cookie = xcb_get_selection_owner(m_xServer, m_selection);
    const Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(m_xServer, cookie, nullptr));
    if (reply && reply->owner != XCB_WINDOW_NONE)
        trayIsReady();
}

bool TrayWatch::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    constexpr int sentBySomeone = 0x80;
    if ((event->response_type & ~sentBySomeone) != XCB_CLIENT_MESSAGE)
        return false;
    const auto *announcement = static_cast<const xcb_client_message_event_t *>(message);
    if (announcement->type == m_manager && announcement->data.data32[1] == m_selection) {
        // The toolkit hears of the new tray after this, and would take a balloon away again.
        QMetaObject::invokeMethod(
            this, [this] { trayIsReady(); }, Qt::QueuedConnection);
    }
    return false;
}

void TrayWatch::trayIsReady()
{
    if (m_callback)
        std::exchange(m_callback, nullptr)();
    deleteLater();
}
