#include "assets/images.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
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
