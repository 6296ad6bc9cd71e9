#pragma once

// The order matters: iphlpapi.h needs the socket types, and winsock2.h must precede windows.h.
// clang-format off
#include <winsock2.h>
#include <windows.h>
#include <ws2ipdef.h>
#include <iphlpapi.h>
#include <netioapi.h>
#include <tlhelp32.h>
// clang-format on

/// The Windows functions that the backend calls; each one is the system's own unless it is
/// replaced, which is how a test brings about what a healthy system seldom answers.
struct WindowsApi
{
    decltype(&::GetIfTable2) getIfTable2 = &::GetIfTable2;
    decltype(&::FreeMibTable) freeMibTable = &::FreeMibTable;
    decltype(&::GetExtendedTcpTable) getExtendedTcpTable = &::GetExtendedTcpTable;
    decltype(&::GetExtendedUdpTable) getExtendedUdpTable = &::GetExtendedUdpTable;
    decltype(&::OpenProcess) openProcess = &::OpenProcess;
    decltype(&::QueryFullProcessImageNameW) queryFullProcessImageNameW
        = &::QueryFullProcessImageNameW;
    decltype(&::CreateToolhelp32Snapshot) createToolhelp32Snapshot = &::CreateToolhelp32Snapshot;
    decltype(&::Process32FirstW) process32FirstW = &::Process32FirstW;
    decltype(&::Process32NextW) process32NextW = &::Process32NextW;
    decltype(&::CloseHandle) closeHandle = &::CloseHandle;
};
