#pragma once

#include <QList>
#include <QString>

class SystemQueries;

/// One process that owned at least one IPv4 socket when the snapshot was taken. Two processes of
/// one program are two samples.
struct AppSample
{
    QString name; ///< file name of the executable, or "PID %1" when nothing better is known
    QString path; ///< full path of the executable; empty when it could not be read
    quint32 pid = 0; ///< identity of the sample; never 0
    qint32 tcp = 0; ///< IPv4 TCP sockets in any state
    qint32 udp = 0; ///< IPv4 UDP sockets

    /// Sockets of both protocols.
    qint32 socketTotal() const { return tcp + udp; }
    bool operator==(const AppSample &) const = default;
};

/// Lists the processes that own IPv4 sockets, most sockets first, equal totals by lower-cased
/// name. A table that cannot be read counts nothing.
QList<AppSample> takeSnapshot(SystemQueries &queries);

/// Full path of a process's executable, or an empty text when it cannot be read.
QString imagePathForPid(SystemQueries &queries, quint32 pid);
