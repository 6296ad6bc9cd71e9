#pragma once

#include "tests/sampling/linux/support/sockets.h"

#include <cstdint>

/// What a test asks of an agent, one datagram each over a Unix socket, which the agent answers with
/// one reply. A descriptor may travel with either.
struct AgentCommand
{
    enum class Action : std::uint8_t {
        ListenTcp,
        BindUdp,
        ConnectTcp, ///< to port `argument`
        Accept, ///< from listener `argument`
        OpenFile,
        Close, ///< descriptor `argument`
        MoveDescriptor, ///< `argument` to the number `secondArgument`
        Pass, ///< sends descriptor `argument` along with the reply
        Receive, ///< keeps the descriptor that came with the command
        Fork, ///< the child answers on the socket that came with the command
        Exec, ///< runs what is at the program's path in the same process, files staying open
        Exit,
    };

    Action action = Action::Exit;
    SocketKind kind = SocketKind::IPv4;
    int argument = -1;
    int secondArgument = -1;
};

struct AgentReply
{
    int descriptor = -1; ///< that was opened, received or moved to
    std::uint32_t inode = 0; ///< of the file behind `descriptor`
    std::uint16_t port = 0; ///< local port, host byte order
    std::int32_t pid = 0; ///< of a child, or the agent's own after Exec
};

/// Sends `data` with an optional descriptor; false when the other end is gone.
bool sendRecord(int socket, const void *data, std::size_t size, int attached = -1);
/// Receives into `data`; false when the other end is gone. Takes an attached descriptor.
bool receiveRecord(int socket, void *data, std::size_t size, FileDescriptor &attached);
