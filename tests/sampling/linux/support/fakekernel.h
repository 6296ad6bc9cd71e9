#pragma once

#include "sampling/linux/filedescriptor.h"

#include <linux/netlink.h>

#include <QByteArray>

/// Plays the kernel's side of a netlink socket: what it says is queued before the request comes.
class FakeKernel
{
public:
    /// The receiving end, for the code under test.
    FileDescriptor connectPeer();

    /// Queues a datagram of messages.
    void say(const QByteArray &datagram) const;
    /// Hangs up: the peer reads the end after what was said.
    void hangUp() { m_socket.reset(); }

    /// One message, padded. `sequence` counts the requests of one socket from 1.
    static QByteArray message(quint16 type, quint32 sequence, const QByteArray &payload = {},
                              quint16 flags = NLM_F_MULTI, quint32 port = 0);
    /// The end of a dump; a negative `error` says that it is not whole.
    static QByteArray done(quint32 sequence, qint32 error = 0, quint16 flags = NLM_F_MULTI);

private:
    FileDescriptor m_socket;
};
