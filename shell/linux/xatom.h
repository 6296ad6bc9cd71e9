#pragma once

#include <QByteArrayView>

#include <xcb/xcb.h>

/// The X server's number for this name, which it gives it when nobody has asked for it before;
/// XCB_ATOM_NONE when the server does not answer.
xcb_atom_t internAtom(xcb_connection_t *xServer, QByteArrayView name);
