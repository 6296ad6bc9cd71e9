// What the two socket tables with their owners cost, beside the kernel's dumps alone and beside the
// tools that people would ask instead, all on the same loads and by turns in the same run.
#include "bench/links.h"
#include "bench/loads.h"
#include "bench/report.h"
#include "bench/stopwatch.h"
#include "sampling/linux/linuxsystemqueries.h"
#include "tests/support/linux/filelimit.h"

#include <fcntl.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <malloc.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr uid_t nobody = 65534;

/// Runs a program to its end with its output thrown away; ends the benchmark when it fails.
void runTool(const std::vector<const char *> &command)
{
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const char *argument : command)
        arguments.push_back(const_cast<char *>(argument));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    int status = -1;
    if (::posix_spawnp(&pid, command[0], &actions, nullptr, arguments.data(), environ) != 0
        || ::waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) > 1) {
        std::fprintf(stderr, "%s does not run\n", command[0]);
        std::exit(1);
    }
    ::posix_spawn_file_actions_destroy(&actions);
}

void runSs()
{
    runTool({"ss", "-4tuanp"});
}

void runLsof()
{
    runTool({"lsof", "-i4", "-n", "-P"});
}

/// What net_connections() takes inside a running interpreter, whose start is not counted.
double millisecondsOfPsutil()
{
    FILE *output = ::popen("/usr/bin/python3 -c 'import psutil, time; t = time.perf_counter(); "
                           "psutil.net_connections(\"inet4\"); "
                           "print((time.perf_counter() - t) * 1000)'",
                           "r");
    double milliseconds = 0;
    if (!output || std::fscanf(output, "%lf", &milliseconds) != 1 || ::pclose(output) != 0) {
        std::fputs("python3-psutil does not run\n", stderr);
        std::exit(1);
    }
    return milliseconds;
}

/// The kernel's dumps that the tables are made of, received and thrown away.
void dumpAlone(NetlinkSocket &socket)
{
    for (const std::uint8_t protocol : {std::uint8_t{IPPROTO_TCP}, std::uint8_t{IPPROTO_UDP}}) {
        for (const std::uint8_t family : {std::uint8_t{AF_INET}, std::uint8_t{AF_INET6}}) {
            inet_diag_req_v2 request{};
            request.sdiag_family = family;
            request.sdiag_protocol = protocol;
            request.idiag_states = 0xffe;
            if (!socket.dump(
                    SOCK_DIAG_BY_FAMILY, std::as_bytes(std::span(&request, 1)), [] {},
                    [](const NetlinkMessage &) {}))
                std::exit(1);
        }
    }
}

/// Both tables, as a tick asks for them. Returns how many rows have an owner.
std::size_t askTables(SystemQueries &queries)
{
    const auto tcp = queries.tcpTable();
    const auto udp = queries.udpTable();
    if (!tcp || !udp) {
        std::fputs("a table cannot be had\n", stderr);
        std::exit(1);
    }
    const auto owned = [](const auto &row) { return row.pid != 0; };
    return static_cast<std::size_t>(std::ranges::count_if(*tcp, owned)
                                    + std::ranges::count_if(*udp, owned));
}

void requireOwners(std::size_t owned, std::size_t expected)
{
    if (owned == expected)
        return;
    std::fprintf(stderr, "%zu of %zu sockets have an owner\n", owned, expected);
    std::exit(1);
}

struct Series
{
    Sample tables;
    Sample tablesProcessor;
    Sample dumps;
    Sample dumpsProcessor;
    Sample ss;
};

/// Takes `runs` values of each, by turns and each as often before as after the other; `between` is
/// done before every table and not counted.
Series measure(
    SystemQueries &queries, int runs, std::size_t expected,
    const std::function<void()> &between = [] {})
{
    NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_SOCK_DIAG); });
    dumpAlone(socket);
    Series series;
    std::size_t owned = 0;
    const auto takeDumps
        = [&] { take(series.dumps, series.dumpsProcessor, [&] { dumpAlone(socket); }); };
    const auto takeTables = [&] {
        take(series.tables, series.tablesProcessor, [&] { owned = askTables(queries); });
        requireOwners(owned, expected);
    };
    for (int run = 0; run < runs; ++run) {
        between();
        if (run % 2 == 0)
            takeTables();
        series.ss.values.append(millisecondsOf(runSs));
        takeDumps();
        if (run % 2 != 0)
            takeTables();
    }
    return series;
}

void addSeries(Report &report, const QString &load, const Series &series)
{
    report.add(load, u"tables with owners"_s, series.tables, u"ms"_s);
    report.add(load, u"tables with owners, processor"_s, series.tablesProcessor, u"ms"_s);
    report.add(load, u"kernel dumps alone"_s, series.dumps, u"ms"_s);
    report.add(load, u"kernel dumps alone, processor"_s, series.dumpsProcessor, u"ms"_s);
    report.add(load, u"ss -4tuanp"_s, series.ss, u"ms"_s);
}

Sample firstTicks(int runs, std::size_t expected, Sample &ss)
{
    Sample first;
    for (int run = 0; run < runs; ++run) {
        ss.values.append(millisecondsOf(runSs));
        LinuxSystemQueries queries;
        std::size_t owned = 0;
        first.values.append(millisecondsOf([&] { owned = askTables(queries); }));
        requireOwners(owned, expected);
    }
    return first;
}

/// Octets that a backend keeps on the heap from one tick to the next, for each socket.
double octetsASocket(int sockets)
{
    const std::size_t before = ::mallinfo2().uordblks;
    LinuxSystemQueries queries;
    for (int tick = 0; tick < 3; ++tick)
        askTables(queries);
    return double(::mallinfo2().uordblks - before) / sockets;
}

/// The loads on which all is measured that does not change between two ticks.
void measureSteady(Report &report, const LoadShape &shape, int runs, double dumpsBar)
{
    const Load load(shape);
    const auto sockets = static_cast<std::size_t>(load.sockets());
    const QString name = QString::fromStdString(shape.name);

    Sample firstSs;
    const Sample first = firstTicks(std::max(5, runs / 3), sockets, firstSs);
    LinuxSystemQueries queries;
    askTables(queries);
    const Series series = measure(queries, runs, sockets);
    addSeries(report, name, series);
    report.addAgainst(name, u"tables / ss"_s, ratios(series.tables, series.ss), 0.1);
    report.addAgainst(name, u"tables / dumps, processor"_s,
                      ratios(series.tablesProcessor, series.dumpsProcessor), dumpsBar);
    report.add(name, u"first tick"_s, first, u"ms"_s);
    report.addAgainst(name, u"first tick / ss"_s, ratios(first, firstSs), 1);

    // A few slow ones are enough to tell twenty times from ten.
    constexpr int slowRuns = 5;
    Sample lsof;
    Sample psutil;
    Sample beside;
    for (int run = 0; run < slowRuns; ++run) {
        lsof.values.append(millisecondsOf(runLsof));
        psutil.values.append(millisecondsOfPsutil());
        beside.values.append(millisecondsOf([&] { askTables(queries); }));
    }
    report.add(name, u"lsof -i4 -n -P"_s, lsof, u"ms"_s);
    report.addAgainst(name, u"lsof / tables"_s, ratios(lsof, beside), 20, false);
    report.add(name, u"psutil net_connections('inet4')"_s, psutil, u"ms"_s);
    report.add(name, u"psutil / tables"_s, ratios(psutil, beside), u"x"_s);
    report.addAgainst(name, u"octets remembered a socket"_s,
                      Sample{{octetsASocket(load.sockets())}}, 100, true, u"B"_s);
    report.print();
}

void measureChurn(Report &report, const LoadShape &shape, int runs)
{
    Load load(shape);
    LinuxSystemQueries queries;
    askTables(queries);
    const Series series
        = measure(queries, runs, static_cast<std::size_t>(load.sockets()), [&] { load.churn(); });
    addSeries(report, u"churn"_s, series);
    report.addAgainst(u"churn"_s, u"tables / ss"_s, ratios(series.tables, series.ss), 0.25);
    report.print();
}

/// A load as root sees it and as nobody does, to whom a tenth of it belongs, or nothing where
/// `owner` is root.
void measureForeign(Report &report, const QString &name, const LoadShape &shape, uid_t owner,
                    int runs)
{
    const Load load(shape, owner);
    const auto sockets = static_cast<std::size_t>(load.sockets());
    const std::size_t own = owner == nobody ? sockets / 10 : 0;
    LinuxSystemQueries asRoot;
    LinuxSystemQueries asNobody;
    askTables(asRoot);
    const auto asUnprivileged = [](const std::function<void()> &work) {
        if (::seteuid(nobody) != 0)
            std::exit(1);
        work();
        if (::seteuid(0) != 0)
            std::exit(1);
    };
    std::size_t owned = 0;
    asUnprivileged([&] { owned = askTables(asNobody); });
    requireOwners(owned, own);
    Sample steady;
    Sample steadyProcessor;
    Sample foreign;
    Sample foreignProcessor;
    for (int run = 0; run < runs; ++run) {
        take(steady, steadyProcessor, [&] { owned = askTables(asRoot); });
        requireOwners(owned, sockets);
        asUnprivileged(
            [&] { take(foreign, foreignProcessor, [&] { owned = askTables(asNobody); }); });
        requireOwners(owned, own);
    }
    report.add(name, u"tables seen by root"_s, steady, u"ms"_s);
    report.add(name, u"tables seen by an unprivileged user"_s, foreign, u"ms"_s);
    // Equal is what is asked for; the rest is the noise of the machine.
    report.addAgainst(name, u"unprivileged / root, processor"_s,
                      ratios(foreignProcessor, steadyProcessor), 1.05);
    report.print();
}

} // namespace

/// Arguments: the file for the JSON, and the names of the loads to measure, all without any.
int main(int argc, char *argv[])
{
    QStringList wanted;
    for (int i = 2; i < argc; ++i)
        wanted.append(QString::fromLocal8Bit(argv[i]));
    const auto wants = [&](const char *load) {
        return wanted.isEmpty() || wanted.contains(QLatin1StringView(load));
    };
    raiseFileLimit();
    enterBenchNetwork();
    const LoadShape desktop{"desktop", 150, 8, 2, 60};
    const LoadShape busy{"busy", 300, 64, 16, 100};
    const LoadShape server{"server", 50, 1200, 100, 200};
    Report report;
    if (wants("desktop"))
        measureSteady(report, desktop, 41, 1.2);
    if (wants("busy"))
        measureSteady(report, busy, 21, 1.2);
    if (wants("server"))
        measureSteady(report, server, 11, 1.15);
    if (wants("churn"))
        measureChurn(report, desktop, 41);
    if (wants("foreign"))
        measureForeign(report, u"foreign"_s, desktop, nobody, 97);
    if (wants("others"))
        measureForeign(report, u"others"_s, server, 0, 21);
    if (wants("links"))
        measureLinks(report, 41);
    return report.finish(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString());
}
