#pragma once

#include <QColor>
#include <QPoint>

// Places in the program's window as it is at the start, to click at.
inline constexpr QPoint minimizeButton(1065, 17);
inline constexpr QPoint maximizeButton(1110, 17);
inline constexpr QPoint closeButton(1154, 17);
inline constexpr QPoint fileMenu(346, 60);
inline constexpr QPoint rulesButton(40, 245); ///< in the sidebar, left of its text

/// Colour of the sidebar's button whose page is shown, beside its text.
inline constexpr QColor checkedColour(0x15, 0xa3, 0x4a);
/// Colour of the left half of the tray icon's mark, below its letter.
inline constexpr QColor markColour(0x15, 0xa3, 0x4a);
