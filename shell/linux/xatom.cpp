#include "shell/linux/xatom.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

xcb_atom_t internAtom(xcb_connection_t *xServer, QByteArrayView name)
{
    const auto cookie
        = xcb_intern_atom(xServer, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(xServer, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}
