#pragma once

#include "sampling/linux/ownerprocesses.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

/// The search for the holders of unknown sockets, in one round of the tables. It goes from the
/// likeliest places to all others, only as far as something is missing, and goes on there when the
/// round's other table misses something too: no round walks through the processes twice.
class OwnerSearch
{
public:
    OwnerSearch(ProcessDirectory &directory, OwnerProcesses &owners)
        : m_directory(directory),
          m_owners(owners)
    {
    }

    /// Where a socket was seen.
    struct Sighting
    {
        std::uint32_t pid = 0;
        std::uint32_t descriptor = 0;
    };

    /// Forgets what was seen: a new round begins.
    void startRound();
    /// Frees what the round needed; nothing more is asked in it.
    void endRound();

    /// Where the round saw this socket first; no value when it did not.
    std::optional<Sighting> sighting(std::uint32_t inode) const;

    /// Adds a socket to what is missing, unless it was seen. One that is not `urgent` is taken when
    /// met, but nothing is searched on its account.
    void miss(std::uint32_t inode, bool urgent);
    /// Adds a socket, urgently, that `lastOwner` does not hold where it held it, but may elsewhere:
    /// it is the owner then, whoever else is seen to hold the socket.
    void missFrom(std::uint32_t inode, std::uint32_t lastOwner);
    bool missesUrgently() const { return m_urgent > 0; }
    /// Forgets what is missing.
    void giveUp();

    /// Looks at one descriptor.
    void look(std::uint32_t pid, std::uint32_t descriptor);
    /// Looks at all files of a process.
    void lookAtAll(std::uint32_t pid);
    /// Looks at new files of processes whose number of files changed and at all files of new
    /// processes.
    void lookAtNews();
    /// Whether this round's search has begun already.
    bool hasBegun() const { return m_planned; }
    /// Searches on until nothing urgent is missing or everything was looked at. Returns false when
    /// it had to stop short of that because a resource ran out.
    bool run();

    /// Whether the last search of everything met processes whose files may not be read.
    bool metRefusal() const { return m_metRefusal; }

    /// Octets on the heap that stay from round to round.
    std::size_t heapSize() const { return m_processes.capacity() * sizeof(std::uint32_t); }

private:
    struct Visit
    {
        std::uint32_t pid = 0;
        bool newFilesOnly = false;
    };

    bool plan();
    void note(std::uint32_t inode, Sighting sighting);
    void visit(Visit visit);

    ProcessDirectory &m_directory;
    OwnerProcesses &m_owners;
    std::unordered_map<std::uint32_t, Sighting> m_seen;
    std::unordered_map<std::uint32_t, bool> m_missing; ///< inode, and whether it is urgent
    std::unordered_map<std::uint32_t, std::uint32_t> m_lastOwners; ///< inode, process id
    std::size_t m_urgent = 0;

    std::vector<std::uint32_t> m_processes; ///< of the last plan, to tell which are new
    std::vector<Visit> m_plan; ///< of this round, from the likeliest to the rest
    std::size_t m_news = 0; ///< how many visits of the plan are to what is new
    std::size_t m_done = 0; ///< how many visits of the plan were made
    bool m_planned = false;
    bool m_refused = false; ///< a visit of this round was refused
    bool m_exhausted = false; ///< a visit of this round failed for want of a resource
    bool m_metRefusal = false;
    std::vector<std::uint32_t> m_descriptors; ///< scratch
};
