#include "support/scriptedwindows.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <span>

namespace {

/// What the handle of a process list points to; that of a process points to the process.
int theProcessList = 0;

ScriptedWindows &windows()
{
    return ScriptedWindows::instance();
}

ULONG WINAPI getIfTable2(MIB_IF_TABLE2 **table)
{
    if (windows().interfaceFailure != NO_ERROR || windows().interfaceTableIsNull)
        return windows().interfaceFailure;
    const std::size_t size
        = offsetof(MIB_IF_TABLE2, Table) + windows().interfaces.size() * sizeof(MIB_IF_ROW2);
    *table = static_cast<MIB_IF_TABLE2 *>(
        ::operator new (std::max(size, sizeof(MIB_IF_TABLE2)), std::align_val_t{16}));
    (*table)->NumEntries = static_cast<ULONG>(windows().interfaces.size());
    std::ranges::copy(windows().interfaces, &(*table)->Table[0]);
    ++windows().openInterfaceTables;
    return NO_ERROR;
}

VOID WINAPI freeMibTable(void *table)
{
    ::operator delete (table, std::align_val_t{16});
    --windows().openInterfaceTables;
}

DWORD WINAPI getExtendedTcpTable(void *buffer, DWORD *size, BOOL sorted, ULONG family,
                                 TCP_TABLE_CLASS tableClass, ULONG /*reserved*/)
{
    return windows().tcp.answer(buffer, size, sorted, family, tableClass);
}

DWORD WINAPI getExtendedUdpTable(void *buffer, DWORD *size, BOOL sorted, ULONG family,
                                 UDP_TABLE_CLASS tableClass, ULONG /*reserved*/)
{
    return windows().udp.answer(buffer, size, sorted, family, tableClass);
}

HANDLE WINAPI openProcess(DWORD access, BOOL inheritable, DWORD pid)
{
    windows().askedAccess = access;
    windows().askedInheritable = inheritable;
    const auto found = std::ranges::find(windows().processes, pid, &ScriptedProcess::pid);
    if (found == windows().processes.end() || found->protectedFromOpening)
        return nullptr;
    ++windows().openHandles;
    return &*found;
}

BOOL WINAPI queryFullProcessImageNameW(HANDLE process, DWORD flags, wchar_t *path, DWORD *length)
{
    windows().askedPathFlags = flags;
    windows().askedPathLength = *length;
    const std::wstring &known = static_cast<const ScriptedProcess *>(process)->path;
    if (known.empty() || known.size() >= *length)
        return FALSE;
    std::ranges::copy(known, path);
    path[known.size()] = L'\0';
    *length = windows().toldPathLength.value_or(static_cast<DWORD>(known.size()));
    return TRUE;
}

HANDLE WINAPI createToolhelp32Snapshot(DWORD flags, DWORD /*pid*/)
{
    windows().askedSnapshotFlags = flags;
    ++windows().snapshotsTaken;
    if (windows().snapshotFails)
        return INVALID_HANDLE_VALUE;
    ++windows().openHandles;
    return &theProcessList;
}

/// Fills the entry of the process at `index`; false at the end of the list, and for an entry whose
/// size was not announced.
bool fillEntry(std::size_t index, PROCESSENTRY32W *entry)
{
    if (index >= windows().processes.size() || entry->dwSize != sizeof(PROCESSENTRY32W))
        return false;
    const ScriptedProcess &process = windows().processes[index];
    entry->th32ProcessID = process.pid;
    entry->cntUsage = static_cast<DWORD>(index);
    const std::span<wchar_t> field(entry->szExeFile);
    const std::size_t length = std::min(process.name.size(), field.size());
    std::copy_n(process.name.begin(), length, field.begin());
    if (length < field.size())
        field[length] = L'\0';
    return true;
}

BOOL WINAPI process32FirstW(HANDLE /*snapshot*/, PROCESSENTRY32W *entry)
{
    return !windows().snapshotIsEmpty && fillEntry(0, entry) ? TRUE : FALSE;
}

BOOL WINAPI process32NextW(HANDLE /*snapshot*/, PROCESSENTRY32W *entry)
{
    return fillEntry(std::size_t{entry->cntUsage} + 1, entry) ? TRUE : FALSE;
}

BOOL WINAPI closeHandle(HANDLE handle)
{
    const bool handedOut = handle == &theProcessList
        || std::ranges::any_of(windows().processes,
                               [handle](const ScriptedProcess &p) { return &p == handle; });
    windows().openHandles -= handedOut ? 1 : 1000;
    return handedOut ? TRUE : FALSE;
}

} // namespace

template <typename Row>
DWORD ScriptedTable<Row>::answer(void *buffer, DWORD *size, BOOL sorted, ULONG family,
                                 int tableClass)
{
    const std::span<std::byte> room(static_cast<std::byte *>(buffer), buffer ? *size : 0);
    calls.push_back(
        {.sizing = buffer == nullptr,
         .size = *size,
         .zeroFilled = std::ranges::all_of(room, [](auto b) { return b == std::byte{}; }),
         .sorted = sorted,
         .family = family,
         .tableClass = tableClass});
    const auto trueSize = static_cast<DWORD>(sizeof(DWORD) + rows.size() * sizeof(Row));
    if (buffer == nullptr) {
        *size = toldSize.value_or(trueSize);
        rows.insert(rows.end(), rowsAfterSizing.begin(), rowsAfterSizing.end());
        return ERROR_INSUFFICIENT_BUFFER;
    }
    if (failure != NO_ERROR)
        return failure;
    if (*size < trueSize && !toldSize) {
        *size = trueSize;
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::vector<std::byte> table(trueSize);
    const DWORD count = toldCount.value_or(static_cast<DWORD>(rows.size()));
    std::memcpy(table.data(), &count, sizeof(count));
    if (!rows.empty())
        std::memcpy(table.data() + sizeof(count), rows.data(), rows.size() * sizeof(Row));
    std::copy_n(table.begin(), std::min(table.size(), room.size()), room.begin());
    return NO_ERROR;
}

template struct ScriptedTable<MIB_TCPROW_OWNER_PID>;
template struct ScriptedTable<MIB_UDPROW_OWNER_PID>;

ScriptedWindows &ScriptedWindows::instance()
{
    static ScriptedWindows theInstance;
    return theInstance;
}

ScriptedWindows &ScriptedWindows::reset()
{
    instance() = ScriptedWindows();
    return instance();
}

WindowsApi ScriptedWindows::api()
{
    return {.getIfTable2 = getIfTable2,
            .freeMibTable = freeMibTable,
            .getExtendedTcpTable = getExtendedTcpTable,
            .getExtendedUdpTable = getExtendedUdpTable,
            .openProcess = openProcess,
            .queryFullProcessImageNameW = queryFullProcessImageNameW,
            .createToolhelp32Snapshot = createToolhelp32Snapshot,
            .process32FirstW = process32FirstW,
            .process32NextW = process32NextW,
            .closeHandle = closeHandle};
}
