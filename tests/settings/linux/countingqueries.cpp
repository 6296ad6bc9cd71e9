// The operating system behind the program that killed_test ends: a machine that carries one byte
// more at every tick, and says so on the standard output before the tick goes on.
#include "sampling/systemqueries.h"

#include <unistd.h>

namespace {

class CountingQueries : public SystemQueries
{
public:
    std::optional<std::vector<InterfaceRow>> interfaceTable() override
    {
        InterfaceRow row;
        row.up = true;
        row.inOctets = m_reads++;
        // The first read is the baseline, every other one is a tick's.
        if (row.inOctets > 0 && write(STDOUT_FILENO, "t", 1) != 1)
            return std::nullopt;
        return std::vector{row};
    }
    std::optional<std::vector<TcpRow>> tcpTable() override { return std::vector<TcpRow>{}; }
    std::optional<std::vector<UdpRow>> udpTable() override { return std::vector<UdpRow>{}; }
    std::string imagePath(std::uint32_t) override { return {}; }
    std::optional<std::string> processListName(std::uint32_t) override { return std::nullopt; }

private:
    std::uint64_t m_reads = 0;
};

} // namespace

std::unique_ptr<SystemQueries> makeSystemQueries()
{
    return std::make_unique<CountingQueries>();
}
