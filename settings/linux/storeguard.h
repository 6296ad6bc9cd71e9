#pragma once

#include <QByteArray>

#include <chrono>
#include <optional>

class QString;

/// Whether the store's file is a regular one, a link to one, or not there. The toolkit waits
/// without end for the other side of a FIFO, and reads from devices what is meant for others.
bool storeCanBeRead(const QString &storeFile);

/// Whether that holds for the store's file, and its lock is a regular file or not there. Where a
/// device is, the toolkit would put a file, and a lock that it cannot read it waits for without
/// end.
bool storeCanBeWritten(const QString &storeFile);

/// Whether a save would find the store's file free. Waits up to `patience` for another process that
/// is saving. Removes the lock that a killed process left behind, but for a moment after it was
/// made: an empty one may be a living process's, which has not put its name into it yet.
bool storeIsFree(const QString &storeFile, std::chrono::milliseconds patience);

/// Whether that many bytes can be written beside the store's file, found out by writing them unless
/// the kernel can tell. True when there is no such file, which a save then cannot damage.
bool storeHasRoom(const QString &storeFile, qint64 bytes);

/// What has to take the place of the file's content before the toolkit may read it, see
/// harmlessContent(); no value where the content is harmless or cannot be read.
std::optional<QByteArray> harmlessReplacement(const QString &storeFile);

/// Puts it there; false when that is not possible now, and nothing has changed then.
bool replaceStore(const QString &storeFile, const QByteArray &content);
