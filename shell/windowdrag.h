#pragma once

#include <QPoint>

class QMouseEvent;
class QWidget;

/// Dragging of a window that has no system frame, by the mouse events that reach it.
class WindowDrag
{
public:
    /// Remembers where the pointer holds the window.
    void begin(const QWidget &window, const QMouseEvent &press);
    /// Moves the window along with the pointer. A Wayland compositor alone may move windows: there
    /// it is asked to take the drag over, and the drag is done for us.
    void moveTo(QWidget &window, const QMouseEvent &move);
    void end() { active = false; }
    bool isActive() const { return active; }

private:
    bool active = false;
    QPoint offset; ///< pointer minus the frame's top-left when the drag began
};
