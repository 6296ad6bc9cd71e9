#include "rules/ruleslist.h"

#include <QHash>

#include <algorithm>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

bool passesMode(const AppRule &rule, const QString &mode)
{
    if (mode == "All"_L1)
        return true;
    if (mode == "Blocked"_L1)
        return rule.blocked;
    if (mode == "Limited"_L1)
        return rule.dlLimit || rule.ulLimit;
    return false;
}

/// Socket totals of the sampled applications.
QHash<QString, qint32> socketsByName(const QList<AppSample> &samples)
{
    QHash<QString, qint32> sockets;
    sockets.reserve(samples.size());
    for (const AppSample &sample : samples) {
        if (!sockets.contains(sample.name))
            sockets.insert(sample.name, sample.socketTotal());
    }
    return sockets;
}

} // namespace

QList<ListedRule> listedRules(const QList<AppSample> &samples, const RuleMap &rules,
                              const RulesFilter &filter)
{
    struct Entry
    {
        QString key; ///< made once for each entry, not for each comparison
        ListedRule listed;
    };
    std::vector<Entry> entries;
    entries.reserve(static_cast<std::size_t>(rules.size() + samples.size()));
    const auto add = [&](const QString &name, const AppRule &rule, qint32 sockets) {
        if (passesMode(rule, filter.mode)
            && (filter.text.isEmpty() || name.contains(filter.text, Qt::CaseInsensitive)))
            entries.push_back({name.toLower(), {name, rule, sockets}});
    };
    QHash<QString, qint32> sockets = socketsByName(samples);
    for (const auto &[name, rule] : rules.asKeyValueRange())
        add(name, rule, sockets.take(name));
    for (const auto &[name, count] : std::as_const(sockets).asKeyValueRange())
        add(name, {}, count);

    // Names that differ in letter case alone must not change places from one refresh to the next.
    // The rules are in the order of their names, most often that of the lower-cased ones too.
    const auto before = [](const Entry &left, const Entry &right) {
        return left.key != right.key ? left.key < right.key : left.listed.name < right.listed.name;
    };
    if (!std::ranges::is_sorted(entries, before))
        std::ranges::sort(entries, before);
    QList<ListedRule> listed;
    listed.reserve(static_cast<qsizetype>(entries.size()));
    for (Entry &entry : entries)
        listed.append(std::move(entry.listed));
    return listed;
}

std::vector<int> rowsBefore(const QList<ListedRule> &before, const QList<ListedRule> &now)
{
    std::vector<int> rows(static_cast<std::size_t>(now.size()), -1);
    // Most often the same applications are listed as before.
    const auto shorter = std::min(before.size(), now.size());
    qsizetype same = 0;
    while (same < shorter && before.at(same).name == now.at(same).name) {
        rows[static_cast<std::size_t>(same)] = static_cast<int>(same);
        ++same;
    }
    QHash<QString, int> places;
    places.reserve(before.size() - same);
    for (qsizetype row = same; row < before.size(); ++row)
        places.insert(before.at(row).name, static_cast<int>(row));
    for (qsizetype row = same; row < now.size(); ++row)
        rows[static_cast<std::size_t>(row)] = places.value(now.at(row).name, -1);
    return rows;
}
