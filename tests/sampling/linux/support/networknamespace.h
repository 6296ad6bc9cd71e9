#pragma once

#include <QString>
#include <QStringList>

/// Moves the calling process into a network namespace of its own, with the loopback up, so that no
/// other program's sockets and traffic are seen. Without privilege a user namespace is made around
/// it. Call before any thread is started. Returns false, changing nothing, where the system allows
/// neither.
bool enterOwnNetwork();

/// Runs ip(8) with these arguments and fails the test when that fails. Returns what it printed.
QByteArray runIp(const QStringList &arguments);

/// Sends `count` broadcast datagrams of `size` octets of UDP payload out of an interface.
void sendBroadcasts(const char *interfaceName, int count, int size);
