#include "dashboard/applicationicons.h"

#include "dashboard/linux/desktopentries.h"
#include "dashboard/linux/mounttable.h"
#include "dashboard/linux/packagedapplication.h"

#include <QFile>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QStandardPaths>

#include <filesystem>

using namespace Qt::StringLiterals;

namespace {

/// The file that a path leads to; empty for what is no file or may hang.
QString reachableFile(const QString &path, const MountTable &mounts)
{
    const ResolvedPath resolved = resolve(mounts, QFile::encodeName(path).toStdString());
    std::error_code error;
    const bool isFile = resolved.end == ResolvedPath::End::Exists
        && std::filesystem::is_regular_file(resolved.path, error);
    return isFile ? QFile::decodeName(resolved.path.c_str()) : QString();
}

/// Those of the folders that do not hang, which need not exist.
QStringList withoutHanging(QStringList folders, const MountTable &mounts)
{
    folders.removeIf([&mounts](const QString &folder) {
        return folder.startsWith(u'/')
            && resolve(mounts, QFile::encodeName(folder).toStdString()).end
            == ResolvedPath::End::MayHang;
    });
    return folders;
}

/// An icon of the theme or of a file; null when there is none.
QIcon namedIcon(const QString &name, const MountTable &mounts)
{
    if (!name.startsWith(u'/'))
        return name.isEmpty() ? QIcon() : QIcon::fromTheme(name);
    const QString file = reachableFile(name, mounts);
    return file.isEmpty() ? QIcon() : QIcon(file);
}

QString cgroupsOf(quint32 pid)
{
    QFile file(u"/proc/%1/cgroup"_s.arg(pid));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// Linux executables have no icon in them: the desktop's menu says which one belongs to which.
class DesktopApplicationIcons : public ApplicationIcons
{
public:
    QIcon iconOf(const QString &path, quint32 pid) override;

private:
    void readEntries(const MountTable &mounts);
    QStringList iconNames(const QString &path, quint32 pid) const;

    QFileIconProvider m_provider; ///< keeps the one icon of all files that have none of their own
    DesktopEntries m_entries;
    std::unique_ptr<QFileSystemWatcher> m_watcher; ///< of the entries that were read
    bool m_changed = true; ///< the entries are to be read
};

QIcon DesktopApplicationIcons::iconOf(const QString &path, quint32 pid)
{
    const MountTable mounts = MountTable::current();
    if (m_changed)
        readEntries(mounts);
    const QStringList names = iconNames(path, pid);
    for (const QString &name : names) {
        QIcon icon = namedIcon(name, mounts);
        if (!icon.isNull())
            return icon;
    }
    const QString file = reachableFile(path, mounts);
    return file.isEmpty() ? QIcon() : m_provider.icon(QFileInfo(file));
}

void DesktopApplicationIcons::readEntries(const MountTable &mounts)
{
    // The toolkit looks for icons while it paints.
    const QStringList themeFolders = withoutHanging(QIcon::themeSearchPaths(), mounts);
    if (themeFolders != QIcon::themeSearchPaths())
        QIcon::setThemeSearchPaths(themeFolders);

    const QStringList folders = withoutHanging(
        QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation), mounts);
    m_entries = DesktopEntries(folders, qEnvironmentVariable("PATH").split(u':'), mounts);

    m_watcher = std::make_unique<QFileSystemWatcher>();
    const auto readAgain = [this] { m_changed = true; };
    QObject::connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, readAgain);
    QObject::connect(m_watcher.get(), &QFileSystemWatcher::fileChanged, readAgain);
    m_watcher->addPaths(m_entries.sources());
    m_changed = false;
}

QStringList DesktopApplicationIcons::iconNames(const QString &path, quint32 pid) const
{
    QStringList names;
    const QStringList ids = packagedApplicationIds(cgroupsOf(pid));
    for (const QString &id : ids)
        names.append(m_entries.iconOfId(id));
    names.append(m_entries.iconOfProgram(path));
    names.append(m_entries.iconOfFileName(QFileInfo(path).fileName()));
    return names;
}

} // namespace

std::unique_ptr<ApplicationIcons> makeApplicationIcons()
{
    return std::make_unique<DesktopApplicationIcons>();
}
