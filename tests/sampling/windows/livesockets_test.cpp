#include "sampling/windows/windowssystemqueries.h"
#include "support/childprocess.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

constexpr DWORD loopbackAddress = 0x0100007f; // 127.0.0.1 in network byte order

/// Asks about a process whose sockets are known. The program's name is one that only UTF-16 holds.
class LiveSockets : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        program = std::filesystem::temp_directory_path()
            / L"socket-owner \u017c\u00f3\u0142w \u7f51.exe";
        std::filesystem::copy_file(socketOwnerProgram(), program,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    static void TearDownTestSuite() { std::filesystem::remove(program); }

    void SetUp() override
    {
        child = std::make_unique<ChildProcess>(program);
        std::istringstream ports(child->readLine());
        ports >> listenPort >> connectingPort >> udpPort >> ipv6Port;
        ASSERT_TRUE(ports) << "the child process did not tell its ports";
    }

    void command(const std::string &line)
    {
        child->writeLine(line);
        ASSERT_EQ(child->readLine(), "done");
    }

    /// Asks until the answer is yes, for what the kernel does in its own time. False after 20 s.
    template <typename Question> static bool becomesTrue(Question question)
    {
        constexpr ULONGLONG patience = 20'000; // ms
        const ULONGLONG start = GetTickCount64();
        while (!question()) {
            if (GetTickCount64() - start > patience)
                return false;
            SwitchToThread();
        }
        return true;
    }

    /// Waits until the system has let go of a process that ended: its id stays known for a moment.
    static bool processIsGone(DWORD pid)
    {
        return becomesTrue([pid] {
            return !OwnedHandle{OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid)};
        });
    }

    /// Both tables hold every process's sockets: one that grows between the sizing and the reading
    /// call is a failed query, and asking again is what the next tick does.
    std::vector<TcpRow> tcpRows()
    {
        std::optional<std::vector<TcpRow>> rows;
        EXPECT_TRUE(becomesTrue([&] { return (rows = queries.tcpTable()).has_value(); }));
        return rows.value_or(std::vector<TcpRow>());
    }
    std::vector<UdpRow> udpRows()
    {
        std::optional<std::vector<UdpRow>> rows;
        EXPECT_TRUE(becomesTrue([&] { return (rows = queries.udpTable()).has_value(); }));
        return rows.value_or(std::vector<UdpRow>());
    }

    /// The IPv4 TCP socket with that local port, and remote port where one is given.
    std::optional<TcpRow> tcpSocket(unsigned short localPort, unsigned short remotePort = 0)
    {
        const auto rows = tcpRows();
        const auto found = std::ranges::find_if(rows, [&](const TcpRow &row) {
            return row.localPort == htons(localPort) && row.remotePort == htons(remotePort);
        });
        return found == rows.end() ? std::nullopt : std::optional(*found);
    }

    /// Waits until that socket is in that state: the two ends of a connection change one after
    /// the other, and neither with the call that asked for it.
    bool reachesState(unsigned short localPort, unsigned short remotePort, DWORD state)
    {
        return becomesTrue([=, this] {
            const auto row = tcpSocket(localPort, remotePort);
            return row && row->state == state;
        });
    }

    [[nodiscard]] std::string programAsUtf8() const
    {
        const std::u8string text = program.u8string();
        return {text.begin(), text.end()};
    }

    static std::filesystem::path program;
    std::unique_ptr<ChildProcess> child;
    unsigned short listenPort = 0;
    unsigned short connectingPort = 0;
    unsigned short udpPort = 0;
    unsigned short ipv6Port = 0;
    WindowsSystemQueries queries;
};

std::filesystem::path LiveSockets::program;

TEST_F(LiveSockets, listenerOnAllAddressesHasOwnerAndNoRemoteEnd)
{
    const auto row = tcpSocket(listenPort);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->pid, child->pid());
    EXPECT_EQ(row->localAddress, 0U);
    EXPECT_EQ(row->remoteAddress, 0U);
    EXPECT_EQ(row->remotePort, 0U);
    EXPECT_EQ(row->state, 2U);
}

TEST_F(LiveSockets, connectingEndHasOwnerAndBothEndpoints)
{
    const auto row = tcpSocket(connectingPort, listenPort);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->pid, child->pid());
    EXPECT_EQ(row->localAddress, loopbackAddress);
    EXPECT_EQ(row->remoteAddress, loopbackAddress);
    EXPECT_EQ(row->state, 5U);
}

TEST_F(LiveSockets, acceptedEndHasBothEndpoints)
{
    // Wine names no owner of an accepted socket, so the owner is not looked at here.
    const auto row = tcpSocket(listenPort, connectingPort);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->localAddress, loopbackAddress);
    EXPECT_EQ(row->remoteAddress, loopbackAddress);
    EXPECT_EQ(row->state, 5U);
}

TEST_F(LiveSockets, halfClosedConnectionIsInFinWait2AndCloseWait)
{
    command("half-close");
    EXPECT_TRUE(reachesState(connectingPort, listenPort, 7));
    EXPECT_TRUE(reachesState(listenPort, connectingPort, 8));
}

TEST_F(LiveSockets, boundUdpSocketHasOwnerAndEndpoint)
{
    const auto rows = udpRows();
    const auto row = std::ranges::find(rows, htons(udpPort), &UdpRow::localPort);
    ASSERT_NE(row, rows.end());
    EXPECT_EQ(row->pid, child->pid());
    EXPECT_EQ(row->localAddress, loopbackAddress);
}

TEST_F(LiveSockets, ipv6SocketIsInNoTable)
{
    EXPECT_FALSE(tcpSocket(ipv6Port));
}

TEST_F(LiveSockets, runningProcessHasPathAndNameAsUtf8)
{
    EXPECT_EQ(queries.imagePath(child->pid()), programAsUtf8());
    const std::u8string name = program.filename().u8string();
    EXPECT_EQ(queries.processListName(child->pid()), std::string(name.begin(), name.end()));
}

TEST_F(LiveSockets, exchangedOctetsAppearOnTheLoopback)
{
    const auto loopback = [this] {
        const auto rows = *queries.interfaceTable();
        return *std::ranges::find(rows, true, &InterfaceRow::loopback);
    };
    constexpr std::uint64_t octets = 1 << 20;
    const InterfaceRow before = loopback();
    command("exchange " + std::to_string(octets));
    const InterfaceRow after = loopback();
    EXPECT_GE(after.inOctets - before.inOctets, octets);
    EXPECT_GE(after.outOctets - before.outOctets, octets);
}

TEST_F(LiveSockets, processThatEndedHasNoPathNoNameAndNoSockets)
{
    const DWORD pid = child->pid();
    ASSERT_TRUE(child->finish());
    child.reset();
    ASSERT_TRUE(processIsGone(pid));
    EXPECT_EQ(queries.imagePath(pid), "");
    EXPECT_FALSE(queries.processListName(pid));
    EXPECT_EQ(std::ranges::count(tcpRows(), pid, &TcpRow::pid), 0);
    EXPECT_EQ(std::ranges::count(udpRows(), pid, &UdpRow::pid), 0);
}

TEST_F(LiveSockets, connectionLeftInTimeWaitHasNoOwner)
{
    command("half-close"); // so that the connecting end is the one that waits
    ASSERT_TRUE(child->finish());
    child.reset();
    ASSERT_TRUE(reachesState(connectingPort, listenPort, 11));
    const auto row = tcpSocket(connectingPort, listenPort);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->pid, 0U);
}

TEST_F(LiveSockets, processIdsWithoutAProcessHaveNoPathAndNoName)
{
    for (const DWORD pid : {DWORD{0}, DWORD{0xfffffffc}}) {
        EXPECT_EQ(queries.imagePath(pid), "") << pid;
    }
    EXPECT_FALSE(queries.processListName(0xfffffffc));
}

TEST_F(LiveSockets, backendOfTheProgramAnswersTheSame)
{
    const std::unique_ptr<SystemQueries> backend = makeSystemQueries();
    ASSERT_NE(backend, nullptr);
    EXPECT_EQ(backend->imagePath(child->pid()), programAsUtf8());
}

} // namespace
