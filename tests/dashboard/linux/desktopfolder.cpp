#include "tests/dashboard/linux/desktopfolder.h"

#include <QDir>
#include <QIcon>
#include <QtTest>

using namespace Qt::StringLiterals;

DesktopFolder::DesktopFolder()
{
    if (!m_folder.isValid())
        qFatal("no folder for the desktop of the test");
}

QString DesktopFolder::path(const QString &name) const
{
    // The system's temporary folder may be a link.
    return QDir(m_folder.path()).canonicalPath() + u'/' + name;
}

QByteArray DesktopFolder::quoted(const QString &name) const
{
    return '"' + path(name).toUtf8() + '"';
}

void DesktopFolder::write(const QString &name, const QByteArray &contents) const
{
    QDir().mkpath(QFileInfo(path(name)).path());
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("%s cannot be written", qPrintable(file.fileName()));
}

void DesktopFolder::writeEntry(const QString &id, const QByteArray &lines) const
{
    write("share/applications/"_L1 + id + ".desktop"_L1,
          "[Desktop Entry]\nType=Application\nName=Of the test\n" + lines + '\n');
}

void DesktopFolder::writeThemeIcon(const QString &name, const QColor &colour) const
{
    write(u"share/icons/hicolor/index.theme"_s,
          "[Icon Theme]\nName=Hicolor\nDirectories=16x16/apps\n"
          "[16x16/apps]\nSize=16\nType=Fixed\n");
    const QString file = path("share/icons/hicolor/16x16/apps/"_L1 + name + ".png"_L1);
    QDir().mkpath(QFileInfo(file).path());
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(colour);
    if (!image.save(file))
        qFatal("%s cannot be written", qPrintable(file));
}

void DesktopFolder::link(const QString &name, const QString &target) const
{
    QDir().mkpath(QFileInfo(path(name)).path());
    if (!QFile::link(target, path(name)))
        qFatal("%s cannot be linked", qPrintable(name));
}

void DesktopFolder::useAsDesktop() const
{
    qputenv("XDG_DATA_HOME", path(u"home"_s).toUtf8());
    qputenv("XDG_DATA_DIRS", path(u"share"_s).toUtf8());
    QIcon::setThemeSearchPaths({path(u"share/icons"_s)});
    // Names no theme of its own without a desktop.
    QIcon::setThemeName(u"hicolor"_s);
}

QColor colourOf(const QIcon &icon)
{
    const QImage image = icon.pixmap(16, 16).toImage();
    return image.isNull() ? QColor() : image.pixelColor(image.rect().center());
}
