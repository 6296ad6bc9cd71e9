#pragma once

#include "sampling/systemqueries.h"
#include "sampling/windows/windowsapi.h"

/// Answers from the IP Helper API, the process objects and the Toolhelp snapshot of Windows. It
/// remembers nothing between two questions.
class WindowsSystemQueries final : public SystemQueries
{
public:
    explicit WindowsSystemQueries(const WindowsApi &functions = {});

    std::optional<std::vector<InterfaceRow>> interfaceTable() override;
    std::optional<std::vector<TcpRow>> tcpTable() override;
    std::optional<std::vector<UdpRow>> udpTable() override;

    /// Also empty for a path that does not fit in MAX_PATH characters.
    std::string imagePath(std::uint32_t pid) override;

    std::optional<std::string> processListName(std::uint32_t pid) override;

private:
    WindowsApi api;
};
