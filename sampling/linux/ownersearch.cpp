#include "sampling/linux/ownersearch.h"

#include <algorithm>

void OwnerSearch::startRound()
{
    m_seen.clear();
    giveUp();
    m_plan.clear();
    m_news = 0;
    m_done = 0;
    m_planned = false;
    m_refused = false;
    m_exhausted = false;
}

void OwnerSearch::endRound()
{
    // Unlike clear(), this gives the memory back.
    m_seen = decltype(m_seen)();
    m_missing = decltype(m_missing)();
    m_lastOwners = decltype(m_lastOwners)();
    m_plan = decltype(m_plan)();
    m_descriptors = decltype(m_descriptors)();
}

std::optional<OwnerSearch::Sighting> OwnerSearch::sighting(std::uint32_t inode) const
{
    const auto seen = m_seen.find(inode);
    if (seen == m_seen.end())
        return std::nullopt;
    return seen->second;
}

void OwnerSearch::miss(std::uint32_t inode, bool urgent)
{
    if (!m_seen.contains(inode) && m_missing.try_emplace(inode, urgent).second && urgent)
        ++m_urgent;
}

void OwnerSearch::missFrom(std::uint32_t inode, std::uint32_t lastOwner)
{
    m_lastOwners.insert_or_assign(inode, lastOwner);
    miss(inode, true);
}

void OwnerSearch::giveUp()
{
    m_missing.clear();
    m_lastOwners.clear();
    m_urgent = 0;
}

void OwnerSearch::look(std::uint32_t pid, std::uint32_t descriptor)
{
    if (const auto inode = m_directory.socketAt(pid, descriptor))
        note(*inode, {pid, descriptor});
}

void OwnerSearch::lookAtAll(std::uint32_t pid)
{
    visit({.pid = pid, .newFilesOnly = false});
}

void OwnerSearch::lookAtNews()
{
    if (!plan())
        return;
    while (m_done < m_news)
        visit(m_plan[m_done++]);
}

bool OwnerSearch::run()
{
    if (!missesUrgently())
        return true;
    if (!plan())
        return false;
    while (missesUrgently() && m_done < m_plan.size())
        visit(m_plan[m_done++]);
    if (m_done == m_plan.size())
        m_metRefusal = m_refused;
    return !m_exhausted || !missesUrgently();
}

bool OwnerSearch::plan()
{
    if (m_planned)
        return true;
    auto processes = m_directory.processes();
    if (!processes) {
        m_exhausted = true;
        return false;
    }
    std::vector<Visit> unchangedOwners;
    std::vector<Visit> others;
    std::vector<Visit> owners;
    for (const std::uint32_t pid : *processes) {
        const OwnerProcess *owner = m_owners.find(pid);
        const bool isNew = !std::ranges::binary_search(m_processes, pid);
        if (owner) {
            const bool changed = owner->state == OwnerProcess::State::Changed;
            (changed ? m_plan : unchangedOwners).push_back({pid, true});
            owners.push_back({pid, false});
        } else {
            (isNew ? m_plan : others).push_back({pid, false});
        }
    }
    m_news = m_plan.size();
    // What the likely places did not bring is searched for among all other files.
    for (const auto &rest : {unchangedOwners, others, owners})
        m_plan.insert(m_plan.end(), rest.begin(), rest.end());
    m_processes = std::move(*processes);
    m_planned = true;
    return true;
}

void OwnerSearch::note(std::uint32_t inode, Sighting sighting)
{
    const auto [seen, first] = m_seen.try_emplace(inode, sighting);
    if (!first) {
        const auto lastOwner = m_lastOwners.find(inode);
        if (lastOwner != m_lastOwners.end() && lastOwner->second == sighting.pid)
            seen->second = sighting;
        return;
    }
    const auto missing = m_missing.find(inode);
    if (missing == m_missing.end())
        return;
    if (missing->second)
        --m_urgent;
    m_missing.erase(missing);
}

void OwnerSearch::visit(Visit visit)
{
    const OwnerProcess *owner = m_owners.find(visit.pid);
    const std::size_t missingBefore = m_missing.size();
    m_descriptors.clear();
    const auto access = m_directory.forEachSocket(
        visit.pid,
        [&](std::uint32_t descriptor) {
            m_descriptors.push_back(descriptor);
            return !visit.newFilesOnly || !owner || !owner->known.contains(descriptor);
        },
        [&](std::uint32_t descriptor, std::uint32_t inode) {
            note(inode, {visit.pid, descriptor});
        });
    m_refused |= access == ProcessDirectory::Access::Refused;
    m_exhausted |= access == ProcessDirectory::Access::Exhausted;
    const bool becomesOwner = m_missing.size() < missingBefore;
    if (access == ProcessDirectory::Access::Complete && (owner || becomesOwner))
        m_owners.at(m_owners.slotOf(visit.pid)).known.assign(m_descriptors);
}
