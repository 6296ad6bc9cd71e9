#include "shell/windowdrag.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

using namespace Qt::StringLiterals;

void WindowDrag::begin(const QWidget &window, const QMouseEvent &press)
{
    active = true;
    offset = press.globalPosition().toPoint() - window.frameGeometry().topLeft();
}

void WindowDrag::moveTo(QWidget &window, const QMouseEvent &move)
{
    if (QGuiApplication::platformName().startsWith("wayland"_L1)) {
        active = false;
        window.windowHandle()->startSystemMove();
        return;
    }
    window.move(move.globalPosition().toPoint() - offset);
}
