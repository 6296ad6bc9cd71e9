#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

struct FreeXcbReply
{
    void operator()(void *reply) const { std::free(reply); }
};

/// What an xcb function has allocated for its caller; null when the request failed.
template <typename T> using XcbReply = std::unique_ptr<T, FreeXcbReply>;

/// The atom of this name; none when the server does not answer.
inline xcb_atom_t internAtom(xcb_connection_t *connection, std::string_view name)
{
    const auto cookie
        = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbReply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// Asks a window to close, as a window manager's button does (ICCCM, section 4.2.8.1).
inline void askToClose(xcb_connection_t *connection, xcb_window_t window)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = internAtom(connection, "WM_PROTOCOLS");
    message.data.data32[0] = internAtom(connection, "WM_DELETE_WINDOW");
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection, 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(connection);
}
