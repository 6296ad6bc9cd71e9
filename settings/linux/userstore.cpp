#include "settings/userstore.h"

#include "settings/linux/storeguard.h"

#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <sys/mman.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto organisation = "Tovan"_L1;
constexpr auto application = "Tovan Network Monitor"_L1;

/// The files that QSettings(organisation, application) opens as soon as it is constructed: the
/// user's store and, behind it, those that it takes missing keys from.
QStringList storeFiles()
{
    QStringList files;
    const QStringList folders
        = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    for (const QString &folder : folders) {
        files.append(folder + u'/' + organisation + u'/' + application + ".conf"_L1);
        files.append(folder + u'/' + organisation + ".conf"_L1);
    }
    return files;
}

std::unique_ptr<QSettings> openFile(const QString &file)
{
    return std::make_unique<QSettings>(file, QSettings::NativeFormat);
}

/// A store of this content that is nowhere on the disk; null when there is no memory for it.
std::unique_ptr<QSettings> openContent(const QByteArray &content)
{
    QFile memory;
    const int descriptor = memfd_create("store", MFD_CLOEXEC);
    if (descriptor < 0
        || !memory.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
        || memory.write(content) != content.size() || !memory.flush())
        return nullptr;
    // The toolkit reads all of it now.
    return openFile(u"/proc/self/fd/%1"_s.arg(descriptor));
}

bool isHarmless(const QString &file)
{
    return storeCanBeRead(file) && !harmlessReplacement(file);
}

} // namespace

QString storeName()
{
    // The file or the folders it is in may not be there yet.
    QFileInfo there(storeFiles().first());
    QString rest;
    while (!there.exists() && !there.isRoot()) {
        rest.prepend(u'/' + there.fileName());
        there.setFile(there.path());
    }
    return there.canonicalFilePath() + rest;
}

std::unique_ptr<QSettings> openStore()
{
    const QStringList files = storeFiles();
    const QString &store = files.first();
    if (!storeCanBeRead(store))
        return nullptr;
    if (const auto replacement = harmlessReplacement(store))
        return openContent(*replacement);
    if (!std::ranges::all_of(files, isHarmless))
        return openFile(store);
    return std::make_unique<QSettings>(organisation, application);
}

std::unique_ptr<QSettings> openStoreToSave(qint64 bytes, std::chrono::milliseconds patience)
{
    const QString store = storeFiles().first();
    if (!storeCanBeWritten(store) || !storeIsFree(store, patience) || !storeHasRoom(store, bytes))
        return nullptr;
    // The toolkit reads the file before it writes it.
    const auto replacement = harmlessReplacement(store);
    if (replacement && !replaceStore(store, *replacement))
        return nullptr;
    return openFile(store);
}

// A save replaces the file, and whoever writes into it changes its times (inode(7)).
QByteArray storeMark()
{
    struct stat file
    {
    };
    if (::stat(QFile::encodeName(storeFiles().first()).constData(), &file) != 0)
        return {};
    QByteArray mark;
    for (const auto number : {qint64(file.st_dev), qint64(file.st_ino), qint64(file.st_size),
                              qint64(file.st_mtim.tv_sec), qint64(file.st_mtim.tv_nsec),
                              qint64(file.st_ctim.tv_sec), qint64(file.st_ctim.tv_nsec)})
        mark += QByteArray::number(number) + ' ';
    return mark;
}
