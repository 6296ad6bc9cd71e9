#include "tests/desktop/support/embeddingtray.h"

#include "tests/support/xcbrequests.h"

#include <QSocketNotifier>

#include <array>

namespace {

constexpr std::uint16_t side = 24;

} // namespace

EmbeddingTray::EmbeddingTray(const QString &display)
    : m_connection(xcb_connect(display.toLatin1(), nullptr))
{
    if (xcb_connection_has_error(m_connection))
        qFatal("no X server at %s", qPrintable(display));
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_root = screen->root;
    m_socket = xcb_generate_id(m_connection);
    // No window manager moves it.
    const std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_socket, m_root, 0, 0, side, side, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(m_connection, m_socket);

    m_opcode = internAtom(m_connection, "_NET_SYSTEM_TRAY_OPCODE");
    const xcb_atom_t selection = internAtom(m_connection, "_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(m_connection, m_socket, selection, XCB_CURRENT_TIME);
    xcb_client_message_event_t announcement{};
    announcement.response_type = XCB_CLIENT_MESSAGE;
    announcement.format = 32;
    announcement.window = m_root;
    announcement.type = internAtom(m_connection, "MANAGER");
    announcement.data.data32[0] = XCB_CURRENT_TIME;
    announcement.data.data32[1] = selection;
    announcement.data.data32[2] = m_socket;
    xcb_send_event(m_connection, 0, m_root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&announcement));
    xcb_flush(m_connection);

    auto *events
        = new QSocketNotifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read, this);
    connect(events, &QSocketNotifier::activated, this, [this] { handleEvents(); });
}

EmbeddingTray::~EmbeddingTray()
{
    // What a tray that ends has embedded goes back to where it came from (XEmbed Protocol).
    if (hasIcon())
        xcb_reparent_window(m_connection, m_icon, m_root, 0, 0);
    xcb_flush(m_connection);
    xcb_disconnect(m_connection);
}

void EmbeddingTray::handleEvents()
{
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
        const int type = event->response_type & ~0x80;
        if (type == XCB_DESTROY_NOTIFY
            && reinterpret_cast<xcb_destroy_notify_event_t *>(event.get())->window == m_icon)
            m_icon = XCB_WINDOW_NONE;
        if (type != XCB_CLIENT_MESSAGE)
            continue;
        const auto *message = reinterpret_cast<xcb_client_message_event_t *>(event.get());
        constexpr std::uint32_t requestDock = 0;
        if (message->type != m_opcode || message->data.data32[1] != requestDock)
            continue;
        m_icon = message->data.data32[2];
        const std::array<std::uint32_t, 2> size{side, side};
        xcb_configure_window(m_connection, m_icon,
                             XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
        xcb_reparent_window(m_connection, m_icon, m_socket, 0, 0);
        xcb_map_window(m_connection, m_icon);
        xcb_flush(m_connection);
    }
}
