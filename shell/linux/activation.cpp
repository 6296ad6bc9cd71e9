#include "shell/activation.h"

#include "shell/linux/xatom.h"

#include <QGuiApplication>
#include <QWidget>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *startupIdVariable = "DESKTOP_STARTUP_ID";
constexpr const char *tokenVariable = "XDG_ACTIVATION_TOKEN";
constexpr char separator = '\n';

/// Messages of a window to whoever watches the root window.
class RootMessages
{
public:
    RootMessages(xcb_connection_t *xServer, xcb_window_t window)
        : m_xServer(xServer),
          m_window(window),
          m_root(xcb_setup_roots_iterator(xcb_get_setup(xServer)).data->root)
    {
    }

    /// Asks for the keyboard (Extended Window Manager Hints 1.5, _NET_ACTIVE_WINDOW).
    void askForKeyboard(xcb_timestamp_t time)
    {
        xcb_client_message_event_t message = messageOf("_NET_ACTIVE_WINDOW", 32);
        constexpr std::uint32_t fromApplication = 1;
        message.data.data32[0] = fromApplication;
        message.data.data32[1] = time;
        send(message, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    }

    /// Says that a start has come to its end (Startup Notification 0.1, "remove").
    void endStart(const QByteArray &startupId)
    {
        QByteArray text = "remove: ID=\"";
        for (const char c : startupId) {
            if (c == '"' || c == '\\')
                text += '\\';
            text += c;
        }
        text += '"';
        text += '\0';

        constexpr qsizetype part = 20;
        QByteArrayView rest = text;
        const char *type = "_NET_STARTUP_INFO_BEGIN";
        while (!rest.isEmpty()) {
            xcb_client_message_event_t message = messageOf(type, 8);
            const QByteArrayView sent = rest.first(std::min(part, rest.size()));
            std::memcpy(message.data.data8, sent.data(), static_cast<std::size_t>(sent.size()));
            send(message, XCB_EVENT_MASK_PROPERTY_CHANGE);
            rest = rest.sliced(sent.size());
            type = "_NET_STARTUP_INFO";
        }
    }

private:
    xcb_client_message_event_t messageOf(const char *type, std::uint8_t format) const
    {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = format;
        message.window = m_window;
        message.type = internAtom(m_xServer, type);
        return message;
    }
    void send(const xcb_client_message_event_t &message, std::uint32_t watchers)
    {
        xcb_send_event(m_xServer, 0, m_root, watchers, reinterpret_cast<const char *>(&message));
        xcb_flush(m_xServer);
    }

    xcb_connection_t *m_xServer;
    xcb_window_t m_window;
    xcb_window_t m_root;
};

/// When the user asked for the start, which its identifier ends with.
std::optional<xcb_timestamp_t> timeOf(const QByteArray &startupId)
{
    const QByteArray mark = "_TIME";
    const qsizetype at = startupId.lastIndexOf(mark);
    bool isNumber = false;
    const xcb_timestamp_t time = at < 0 ? 0 : startupId.sliced(at + mark.size()).toUInt(&isNumber);
    return isNumber ? std::optional(time) : std::nullopt;
}

} // namespace

QByteArray activationOfThisStart()
{
    const QByteArray startupId = qgetenv(startupIdVariable);
    const QByteArray token = qgetenv(tokenVariable);
    return startupId.isEmpty() && token.isEmpty() ? QByteArray() : startupId + separator + token;
}

void activateFor(QWidget &window, const QByteArray &activation)
{
    const qsizetype end = activation.indexOf(separator);
    const QByteArray startupId = activation.first(std::max(end, qsizetype{0}));
    const QByteArray token = activation.sliced(end + 1);

    // The toolkit hands it to the compositor, once.
    if (!token.isEmpty() && QGuiApplication::platformName().startsWith("wayland"_L1))
        qputenv(tokenVariable, token);
    window.activateWindow();

    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || startupId.isEmpty())
        return;
    RootMessages messages(x11->connection(), static_cast<xcb_window_t>(window.winId()));
    // The toolkit knows only of the time when the user did something with this process.
    if (const auto time = timeOf(startupId))
        messages.askForKeyboard(*time);
    messages.endStart(startupId);
}
