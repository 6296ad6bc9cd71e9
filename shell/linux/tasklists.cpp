#include "shell/tasklists.h"

#include "shell/linux/xatom.h"

#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

void leaveOutOfTaskLists(const QWidget &window)
{
    // Another platform may know the X server too, but its windows are not there.
    if (QGuiApplication::platformName() != "xcb"_L1)
        return;
    // Some task bars leave out utility windows only of another window. This one has none, since it
    // would be minimised along with it. While the window is not shown its states are its own to
    // write (Extended Window Manager Hints 1.5, _NET_WM_STATE), and the toolkit adds to them.
    xcb_connection_t *xServer
        = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const xcb_atom_t state = internAtom(xServer, "_NET_WM_STATE_SKIP_TASKBAR");
    xcb_change_property(xServer, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        internAtom(xServer, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, 1, &state);
}
