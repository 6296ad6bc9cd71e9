#include "sampling/windows/windowssystemqueries.h"

#include "sampling/windows/utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <span>
#include <type_traits>
#include <utility>

namespace {

/// What a fixed-size field of Windows holds up to its terminator, or all of it when there is none.
template <std::size_t Size> std::wstring_view fieldText(const wchar_t (&field)[Size])
{
    return {field, wcsnlen(field, Size)};
}

/// Closes the handle on every way out.
using ScopedHandle = std::unique_ptr<void, decltype(&::CloseHandle)>;

/// Takes the handle over; which value means failure depends on the function that it came from.
ScopedHandle scoped(HANDLE handle, decltype(&::CloseHandle) closeHandle)
{
    return {handle == INVALID_HANDLE_VALUE ? nullptr : handle, closeHandle};
}

/// Memory for a table of Windows: its size in bytes is known at run time only.
template <typename Table> class TableBuffer
{
public:
    explicit TableBuffer(DWORD size) : bytes(size) { }

    void *data() { return bytes.data(); }

    /// The rows in the buffer; never more than it has room for, whatever the table says.
    [[nodiscard]] auto rows() const
    {
        using Row = std::remove_cvref_t<decltype(std::declval<Table>().table[0])>;
        if (bytes.size() < offsetof(Table, table))
            return std::span<const Row>{};
        // The allocation is aligned for every fundamental type, and the rows are made of DWORD.
        const auto *table = reinterpret_cast<const Table *>(bytes.data());
        const std::size_t room = (bytes.size() - offsetof(Table, table)) / sizeof(Row);
        return std::span<const Row>{table->table, std::min<std::size_t>(table->dwNumEntries, room)};
    }

private:
    std::vector<std::byte> bytes;
};

/// Asks for the size of a table, then for the table. It may outgrow that size in between: that is a
/// failure like any other, since the next sample comes soon enough.
template <typename Table, typename Function, typename TableClass>
std::optional<TableBuffer<Table>> readSocketTable(Function function, TableClass tableClass)
{
    const auto ask = [&](void *buffer, DWORD *size) {
        return function(buffer, size, FALSE, AF_INET, tableClass, 0);
    };
    DWORD size = 0;
    ask(nullptr, &size);
    if (size == 0)
        return std::nullopt;
    TableBuffer<Table> buffer(size);
    if (ask(buffer.data(), &size) != NO_ERROR)
        return std::nullopt;
    return buffer;
}

/// Ports stand in the low 16 bits of their field; the rest may be uninitialised (MIB_TCPROW).
constexpr std::uint16_t portOfField(DWORD field)
{
    return static_cast<std::uint16_t>(field & 0xffffU);
}

InterfaceRow toInterfaceRow(const MIB_IF_ROW2 &row)
{
    return {.loopback = row.Type == IF_TYPE_SOFTWARE_LOOPBACK,
            .up = row.OperStatus == IfOperStatusUp,
            .alias = toUtf8(fieldText(row.Alias)),
            .description = toUtf8(fieldText(row.Description)),
            .inOctets = row.InOctets,
            .outOctets = row.OutOctets};
}

TcpRow toTcpRow(const MIB_TCPROW_OWNER_PID &row)
{
    // The remote end of a listening socket has no meaning in this table (MIB_TCPROW_OWNER_PID).
    const bool listening = row.dwState == MIB_TCP_STATE_LISTEN;
    return {.pid = row.dwOwningPid,
            .localAddress = row.dwLocalAddr,
            .localPort = portOfField(row.dwLocalPort),
            .remoteAddress = listening ? 0 : row.dwRemoteAddr,
            .remotePort = listening ? std::uint16_t{0} : portOfField(row.dwRemotePort),
            .state = row.dwState};
}

UdpRow toUdpRow(const MIB_UDPROW_OWNER_PID &row)
{
    return {.pid = row.dwOwningPid,
            .localAddress = row.dwLocalAddr,
            .localPort = portOfField(row.dwLocalPort)};
}

template <typename Result, typename Row, typename Convert>
std::vector<Result> converted(std::span<const Row> rows, Convert convert)
{
    std::vector<Result> result;
    result.reserve(rows.size());
    std::ranges::transform(rows, std::back_inserter(result), convert);
    return result;
}

} // namespace

WindowsSystemQueries::WindowsSystemQueries(const WindowsApi &functions) : api(functions) { }

std::optional<std::vector<InterfaceRow>> WindowsSystemQueries::interfaceTable()
{
    MIB_IF_TABLE2 *table = nullptr;
    if (api.getIfTable2(&table) != NO_ERROR || table == nullptr)
        return std::nullopt;
    const std::unique_ptr<MIB_IF_TABLE2, decltype(api.freeMibTable)> owner(table, api.freeMibTable);
    return converted<InterfaceRow>(std::span<const MIB_IF_ROW2>{table->Table, table->NumEntries},
                                   toInterfaceRow);
}

std::optional<std::vector<TcpRow>> WindowsSystemQueries::tcpTable()
{
    const auto table
        = readSocketTable<MIB_TCPTABLE_OWNER_PID>(api.getExtendedTcpTable, TCP_TABLE_OWNER_PID_ALL);
    if (!table)
        return std::nullopt;
    return converted<TcpRow>(table->rows(), toTcpRow);
}

std::optional<std::vector<UdpRow>> WindowsSystemQueries::udpTable()
{
    const auto table
        = readSocketTable<MIB_UDPTABLE_OWNER_PID>(api.getExtendedUdpTable, UDP_TABLE_OWNER_PID);
    if (!table)
        return std::nullopt;
    return converted<UdpRow>(table->rows(), toUdpRow);
}

std::string WindowsSystemQueries::imagePath(std::uint32_t pid)
{
    const ScopedHandle process
        = scoped(api.openProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid), api.closeHandle);
    if (!process)
        return {};
    std::array<wchar_t, MAX_PATH> path{};
    auto length = static_cast<DWORD>(path.size());
    if (!api.queryFullProcessImageNameW(process.get(), 0, path.data(), &length))
        return {};
    return toUtf8({path.data(), std::min<std::size_t>(length, path.size())});
}

std::optional<std::string> WindowsSystemQueries::processListName(std::uint32_t pid)
{
    const ScopedHandle snapshot
        = scoped(api.createToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0), api.closeHandle);
    if (!snapshot)
        return std::nullopt;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL found = api.process32FirstW(snapshot.get(), &entry); found;
         found = api.process32NextW(snapshot.get(), &entry)) {
        if (entry.th32ProcessID == pid)
            return toUtf8(fieldText(entry.szExeFile));
    }
    return std::nullopt;
}

std::unique_ptr<SystemQueries> makeSystemQueries()
{
    return std::make_unique<WindowsSystemQueries>();
}
