#include "dashboard/icons.h"

#include "app/lumetrawindow.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QImageReader>

using namespace Qt::StringLiterals;

QString assetPath(const QString &fileName)
{
    QString installed = QCoreApplication::applicationDirPath() + "/assets/"_L1 + fileName;
    if (QFile::exists(installed))
        return installed;
    return QDir(QCoreApplication::applicationDirPath())
        .absoluteFilePath("../qt/assets/"_L1 + fileName);
}

QIcon assetIcon(const QString &fileName)
{
    return QIcon(assetPath(fileName));
}

QPixmap assetPixmap(const QString &fileName, QSize size, qreal devicePixelRatio)
{
    QImageReader reader(assetPath(fileName));
    // The reader draws a vector image at the size asked for instead of scaling pixels.
    reader.setScaledSize(
        reader.size().scaled((QSizeF(size) * devicePixelRatio).toSize(), Qt::KeepAspectRatio));
    QPixmap pixmap = QPixmap::fromImageReader(&reader);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

bool canBeDrawn(const QIcon &icon)
{
    return !icon.pixmap(16, 16).isNull();
}

QIcon executableIcon(const QString &path)
{
    if (path.isEmpty() || !QFile::exists(path))
        return {};
    return QFileIconProvider().icon(QFileInfo(path));
}

QIcon LumetraWindow::appIcon(const QString &name)
{
    const auto cached = iconCache.constFind(name);
    if (cached != iconCache.constEnd())
        return *cached;

    QIcon icon = executableIcon(appPaths.value(name));
    if (!canBeDrawn(icon))
        icon = assetIcon(u"tovan-site-icon.svg"_s);
    return *iconCache.insert(name, icon);
}
