#pragma once

#include "sampling/windows/windowsapi.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// One call for a socket table, as the backend made it.
struct TableCall
{
    bool sizing = false; ///< without a buffer
    DWORD size = 0; ///< of the buffer, in bytes
    bool zeroFilled = false; ///< the buffer held nothing but zeros
    BOOL sorted = FALSE;
    ULONG family = 0;
    int tableClass = 0;
};

/// A socket table of Windows as GetExtendedTcpTable and GetExtendedUdpTable hand it out.
template <typename Row> struct ScriptedTable
{
    std::vector<Row> rows;
    std::vector<Row> rowsAfterSizing; ///< appear when the size has been told
    std::optional<DWORD> toldSize; ///< in place of the true one
    std::optional<DWORD> toldCount; ///< in place of the true one
    DWORD failure = NO_ERROR; ///< answer of the reading call
    std::vector<TableCall> calls; ///< what was asked, in order

    DWORD answer(void *buffer, DWORD *size, BOOL sorted, ULONG family, int tableClass);
};

/// One process that the scripted Windows runs.
struct ScriptedProcess
{
    DWORD pid = 0;
    std::wstring name{}; ///< in the process list; may fill its field without a terminator
    std::wstring path{}; ///< empty: it cannot be queried
    bool protectedFromOpening = false;
};

/// A Windows whose answers the test writes down, handed to the backend through `api()`.
struct ScriptedWindows
{
    ULONG interfaceFailure = NO_ERROR;
    bool interfaceTableIsNull = false;
    std::vector<MIB_IF_ROW2> interfaces;
    ScriptedTable<MIB_TCPROW_OWNER_PID> tcp;
    ScriptedTable<MIB_UDPROW_OWNER_PID> udp;
    std::vector<ScriptedProcess> processes;
    std::optional<DWORD> toldPathLength; ///< in place of the true one
    bool snapshotFails = false;
    bool snapshotIsEmpty = false; ///< Process32FirstW already fails

    int openInterfaceTables = 0; ///< handed out and not freed
    int openHandles = 0; ///< handed out and not closed; negative after a wrong close
    int snapshotsTaken = 0;
    DWORD askedAccess = 0; ///< of the last OpenProcess
    BOOL askedInheritable = FALSE;
    DWORD askedPathFlags = 0; ///< of the last QueryFullProcessImageNameW
    DWORD askedPathLength = 0;
    DWORD askedSnapshotFlags = 0;

    /// The one behind the functions of `api()`, which can carry no state of their own.
    static ScriptedWindows &instance();
    /// A fresh Windows without interfaces, sockets and processes.
    static ScriptedWindows &reset();
    /// Functions that answer from `instance()`.
    static WindowsApi api();
};
