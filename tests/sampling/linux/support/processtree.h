#pragma once

#include <QTemporaryDir>

#include <string>

/// A made-up process file system in a temporary folder, in memory where there is such.
class ProcessTree
{
public:
    ProcessTree();

    std::string root() const { return m_directory.path().toStdString(); }

    /// Adds a process without files, replacing one of the same id. `startTime` in clock ticks.
    void addProcess(quint32 pid, const QByteArray &name = "program", quint64 startTime = 1000);
    void removeProcess(quint32 pid);
    /// Lets descriptor `number` of a process refer to `target`, as in "socket:[12]".
    void setDescriptor(quint32 pid, quint32 number, const QByteArray &target);
    void setSocket(quint32 pid, quint32 number, quint32 inode);
    void closeDescriptor(quint32 pid, quint32 number);
    void setExecutable(quint32 pid, const QByteArray &path);
    /// Lets every user read what is there, as far as the permissions of each file allow.
    void allowEveryone();
    /// Path of `file` in a process's folder.
    QByteArray path(quint32 pid, const QByteArray &file = {}) const;

private:
    static QString folderTemplate();

    QTemporaryDir m_directory{folderTemplate()};
};
