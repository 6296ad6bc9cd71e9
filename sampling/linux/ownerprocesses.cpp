#include "sampling/linux/ownerprocesses.h"

#include <sys/resource.h>

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint32_t bitsAWord = 64;

/// With two descriptors each, half of those that this process may have, getrlimit(2), and no more
/// than a desktop's processes need.
std::size_t mostFolders()
{
    constexpr rlim_t enough = 384;
    rlimit descriptors{};
    if (::getrlimit(RLIMIT_NOFILE, &descriptors) != 0)
        return 0;
    return std::min(descriptors.rlim_cur / 4, enough);
}

} // namespace

bool DescriptorSet::contains(std::uint32_t descriptor) const
{
    const std::size_t word = descriptor / bitsAWord;
    return word < m_words.size() && ((m_words[word] >> (descriptor % bitsAWord)) & 1U) != 0;
}

void DescriptorSet::remove(std::uint32_t descriptor)
{
    const std::size_t word = descriptor / bitsAWord;
    if (word < m_words.size())
        m_words[word] &= ~(std::uint64_t{1} << (descriptor % bitsAWord));
}

void DescriptorSet::assign(std::span<const std::uint32_t> descriptors)
{
    const std::uint32_t highest = descriptors.empty() ? 0 : std::ranges::max(descriptors);
    m_words.assign(descriptors.empty() ? 0 : highest / bitsAWord + 1, 0);
    for (const std::uint32_t descriptor : descriptors)
        m_words[descriptor / bitsAWord] |= std::uint64_t{1} << (descriptor % bitsAWord);
}

OwnerProcesses::OwnerProcesses(ProcessDirectory &directory)
    : m_directory(directory),
      m_mostFolders(mostFolders())
{
}

OwnerProcess *OwnerProcesses::find(std::uint32_t pid)
{
    const auto found = m_slotOf.find(pid);
    return found == m_slotOf.end() ? nullptr : &m_slots[found->second];
}

std::uint32_t OwnerProcesses::slotOf(std::uint32_t pid)
{
    if (const auto found = m_slotOf.find(pid); found != m_slotOf.end())
        return found->second;
    auto slot = std::ranges::find(m_slots, 0U, &OwnerProcess::pid);
    if (slot == m_slots.end())
        slot = m_slots.emplace(slot);
    slot->pid = pid;
    if (m_heldFolders < m_mostFolders)
        slot->folder = m_directory.openFolder(pid);
    if (slot->folder) {
        ++m_heldFolders;
        slot->imageLink = m_directory.openImageLink(pid);
    }
    slot->startTime = m_directory.startTime(pid);
    slot->files = summaryOf(*slot).value_or(ProcessDirectory::FileSummary{});
    const auto number = static_cast<std::uint32_t>(slot - m_slots.begin());
    m_slotOf.emplace(pid, number);
    return number;
}

std::optional<ProcessDirectory::FileSummary> OwnerProcesses::summaryOf(OwnerProcess &process)
{
    if (process.folder) {
        if (const auto files = ProcessDirectory::fileSummary(process.folder))
            return files;
        release(process);
    }
    return m_directory.fileSummary(process.pid);
}

void OwnerProcesses::release(OwnerProcess &process)
{
    m_heldFolders -= process.folder ? 1 : 0;
    process.folder.reset();
    process.imageLink.reset();
}

void OwnerProcesses::check()
{
    for (OwnerProcess &process : m_slots) {
        if (process.pid == 0 || process.state == OwnerProcess::State::Gone)
            continue;
        const auto files = summaryOf(process);
        // The kernel numbers the folder of a process anew when it had dropped it from its cache;
        // only the start time then tells a process from its successor of the same id.
        const bool same = files
            && (files->identity == process.files.identity
                || m_directory.startTime(process.pid) == process.startTime);
        if (!same) {
            process.state = OwnerProcess::State::Gone;
            m_slotOf.erase(process.pid);
            continue;
        }
        process.state = files->count == process.files.count ? OwnerProcess::State::Same
                                                            : OwnerProcess::State::Changed;
        process.files = *files;
    }
}

void OwnerProcesses::releaseUnused()
{
    for (OwnerProcess &process : m_slots) {
        if (process.pid == 0 || process.inUse)
            continue;
        if (process.state != OwnerProcess::State::Gone)
            m_slotOf.erase(process.pid);
        release(process);
        process = {};
    }
    while (!m_slots.empty() && m_slots.back().pid == 0)
        m_slots.pop_back();
}

std::size_t OwnerProcesses::heapSize() const
{
    std::size_t size = m_slots.capacity() * sizeof(OwnerProcess);
    for (const OwnerProcess &process : m_slots)
        size += process.known.heapSize();
    // A node of the map: the pair and a pointer, rounded up by the allocator.
    constexpr std::size_t nodeSize = 32;
    return size + m_slotOf.size() * nodeSize + m_slotOf.bucket_count() * sizeof(void *);
}
