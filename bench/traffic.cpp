#include "bench/traffic.h"

#include <QFile>
#include <QProcess>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *farEnd = "192.0.2.2"; // RFC 5737: for no real host

void ip(const QString &arguments)
{
    if (QProcess::execute(u"ip"_s, QProcess::splitCommand(arguments)) != 0) {
        std::fprintf(stderr, "ip %s failed\n", qPrintable(arguments));
        std::exit(1);
    }
}

} // namespace

Traffic::Traffic() : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    // Without IPv6 the kernel sends nothing there of itself.
    QFile ipv6(u"/proc/sys/net/ipv6/conf/default/disable_ipv6"_s);
    if (ipv6.open(QFile::WriteOnly | QFile::Unbuffered)) // now, before there are interfaces
        ipv6.write("1");
    ip(u"link add name near type veth peer name far"_s);
    ip(u"address add 192.0.2.1/24 dev near"_s);
    ip(u"link set near up"_s);
    ip(u"link set far address 02:00:00:00:00:02"_s);
    ip(u"link set far up"_s);
    ip(u"neighbour add 192.0.2.2 lladdr 02:00:00:00:00:02 dev near"_s);

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(9);
    ::inet_pton(AF_INET, farEnd, &address.sin_addr);
    if (::connect(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address)
        != 0) {
        std::perror("connect");
        std::exit(1);
    }
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { sendSome(); });
    m_timer.setInterval(100);
    setFlowing(true);
}

void Traffic::setFlowing(bool flowing)
{
    if (flowing)
        m_timer.start();
    else
        m_timer.stop();
}

void Traffic::sendSome()
{
    // No two seconds in a row are alike, and neither do they all grow.
    constexpr int turns = 97;
    m_turn = (m_turn + 1) % turns;
    static constexpr std::array<char, 1200> packet{};
    for (int i = 0; i < 1 + m_turn % 29; ++i) {
        if (::send(m_socket.get(), packet.data(), packet.size() - std::size_t(m_turn), 0) < 0) {
            std::perror("send");
            std::exit(1);
        }
    }
}
