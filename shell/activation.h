#pragma once

#include <QByteArray>

class QWidget;

/// What the desktop has given to this start for the window that it brings to the front: identifiers
/// of the Startup Notification protocol and of xdg-activation-v1. Empty where it gives nothing.
QByteArray activationOfThisStart();

/// Gives a shown window the keyboard in the name of a start with that activation, which tells the
/// desktop that this is what the user has just asked for, and that the start has come to its end.
void activateFor(QWidget &window, const QByteArray &activation);
