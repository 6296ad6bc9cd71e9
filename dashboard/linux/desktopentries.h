#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

class MountTable;

/// The applications of the desktop's menu (Desktop Entry Specification), told by the program that
/// each one starts. Entries that the menu does not show count as well.
class DesktopEntries
{
public:
    DesktopEntries() = default;
    /// Reads the entries in these folders; an entry in an earlier one hides those of its id in
    /// later ones. Programs without a folder are looked for in `searchPath`. What may hang is not
    /// touched.
    DesktopEntries(const QStringList &folders, QStringList searchPath, const MountTable &mounts);

    /// Icons as the entry names them, which is a name in the icon theme or an absolute path; empty
    /// when there is no such entry.
    QString iconOfId(const QString &id) const; ///< file name of the entry without ".desktop"
    QString iconOfProgram(const QString &path) const; ///< real path of the executable
    QString iconOfFileName(const QString &fileName) const; ///< of the executable

    /// The files that were read, and the folders that they were found in or could come to.
    QStringList sources() const { return m_sources; }

private:
    /// Of several entries that start one program, the one with the lowest rank is meant.
    struct Claim
    {
        QString icon;
        int rank = 0;
    };
    using Claims = QHash<QString, Claim>;

    void readFolder(const QString &folder, const MountTable &mounts);
    void readEntry(const QString &id, const QString &file, const MountTable &mounts);
    void claimProgram(const QString &program, const Claim &claim, const MountTable &mounts);
    /// Where a program is; a path that does not exist when it is nowhere.
    QString located(const QString &program, const MountTable &mounts) const;

    QStringList m_searchPath;
    QStringList m_sources;
    QHash<QString, QString> m_ids; ///< icons by id; a removed entry has an empty one
    Claims m_programs;
    Claims m_fileNames;
};
