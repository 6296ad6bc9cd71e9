#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QRect>
#include <QStringList>

#include <xcb/xcb.h>

/// A window as the window manager lists it.
struct ManagedWindow
{
    xcb_window_t id = XCB_WINDOW_NONE;
    QString title;
    QRect geometry; ///< on the screen
    QStringList states; ///< _NET_WM_STATE, without that prefix
    QStringList types; ///< _NET_WM_WINDOW_TYPE, whole names

    bool isShown() const { return id != XCB_WINDOW_NONE && !isMinimized(); }
    bool isMaximized() const
    {
        return states.contains(QLatin1String("MAXIMIZED_VERT"))
            && states.contains(QLatin1String("MAXIMIZED_HORZ"));
    }
    bool isMinimized() const { return states.contains(QLatin1String("HIDDEN")); }
};

/// What is seen on an X screen (ICCCM, Extended Window Manager Hints 1.5).
class Screen
{
public:
    explicit Screen(const QString &display);
    ~Screen();
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    /// Windows of a process, the lowest first.
    QList<ManagedWindow> windows(qint64 pid);
    /// The window that has the keyboard. What a window manager calls active may be a window that is
    /// still on the way to its place.
    xcb_window_t focusedWindow();
    /// Geometry of a process's topmost menu, which is no managed window; empty when there is none.
    QRect menu(qint64 pid);
    /// Geometry of a process's topmost tool tip or balloon; empty when there is none. An icon that
    /// no tray has embedded yet is none.
    QRect toolTip(qint64 pid);
    /// What an area of the screen shows; null when it is not within the screen.
    QImage picture(QRect area);
    QColor colourAt(QPoint position);
    /// The smallest rectangle that has all of the screen's pixels of that colour.
    QRect boundsOf(QColor colour);
    /// Size of a window's largest icon; empty when it has none.
    QSize largestIcon(xcb_window_t window);
    /// Asks a window to close, as a window manager's button does.
    void askToClose(xcb_window_t window);

    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    xcb_atom_t atom(const QByteArray &name);

private:
    QByteArray property(xcb_window_t window, const QByteArray &name);
    template <typename T> QList<T> values(xcb_window_t window, const QByteArray &name);
    QString atomName(xcb_atom_t atom);
    QRect geometry(xcb_window_t window);
    QRect unmanaged(qint64 pid, const QByteArray &type);
    bool belongsTo(xcb_window_t window, qint64 pid);

    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    QHash<QByteArray, xcb_atom_t> m_atoms;
};
