#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

/// Path of one of the program's images: in "assets" beside the executable or, in a development
/// tree, in "../qt/assets". The latter is returned whether or not the file exists.
QString assetPath(const QString &fileName);

/// An image of the program as an icon; one that cannot be drawn when the file or the SVG plug-in is
/// missing.
QIcon assetIcon(const QString &fileName);

/// An image of the program fitted into `size` (logical pixels), keeping its aspect ratio and sharp
/// at this device pixel ratio. Null when the file or the SVG plug-in is missing.
QPixmap assetPixmap(const QString &fileName, QSize size, qreal devicePixelRatio);

/// Whether the icon has an image. QIcon::isNull() does not tell for a file: it is false even where
/// nothing can read that file.
bool canBeDrawn(const QIcon &icon);
