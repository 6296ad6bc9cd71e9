#include "settings/linux/storeguard.h"

#include "settings/linux/diskroom.h"
#include "settings/linux/storecontent.h"

#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QString>
#include <QTemporaryFile>

using namespace Qt::StringLiterals;

bool storeCanBeRead(const QString &storeFile)
{
    const QFileInfo store(storeFile);
    return !store.exists() || store.isFile();
}

bool storeCanBeWritten(const QString &storeFile)
{
    // No process makes its lock a link, and one that leads nowhere looks like none.
    const QFileInfo lock(storeFile + ".lock"_L1);
    return storeCanBeRead(storeFile) && !lock.isSymLink() && (!lock.exists() || lock.isFile());
}

// QSettings waits for its lock without end. A lock whose process was killed before it wrote its
// name into it looks alive to it for 30 seconds, in which the window would be frozen. A lock that
// a living process holds cannot be removed, however short the stale time is.
bool storeIsFree(const QString &storeFile, std::chrono::milliseconds patience)
{
    const QString lockFile = storeFile + ".lock"_L1;
    if (!QFileInfo::exists(lockFile))
        return true;
    QLockFile lock(lockFile);
    lock.setStaleLockTime(100);
    return lock.tryLock(static_cast<int>(patience.count()));
}

// QSettings replaces the file in one step, but QSaveFile, which it does that with, does not notice
// when the last of its buffered bytes fail to be written: on a disk that is almost full it would
// put a cut or an empty file into the place of a whole one.
bool storeHasRoom(const QString &storeFile, qint64 bytes)
{
    const QFileInfo store(storeFile);
    if (!store.isFile())
        return true;
    const QString file = store.canonicalFilePath();
    if (hasPlentyOfRoom(QFileInfo(file).path(), bytes))
        return true;
    QTemporaryFile probe(file + ".XXXXXX"_L1);
    return probe.open() && probe.write(QByteArray(bytes, '\0')) == bytes && probe.flush();
}

std::optional<QByteArray> harmlessReplacement(const QString &storeFile)
{
    // A hundred times what 5,000 rules take. What stands behind that is no state of this program.
    constexpr qint64 largestStore = 64LL * 1024 * 1024;
    QFile file(storeFile);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content
        = file.size() > largestStore ? file.read(largestStore) : file.readAll();
    auto replacement = harmlessContent(content);
    if (!replacement && !file.atEnd())
        return content;
    return replacement;
}

bool replaceStore(const QString &storeFile, const QByteArray &content)
{
    QLockFile lock(storeFile + ".lock"_L1);
    if (!lock.tryLock(0) || !storeHasRoom(storeFile, content.size()))
        return false;
    QSaveFile file(storeFile);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size()
        && file.commit();
}
