#include "tests/sampling/linux/support/networknamespace.h"

#include "sampling/linux/filedescriptor.h"
#include "tests/support/linux/ownnamespaces.h"

#include <QProcess>

#include <arpa/inet.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstring>
#include <string>

using namespace Qt::StringLiterals;

bool enterOwnNetwork()
{
    if (!enterOwnNamespaces(CLONE_NEWNET))
        return false;
    const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    if (::ioctl(socket.get(), SIOCSIFFLAGS, &request) != 0)
        qFatal("the loopback of the own network does not come up");
    return true;
}

QByteArray runIp(const QStringList &arguments)
{
    QProcess ip;
    ip.start(u"ip"_s, arguments);
    if (!ip.waitForFinished() || ip.exitStatus() != QProcess::NormalExit || ip.exitCode() != 0)
        qFatal("ip %s: %s", qPrintable(arguments.join(u' ')), ip.readAllStandardError().data());
    return ip.readAllStandardOutput();
}

void sendBroadcasts(const char *interfaceName, int count, int size)
{
    const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    if (::setsockopt(socket.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0
        || ::setsockopt(socket.get(), SOL_SOCKET, SO_BINDTODEVICE, interfaceName,
                        static_cast<socklen_t>(std::strlen(interfaceName)))
            != 0)
        qFatal("cannot broadcast on %s", interfaceName);
    sockaddr_in everyone{};
    everyone.sin_family = AF_INET;
    everyone.sin_port = htons(9);
    everyone.sin_addr.s_addr = INADDR_BROADCAST;
    const std::string payload(static_cast<std::size_t>(size), 'x');
    for (int i = 0; i < count; ++i) {
        if (::sendto(socket.get(), payload.data(), payload.size(), 0,
                     reinterpret_cast<const sockaddr *>(&everyone), sizeof everyone)
            < 0)
            qFatal("sendto on %s: %s", interfaceName, std::strerror(errno));
    }
}
