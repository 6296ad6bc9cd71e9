#include "bench/loads.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>

namespace {

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::exit(1);
}

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

FileDescriptor boundSocket(int type)
{
    FileDescriptor socket(::socket(AF_INET, type, 0));
    const sockaddr_in address = loopback(0);
    if (!socket
        || ::bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        fail("bind");
    return socket;
}

FileDescriptor listener()
{
    FileDescriptor socket = boundSocket(SOCK_STREAM);
    if (::listen(socket.get(), 16) != 0)
        fail("listen");
    return socket;
}

FileDescriptor openFile()
{
    FileDescriptor file(::open("/dev/null", O_RDONLY));
    if (!file)
        fail("open");
    return file;
}

/// What one process of the load holds.
class Holder
{
public:
    explicit Holder(const LoadShape &shape) : m_pairsToChurn((shape.tcpSockets + 19) / 20)
    {
        for (int i = 0; i < shape.otherFiles; ++i)
            m_files.push_back(openFile());
        m_listeners.push_back(listener());
        m_listeners.push_back(listener());
        for (int i = 2; i + 1 < shape.tcpSockets; i += 2)
            connectPair();
        for (int i = 0; i < shape.udpSockets; ++i)
            m_udp.push_back(boundSocket(SOCK_DGRAM));
    }

    /// Two tenths of the sockets, in pairs as they are connected.
    void churn(bool elsewhere)
    {
        for (int i = 0; i < m_pairsToChurn; ++i) {
            // Reset instead of closed, the connections leave no row behind.
            const linger reset{1, 0};
            for (int end = 0; end < 2; ++end) {
                ::setsockopt(m_connected.front().get(), SOL_SOCKET, SO_LINGER, &reset,
                             sizeof reset);
                m_connected.pop_front();
            }
        }
        // A file that takes a free number sends the sockets elsewhere.
        const FileDescriptor meanwhile = elsewhere ? openFile() : FileDescriptor();
        for (int i = 0; i < m_pairsToChurn; ++i)
            connectPair();
    }

private:
    void connectPair()
    {
        sockaddr_in address{};
        socklen_t length = sizeof address;
        ::getsockname(m_listeners[0].get(), reinterpret_cast<sockaddr *>(&address), &length);
        FileDescriptor client(::socket(AF_INET, SOCK_STREAM, 0));
        if (!client
            || ::connect(client.get(), reinterpret_cast<const sockaddr *>(&address), length) != 0)
            fail("connect");
        FileDescriptor server(::accept(m_listeners[0].get(), nullptr, nullptr));
        if (!server)
            fail("accept");
        m_connected.push_back(std::move(client));
        m_connected.push_back(std::move(server));
    }

    int m_pairsToChurn = 0;
    std::deque<FileDescriptor> m_files;
    std::vector<FileDescriptor> m_listeners;
    std::deque<FileDescriptor> m_connected;
    std::vector<FileDescriptor> m_udp;
};

/// The process of a load: answers each octet on `control` when what it asks for is done.
[[noreturn]] void holdUntilHangUp(const LoadShape &shape, int control, uid_t owner, int index)
{
    if (owner != 0) {
        // A process that changed its user hides its files, unless it says otherwise.
        if (::setresuid(owner, owner, owner) != 0 || ::prctl(PR_SET_DUMPABLE, 1) != 0)
            fail("setresuid");
    }
    Holder holder(shape);
    char octet = 0;
    do {
        if (octet == 'c')
            holder.churn(index % 4 < 2);
    } while (::write(control, &octet, 1) == 1 && ::read(control, &octet, 1) == 1);
    ::_exit(0);
}

constexpr const char *holdArgument = "--hold-for-load";

/// Goes on as holdUntilHangUp() in an executable of the process's own name.
[[noreturn]] void holdAsApplication(const LoadShape &shape, int control, const std::string &folder,
                                    int index)
{
    const std::string number = std::to_string(index);
    const std::string path = folder + "/application-" + number;
    if (::linkat(AT_FDCWD, "/proc/self/exe", AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) != 0)
        fail("link");
    ::fcntl(control, F_SETFD, 0);
    ::execl(path.c_str(), path.c_str(), holdArgument, std::to_string(control).c_str(),
            number.c_str(), std::to_string(shape.tcpSockets).c_str(),
            std::to_string(shape.udpSockets).c_str(), std::to_string(shape.otherFiles).c_str(),
            nullptr);
    fail("exec");
}

void awaitAnswer(const FileDescriptor &control)
{
    char octet = 0;
    if (::read(control.get(), &octet, 1) != 1) {
        std::fputs("a process of the load ended\n", stderr);
        std::exit(1);
    }
}

} // namespace

Load::Load(const LoadShape &shape, uid_t owner) : Load(shape, owner, {}) { }

Load::Load(const LoadShape &shape, const std::string &folder) : Load(shape, 0, folder) { }

Load::Load(const LoadShape &shape, uid_t owner, const std::string &folder) : m_shape(shape)
{
    for (int i = 0; i < shape.processes; ++i) {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
            fail("socketpair");
        const pid_t pid = ::fork();
        if (pid < 0)
            fail("fork");
        if (pid == 0) {
            for (const Process &sibling : m_processes)
                ::close(sibling.control.get());
            ::close(ends[0]);
            if (!folder.empty())
                holdAsApplication(shape, ends[1], folder, i);
            holdUntilHangUp(shape, ends[1], i % 10 == 0 ? owner : 0, i);
        }
        ::close(ends[1]);
        m_processes.push_back({pid, FileDescriptor(ends[0])});
    }
    for (const Process &process : m_processes)
        awaitAnswer(process.control);
}

Load::~Load()
{
    for (Process &process : m_processes)
        process.control.reset();
    for (const Process &process : m_processes)
        ::waitpid(process.pid, nullptr, 0);
}

void Load::churn()
{
    // Two tenths in every second process are a tenth of all.
    m_oddTurn = !m_oddTurn;
    for (std::size_t i = m_oddTurn ? 1 : 0; i < m_processes.size(); i += 2) {
        if (::write(m_processes[i].control.get(), "c", 1) != 1)
            fail("write");
    }
    for (std::size_t i = m_oddTurn ? 1 : 0; i < m_processes.size(); i += 2)
        awaitAnswer(m_processes[i].control);
}

int Load::sockets() const
{
    return m_shape.processes * (m_shape.tcpSockets + m_shape.udpSockets);
}

void holdIfAsked(int argc, char *argv[])
{
    if (argc != 7 || std::strcmp(argv[1], holdArgument) != 0)
        return;
    const LoadShape shape{{}, 1, std::atoi(argv[4]), std::atoi(argv[5]), std::atoi(argv[6])};
    holdUntilHangUp(shape, std::atoi(argv[2]), 0, std::atoi(argv[3]));
}

void enterBenchNetwork()
{
    if (::unshare(CLONE_NEWNET) != 0)
        fail("a network of the benchmark's own needs root: unshare");
    const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM, 0));
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    if (::ioctl(socket.get(), SIOCSIFFLAGS, &request) != 0)
        fail("loopback");
}
