#pragma once

#include "sampling/linux/filedescriptor.h"

#include <sys/types.h>

#include <deque>
#include <random>
#include <string>

/// Processes that come and go, between 15 and 35 at a time: each of an executable of one of 400
/// names, with three to six loopback sockets. End with this object. Ends the benchmark when one of
/// them cannot be started.
class SoakGuests
{
public:
    /// `program` is soakguest; links to it are made in `folder`, which is on the same file system.
    SoakGuests(std::string program, std::string folder);
    ~SoakGuests();
    SoakGuests(const SoakGuests &) = delete;
    SoakGuests &operator=(const SoakGuests &) = delete;

    /// Lets one process come or the oldest one go, and waits for it.
    void step();

    /// How many descriptors of this process the others are held by.
    int descriptors() const { return static_cast<int>(m_guests.size()); }

    /// Name of the executable of this index below 400.
    static std::string nameOf(int index);

private:
    struct Guest
    {
        pid_t pid = 0;
        FileDescriptor control; ///< its standard input and output
    };

    void start();
    void endOldest();

    std::string m_program;
    std::string m_folder;
    std::deque<Guest> m_guests;
    std::mt19937 m_random;
};
