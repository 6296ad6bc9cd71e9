#include "tests/sampling/linux/support/agentprotocol.h"
#include "tests/support/linux/filelimit.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using Action = AgentCommand::Action;

/// Lets `descriptor` stay open beyond this function and describes it.
AgentReply kept(FileDescriptor &&descriptor)
{
    AgentReply reply;
    reply.descriptor = descriptor.release();
    reply.inode = inodeOf(reply.descriptor);
    return reply;
}

AgentReply keptSocket(FileDescriptor &&descriptor)
{
    AgentReply reply = kept(std::move(descriptor));
    reply.port = portOf(reply.descriptor);
    return reply;
}

/// Answers commands on `control` until told to exit or the test is gone.
class Agent
{
public:
    Agent(const char *program, int control) : m_program(program), m_control(control) { }

    void run()
    {
        AgentCommand command;
        FileDescriptor attached;
        while (receiveRecord(m_control, &command, sizeof command, attached)) {
            if (command.action == Action::Exit)
                return;
            int toPass = -1;
            const AgentReply reply = obey(command, attached, toPass);
            if (!sendRecord(m_control, &reply, sizeof reply, toPass))
                return;
        }
    }

private:
    AgentReply obey(const AgentCommand &command, FileDescriptor &attached, int &toPass)
    {
        AgentReply reply;
        switch (command.action) {
        case Action::ListenTcp:
            return keptSocket(listenTcp(command.kind));
        case Action::BindUdp:
            return keptSocket(bindUdp(command.kind));
        case Action::ConnectTcp:
            return keptSocket(
                connectTcp(static_cast<std::uint16_t>(command.argument), command.kind));
        case Action::Accept:
            return keptSocket(FileDescriptor(::accept(command.argument, nullptr, nullptr)));
        case Action::OpenFile:
            return kept(FileDescriptor(::open("/dev/null", O_RDONLY)));
        case Action::Close:
            ::close(command.argument);
            return reply;
        case Action::MoveDescriptor:
            reply.descriptor = ::dup2(command.argument, command.secondArgument);
            ::close(command.argument);
            return reply;
        case Action::Pass:
            toPass = command.argument;
            return reply;
        case Action::Receive:
            return kept(std::move(attached));
        case Action::Fork:
            return fork(std::move(attached));
        case Action::Exec:
            exec();
            break;
        case Action::Exit:
            break;
        }
        return reply;
    }

    AgentReply fork(FileDescriptor childControl)
    {
        AgentReply reply;
        reply.pid = ::fork();
        if (reply.pid != 0)
            return reply;
        ::close(m_control);
        m_control = childControl.release();
        reply.pid = ::getpid();
        return reply;
    }

    void exec() const
    {
        const std::string control = std::to_string(m_control);
        ::execl(m_program, m_program, control.c_str(), "announce", nullptr);
        std::abort();
    }

    const char *m_program;
    int m_control;
};

} // namespace

/// Arguments: the number of the control socket's descriptor, and "announce" when a reply is owed.
int main(int argc, char *argv[])
{
    std::signal(SIGCHLD, SIG_IGN);
    raiseFileLimit();
    int control = -1;
    if (argc < 2)
        return 2;
    const std::string_view number = argv[1];
    std::from_chars(number.data(), number.data() + number.size(), control);
    if (argc > 2) {
        AgentReply reply;
        reply.pid = ::getpid();
        if (!sendRecord(control, &reply, sizeof reply))
            return 1;
    }
    Agent(argv[0], control).run();
    return 0;
}
