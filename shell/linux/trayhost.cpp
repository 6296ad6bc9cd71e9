#include "shell/trayhost.h"

#include "shell/linux/traywatch.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

void whenTrayIsReady(QObject *context, std::function<void()> callback)
{
    // Only these belong to a desktop on which a tray could still come.
    const QString platform = QGuiApplication::platformName();
    if (platform == "xcb"_L1 || platform.startsWith("wayland"_L1))
        new TrayWatch(context, std::move(callback));
    else
        callback();
}
