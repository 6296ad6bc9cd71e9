#pragma once

#include <QString>
#include <QVariant>

/// The number that a stored value is. One that is too large for an int is none, as one that is too
/// large for 64 bits: 0.
int storedInt(const QVariant &value);

/// The text that a stored value is, cut to what a line edit holds, 32,767 code units. Half a
/// character, which the store could not hold again, becomes a question mark.
QString storedText(const QVariant &value);

/// What to store so that this value can be read again, by storedText() if it is a text.
QVariant toStored(const QVariant &value);
