#include "bench/soakguests.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int names = 400;
constexpr std::size_t fewest = 15;
constexpr std::size_t most = 35;

[[noreturn]] void crowdFailed(const char *what)
{
    std::perror(what);
    std::exit(1);
}

} // namespace

SoakGuests::SoakGuests(std::string program, std::string folder)
    : m_program(std::move(program)),
      m_folder(std::move(folder))
{
    while (m_guests.size() < (fewest + most) / 2)
        start();
}

SoakGuests::~SoakGuests()
{
    while (!m_guests.empty())
        endOldest();
}

void SoakGuests::step()
{
    const bool comes = std::uniform_int_distribution<>(0, 1)(m_random) == 1;
    if (m_guests.size() == fewest || (comes && m_guests.size() < most))
        start();
    else
        endOldest();
}

std::string SoakGuests::nameOf(int index)
{
    return "application-" + std::to_string(index);
}

void SoakGuests::start()
{
    std::string path
        = m_folder + '/' + nameOf(std::uniform_int_distribution<>(0, names - 1)(m_random));
    if (::link(m_program.c_str(), path.c_str()) != 0 && errno != EEXIST)
        crowdFailed("link");
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        crowdFailed("socketpair");
    const FileDescriptor itsEnd(ends[1]);
    Guest guest{0, FileDescriptor(ends[0])};

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, itsEnd.get(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, itsEnd.get(), STDOUT_FILENO);
    std::string udpSockets = std::to_string(std::uniform_int_distribution<>(0, 3)(m_random));
    const std::array<char *, 3> arguments{path.data(), udpSockets.data(), nullptr};
    const int error
        = ::posix_spawn(&guest.pid, path.c_str(), &actions, nullptr, arguments.data(), nullptr);
    ::posix_spawn_file_actions_destroy(&actions);
    char octet = 0;
    if (error != 0 || ::read(guest.control.get(), &octet, 1) != 1)
        crowdFailed("a process of the crowd does not start");
    m_guests.push_back(std::move(guest));
}

void SoakGuests::endOldest()
{
    Guest guest = std::move(m_guests.front());
    m_guests.pop_front();
    guest.control.reset();
    if (::waitpid(guest.pid, nullptr, 0) != guest.pid)
        crowdFailed("waitpid");
}
