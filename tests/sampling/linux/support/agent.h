#pragma once

#include "tests/sampling/linux/support/agentprotocol.h"

#include <sys/types.h>

#include <string>

/// Lets the next process have this id, unless another one is faster; false where the system does
/// not allow it.
bool aimAtPid(std::uint32_t pid);

/// A process that opens, closes, passes and inherits sockets as a test tells it. It ends with this
/// object at the latest.
class Agent
{
public:
    /// Starts the process, with no file open but its standard ones and its control socket.
    /// `program` is a copy of the agent's program, if it is to be run from elsewhere.
    explicit Agent(const std::string &program = defaultProgram());
    ~Agent();
    Agent(Agent &&) noexcept = default;
    Agent &operator=(Agent &&other) noexcept;

    static std::string defaultProgram();

    std::uint32_t pid() const { return static_cast<std::uint32_t>(m_pid); }

    AgentReply listenTcp(SocketKind kind = SocketKind::IPv4);
    AgentReply bindUdp(SocketKind kind = SocketKind::IPv4);
    AgentReply connectTcp(std::uint16_t port, SocketKind kind = SocketKind::IPv4);
    AgentReply accept(int listener);
    AgentReply openFile();
    void close(int descriptor);
    void moveDescriptor(int from, int to);
    /// Gives a copy of `descriptor` to `other`, which holds it under the number in the reply.
    AgentReply passTo(Agent &other, int descriptor);
    /// A copy of `descriptor`, held by the test itself.
    FileDescriptor take(int descriptor);
    /// Gives a copy of the test's own `descriptor` to the process.
    AgentReply receive(const FileDescriptor &descriptor);
    /// Forks; the child holds copies of all files.
    Agent fork();
    /// Runs what is now at the path of the process's program, keeping files and process id.
    void exec();
    /// Ends the process and waits until it is gone from the process list.
    void exit();
    /// As a crash does: the process ends without a word.
    void kill();

private:
    Agent(pid_t pid, FileDescriptor control) : m_pid(pid), m_control(std::move(control)) { }
    AgentReply ask(const AgentCommand &command, int attached = -1,
                   FileDescriptor *received = nullptr);
    void waitForEnd();

    pid_t m_pid = 0;
    FileDescriptor m_control;
};
