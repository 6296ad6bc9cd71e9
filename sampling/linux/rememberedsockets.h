#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

/// Who holds a socket, as remembered from one table to the next.
struct RememberedSocket
{
    /// Instead of a slot: no process was seen to hold it.
    static constexpr std::uint32_t unplaceable = std::numeric_limits<std::uint32_t>::max();

    std::uint32_t inode = 0; ///< 0 in a free place of the table
    std::uint32_t slot = unplaceable; ///< of the owner among OwnerProcesses
    std::uint32_t descriptor = 0; ///< under which the owner holds it
    bool doubtful = false; ///< unplaceable, but the search began before the socket was listed
    bool listed = false; ///< scratch: the table that is being answered holds it too
};

/// Remembered sockets by inode: a hash table with open addressing, 16 octets a place.
class RememberedSockets
{
public:
    /// An empty table for up to `count` sockets.
    explicit RememberedSockets(std::size_t count = 0)
        : m_places(count == 0 ? 0 : std::bit_ceil(count + count / 2 + 1))
    {
    }

    /// The socket of this inode, or null.
    RememberedSocket *find(std::uint32_t inode)
    {
        if (m_places.empty())
            return nullptr;
        RememberedSocket &place = placeOf(inode);
        return place.inode == inode ? &place : nullptr;
    }
    /// Adds or replaces a socket. There must be room for it.
    void insert(const RememberedSocket &socket) { placeOf(socket.inode) = socket; }

    /// All places, the free ones too.
    std::vector<RememberedSocket> &places() { return m_places; }
    /// Octets on the heap.
    std::size_t heapSize() const { return m_places.capacity() * sizeof(RememberedSocket); }

private:
    /// Where the socket is, or the free place where it would be.
    RememberedSocket &placeOf(std::uint32_t inode)
    {
        constexpr std::uint32_t multiplier = 2654435769; // 2^32 divided by the golden ratio
        const std::size_t mask = m_places.size() - 1;
        std::size_t index = (inode * multiplier >> 8) & mask;
        while (m_places[index].inode != 0 && m_places[index].inode != inode)
            index = (index + 1) & mask;
        return m_places[index];
    }

    std::vector<RememberedSocket> m_places;
};
