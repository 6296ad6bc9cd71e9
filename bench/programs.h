#pragma once

#include <QProcess>
#include <QSet>
#include <QString>

#include <sys/types.h>

/// A program as a user starts it, with settings of its own; ended with this object.
class Program
{
public:
    /// Starts it; `home` takes the place of the user's folders. Ends the benchmark when it cannot.
    Program(const QString &path, const QString &home, const QStringList &arguments = {});
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    pid_t pid() const { return static_cast<pid_t>(m_process.processId()); }
    /// Ends the benchmark when the program has ended of itself.
    void requireRunning();

private:
    QProcess m_process;
};

/// Ids of all processes there are.
QSet<pid_t> runningProcesses();

/// Processor time, user and system, of a process and of the children that it waited for, in
/// milliseconds; 0 when there is no such process. See proc_pid_stat(5).
double processorMillisecondsOf(pid_t pid);

/// The same, of all processes but these.
double processorMillisecondsBesides(const QSet<pid_t> &others);

/// How often the threads that a process has now have waited since their start, each time to be
/// woken again. See proc_pid_status(5).
double voluntarySwitchesOf(pid_t pid);

/// What a process has in memory, in KiB. See proc_pid_smaps(5).
struct MemoryUse
{
    double resident = 0; ///< pages that it has mapped and that are in memory
    double proportional = 0; ///< each page divided by the processes that share it
};
MemoryUse memoryUseOf(pid_t pid);
