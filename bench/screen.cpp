#include "bench/screen.h"

#include "tests/support/xcbrequests.h"

#include <poll.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

namespace {

[[noreturn]] void displayFailed(const char *what)
{
    std::fprintf(stderr, "display: %s\n", what);
    std::exit(1);
}

} // namespace

Screen::Screen() : m_connection(xcb_connect(nullptr, nullptr))
{
    xcb_connection_t *connection = m_connection.get();
    if (xcb_connection_has_error(connection) != 0)
        displayFailed("no connection");
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    m_processId = internAtom(connection, "_NET_WM_PID");

    XcbReply<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
        connection, xcb_damage_query_version(connection, 1, 1), nullptr));
    if (!version)
        displayFailed("no damage extension");
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY
        | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, m_screen->root, XCB_CW_EVENT_MASK, &events);
    xcb_damage_create(connection, xcb_generate_id(connection), m_screen->root,
                      XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    const xcb_atom_t manager = internAtom(connection, "_NET_SUPPORTING_WM_CHECK");
    await("no window manager", [&] { return numberProperty(m_screen->root, manager) != 0; });
}

pid_t Screen::server() const
{
    ucred credentials{};
    socklen_t length = sizeof credentials;
    const int socket = xcb_get_file_descriptor(m_connection.get());
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0)
        displayFailed("its server is not known");
    return credentials.pid;
}

void Screen::awaitColour(std::uint32_t colour)
{
    // An eighth of the width is less than the sidebar, which has the colour in the program's
    // window, and more than any text or frame that happens to have it too.
    await("the window is not painted",
          [&] { return pixelsOf(colour) >= m_screen->width_in_pixels / 8; });
}

void Screen::awaitNoColour(std::uint32_t colour)
{
    await("the window does not go away", [&] { return pixelsOf(colour) == 0; });
}

xcb_window_t Screen::awaitWindow(pid_t pid)
{
    xcb_window_t window = XCB_WINDOW_NONE;
    await("no window is shown", [&] {
        window = shownWindowBelow(m_screen->root, pid);
        return window != XCB_WINDOW_NONE;
    });
    return window;
}

void Screen::closeWindow(xcb_window_t window)
{
    askToClose(m_connection.get(), window);
    await("the window stays", [&] { return !isViewable(window); });
}

std::uint32_t Screen::numberProperty(xcb_window_t window, xcb_atom_t name)
{
    xcb_connection_t *connection = m_connection.get();
    XcbReply<xcb_get_property_reply_t> answer(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, name, XCB_ATOM_ANY, 0, 1), nullptr));
    std::uint32_t number = 0;
    if (answer && answer->format == 32 && xcb_get_property_value_length(answer.get()) >= 4)
        std::memcpy(&number, xcb_get_property_value(answer.get()), sizeof number);
    return number;
}

bool Screen::isViewable(xcb_window_t window)
{
    xcb_connection_t *connection = m_connection.get();
    XcbReply<xcb_get_window_attributes_reply_t> answer(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), nullptr));
    return answer && answer->map_state == XCB_MAP_STATE_VIEWABLE;
}

xcb_window_t Screen::shownWindowBelow(xcb_window_t window, pid_t pid)
{
    xcb_connection_t *connection = m_connection.get();
    XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    if (!tree)
        return XCB_WINDOW_NONE;
    const std::span children(xcb_query_tree_children(tree.get()),
                             static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    for (const xcb_window_t child : children) {
        if (numberProperty(child, m_processId) == static_cast<std::uint32_t>(pid)
            && isViewable(child))
            return child;
        if (const xcb_window_t found = shownWindowBelow(child, pid); found != XCB_WINDOW_NONE)
            return found;
    }
    return XCB_WINDOW_NONE;
}

int Screen::pixelsOf(std::uint32_t colour)
{
    xcb_connection_t *connection = m_connection.get();
    // Below the texts of the sidebar.
    const auto line = static_cast<std::int16_t>(m_screen->height_in_pixels * 2 / 3);
    XcbReply<xcb_get_image_reply_t> image(
        xcb_get_image_reply(connection,
                            xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root, 0,
                                          line, m_screen->width_in_pixels, 1, ~0U),
                            nullptr));
    if (!image || image->depth != 24)
        displayFailed("its pixels cannot be read");
    const std::span bytes(xcb_get_image_data(image.get()),
                          static_cast<std::size_t>(xcb_get_image_data_length(image.get())));
    int found = 0;
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, &bytes[at], sizeof pixel);
        if ((pixel & 0xffffff) == colour)
            ++found;
    }
    return found;
}

void Screen::await(const char *what, const std::function<bool()> &holds)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(30);
    xcb_connection_t *connection = m_connection.get();
    for (;;) {
        // What has happened until now is looked at once. An event that comes while it is looked at
        // may already be in the library's queue, where poll() does not see it.
        while (XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) { }
        if (holds())
            return;
        if (const XcbReply<xcb_generic_event_t> next{xcb_poll_for_queued_event(connection)})
            continue;
        const auto left
            = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd readable{xcb_get_file_descriptor(connection), POLLIN, 0};
        if (left.count() <= 0 || ::poll(&readable, 1, static_cast<int>(left.count())) == 0
            || xcb_connection_has_error(connection) != 0)
            displayFailed(what);
    }
}
