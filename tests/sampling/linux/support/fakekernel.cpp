#include "tests/sampling/linux/support/fakekernel.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <array>

FileDescriptor FakeKernel::connectPeer()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        qFatal("socketpair failed");
    // As on the real socket: what is never said is waited for only so long.
    const timeval limit{0, 200'000};
    if (::setsockopt(ends[1], SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) != 0)
        qFatal("setsockopt failed");
    m_socket = FileDescriptor(ends[0]);
    return FileDescriptor(ends[1]);
}

void FakeKernel::say(const QByteArray &datagram) const
{
    if (::send(m_socket.get(), datagram.constData(), static_cast<size_t>(datagram.size()), 0)
        != datagram.size())
        qFatal("send failed");
}

QByteArray FakeKernel::message(quint16 type, quint32 sequence, const QByteArray &payload,
                               quint16 flags, quint32 port)
{
    nlmsghdr header{};
    header.nlmsg_len = static_cast<quint32>(sizeof header) + static_cast<quint32>(payload.size());
    header.nlmsg_type = type;
    header.nlmsg_flags = flags;
    header.nlmsg_seq = sequence;
    header.nlmsg_pid = port;
    QByteArray bytes(reinterpret_cast<const char *>(&header), sizeof header);
    bytes += payload;
    bytes.append((NLMSG_ALIGNTO - bytes.size() % NLMSG_ALIGNTO) % NLMSG_ALIGNTO, '\0');
    return bytes;
}

QByteArray FakeKernel::done(quint32 sequence, qint32 error, quint16 flags)
{
    return message(NLMSG_DONE, sequence,
                   QByteArray(reinterpret_cast<const char *>(&error), sizeof error), flags);
}
