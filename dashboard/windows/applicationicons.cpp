#include "dashboard/applicationicons.h"

#include <QDir>
#include <QFile>
#include <QFileIconProvider>
#include <QFileInfo>

#include <algorithm>

#include <windows.h>

namespace {

/// Whether the file is another machine's, which may not answer. A path that names no drive is one.
bool isRemote(const QString &path)
{
    const QString native = QDir::toNativeSeparators(path);
    if (native.startsWith(QLatin1String("\\\\")))
        return true;
    return GetDriveTypeW(native.first(std::min<qsizetype>(3, native.size())).toStdWString().c_str())
        == DRIVE_REMOTE;
}

/// An executable has its icon in itself.
class ExecutableIcons : public ApplicationIcons
{
public:
    QIcon iconOf(const QString &path, quint32) override
    {
        if (path.isEmpty() || isRemote(path) || !QFile::exists(path))
            return {};
        return QFileIconProvider().icon(QFileInfo(path));
    }
};

} // namespace

std::unique_ptr<ApplicationIcons> makeApplicationIcons()
{
    return std::make_unique<ExecutableIcons>();
}
