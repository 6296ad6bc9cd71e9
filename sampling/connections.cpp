#include "sampling/connections.h"

#include "sampling/systemqueries.h"

#include <QtEndian>

#include <array>
#include <bit>

using namespace Qt::StringLiterals;

namespace {

template <typename Row, typename MakeEntry>
void appendConnections(QList<ConnectionEntry> &entries,
                       const std::optional<std::vector<Row>> &table, quint32 pid, qint32 maxCount,
                       MakeEntry makeEntry)
{
    if (!table)
        return;
    for (const Row &row : *table) {
        if (entries.size() >= maxCount)
            return;
        if (row.pid == pid)
            entries.append(makeEntry(row));
    }
}

} // namespace

QList<ConnectionEntry> connectionsForPid(SystemQueries &queries, quint32 pid, qint32 maxCount)
{
    QList<ConnectionEntry> entries;
    appendConnections(entries, queries.tcpTable(), pid, maxCount, [](const TcpRow &row) {
        return ConnectionEntry{u"TCP"_s, endpointText(row.localAddress, row.localPort),
                               endpointText(row.remoteAddress, row.remotePort),
                               tcpStateText(row.state)};
    });
    appendConnections(entries, queries.udpTable(), pid, maxCount, [](const UdpRow &row) {
        return ConnectionEntry{u"UDP"_s, endpointText(row.localAddress, row.localPort), u"-"_s,
                               u"Open"_s};
    });
    return entries;
}

QString endpointText(quint32 address, quint16 port)
{
    const auto octets = std::bit_cast<std::array<quint8, 4>>(address);
    return u"%1.%2.%3.%4:%5"_s.arg(octets[0]).arg(octets[1]).arg(octets[2]).arg(octets[3]).arg(
        qFromBigEndian(port));
}

QString tcpStateText(quint32 state)
{
    static constexpr std::array names{
        u"Closed",     u"Listen",     u"Syn sent", u"Syn received", u"Established", u"Fin wait 1",
        u"Fin wait 2", u"Close wait", u"Closing",  u"Last ack",     u"Time wait",   u"Delete",
    };
    if (state < 1 || state > names.size())
        return u"Unknown"_s;
    return QStringView(names.at(state - 1)).toString();
}
