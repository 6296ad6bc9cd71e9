#pragma once

#include <QtGlobal>

class QString;

/// Whether a save would find the store's file free. Removes the lock that a killed process left
/// behind; waits for that, or for another process that is saving, for 300 milliseconds at most.
bool storeIsFree(const QString &storeFile);

/// Whether that many bytes can be written beside the store's file, found out by writing them. True
/// when there is no such file, which a save then cannot damage.
bool storeHasRoom(const QString &storeFile, qint64 bytes);
