#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

#include <functional>
#include <windows.h>

/// A text as a sheet describes it.
struct ScreenText
{
    QString text;
    int size; ///< pixels
    QColor colour;
    QColor background;
    int weight = QFont::Normal;
};

// The desktop that this process is on, as somebody sees and uses it who sits before it.

/// What an area of the screen shows.
QImage screenPicture(QRect area);
/// Where the screen shows a text within an area; empty where it does not. The text is drawn anew
/// with the toolkit's fonts and looked for as a picture.
QRect findOnScreen(const ScreenText &text, QRect area);
/// The smallest rectangle that has all pixels of about a colour within an area of the screen.
QRect boundsOnScreen(QColor colour, QRect area);

/// A process's topmost visible window whose class name has this part; null when there is none.
HWND visibleWindow(DWORD pid, const QString &partOfClass);
/// Geometry of a window on the screen.
QRect windowGeometry(HWND window);
/// All top-level windows of a process, hidden ones included.
QList<HWND> allWindows(DWORD pid);

/// Whether a process has the window that gets what is typed.
bool hasKeyboard(DWORD pid);

/// Moves the pointer and clicks until this is so, and tells whether it is: of twenty clicks Wine
/// loses one.
bool clickOnScreen(QPoint position, const std::function<bool()> &isSo,
                   Qt::MouseButton button = Qt::LeftButton);
/// Presses and releases keys, which the active window gets (virtual-key codes).
void pressKeys(std::initializer_list<WORD> keys);

/// The task bar of the desktop, which shows the tray at its right end.
HWND taskBar();
/// Middle of the last icon in the tray.
QPoint lastTrayIcon();
/// Whether the tray shows a balloon.
bool trayHasBalloon();
