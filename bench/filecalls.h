#pragma once

#include <QString>
#include <QStringList>

/// What a process did to files that are not only in memory, in a stretch of time.
struct FileCalls
{
    double octets = 0; ///< written into files
    double filesMade = 0; ///< made, named or not, or emptied
    double syncs = 0; ///< fsync(), fdatasync() and their like
};

/// Watches the system calls of a program from its start on, for which it is started by strace(1).
class FileCallLog
{
public:
    /// Each thread's calls go into a file of its own in `folder`, which has to be empty.
    explicit FileCallLog(QString folder) : m_folder(std::move(folder)) { }

    /// What to start instead of `program`: it becomes that program, watched by another process.
    QStringList commandFor(const QString &program) const;
    /// What was done from one time to the other, in seconds since 1970. Ends the benchmark when
    /// nothing at all was written down.
    FileCalls between(double begin, double end) const;

private:
    QString m_folder;
};
