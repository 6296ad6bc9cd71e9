#pragma once

#include <QObject>
#include <QString>

#include <xcb/xcb.h>

class Screen;

/// A tray of the older kind, which shows an icon's own window in one of its (System Tray Protocol).
/// Shows one icon, in a window of 24 x 24 pixels at the top left of the screen.
class EmbeddingTray : public QObject
{
public:
    explicit EmbeddingTray(const QString &display);
    ~EmbeddingTray() override;

    bool hasIcon() const { return m_icon != XCB_WINDOW_NONE; }

private:
    void handleEvents();

    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    xcb_window_t m_socket = XCB_WINDOW_NONE; ///< shows the icon
    xcb_window_t m_icon = XCB_WINDOW_NONE; ///< the embedded icon's own
    xcb_atom_t m_opcode = XCB_ATOM_NONE;
};
