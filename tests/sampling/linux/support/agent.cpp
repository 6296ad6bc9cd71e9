#include "tests/sampling/linux/support/agent.h"

#include <QtGlobal>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <string>

namespace {

using Action = AgentCommand::Action;

/// The test's end first.
std::pair<FileDescriptor, FileDescriptor> controlPair()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        qFatal("socketpair failed");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

} // namespace

bool aimAtPid(std::uint32_t pid)
{
    const FileDescriptor file(::open("/proc/sys/kernel/ns_last_pid", O_WRONLY | O_CLOEXEC));
    const std::string text = std::to_string(pid - 1);
    return file
        && ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

Agent::Agent(const std::string &program)
{
    // Children of agents whose parent ended become the test's, which waits for them.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    auto [own, agents] = controlPair();
    constexpr int control = 3;
    m_pid = ::fork();
    if (m_pid < 0)
        qFatal("fork failed");
    if (m_pid == 0) {
        // Only system calls from here to exec: the test may have threads.
        ::dup2(agents.get(), control);
        if (agents.get() == control)
            ::fcntl(control, F_SETFD, 0);
        ::syscall(SYS_close_range, static_cast<unsigned>(control + 1), ~0U, 0U);
        ::execl(program.c_str(), program.c_str(), "3", "announce", nullptr);
        ::_exit(127);
    }
    agents.reset();
    m_control = std::move(own);
    AgentReply reply;
    FileDescriptor attached;
    if (!receiveRecord(m_control.get(), &reply, sizeof reply, attached))
        qFatal("%s does not start", program.c_str());
}

Agent &Agent::operator=(Agent &&other) noexcept
{
    std::swap(m_pid, other.m_pid);
    std::swap(m_control, other.m_control);
    return *this;
}

std::string Agent::defaultProgram()
{
    std::string path(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return path.substr(0, path.rfind('/')) + "/tovan_agent";
}

Agent::~Agent()
{
    if (m_control)
        exit();
}

AgentReply Agent::listenTcp(SocketKind kind)
{
    return ask({.action = Action::ListenTcp, .kind = kind});
}

AgentReply Agent::bindUdp(SocketKind kind)
{
    return ask({.action = Action::BindUdp, .kind = kind});
}

AgentReply Agent::connectTcp(std::uint16_t port, SocketKind kind)
{
    return ask({.action = Action::ConnectTcp, .kind = kind, .argument = port});
}

AgentReply Agent::accept(int listener)
{
    return ask({.action = Action::Accept, .argument = listener});
}

AgentReply Agent::openFile()
{
    return ask({.action = Action::OpenFile});
}

void Agent::close(int descriptor)
{
    ask({.action = Action::Close, .argument = descriptor});
}

void Agent::moveDescriptor(int from, int to)
{
    ask({.action = Action::MoveDescriptor, .argument = from, .secondArgument = to});
}

AgentReply Agent::passTo(Agent &other, int descriptor)
{
    const FileDescriptor copy = take(descriptor);
    return other.receive(copy);
}

AgentReply Agent::receive(const FileDescriptor &descriptor)
{
    return ask({.action = Action::Receive}, descriptor.get());
}

FileDescriptor Agent::take(int descriptor)
{
    FileDescriptor copy;
    ask({.action = Action::Pass, .argument = descriptor}, -1, &copy);
    return copy;
}

void Agent::exec()
{
    ask({.action = Action::Exec});
}

void Agent::exit()
{
    const AgentCommand command{.action = Action::Exit};
    sendRecord(m_control.get(), &command, sizeof command);
    waitForEnd();
}

void Agent::kill()
{
    ::kill(m_pid, SIGKILL);
    waitForEnd();
}

AgentReply Agent::ask(const AgentCommand &command, int attached, FileDescriptor *received)
{
    AgentReply reply;
    FileDescriptor unexpected;
    if (!sendRecord(m_control.get(), &command, sizeof command, attached)
        || !receiveRecord(m_control.get(), &reply, sizeof reply, received ? *received : unexpected))
        qFatal("agent %d is gone", m_pid);
    return reply;
}

Agent Agent::fork()
{
    auto [own, childs] = controlPair();
    const AgentReply reply = ask({.action = Action::Fork}, childs.get());
    childs.reset();
    Agent child(reply.pid, std::move(own));
    AgentReply ready;
    FileDescriptor attached;
    if (!receiveRecord(child.m_control.get(), &ready, sizeof ready, attached))
        qFatal("agent %d is gone", child.m_pid);
    return child;
}

void Agent::waitForEnd()
{
    // A child of another agent is that agent's to wait for, until it ends; its end is seen here
    // through the process itself.
    const FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0U)));
    if (process) {
        pollfd ended{process.get(), POLLIN, 0};
        ::poll(&ended, 1, 10'000);
        ::waitpid(m_pid, nullptr, 0);
    }
    m_control.reset();
}
