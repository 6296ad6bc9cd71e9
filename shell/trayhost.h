#pragma once

#include <functional>

class QObject;

/// Calls back once, as soon as the desktop has a tray that shows icons: at once, later or never.
/// The call comes from the event loop or from here; it is dropped when `context` is gone.
void whenTrayIsReady(QObject *context, std::function<void()> callback);
