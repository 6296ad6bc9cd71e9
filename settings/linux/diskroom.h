#pragma once

#include <QtGlobal>

class QString;

/// Whether nothing that the kernel knows of can keep so many bytes from being written into the
/// folder: there is room for far more (statfs(2)), and nobody's limit or quota is in the way
/// (getrlimit(2), quotactl(2)). False where that cannot be told, as on file systems of other
/// machines.
bool hasPlentyOfRoom(const QString &folder, qint64 bytes);
