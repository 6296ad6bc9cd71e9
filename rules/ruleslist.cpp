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

/// Socket totals of the sampled applications and of those that only have a rule.
QHash<QString, qint32> socketsByName(const QList<AppSample> &samples, const RuleMap &rules)
{
    QHash<QString, qint32> sockets;
    for (const AppSample &sample : samples) {
        if (!sockets.contains(sample.name))
            sockets.insert(sample.name, sample.socketTotal());
    }
    for (auto rule = rules.keyBegin(); rule != rules.keyEnd(); ++rule) {
        if (!sockets.contains(*rule))
            sockets.insert(*rule, 0);
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
    const QHash<QString, qint32> sockets = socketsByName(samples, rules);
    for (auto app = sockets.cbegin(); app != sockets.cend(); ++app) {
        const AppRule rule = ruleFor(rules, app.key());
        if (passesMode(rule, filter.mode) && app.key().contains(filter.text, Qt::CaseInsensitive))
            entries.push_back({app.key().toLower(), {app.key(), rule, app.value()}});
    }

    // Names that differ in letter case alone must not change places from one refresh to the next.
    std::ranges::sort(entries, [](const Entry &left, const Entry &right) {
        return left.key != right.key ? left.key < right.key : left.listed.name < right.listed.name;
    });
    QList<ListedRule> listed;
    listed.reserve(static_cast<qsizetype>(entries.size()));
    for (Entry &entry : entries)
        listed.append(std::move(entry.listed));
    return listed;
}
