#pragma once

#include <QList>
#include <QString>

class SystemQueries;

/// One IPv4 socket of a process, as texts for people.
struct ConnectionEntry
{
    QString protocol; ///< "TCP" or "UDP"
    QString local; ///< address:port
    QString remote; ///< address:port, or "-" for UDP
    QString state; ///< name of the TCP state, or "Open" for UDP

    bool operator==(const ConnectionEntry &) const = default;
};

/// The first `maxCount` sockets of a process, TCP before UDP, each in table order. The tables are
/// read afresh; one that cannot be read contributes nothing.
QList<ConnectionEntry> connectionsForPid(SystemQueries &queries, quint32 pid, qint32 maxCount);

/// Text of an IPv4 endpoint; `address` and `port` in network byte order.
QString endpointText(quint32 address, quint16 port);

/// Name of a TCP state by its number (1 to 12, see TcpRow::state); "Unknown" for any other.
QString tcpStateText(quint32 state);
