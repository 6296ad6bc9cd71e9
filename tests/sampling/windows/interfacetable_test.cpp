#include "sampling/windows/windowssystemqueries.h"
#include "support/scriptedwindows.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

class InterfaceTable : public testing::Test
{
protected:
    ScriptedWindows &windows = ScriptedWindows::reset();
    WindowsSystemQueries queries{ScriptedWindows::api()};
};

MIB_IF_ROW2 interfaceRow(std::wstring_view alias, std::wstring_view description)
{
    MIB_IF_ROW2 row{};
    row.Type = IF_TYPE_ETHERNET_CSMACD;
    row.OperStatus = IfOperStatusUp;
    std::ranges::copy(alias, std::begin(row.Alias));
    std::ranges::copy(description, std::begin(row.Description));
    return row;
}

TEST_F(InterfaceTable, rowsKeepTableOrderNamesAndCounters)
{
    windows.interfaces
        = {interfaceRow(L"Ethernet", L"Gigabit Adapter"), interfaceRow(L"", L"WAN Miniport")};
    windows.interfaces[0].InOctets = 0xfedcba9876543210;
    windows.interfaces[0].OutOctets = 7;
    const auto rows = queries.interfaceTable();
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->size(), 2U);
    EXPECT_EQ((*rows)[0].alias, "Ethernet");
    EXPECT_EQ((*rows)[0].description, "Gigabit Adapter");
    EXPECT_EQ((*rows)[0].inOctets, 0xfedcba9876543210U);
    EXPECT_EQ((*rows)[0].outOctets, 7U);
    EXPECT_EQ((*rows)[1].alias, "");
    EXPECT_EQ((*rows)[1].description, "WAN Miniport");
}

TEST_F(InterfaceTable, onlyTheSoftwareLoopbackTypeIsLoopback)
{
    windows.interfaces.assign(3, interfaceRow(L"Loopback Pseudo-Interface 1", L"Loopback"));
    windows.interfaces[0].Type = 24;
    windows.interfaces[1].Type = 23;
    windows.interfaces[2].Type = IF_TYPE_TUNNEL;
    const auto rows = queries.interfaceTable();
    ASSERT_TRUE(rows);
    EXPECT_TRUE((*rows)[0].loopback);
    EXPECT_FALSE((*rows)[1].loopback);
    EXPECT_FALSE((*rows)[2].loopback);
}

TEST_F(InterfaceTable, onlyOperationalStatusUpIsUp)
{
    for (const IF_OPER_STATUS status :
         {IfOperStatusUp, IfOperStatusDown, IfOperStatusTesting, IfOperStatusUnknown,
          IfOperStatusDormant, IfOperStatusNotPresent, IfOperStatusLowerLayerDown}) {
        windows.interfaces = {interfaceRow(L"a", L"b")};
        windows.interfaces[0].OperStatus = status;
        EXPECT_EQ(queries.interfaceTable()->at(0).up, status == 1) << status;
    }
}

TEST_F(InterfaceTable, namesAreUtf8)
{
    windows.interfaces = {interfaceRow(L"\u4ee5\u592a\u7f51", L"Adaptateur r\u00e9seau")};
    EXPECT_EQ(queries.interfaceTable()->at(0).alias, "\xe4\xbb\xa5\xe5\xa4\xaa\xe7\xbd\x91");
    EXPECT_EQ(queries.interfaceTable()->at(0).description, "Adaptateur r\xc3\xa9seau");
}

TEST_F(InterfaceTable, nameThatFillsItsFieldWithoutTerminatorEndsThere)
{
    windows.interfaces = {interfaceRow(std::wstring(257, L'a'), std::wstring(257, L'd'))};
    EXPECT_EQ(queries.interfaceTable()->at(0).alias, std::string(257, 'a'));
    EXPECT_EQ(queries.interfaceTable()->at(0).description, std::string(257, 'd'));
}

TEST_F(InterfaceTable, noInterfacesIsAnEmptyTableNotAFailure)
{
    const auto rows = queries.interfaceTable();
    ASSERT_TRUE(rows);
    EXPECT_TRUE(rows->empty());
}

TEST_F(InterfaceTable, failedQueryHasNoAnswer)
{
    windows.interfaceFailure = ERROR_NOT_ENOUGH_MEMORY;
    EXPECT_FALSE(queries.interfaceTable());
    EXPECT_EQ(windows.openInterfaceTables, 0);
}

TEST_F(InterfaceTable, successWithoutATableHasNoAnswer)
{
    windows.interfaceTableIsNull = true;
    EXPECT_FALSE(queries.interfaceTable());
    EXPECT_EQ(windows.openInterfaceTables, 0);
}

TEST_F(InterfaceTable, tableIsFreedOnce)
{
    windows.interfaces = {interfaceRow(L"a", L"b")};
    queries.interfaceTable();
    EXPECT_EQ(windows.openInterfaceTables, 0);
    windows.interfaces.clear();
    queries.interfaceTable();
    EXPECT_EQ(windows.openInterfaceTables, 0);
}

/// The interfaces as the machine under Wine publishes them; Wine shows its root as drive Z.
class HostInterfaces : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(std::filesystem::is_directory(root.parent_path().parent_path()))
            << "not running in Wine on Linux";
        if (!std::filesystem::is_directory(root))
            GTEST_SKIP() << "the machine under Wine has no /sys";
    }

    template <typename Value>
    static Value read(const std::string &name, const std::string &attribute)
    {
        std::ifstream file(root / name / attribute);
        Value value{};
        file >> value;
        EXPECT_TRUE(file) << name << ' ' << attribute;
        return value;
    }

    std::vector<InterfaceRow> interfaces()
    {
        const auto rows = queries.interfaceTable();
        EXPECT_TRUE(rows);
        return rows.value_or(std::vector<InterfaceRow>{});
    }

    static const std::filesystem::path root;
    WindowsSystemQueries queries;
};

const std::filesystem::path HostInterfaces::root = L"Z:\\sys\\class\\net";

TEST_F(HostInterfaces, eachOneOfTheMachineIsInTheTableOnce)
{
    std::vector<std::string> host;
    for (const auto &entry : std::filesystem::directory_iterator(root)) {
        if (std::filesystem::is_directory(entry.path()))
            host.push_back(entry.path().filename().string());
    }
    std::vector<std::string> seen;
    for (const InterfaceRow &row : interfaces())
        seen.push_back(row.description);
    std::ranges::sort(host);
    std::ranges::sort(seen);
    ASSERT_FALSE(host.empty());
    EXPECT_EQ(seen, host);
}

TEST_F(HostInterfaces, octetsLieBetweenWhatTheKernelCountsBeforeAndAfter)
{
    const auto names = interfaces();
    ASSERT_FALSE(names.empty());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string &name = names[i].description;
        const auto inBefore = read<std::uint64_t>(name, "statistics/rx_bytes");
        const auto outBefore = read<std::uint64_t>(name, "statistics/tx_bytes");
        const InterfaceRow row = interfaces().at(i);
        ASSERT_EQ(row.description, name);
        EXPECT_GE(row.inOctets, inBefore) << name;
        EXPECT_GE(row.outOctets, outBefore) << name;
        EXPECT_LE(row.inOctets, read<std::uint64_t>(name, "statistics/rx_bytes")) << name;
        EXPECT_LE(row.outOctets, read<std::uint64_t>(name, "statistics/tx_bytes")) << name;
    }
}

TEST_F(HostInterfaces, loopbackIsTheOneThatTheKernelTypesAsLoopback)
{
    constexpr int arphrdLoopback = 772;
    for (const InterfaceRow &row : interfaces())
        EXPECT_EQ(row.loopback, read<int>(row.description, "type") == arphrdLoopback);
}

TEST_F(HostInterfaces, upAndDownAreWhatTheKernelSays)
{
    int checked = 0;
    for (const InterfaceRow &row : interfaces()) {
        const auto state = read<std::string>(row.description, "operstate");
        if (state == "up" || state == "down") {
            EXPECT_EQ(row.up, state == "up") << row.description;
            ++checked;
        } else if (row.loopback) {
            EXPECT_TRUE(row.up); // its operational state is "unknown" to the kernel, always
            ++checked;
        }
    }
    EXPECT_GT(checked, 0);
}

} // namespace
