#include "sampling/linux/socketowners.h"

#include <unistd.h>

#include <algorithm>
#include <set>

namespace {

/// Of processes whose number of files changed, at most so many sockets are looked up again in one
/// round: servers change all the time, and the recheck period bounds a wrong owner's life anyway.
constexpr std::uint32_t recheckBudgetOfRound = 128;

/// A table asked for later than this after the other belongs to another round, whatever was seen
/// for the other.
constexpr std::chrono::milliseconds longestRoundPause{10};

} // namespace

std::vector<std::uint32_t> SocketOwners::owners(Table table, std::span<const SocketRow> sockets)
{
    Memory &memory = m_memories.at(static_cast<std::size_t>(table));
    const bool firstOfRound = std::ranges::none_of(m_memories, &Memory::askedInRound);
    const bool second = !firstOfRound && !memory.askedInRound;
    const bool late = second && Clock::now() - m_lastAnswer > longestRoundPause;
    if (!second || late)
        beginRound();
    memory.askedInRound = true;
    // The other table was asked for before: what comes next, however soon, is of the next round.
    if (late)
        std::ranges::for_each(m_memories, [](Memory &each) { each.askedInRound = true; });
    ++memory.turn;

    std::vector<std::uint32_t> owners = rememberedOwners(memory, sockets);
    lookAtVacated(memory);
    const bool continued = m_search.hasBegun();
    const bool everywhere = m_search.run();
    m_search.giveUp();

    RememberedSockets remembered(sockets.size());
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        const std::uint32_t inode = sockets[i].inode;
        if (inode == 0)
            continue;
        if (owners[i] != 0) {
            remembered.insert(*memory.sockets.find(inode));
        } else if (const auto seen = m_search.sighting(inode)) {
            owners[i] = seen->pid;
            remembered.insert({.inode = inode,
                               .slot = m_processes.slotOf(seen->pid),
                               .descriptor = seen->descriptor});
        } else if (everywhere) {
            // The place of a socket may have been looked at before the socket was there. It is
            // searched for once more, and then taken for unplaceable.
            const bool doubtful = continued && !memory.sockets.find(inode);
            remembered.insert({.inode = inode, .doubtful = doubtful});
        }
    }
    memory.sockets = std::move(remembered);
    settle();
    m_lastAnswer = Clock::now();
    return owners;
}

const FileDescriptor *SocketOwners::imageLink(std::uint32_t pid)
{
    const OwnerProcess *process = m_processes.find(pid);
    return process && process->imageLink ? &process->imageLink : nullptr;
}

std::size_t SocketOwners::heapSize() const
{
    std::size_t size = m_processes.heapSize() + m_search.heapSize();
    for (const Memory &memory : m_memories)
        size += memory.sockets.heapSize();
    return size;
}

void SocketOwners::beginRound()
{
    for (Memory &memory : m_memories)
        memory.askedInRound = false;
    m_recheckBudget = recheckBudgetOfRound;
    m_search.startRound();
    m_processes.check();
    if (!m_unplaceable)
        return;
    auto mark = m_directory.creationMark();
    if (!mark || *mark != m_creationMark)
        m_search.lookAtNews();
    m_creationMark = std::move(mark).value_or(std::string());
}

std::vector<std::uint32_t> SocketOwners::rememberedOwners(Memory &memory,
                                                          std::span<const SocketRow> sockets)
{
    const bool retry = memory.turn % retryPeriod == 0;
    std::set<std::uint32_t> lost; // processes that no longer hold what they held
    std::vector<std::uint32_t> owners(sockets.size(), 0);
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        const SocketRow &socket = sockets[i];
        if (socket.inode == 0)
            continue;
        RememberedSocket *known = memory.sockets.find(socket.inode);
        if (!known) {
            m_search.miss(socket.inode, isWorthSearching(socket));
            continue;
        }
        known->listed = true;
        if (known->slot == RememberedSocket::unplaceable) {
            if (retry || known->doubtful)
                m_search.miss(socket.inode, true);
            continue;
        }
        const OwnerProcess &owner = m_processes.at(known->slot);
        if (holdsStill(*known, owner, memory.turn)) {
            owners[i] = owner.pid;
            continue;
        }
        if (owner.state == OwnerProcess::State::Gone) {
            m_search.miss(socket.inode, true);
        } else {
            m_search.missFrom(socket.inode, owner.pid);
            lost.insert(owner.pid);
        }
    }
    // A process that moved a socket to another descriptor has held it all the time.
    for (const std::uint32_t pid : lost)
        m_search.lookAtAll(pid);
    return owners;
}

bool SocketOwners::holdsStill(const RememberedSocket &socket, const OwnerProcess &owner,
                              std::uint32_t turn)
{
    if (owner.state == OwnerProcess::State::Gone)
        return false;
    bool due = socket.inode % recheckPeriod == turn % recheckPeriod;
    if (!due && owner.state == OwnerProcess::State::Changed && m_recheckBudget > 0) {
        --m_recheckBudget;
        due = true;
    }
    if (!due)
        return true;
    const auto held = owner.folder ? ProcessDirectory::socketAt(owner.folder, socket.descriptor)
                                   : m_directory.socketAt(owner.pid, socket.descriptor);
    return held == socket.inode;
}

bool SocketOwners::isWorthSearching(const SocketRow &socket) const
{
    // Where other users' files may not be read, a search for their sockets finds nothing.
    return !m_search.metRefusal() || socket.uid == ::geteuid();
}

void SocketOwners::lookAtVacated(Memory &memory)
{
    // The kernel gives out the lowest free descriptor, so that a process which closed a socket and
    // opened another mostly has it at the same number.
    for (const RememberedSocket &socket : memory.sockets.places()) {
        if (socket.inode == 0 || socket.listed || socket.slot == RememberedSocket::unplaceable)
            continue;
        OwnerProcess &owner = m_processes.at(socket.slot);
        if (owner.state == OwnerProcess::State::Gone)
            continue;
        owner.known.remove(socket.descriptor);
        if (m_search.missesUrgently())
            m_search.look(owner.pid, socket.descriptor);
    }
}

void SocketOwners::settle()
{
    for (OwnerProcess &process : m_processes.slots())
        process.inUse = false;
    m_unplaceable = false;
    for (Memory &memory : m_memories) {
        for (RememberedSocket &socket : memory.sockets.places()) {
            socket.listed = false;
            if (socket.inode == 0)
                continue;
            if (socket.slot == RememberedSocket::unplaceable)
                m_unplaceable = true;
            else
                m_processes.at(socket.slot).inUse = true;
        }
    }
    m_processes.releaseUnused();
    if (std::ranges::all_of(m_memories, &Memory::askedInRound))
        m_search.endRound();
}
