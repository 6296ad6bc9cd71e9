#pragma once

#include "sampling/linux/processdirectory.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

/// Numbers of open files, one bit each.
class DescriptorSet
{
public:
    bool contains(std::uint32_t descriptor) const;
    void remove(std::uint32_t descriptor);
    /// Holds exactly `descriptors` afterwards.
    void assign(std::span<const std::uint32_t> descriptors);
    /// Octets on the heap.
    std::size_t heapSize() const { return m_words.capacity() * sizeof(std::uint64_t); }

private:
    std::vector<std::uint64_t> m_words;
};

/// A process that owns remembered sockets.
struct OwnerProcess
{
    enum class State : std::uint8_t {
        Same, ///< nothing is known to have changed
        Changed, ///< the same process, with another number of open files
        Gone, ///< ended; its id may be another process's now
    };

    std::uint32_t pid = 0; ///< 0 in a slot that is free
    State state = State::Same;
    bool inUse = false; ///< some remembered socket refers to it
    std::uint64_t startTime = 0; ///< clock ticks since boot
    FileDescriptor folder; ///< of its descriptors, where it is held
    FileDescriptor imageLink; ///< to its executable, held with the folder
    ProcessDirectory::FileSummary files; ///< at the last check
    DescriptorSet known; ///< descriptors that were looked at and need no second look
};

/// The processes that own remembered sockets, each at a slot which is its for as long as it is in
/// use.
///
/// The descriptor folders of the first few hundred, and the links to their executables, are held
/// open: to ask the kernel about a path takes most of the time of asking. The others, and all where
/// descriptors are scarce, are asked by path.
class OwnerProcesses
{
public:
    explicit OwnerProcesses(ProcessDirectory &directory);

    OwnerProcess &at(std::uint32_t slot) { return m_slots[slot]; }
    std::span<OwnerProcess> slots() { return m_slots; }
    /// The process of this id that has not ended; null when it owns nothing.
    OwnerProcess *find(std::uint32_t pid);
    /// Slot of a process, which is taken up when it owned nothing before.
    std::uint32_t slotOf(std::uint32_t pid);

    /// Asks of every process whether it is still the same and whether its files changed: one system
    /// call each.
    void check();
    /// Gives up the slots of processes that are not in use.
    void releaseUnused();

    /// Octets on the heap.
    std::size_t heapSize() const;

private:
    std::optional<ProcessDirectory::FileSummary> summaryOf(OwnerProcess &process);
    void release(OwnerProcess &process);

    ProcessDirectory &m_directory;
    std::size_t m_mostFolders; ///< how many may be held open
    std::size_t m_heldFolders = 0;
    std::vector<OwnerProcess> m_slots;
    std::unordered_map<std::uint32_t, std::uint32_t> m_slotOf; ///< of processes not gone
};
