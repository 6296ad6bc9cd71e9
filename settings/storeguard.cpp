#include "settings/storeguard.h"

#include <QFileInfo>
#include <QLockFile>
#include <QString>
#include <QTemporaryFile>

using namespace Qt::StringLiterals;

// QSettings waits for its lock without end. A lock whose process was killed before it wrote its
// name into it looks alive to it for 30 seconds, in which the window would be frozen. A lock that
// a living process holds cannot be removed, however short the stale time is.
bool storeIsFree(const QString &storeFile)
{
    const QString lockFile = storeFile + ".lock"_L1;
    if (!QFileInfo::exists(lockFile))
        return true;
    QLockFile lock(lockFile);
    lock.setStaleLockTime(100);
    return lock.tryLock(300);
}

// QSettings replaces the file in one step, but QSaveFile, which it does that with, does not notice
// when the last of its buffered bytes fail to be written: on a disk that is almost full it would
// put a cut or an empty file into the place of a whole one.
bool storeHasRoom(const QString &storeFile, qint64 bytes)
{
    const QFileInfo store(storeFile);
    if (!store.isFile())
        return true;
    QTemporaryFile probe(store.canonicalFilePath() + ".XXXXXX"_L1);
    return probe.open() && probe.write(QByteArray(bytes, '\0')) == bytes && probe.flush();
}
