// What the parts of a tick's questions to the kernel cost, on the desktop load.
#include "bench/loads.h"
#include "sampling/linux/interfacetable.h"
#include "sampling/linux/linuxsystemqueries.h"
#include "sampling/linux/processdirectory.h"
#include "sampling/linux/sockettable.h"
#include "tests/support/linux/filelimit.h"

#include <benchmark/benchmark.h>

#include <linux/netlink.h>
#include <netinet/in.h>

namespace {

void interfaceDump(benchmark::State &state)
{
    NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_ROUTE); });
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(dumpInterfaces(socket));
}

void socketDump(benchmark::State &state)
{
    NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_SOCK_DIAG); });
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(dumpSockets(socket, static_cast<std::uint8_t>(state.range(0))));
}

void rememberedOwners(benchmark::State &state)
{
    NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_SOCK_DIAG); });
    const auto tcp = dumpSockets(socket, IPPROTO_TCP);
    const auto udp = dumpSockets(socket, IPPROTO_UDP);
    SocketOwners owners("/proc");
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(owners.owners(SocketOwners::Table::Tcp, *tcp));
        benchmark::DoNotOptimize(owners.owners(SocketOwners::Table::Udp, *udp));
    }
}

void unknownOwners(benchmark::State &state)
{
    NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_SOCK_DIAG); });
    const auto tcp = dumpSockets(socket, IPPROTO_TCP);
    for ([[maybe_unused]] auto _ : state) {
        SocketOwners owners("/proc");
        benchmark::DoNotOptimize(owners.owners(SocketOwners::Table::Tcp, *tcp));
    }
}

void checkOfOneProcess(benchmark::State &state)
{
    ProcessDirectory directory("/proc");
    const auto self = static_cast<std::uint32_t>(::getpid());
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(directory.fileSummary(self));
}

void startTimeOfOneProcess(benchmark::State &state)
{
    ProcessDirectory directory("/proc");
    const auto self = static_cast<std::uint32_t>(::getpid());
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(directory.startTime(self));
}

void lookAtOneDescriptor(benchmark::State &state)
{
    ProcessDirectory directory("/proc");
    const FileDescriptor socket = openNetlinkSocket(NETLINK_SOCK_DIAG);
    const auto self = static_cast<std::uint32_t>(::getpid());
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(
            directory.socketAt(self, static_cast<std::uint32_t>(socket.get())));
}

void processList(benchmark::State &state)
{
    ProcessDirectory directory("/proc");
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(directory.processes());
}

void imagePathAndName(benchmark::State &state)
{
    LinuxSystemQueries queries;
    const auto self = static_cast<std::uint32_t>(::getpid());
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(queries.imagePath(self));
        benchmark::DoNotOptimize(queries.processListName(self));
    }
}

BENCHMARK(interfaceDump);
BENCHMARK(socketDump)->ArgName("protocol")->Arg(IPPROTO_TCP)->Arg(IPPROTO_UDP);
BENCHMARK(rememberedOwners);
BENCHMARK(unknownOwners);
BENCHMARK(checkOfOneProcess);
BENCHMARK(startTimeOfOneProcess);
BENCHMARK(lookAtOneDescriptor);
BENCHMARK(processList);
BENCHMARK(imagePathAndName);

} // namespace

int main(int argc, char *argv[])
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    raiseFileLimit();
    enterBenchNetwork();
    const Load load({"desktop", 150, 8, 2, 60});
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
