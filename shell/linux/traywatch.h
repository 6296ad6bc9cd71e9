#pragma once

#include <QAbstractNativeEventFilter>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>

#include <functional>
#include <xcb/xcb.h>

/// Waits for a tray of either kind: a StatusNotifierItem host on the session bus, which is asked
/// for first, or an owner of the X server's system tray selection. Deletes itself when there is
/// one.
///
/// The toolkit decides for one kind when the first icon is made and never again: an icon that is
/// made before there is a tray would not be seen by a host that starts later.
class TrayWatch : public QObject, private QAbstractNativeEventFilter
{
public:
    TrayWatch(QObject *context, std::function<void()> callback);

private:
    /// Asks the watcher of the session bus whether it has a host.
    void askForHost();
    /// Looks for the selection's owner, where there is an X server, and for those to come.
    void lookForSelection();
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void trayIsReady();

    std::function<void()> m_callback;
    QDBusServiceWatcher m_watcherService;
    QTimer m_askAgain;
    xcb_connection_t *m_xServer = nullptr; ///< null where the screen is not the X server's
    xcb_atom_t m_manager = XCB_ATOM_NONE; ///< what new owners of selections announce
    xcb_atom_t m_selection = XCB_ATOM_NONE;
};
