#include "sampling/windows/windowssystemqueries.h"
#include "support/scriptedwindows.h"

#include <gtest/gtest.h>

namespace {

class SocketTables : public testing::Test
{
protected:
    ScriptedWindows &windows = ScriptedWindows::reset();
    WindowsSystemQueries queries{ScriptedWindows::api()};
};

MIB_TCPROW_OWNER_PID tcpRow(DWORD pid, DWORD state = MIB_TCP_STATE_ESTAB)
{
    return {.dwState = state,
            .dwLocalAddr = htonl(0x7f000001),
            .dwLocalPort = htons(8080),
            .dwRemoteAddr = htonl(0xc0000207),
            .dwRemotePort = htons(443),
            .dwOwningPid = pid};
}

MIB_UDPROW_OWNER_PID udpRow(DWORD pid)
{
    return {.dwLocalAddr = htonl(0x7f000001), .dwLocalPort = htons(5353), .dwOwningPid = pid};
}

TEST_F(SocketTables, tcpIsSizedOnceAndReadOnceIntoAZeroFilledBufferOfThatSize)
{
    windows.tcp.rows = {tcpRow(10), tcpRow(11)};
    ASSERT_TRUE(queries.tcpTable());
    ASSERT_EQ(windows.tcp.calls.size(), 2U);
    const TableCall &sizing = windows.tcp.calls[0];
    const TableCall &reading = windows.tcp.calls[1];
    EXPECT_TRUE(sizing.sizing);
    EXPECT_EQ(sizing.size, 0U);
    EXPECT_FALSE(reading.sizing);
    EXPECT_EQ(reading.size, sizeof(DWORD) + 2 * sizeof(MIB_TCPROW_OWNER_PID));
    EXPECT_TRUE(reading.zeroFilled);
}

TEST_F(SocketTables, tcpIsAskedUnsortedForAllIpv4SocketsWithOwners)
{
    ASSERT_TRUE(queries.tcpTable());
    for (const TableCall &call : windows.tcp.calls) {
        EXPECT_EQ(call.sorted, FALSE);
        EXPECT_EQ(call.family, 2U);
        EXPECT_EQ(call.tableClass, 5);
    }
}

TEST_F(SocketTables, udpIsSizedOnceAndReadOnceIntoAZeroFilledBufferOfThatSize)
{
    windows.udp.rows = {udpRow(10), udpRow(11), udpRow(12)};
    ASSERT_TRUE(queries.udpTable());
    ASSERT_EQ(windows.udp.calls.size(), 2U);
    const TableCall &sizing = windows.udp.calls[0];
    const TableCall &reading = windows.udp.calls[1];
    EXPECT_TRUE(sizing.sizing);
    EXPECT_EQ(sizing.size, 0U);
    EXPECT_FALSE(reading.sizing);
    EXPECT_EQ(reading.size, sizeof(DWORD) + 3 * sizeof(MIB_UDPROW_OWNER_PID));
    EXPECT_TRUE(reading.zeroFilled);
}

TEST_F(SocketTables, udpIsAskedUnsortedForIpv4SocketsWithOwners)
{
    ASSERT_TRUE(queries.udpTable());
    for (const TableCall &call : windows.udp.calls) {
        EXPECT_EQ(call.sorted, FALSE);
        EXPECT_EQ(call.family, 2U);
        EXPECT_EQ(call.tableClass, 1);
    }
}

TEST_F(SocketTables, tcpRowsKeepTableOrderOwnersAndNetworkByteOrder)
{
    windows.tcp.rows = {tcpRow(30), tcpRow(4, MIB_TCP_STATE_SYN_SENT), tcpRow(0)};
    const auto rows = queries.tcpTable();
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->size(), 3U);
    EXPECT_EQ((*rows)[0].pid, 30U);
    EXPECT_EQ((*rows)[0].localAddress, htonl(0x7f000001));
    EXPECT_EQ((*rows)[0].localPort, htons(8080));
    EXPECT_EQ((*rows)[0].remoteAddress, htonl(0xc0000207));
    EXPECT_EQ((*rows)[0].remotePort, htons(443));
    EXPECT_EQ((*rows)[0].state, 5U);
    EXPECT_EQ((*rows)[1].pid, 4U);
    EXPECT_EQ((*rows)[1].state, 3U);
    EXPECT_EQ((*rows)[2].pid, 0U);
}

TEST_F(SocketTables, udpRowsKeepTableOrderOwnersAndNetworkByteOrder)
{
    windows.udp.rows = {udpRow(30), udpRow(4)};
    const auto rows = queries.udpTable();
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->size(), 2U);
    EXPECT_EQ((*rows)[0].pid, 30U);
    EXPECT_EQ((*rows)[0].localAddress, htonl(0x7f000001));
    EXPECT_EQ((*rows)[0].localPort, htons(5353));
    EXPECT_EQ((*rows)[1].pid, 4U);
}

TEST_F(SocketTables, everyTcpStateIsPassedOnAsWindowsNumbersIt)
{
    for (DWORD state = 0; state <= 13; ++state)
        windows.tcp.rows.push_back(tcpRow(1, state));
    const auto rows = queries.tcpTable();
    ASSERT_TRUE(rows);
    for (DWORD state = 0; state <= 13; ++state)
        EXPECT_EQ(rows->at(state).state, state);
}

TEST_F(SocketTables, uninitialisedUpperHalfOfAPortFieldIsLeftOut)
{
    windows.tcp.rows = {tcpRow(1)};
    windows.tcp.rows[0].dwLocalPort |= 0xabcd0000;
    windows.tcp.rows[0].dwRemotePort |= 0xffff0000;
    windows.udp.rows = {udpRow(1)};
    windows.udp.rows[0].dwLocalPort |= 0x12340000;
    EXPECT_EQ(queries.tcpTable()->at(0).localPort, htons(8080));
    EXPECT_EQ(queries.tcpTable()->at(0).remotePort, htons(443));
    EXPECT_EQ(queries.udpTable()->at(0).localPort, htons(5353));
}

TEST_F(SocketTables, remoteEndOfAListeningSocketIsZeroWhateverTheTableSays)
{
    windows.tcp.rows = {tcpRow(1, MIB_TCP_STATE_LISTEN)};
    EXPECT_EQ(queries.tcpTable()->at(0).remoteAddress, 0U);
    EXPECT_EQ(queries.tcpTable()->at(0).remotePort, 0U);
    EXPECT_EQ(queries.tcpTable()->at(0).localPort, htons(8080));
}

TEST_F(SocketTables, noSocketsIsAnEmptyTableNotAFailure)
{
    ASSERT_TRUE(queries.tcpTable());
    EXPECT_TRUE(queries.tcpTable()->empty());
    ASSERT_TRUE(queries.udpTable());
    EXPECT_TRUE(queries.udpTable()->empty());
}

TEST_F(SocketTables, tcpTableThatGrowsBetweenTheCallsIsAFailureWithoutRetry)
{
    windows.tcp.rows = {tcpRow(1)};
    windows.tcp.rowsAfterSizing = {tcpRow(2)};
    EXPECT_FALSE(queries.tcpTable());
    EXPECT_EQ(windows.tcp.calls.size(), 2U);
}

TEST_F(SocketTables, udpTableThatGrowsBetweenTheCallsIsAFailureWithoutRetry)
{
    windows.udp.rows = {udpRow(1)};
    windows.udp.rowsAfterSizing = {udpRow(2)};
    EXPECT_FALSE(queries.udpTable());
    EXPECT_EQ(windows.udp.calls.size(), 2U);
}

TEST_F(SocketTables, growthIsForgottenAtTheNextQuestion)
{
    windows.tcp.rowsAfterSizing = {tcpRow(2)};
    EXPECT_FALSE(queries.tcpTable());
    windows.tcp.rowsAfterSizing.clear();
    ASSERT_TRUE(queries.tcpTable());
    EXPECT_EQ(queries.tcpTable()->size(), 1U);
}

TEST_F(SocketTables, tableThatShrinksBetweenTheCallsHasTheRowsThatAreLeft)
{
    windows.tcp.rows = {tcpRow(1)};
    windows.tcp.toldSize = static_cast<DWORD>(sizeof(DWORD) + 9 * sizeof(MIB_TCPROW_OWNER_PID));
    ASSERT_TRUE(queries.tcpTable());
    EXPECT_EQ(queries.tcpTable()->size(), 1U);
}

TEST_F(SocketTables, sizeZeroIsAFailureAndNothingIsRead)
{
    windows.tcp.toldSize = 0;
    windows.udp.toldSize = 0;
    EXPECT_FALSE(queries.tcpTable());
    EXPECT_FALSE(queries.udpTable());
    EXPECT_EQ(windows.tcp.calls.size(), 1U);
    EXPECT_EQ(windows.udp.calls.size(), 1U);
}

TEST_F(SocketTables, failureOfOneProtocolLeavesTheOther)
{
    windows.tcp.failure = ERROR_NOT_SUPPORTED;
    windows.udp.rows = {udpRow(7)};
    EXPECT_FALSE(queries.tcpTable());
    ASSERT_TRUE(queries.udpTable());
    EXPECT_EQ(queries.udpTable()->size(), 1U);

    windows.tcp.failure = NO_ERROR;
    windows.udp.failure = ERROR_INVALID_PARAMETER;
    EXPECT_TRUE(queries.tcpTable());
    EXPECT_FALSE(queries.udpTable());
}

TEST_F(SocketTables, rowsBeyondTheBufferAreNotRead)
{
    windows.tcp.rows = {tcpRow(1), tcpRow(2)};
    windows.tcp.toldCount = 1'000'000;
    windows.udp.rows = {udpRow(1)};
    windows.udp.toldCount = 0xffffffff;
    EXPECT_EQ(queries.tcpTable()->size(), 2U);
    EXPECT_EQ(queries.udpTable()->size(), 1U);
}

TEST_F(SocketTables, bufferTooSmallForARowCountHoldsNoRows)
{
    windows.tcp.rows = {tcpRow(1)};
    windows.tcp.toldSize = 3;
    ASSERT_TRUE(queries.tcpTable());
    EXPECT_TRUE(queries.tcpTable()->empty());
}

} // namespace
