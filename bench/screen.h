#pragma once

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

/// A display as its server sees it: which windows are shown, and what they look like. Ends the
/// benchmark when something awaited does not come.
class Screen
{
public:
    /// Connects to the display of the environment and waits for its window manager.
    Screen();

    /// Process of the server.
    pid_t server() const;
    /// Waits until a large part of one line across the windows has the colour, given as 0xrrggbb.
    /// Each change of the screen is looked at when it is announced.
    void awaitColour(std::uint32_t colour);
    /// Waits until no part of that line has it.
    void awaitNoColour(std::uint32_t colour);
    /// Waits until a window of the process is shown, and returns it.
    xcb_window_t awaitWindow(pid_t pid);
    /// Asks for the window's end as the window manager's close button does, and waits until it is
    /// no longer shown.
    void closeWindow(xcb_window_t window);

private:
    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    std::uint32_t numberProperty(xcb_window_t window, xcb_atom_t name);
    bool isViewable(xcb_window_t window);
    xcb_window_t shownWindowBelow(xcb_window_t window, pid_t pid);
    int pixelsOf(std::uint32_t colour);
    /// Returns as soon as the condition holds, which is tried again at each event.
    void await(const char *what, const std::function<bool()> &holds);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    const xcb_screen_t *m_screen = nullptr;
    xcb_atom_t m_processId = XCB_ATOM_NONE;
};
