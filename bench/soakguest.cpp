// One of the processes that come and go in bench/soak: holds a TCP listener, a connection and as
// many UDP sockets as its argument says on the loopback, writes an octet to its output when it
// does, and ends when its input does. Its name is the one that it is started by.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

int socketOf(int type)
{
    const int socket = ::socket(AF_INET, type, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        std::perror("bind");
        std::exit(1);
    }
    return socket;
}

/// Reset instead of closed at the process's end, a connection leaves no row behind.
void resetAtTheEnd(int socket)
{
    const linger reset{1, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
}

} // namespace

int main(int argc, char *argv[])
{
    const int listener = socketOf(SOCK_STREAM);
    const int client = socketOf(SOCK_STREAM);
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (::listen(listener, 1) != 0
        || ::getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length) != 0
        || ::connect(client, reinterpret_cast<const sockaddr *>(&address), length) != 0) {
        std::perror("connect");
        return 1;
    }
    resetAtTheEnd(client);
    resetAtTheEnd(::accept(listener, nullptr, nullptr));
    for (int i = 0; argc > 1 && i < std::atoi(argv[1]); ++i)
        socketOf(SOCK_DGRAM);

    char octet = 0;
    if (::write(STDOUT_FILENO, &octet, 1) != 1)
        return 1;
    while (::read(STDIN_FILENO, &octet, 1) > 0) { }
    return 0;
}
