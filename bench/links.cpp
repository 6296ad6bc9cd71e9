#include "bench/links.h"

#include "bench/report.h"
#include "bench/stopwatch.h"
#include "sampling/linux/interfacetable.h"
#include "sampling/linux/netlinksocket.h"

#include <QProcess>
#include <QTemporaryFile>

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr int cables = 1000;
constexpr std::size_t links = 2 * cables + 1; // with the loopback

/// Both ends of virtual cables, as containers and their hosts are connected.
void makeLinks()
{
    QTemporaryFile commands;
    QByteArray text;
    for (int i = 0; i < cables; ++i)
        text += u"link add name near%1 type veth peer name far%1\n"_s.arg(i).toLatin1();
    if (!commands.open() || commands.write(text) != text.size() || !commands.flush()
        || QProcess::execute(u"ip"_s, {u"-batch"_s, commands.fileName()}) != 0) {
        std::fputs("the links cannot be made\n", stderr);
        std::exit(1);
    }
}

/// The kernel's dump that the list is made of, received and thrown away.
void dumpLinksAlone(NetlinkSocket &socket)
{
    ifinfomsg request{};
    request.ifi_family = AF_UNSPEC;
    if (!socket.dump(
            RTM_GETLINK, std::as_bytes(std::span(&request, 1)), [] {},
            [](const NetlinkMessage &) {}))
        std::exit(1);
}

void askLinks(NetlinkSocket &socket)
{
    const auto rows = dumpInterfaces(socket);
    if (rows && rows->size() == links)
        return;
    std::fprintf(stderr, "%zu of %zu links are listed\n", rows ? rows->size() : 0, links);
    std::exit(1);
}

} // namespace

void measureLinks(Report &report, int runs)
{
    makeLinks();
    NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_ROUTE); });
    dumpLinksAlone(socket);
    Sample list;
    Sample listProcessor;
    Sample dump;
    Sample dumpProcessor;
    // By turns, and each as often before as after the other.
    for (int run = 0; run < runs; ++run) {
        if (run % 2 == 0)
            take(list, listProcessor, [&] { askLinks(socket); });
        take(dump, dumpProcessor, [&] { dumpLinksAlone(socket); });
        if (run % 2 != 0)
            take(list, listProcessor, [&] { askLinks(socket); });
    }
    const QString load = u"links"_s;
    report.add(load, u"list of interfaces"_s, list, u"ms"_s);
    report.add(load, u"list of interfaces, processor"_s, listProcessor, u"ms"_s);
    report.add(load, u"kernel dump alone"_s, dump, u"ms"_s);
    report.add(load, u"kernel dump alone, processor"_s, dumpProcessor, u"ms"_s);
    report.addAgainst(load, u"list / dump, processor"_s, ratios(listProcessor, dumpProcessor), 1.2);
    report.print();
}
