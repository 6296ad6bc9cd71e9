#pragma once

#include "sampling/linux/ownersearch.h"
#include "sampling/linux/rememberedsockets.h"
#include "sampling/linux/sockettable.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// Finds the processes that own sockets: those with an open file whose inode is the socket's. Of
/// several holders the owner is the one that was seen to hold the socket first, and the lowest
/// process id of those that were seen at once.
///
/// Looking at every open file takes many times as long as the kernel's tables themselves, so owners
/// are remembered from one table to the next, as far as the last table held their sockets, and only
/// unknown sockets are searched for, in the likeliest places first (OwnerSearch). A remembered
/// owner can only become wrong for a socket that was shared, by fork or by passing a descriptor:
/// any other socket leaves the table together with its only holder's file. The end of an owner is
/// seen at once, a changed number of its files usually, and every socket is looked up again at
/// least every `recheckPeriod` tables: for so many tables a wrong owner can live.
///
/// A socket that no process was seen to hold, as those of other users without privilege, is looked
/// for in every new process, and everywhere every `retryPeriod` tables.
class SocketOwners
{
public:
    /// The tables are asked about in rounds: one round holds each of them at most once, the second
    /// right after the first.
    enum class Table : std::uint8_t { Tcp, Udp };

    static constexpr std::uint32_t recheckPeriod = 64;
    static constexpr std::uint32_t retryPeriod = 32;

    /// `root` is where the process file system is mounted.
    explicit SocketOwners(std::string root)
        : m_directory(std::move(root)),
          m_processes(m_directory),
          m_search(m_directory, m_processes)
    {
    }
    SocketOwners(const SocketOwners &) = delete;
    SocketOwners &operator=(const SocketOwners &) = delete;

    /// Owner of each of `sockets`, which are the whole table, in their order; 0 when no process is
    /// seen to hold the socket, because it has no file any more or the holder's files may not be
    /// read.
    std::vector<std::uint32_t> owners(Table table, std::span<const SocketRow> sockets);

    /// The link to the executable of a process that owned a socket of the last tables, where it is
    /// held open, else null; valid until the next table. The process may have ended.
    const FileDescriptor *imageLink(std::uint32_t pid);

    /// Octets on the heap that are kept from round to round.
    std::size_t heapSize() const;

private:
    using Clock = std::chrono::steady_clock;

    struct Memory
    {
        RememberedSockets sockets;
        std::uint32_t turn = 0; ///< counts the tables
        bool askedInRound = false;
    };

    void beginRound();
    std::vector<std::uint32_t> rememberedOwners(Memory &memory, std::span<const SocketRow> sockets);
    bool holdsStill(const RememberedSocket &socket, const OwnerProcess &owner, std::uint32_t turn);
    bool isWorthSearching(const SocketRow &socket) const;
    void lookAtVacated(Memory &memory);
    void settle();

    ProcessDirectory m_directory;
    OwnerProcesses m_processes;
    OwnerSearch m_search;
    std::array<Memory, 2> m_memories;
    std::string m_creationMark;
    Clock::time_point m_lastAnswer;
    bool m_unplaceable = false; ///< some remembered socket has no owner
    std::uint32_t m_recheckBudget = 0; ///< how many sockets of changed processes to look up again
};
