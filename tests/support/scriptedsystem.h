#pragma once

#include "sampling/systemqueries.h"

#include <QByteArray>
#include <QHash>
#include <QString>

/// What the operating system answers in a test. The window asks through the same seam as in the
/// program; the test changes the answers between two ticks.
struct ScriptedSystem
{
    std::optional<std::vector<InterfaceRow>> interfaces = std::vector<InterfaceRow>{};
    std::optional<std::vector<TcpRow>> tcp = std::vector<TcpRow>{};
    std::optional<std::vector<UdpRow>> udp = std::vector<UdpRow>{};
    QHash<quint32, QByteArray> imagePaths; ///< UTF-8; a process not in it has an unreadable path
    QHash<quint32, QByteArray> processNames; ///< UTF-8; a process not in it is not in the list
    QList<quint32> imagePathQuestions; ///< processes whose path was asked for, in order

    /// The one that every window of this test process is told from.
    static ScriptedSystem &instance();
    /// Forgets everything: no interface, no socket, no process.
    void reset();

    /// Sets the counters of the only interface, which is up.
    void setCounters(quint64 inOctets, quint64 outOctets);
    /// Adds a process with an executable at /usr/bin/NAME and that many sockets.
    void addProcess(quint32 pid, const QString &name, int tcpSockets, int udpSockets = 0);
    /// Removes a process with all its sockets.
    void removeProcess(quint32 pid);
};
