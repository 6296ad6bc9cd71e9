#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QTemporaryDir>

class QIcon;

/// A folder for data, programs and icons that a desktop could have, which goes with its object.
class DesktopFolder
{
public:
    DesktopFolder();

    /// Path of something in the folder, whether it is there or not.
    QString path(const QString &name = QString()) const;
    /// That path as a word of a command: the folder's name has blanks.
    QByteArray quoted(const QString &name) const;
    /// Writes a file, in folders that are made.
    void write(const QString &name, const QByteArray &contents = {}) const;
    /// Writes an entry into share/applications: `lines` follow its group's header and its type.
    void writeEntry(const QString &id, const QByteArray &lines) const;
    /// Puts an image of one colour into the icon theme of all desktops.
    void writeThemeIcon(const QString &name, const QColor &colour) const;
    /// Makes a link in folders that are made.
    void link(const QString &name, const QString &target) const;
    /// Makes this folder's share/ the only one that desktop entries and icons are looked for in.
    void useAsDesktop() const;

private:
    QTemporaryDir m_folder;
};

/// The icon's colour in its middle; an invalid one where nothing is painted.
QColor colourOf(const QIcon &icon);
