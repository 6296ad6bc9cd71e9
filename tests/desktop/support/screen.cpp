#include "tests/desktop/support/screen.h"

#include "tests/support/xcbrequests.h"

#include <cstring>

using namespace Qt::StringLiterals;

Screen::Screen(const QString &display) : m_connection(xcb_connect(display.toLatin1(), nullptr))
{
    if (xcb_connection_has_error(m_connection))
        qFatal("no X server at %s", qPrintable(display));
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

Screen::~Screen()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t Screen::atom(const QByteArray &name)
{
    xcb_atom_t &atom = m_atoms[name];
    if (atom == XCB_ATOM_NONE)
        atom = internAtom(m_connection, name.toStdString());
    return atom;
}

QString Screen::atomName(xcb_atom_t atom)
{
    const XcbReply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, atom), nullptr));
    return QString::fromLatin1(xcb_get_atom_name_name(reply.get()),
                               xcb_get_atom_name_name_length(reply.get()));
}

QByteArray Screen::property(xcb_window_t window, const QByteArray &name)
{
    constexpr std::uint32_t enough = 65536;
    const auto cookie
        = xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, enough);
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {}; // the window is gone
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

template <typename T> QList<T> Screen::values(xcb_window_t window, const QByteArray &name)
{
    const QByteArray bytes = property(window, name);
    QList<T> values(bytes.size() / static_cast<qsizetype>(sizeof(T)));
    if (values.isEmpty())
        return values; // has no data to copy to
    std::memcpy(values.data(), bytes.constData(),
                static_cast<std::size_t>(values.size()) * sizeof(T));
    return values;
}

QRect Screen::geometry(xcb_window_t window)
{
    const auto sizeCookie = xcb_get_geometry(m_connection, window);
    const auto placeCookie = xcb_translate_coordinates(m_connection, window, m_root, 0, 0);
    const XcbReply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(m_connection, sizeCookie, nullptr));
    const XcbReply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(m_connection, placeCookie, nullptr));
    if (!size || !place)
        return {};
    return {place->dst_x, place->dst_y, size->width, size->height};
}

bool Screen::belongsTo(xcb_window_t window, qint64 pid)
{
    return values<std::uint32_t>(window, "_NET_WM_PID").value(0) == pid;
}

QList<ManagedWindow> Screen::windows(qint64 pid)
{
    QList<ManagedWindow> found;
    const auto ids = values<xcb_window_t>(m_root, "_NET_CLIENT_LIST_STACKING");
    for (const xcb_window_t id : ids) {
        if (!belongsTo(id, pid))
            continue;
        ManagedWindow window{
            id, QString::fromUtf8(property(id, "_NET_WM_NAME")), geometry(id), {}, {}};
        const auto states = values<xcb_atom_t>(id, "_NET_WM_STATE");
        for (const xcb_atom_t state : states)
            window.states.append(atomName(state).remove(u"_NET_WM_STATE_"_s));
        const auto types = values<xcb_atom_t>(id, "_NET_WM_WINDOW_TYPE");
        for (const xcb_atom_t type : types)
            window.types.append(atomName(type));
        found.append(window);
    }
    return found;
}

xcb_window_t Screen::focusedWindow()
{
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
}

QRect Screen::unmanaged(qint64 pid, const QByteArray &type)
{
    const XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_root), nullptr));
    QRect topmost;
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const XcbReply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(
                m_connection, xcb_get_window_attributes(m_connection, children[i]), nullptr));
        if (attributes && attributes->override_redirect
            && attributes->map_state == XCB_MAP_STATE_VIEWABLE && belongsTo(children[i], pid)
            && (type.isEmpty()
                || values<xcb_atom_t>(children[i], "_NET_WM_WINDOW_TYPE").contains(atom(type))))
            topmost = geometry(children[i]);
    }
    return topmost;
}

QRect Screen::menu(qint64 pid)
{
    return unmanaged(pid, {}); // the toolkit gives its menus no type of their own
}

QRect Screen::toolTip(qint64 pid)
{
    return unmanaged(pid, "_NET_WM_WINDOW_TYPE_TOOLTIP");
}

QImage Screen::picture(QRect area)
{
    const auto cookie = xcb_get_image(
        m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<std::int16_t>(area.x()),
        static_cast<std::int16_t>(area.y()), static_cast<std::uint16_t>(area.width()),
        static_cast<std::uint16_t>(area.height()), ~std::uint32_t{0});
    const XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {};
    return QImage(xcb_get_image_data(reply.get()), area.width(), area.height(),
                  QImage::Format_RGB32)
        .copy();
}

QColor Screen::colourAt(QPoint position)
{
    const QImage pixel = picture({position, QSize(1, 1)});
    return pixel.isNull() ? QColor() : pixel.pixelColor(0, 0);
}

QRect Screen::boundsOf(QColor colour)
{
    const QImage screen = picture(geometry(m_root));
    QRect bounds;
    for (int y = 0; y < screen.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(screen.constScanLine(y));
        for (int x = 0; x < screen.width(); ++x) {
            if ((line[x] | 0xff000000) == colour.rgb())
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

QSize Screen::largestIcon(xcb_window_t window)
{
    // Icon after icon: width, height, and a number for each pixel.
    const auto icons = values<std::uint32_t>(window, "_NET_WM_ICON");
    QSize largest;
    for (qsizetype i = 0; i + 1 < icons.size();) {
        const QSize size(static_cast<int>(icons[i]), static_cast<int>(icons[i + 1]));
        largest = largest.expandedTo(size);
        i += 2 + qsizetype{size.width()} * size.height();
    }
    return largest;
}

void Screen::askToClose(xcb_window_t window)
{
    ::askToClose(m_connection, window);
}
