#pragma once

#include <QString>

#include <functional>

class QObject;

/// A short message that the desktop shows, whether the window is shown or not.
struct DesktopMessage
{
    enum class Kind { Information, Warning };

    Kind kind = Kind::Information;
    QString title;
    QString text;
    int milliseconds = 0; ///< how long it stays
};

/// Offers the message to the desktop's notification service, which needs no tray. `refused` is
/// called once, from the event loop or from here, when there is no service that takes it; not when
/// `context` is gone.
void offerToNotificationService(QObject *context, const DesktopMessage &message,
                                std::function<void()> refused);

/// Calls back whenever a notification service comes, until `context` is gone.
void whenNotificationServiceComes(QObject *context, std::function<void()> callback);
